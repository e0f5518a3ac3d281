#include "transport/debug_log.h"

#include <fstream>
#include <string>

#include "platform/mutex.h"
#include "shared/own_files.h"
#include "shared/program.h"

namespace patcher::DebugLog {

void Write(std::string_view message) {
  // Never destroyed, because a worker may log while the process ends.
  static auto* lock = new platform::Mutex;
  std::string line(message);
  line += "\r\n";
  const platform::MutexLock guard(*lock);
  std::ofstream out(ExeDir() / kLogFile, std::ios::binary | std::ios::app);
  out.write(line.data(), static_cast<std::streamsize>(line.size()));
}

void WriteException(std::string_view place, const std::exception& failure) noexcept {
  try {
    Write("Exception in " + std::string(place) + " : " + failure.what());
  } catch (const std::exception&) {
    // There is not enough memory for the line.
  }
}

}  // namespace patcher::DebugLog
