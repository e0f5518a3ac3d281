#include "update/local_record.h"

#include <algorithm>
#include <fstream>
#include <system_error>

#include "platform/files.h"
#include "shared/retry_while_held.h"
#include "shared/whole_file.h"

namespace patcher {
namespace {

constexpr std::size_t kFewChanges = 50;
/// A whole save for every such share of the entries keeps the bytes written in proportion to their number.
constexpr std::size_t kShareOfEntries = 100;

bool WriteAt(const std::filesystem::path& path, std::uint64_t offset, std::string_view text) {
  std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
  file.seekp(static_cast<std::streamoff>(offset));
  file.write(text.data(), static_cast<std::streamsize>(text.size()));
  file.close();
  return !file.fail();
}

}  // namespace

LocalRecord::LocalRecord(std::filesystem::path path) : path_(std::move(path)) {}

void LocalRecord::Load(const ParsedDocument& parsed) {
  version_ = 0;
  state_ = LoadLocalManifest(path_, &version_, parsed);
  savedSize_ = 0;
}

bool LocalRecord::IsUnread() const {
  std::error_code error;
  return state_.empty() &&
         std::filesystem::symlink_status(path_, error).type() != std::filesystem::file_type::not_found;
}

bool LocalRecord::Has(std::string_view path, std::string_view digest) const {
  const auto entry = state_.find(path);
  return entry != state_.end() && entry->second == digest;
}

void LocalRecord::Enter(const std::string& path, const std::string& digest) {
  const auto [entry, isNew] = state_.try_emplace(path, digest);
  if (!isNew && entry->second != digest) {
    entry->second = digest;
    savedSize_ = 0;  // what the file says of this path is no longer so
  }
  if (isNew && savedSize_ != 0) changed_.push_back(path);
}

bool LocalRecord::Forget(std::string_view path) {
  const auto entry = state_.find(path);
  if (entry == state_.end()) return false;
  state_.erase(entry);
  savedSize_ = 0;
  return true;
}

bool LocalRecord::Save() {
  const std::string text = LocalManifestText(state_, version_);
  changed_.clear();
  savedSize_ = 0;
  if (!Replace(text)) return RemoveFile(path_);
  if (!state_.empty()) {
    savedSize_ = text.size();
    lastPath_ = state_.rbegin()->first;
  }
  return true;
}

void LocalRecord::SaveProgress() {
  if (savedSize_ != 0 && SaveTail()) return;
  // What cannot be written does not end a run: without a record the next one hashes more.
  static_cast<void>(Save());
}

bool LocalRecord::SaveTail() {
  std::error_code error;
  if (std::filesystem::file_size(path_, error) != savedSize_ || error) return false;
  const auto later = std::partition(changed_.begin(), changed_.end(),
                                    [this](const std::string& path) { return path <= lastPath_; });
  const auto early = static_cast<std::size_t>(later - changed_.begin());
  if (early >= std::max(kFewChanges, state_.size() / kShareOfEntries)) return false;
  std::sort(later, changed_.end());
  const std::vector<std::string> appended(later, changed_.end());
  changed_.erase(later, changed_.end());
  return appended.empty() || Append(appended);
}

bool LocalRecord::Append(const std::vector<std::string>& paths) {
  std::string text;
  for (const std::string& path : paths) {
    text += kLocalManifestSeparator;
    AppendLocalManifestEntry(text, path, state_.find(path)->second);
  }
  text += kLocalManifestTail;
  // First what lies behind the old text, which nobody reads as long as that is complete; only when that is on
  // the disk the few bytes that open the old text towards it.
  const std::size_t tail = kLocalManifestTail.size();
  if (!WriteAt(path_, savedSize_, std::string_view(text).substr(tail)) || platform::FlushToDisk(path_) != 0 ||
      !WriteAt(path_, savedSize_ - tail, std::string_view(text).substr(0, tail))) {
    return false;
  }
  savedSize_ += text.size() - tail;
  lastPath_ = paths.back();
  return true;
}

bool LocalRecord::Replace(std::string_view text) const {
  return RetryWhileHeld([&] { return ReplaceWholeFile(path_, text); }) == 0;
}

bool LocalRecord::SaveDocument(std::string_view document) {
  changed_.clear();
  savedSize_ = 0;
  return Replace(document) || RemoveFile(path_);
}

}  // namespace patcher
