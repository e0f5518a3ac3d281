#include "update/install_lock.h"

#include "control/protocol/ui_event.h"
#include "shared/program.h"

namespace patcher {

InstallLock::InstallLock(HostWindow& window, std::chrono::milliseconds timeout)
    : lock_(ExeDir()), taken_(lock_.TakeWithin(std::chrono::milliseconds(0))) {
  if (taken_) return;
  PostStatus(window, "Une autre instance du lanceur met le jeu a jour, attente...");
  taken_ = lock_.TakeWithin(timeout);
  if (!taken_) PostStatus(window, "Une autre instance du lanceur occupe toujours le dossier du jeu.");
}

}  // namespace patcher
