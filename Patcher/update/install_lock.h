#pragma once

#include <chrono>

#include "control/protocol/host_window.h"
#include "platform/directory_lock.h"

namespace patcher {

/// The install directory for as long as this lives. A player may have started two launchers: they would write
/// the same temporary files, and one of them could record a file that the other is still writing. Waits for
/// the other one, after a status line, but not without end: the other one may hang. Used by one thread.
class InstallLock {
 public:
  InstallLock(HostWindow& window, std::chrono::milliseconds patience);

  /// False if the other launcher was still there after `patience`; the player knows.
  bool IsTaken() const { return taken_; }

 private:
  platform::DirectoryLock lock_;
  bool taken_;
};

}  // namespace patcher
