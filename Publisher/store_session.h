#pragma once

#include "content_store.h"
#include "platform/directory_lock.h"

namespace patcher::publisher {

/// Locks a store and has a work folder in it. Only one process at a time can publish, go live or prune. Some
/// file systems have no locks; there the separate work folders prevent two processes from writing the same
/// unfinished file.
class StoreSession {
 public:
  /// Raises PublishError if another process has the lock. Does not wait, since that process may run for an
  /// hour.
  explicit StoreSession(const ContentStore& store);
  ~StoreSession();
  StoreSession(const StoreSession&) = delete;
  StoreSession& operator=(const StoreSession&) = delete;

 private:
  const ContentStore& store_;
  platform::DirectoryLock lock_;
};

/// Raises PublishError if nothing was ever published there.
void RequireStore(const ContentStore& store);

}  // namespace patcher::publisher
