#pragma once

#include "content_store.h"
#include "platform/directory_lock.h"

namespace patcher::publisher {

/// The right to change a store, and a work folder in it. One process at a time has it: publishing, going live
/// and pruning exclude each other. Some file systems have no locks; there the different work folders keep two
/// processes from writing the same unfinished file.
class StoreSession {
 public:
  /// Raises PublishError if another process has it. Does not wait: that one may run for an hour.
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
