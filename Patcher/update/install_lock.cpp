#include "update/install_lock.h"

#include "control/ui_event.h"
#include "shared/program.h"

namespace patcher {

InstallLock::InstallLock(HostWindow& window) : lock_(ExeDir()) {
  if (lock_.TryTake()) return;
  PostStatus(window, "Une autre instance du lanceur met le jeu a jour, attente...");
  lock_.Take();
}

}  // namespace patcher
