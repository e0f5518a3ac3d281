#include "integrity/retained_check.h"

#include <string_view>
#include <unordered_map>

namespace patcher {
namespace {

/// Sizes by path. The first entry of a path counts.
std::unordered_map<std::string_view, std::uint64_t> SizesByPath(const PatchManifest& manifest) {
  std::unordered_map<std::string_view, std::uint64_t> sizes;
  sizes.reserve(manifest.files.size());
  for (const PatchFile& file : manifest.files) sizes.emplace(file.path, file.size);
  return sizes;
}

}  // namespace

RetainedCheck& RetainedCheck::Current() {
  // Never destroyed, since a detached worker may still use it while the process ends.
  static auto* current = new RetainedCheck;
  return *current;
}

void RetainedCheck::Store(const CheckResult& result, std::int32_t version) {
  const platform::MutexLock guard(lock_);
  valid_ = false;  // until the copy is complete
  paths_ = result.samples;
  unexamined_ = result.unexamined;
  missing_ = result.missing;
  corrupt_ = result.corrupt;
  manifestVersion_ = version;
  valid_ = true;
}

bool RetainedCheck::Recall(const PatchManifest& manifest, CheckResult& result) const {
  const platform::MutexLock guard(lock_);
  if (!valid_ || manifestVersion_ != manifest.version) return false;
  result.samples = paths_;
  result.unexamined = unexamined_;
  result.missing = missing_;
  result.corrupt = corrupt_;
  result.total = static_cast<std::int32_t>(manifest.files.size());
  result.ok = result.total - static_cast<std::int32_t>(paths_.size());
  result.bytes = 0;
  if (paths_.empty()) return true;
  const auto sizes = SizesByPath(manifest);
  for (const std::string& path : paths_) {
    if (const auto size = sizes.find(path); size != sizes.end()) result.bytes += size->second;
  }
  return true;
}

void RetainedCheck::Clear() {
  const platform::MutexLock guard(lock_);
  valid_ = false;
}

}  // namespace patcher
