#include "shared/program.h"

namespace patcher {

const std::int32_t launcherBuild = PATCHER_LAUNCHER_BUILD;

}  // namespace patcher
