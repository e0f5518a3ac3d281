#pragma once

#include <windows.h>

namespace platform {

/// A kernel object that is closed with its owner.
class OwnedHandle {
 public:
  explicit OwnedHandle(HANDLE handle) : handle_(handle) {}
  ~OwnedHandle() {
    if (IsOpen()) CloseHandle(handle_);
  }
  OwnedHandle(const OwnedHandle&) = delete;
  OwnedHandle& operator=(const OwnedHandle&) = delete;

  /// Both values that the system's functions return for "none" count as closed.
  bool IsOpen() const { return handle_ != nullptr && handle_ != INVALID_HANDLE_VALUE; }
  HANDLE Get() const { return handle_; }

 private:
  HANDLE handle_;
};

}  // namespace platform
