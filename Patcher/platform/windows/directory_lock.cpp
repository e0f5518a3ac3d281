#include <windows.h>

#include "platform/directory_lock.h"

#include <memory>
#include <string>

#include <sddl.h>

#include "platform/windows/owned_handle.h"

namespace platform {
namespace {

/// A name that does not depend on the spelling of the path; empty if the system does not identify the
/// directory.
std::wstring NameOf(const std::filesystem::path& directory) {
  const OwnedHandle opened(CreateFileW(directory.c_str(), 0, kShareAll, nullptr, OPEN_EXISTING,
                                       FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  BY_HANDLE_FILE_INFORMATION about{};
  if (!opened.IsOpen() || !GetFileInformationByHandle(opened.Get(), &about)) return {};
  return L"Global\\TolmiraMMO-Patcher-" + std::to_wstring(about.dwVolumeSerialNumber) + L"-" +
         std::to_wstring(about.nFileIndexHigh) + L"-" + std::to_wstring(about.nFileIndexLow);
}

struct LocalDeleter {
  void operator()(void* memory) const { LocalFree(memory); }
};

/// Everyone may wait for the mutex and release it. Opening requests no other rights, because another account
/// may have created it.
HANDLE MakeMutex(const std::filesystem::path& directory) {
  constexpr DWORD kRights = SYNCHRONIZE | MUTEX_MODIFY_STATE;
  constexpr wchar_t kEveryoneHasThem[] = L"D:(A;;0x100001;;;WD)";
  const std::wstring name = NameOf(directory);
  void* descriptor = nullptr;
  if (name.empty() || !ConvertStringSecurityDescriptorToSecurityDescriptorW(kEveryoneHasThem, SDDL_REVISION_1,
                                                                            &descriptor, nullptr)) {
    return nullptr;
  }
  const std::unique_ptr<void, LocalDeleter> owned(descriptor);
  SECURITY_ATTRIBUTES attributes{sizeof attributes, descriptor, FALSE};
  return CreateMutexExW(&attributes, name.c_str(), 0, kRights);
}

}  // namespace

struct DirectoryLock::Impl {
  explicit Impl(const std::filesystem::path& directory) : mutex(MakeMutex(directory)) {}
  ~Impl() {
    if (held) ReleaseMutex(mutex.Get());
  }
  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;

  /// Returns false only after a timeout. A process that ended has released the lock.
  bool Wait(DWORD milliseconds) {
    if (!mutex.IsOpen()) return true;
    const DWORD outcome = WaitForSingleObject(mutex.Get(), milliseconds);
    held = outcome == WAIT_OBJECT_0 || outcome == WAIT_ABANDONED;
    return outcome != WAIT_TIMEOUT;
  }

  const OwnedHandle mutex;
  bool held = false;
};

DirectoryLock::DirectoryLock(const std::filesystem::path& directory)
    : impl_(std::make_unique<Impl>(directory)) {}

DirectoryLock::~DirectoryLock() = default;

bool DirectoryLock::TakeWithin(std::chrono::milliseconds timeout) {
  return impl_->Wait(static_cast<DWORD>(timeout.count()));
}

}  // namespace platform
