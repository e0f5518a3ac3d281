#pragma once

#include <cstdint>
#include <optional>

#include "control/protocol/page_messages.h"
#include "platform/mutex.h"
#include "update/patch_manifest.h"

namespace patcher {

/// Keeps the result of this process's latest verification in memory, for a repair after it. Any thread. While
/// its lock is held, it takes no other lock and uses no file.
class RetainedCheck {
 public:
  /// The one object of the process. Holds no result at first.
  static RetainedCheck& Current();

  /// Replaces the kept result by a new one.
  void Store(CheckResult result, std::int32_t version);

  /// Returns true if there is a result for the manifest's version, and fills `result` from it, with totals
  /// and sizes of this manifest. Does not check whether the files have changed since.
  [[nodiscard]] bool Recall(const PatchManifest& manifest, CheckResult& result) const;

  /// Discards the result, so that only one repair uses it.
  void Clear();

 private:
  mutable platform::Mutex lock_;
  std::optional<CheckResult> result_ PATCHER_GUARDED_BY(lock_);
  std::int32_t manifestVersion_ PATCHER_GUARDED_BY(lock_) = 0;
};

}  // namespace patcher
