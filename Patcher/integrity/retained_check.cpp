#include "integrity/retained_check.h"

#include <string_view>
#include <unordered_map>
#include <utility>

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

void RetainedCheck::Store(CheckResult result, std::int32_t version) {
  const platform::MutexLock guard(lock_);
  result_ = std::move(result);
  manifestVersion_ = version;
}

bool RetainedCheck::Recall(const PatchManifest& manifest, CheckResult& result) const {
  const platform::MutexLock guard(lock_);
  if (!result_ || manifestVersion_ != manifest.version) return false;
  result = *result_;
  result.total = static_cast<std::int32_t>(manifest.files.size());
  result.ok = result.total - static_cast<std::int32_t>(result.samples.size());
  result.bytes = 0;
  if (result.samples.empty()) return true;
  const auto sizes = SizesByPath(manifest);
  for (const std::string& path : result.samples) {
    if (const auto size = sizes.find(path); size != sizes.end()) result.bytes += size->second;
  }
  return true;
}

void RetainedCheck::Clear() {
  const platform::MutexLock guard(lock_);
  result_.reset();
}

}  // namespace patcher
