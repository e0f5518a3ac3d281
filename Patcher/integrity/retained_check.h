#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "control/protocol/page_messages.h"
#include "platform/mutex.h"
#include "update/patch_manifest.h"

namespace patcher {

/// The outcome of the latest pass of this process, for a repair that follows it. Never on disk. Any thread;
/// no other lock is taken and no file touched while its lock is held.
class RetainedCheck {
 public:
  /// The process-wide record; holds nothing at start.
  static RetainedCheck& Current();

  /// A pass has ended: what it found replaces what was held.
  void Store(const CheckResult& result, std::int32_t version);

  /// True if a list is held and was made for the manifest's version: `result` is then that list in terms of
  /// the present manifest. What happened to the files meanwhile is not looked at.
  [[nodiscard]] bool Recall(const PatchManifest& manifest, CheckResult& result) const;

  /// A repair has used the list: no other repair may.
  void UseUp();

 private:
  mutable platform::Mutex lock_;
  bool valid_ PATCHER_GUARDED_BY(lock_) = false;
  std::int32_t manifestVersion_ PATCHER_GUARDED_BY(lock_) = 0;
  std::vector<std::string> paths_ PATCHER_GUARDED_BY(lock_);
  std::vector<std::string> unproven_ PATCHER_GUARDED_BY(lock_);
  std::int32_t missing_ PATCHER_GUARDED_BY(lock_) = 0;
  std::int32_t corrupt_ PATCHER_GUARDED_BY(lock_) = 0;
};

}  // namespace patcher
