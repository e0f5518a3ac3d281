#include "update/run_state.h"

#include "shared/own_files.h"
#include "shared/program.h"
#include "transport/config.h"

namespace patcher {

RunState::RunState(HostWindow& hostWindow)
    : window(hostWindow), record(ExeDir() / kRecordFile), extracting(PatchConfig::Current().connections) {}

void EnterInRecord(RunState& run, const std::vector<InstalledFile>& files) {
  const platform::MutexLock guard(run.stateLock);
  for (const InstalledFile& file : files) run.record.Enter(file.path, file.digest);
}

}  // namespace patcher
