#pragma once

#include <chrono>

#include "control/protocol/host_window.h"
#include "platform/directory_lock.h"

namespace patcher {

/// Locks the install directory for its lifetime. A player may start two launchers: they would write the same
/// temporary files, and one could record a file that the other is still writing. The constructor posts a
/// status and waits for the other launcher, but only for `timeout`, since that launcher may hang. One
/// thread.
class InstallLock {
 public:
  InstallLock(HostWindow& window, std::chrono::milliseconds timeout);

  /// False, after a status for the player, if the other launcher still held the lock after `timeout`.
  bool IsTaken() const { return taken_; }

 private:
  platform::DirectoryLock lock_;
  bool taken_;
};

}  // namespace patcher
