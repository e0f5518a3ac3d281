#include <array>
#include <cerrno>
#include <fstream>
#include <system_error>

#include "integrity/sha256.h"
#include "platform/files.h"
#include "platform/links.h"
#include "platform/text.h"
#include "shared/retry_while_held.h"
#include "transport/debug_log.h"
#include "transport/http_session.h"

namespace patcher {
namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t kBlockSize = 65536;

fs::path WithSuffix(fs::path file, const char* suffix) {
  file += suffix;
  return file;
}

/// Copies the body to `file` and into `hash`, block by block. False if the transfer or a write failed; the
/// reason is in the log.
bool ReceiveBody(platform::HttpRequest& request, const std::string& path, const fs::path& part,
                 std::ofstream& file, platform::DigestHash& hash, const ByteCallback& onBytes) {
  std::array<char, kBlockSize> buffer;
  for (;;) {
    std::uint32_t available = 0;
    if (std::uint32_t error = request.QueryDataAvailable(available); error != 0) {
      DebugLog::Write("QueryDataAvailable " + path + " err=" + std::to_string(error));
      return false;
    }
    if (available == 0) return true;
    std::uint32_t read = 0;
    if (std::uint32_t error = request.ReadData(buffer.data(), kBlockSize, read); error != 0) {
      DebugLog::Write("ReadData " + path + " err=" + std::to_string(error));
      return false;
    }
    errno = 0;
    if (!file.write(buffer.data(), read)) {
      DebugLog::Write("write " + platform::BytesFromPath(part) + " : " +
                      std::generic_category().message(errno));
      return false;
    }
    hash.Update(buffer.data(), read);
    if (onBytes) onBytes(read);
  }
}

/// Puts the finished temporary file in place. The temporary file is gone afterwards in every case.
bool PutInPlace(const fs::path& part, const fs::path& destination) {
  const int moved = RetryWhileHeld([&] {
    // What is in use for good steps aside at once, so that only what cannot is waited for.
    MoveLockedTargetAside(destination);
    return platform::MoveReplacing(part, destination, true);
  });
  if (moved == 0) return true;

  const int error = platform::CopyOver(part, destination);
  std::error_code ignored;
  fs::remove(part, ignored);
  if (error == 0) return true;
  DebugLog::Write("rename+copy " + platform::BytesFromPath(destination) + " : " +
                  std::system_category().message(error));
  return false;
}

}  // namespace

bool HttpSession::DownloadToFile(const std::string& path, const fs::path& destination, std::string& digest,
                                 const ByteCallback& onBytes) {
  std::optional<platform::HttpRequest> request = OpenGet(path);
  if (!request) {
    DebugLog::Write("OpenGet-null " + path);
    return false;
  }

  // Before the file: what it may raise must not leave one behind.
  Sha256 sha256;
  const fs::path part = WithSuffix(destination, ".part");
  std::error_code directoryError;
  fs::create_directories(destination.parent_path(), directoryError);
  std::error_code ignored;
  // Whatever a link leads to is not ours to overwrite.
  if (platform::IsLink(part)) fs::remove(part, ignored);
  std::ofstream file;
  // Unbuffered: the blocks are large already, and a failed write shows at once.
  file.rdbuf()->pubsetbuf(nullptr, 0);
  file.open(part, std::ios::binary | std::ios::trunc);
  if (!file) {
    DebugLog::Write("ofstream " + platform::BytesFromPath(part) + " mkdir_ec=" + directoryError.message());
    return false;
  }

  platform::DigestHash hash = sha256.BeginHash();
  bool received = ReceiveBody(*request, path, part, file, hash, onBytes);
  errno = 0;
  file.close();
  if (received && file.fail()) {
    DebugLog::Write("write " + platform::BytesFromPath(part) + " : " +
                    std::generic_category().message(errno));
    received = false;
  }
  request.reset();
  digest = sha256.FinishHex(hash);
  if (!received) {
    fs::remove(part, ignored);
    return false;
  }
  return PutInPlace(part, destination);
}

bool MoveLockedTargetAside(const fs::path& destination) {
  std::error_code error;
  if (!fs::exists(destination, error)) return true;
  if (platform::ProbeExclusiveWrite(destination) != platform::ExclusiveWrite::kRefused) return true;
  const fs::path aside = WithSuffix(destination, ".old");
  fs::remove(aside, error);
  return platform::MoveReplacing(destination, aside, false) == 0;
}

}  // namespace patcher
