#include "update/run_state.h"

#include "shared/own_files.h"
#include "shared/program.h"
#include "transport/config.h"

namespace patcher {

UpdateRun::UpdateRun(HostWindow& hostWindow)
    : window(hostWindow), record(ExeDir() / kRecordFile), extracting(PatchConfig::Current().connections) {}

void EnterInRecord(UpdateRun& run, const std::vector<InstalledFile>& files) {
  std::lock_guard guard(run.stateLock);
  for (const InstalledFile& file : files) run.record.Enter(file.path, file.digest);
}

}  // namespace patcher
