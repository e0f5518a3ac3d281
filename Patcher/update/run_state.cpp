#include "update/run_state.h"

#include "shared/program.h"

namespace patcher {

UpdateRun::UpdateRun(HostWindow& hostWindow) : window(hostWindow), record(ExeDir() / "patch_manifest.json") {}

}  // namespace patcher
