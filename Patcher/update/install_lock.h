#pragma once

#include "control/host.h"
#include "platform/directory_lock.h"

namespace patcher {

/// The install directory for as long as this lives. A player may have started two launchers: they would write
/// the same temporary files, and one of them could record a file that the other is still writing. Waits for
/// the other one, after telling the player. Used by one thread.
class InstallLock {
 public:
  explicit InstallLock(HostWindow& window);

 private:
  platform::DirectoryLock lock_;
};

}  // namespace patcher
