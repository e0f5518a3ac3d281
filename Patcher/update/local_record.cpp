#include "update/local_record.h"

#include <algorithm>
#include <fstream>
#include <system_error>

namespace patcher {

LocalRecord::LocalRecord(std::filesystem::path path) : path_(std::move(path)) {}

void LocalRecord::Load() {
  version_ = 0;
  state_ = LoadLocalManifest(path_, &version_);
  saved_.clear();
  changed_ = false;
}

bool LocalRecord::Has(std::string_view path, std::string_view digest) const {
  const auto entry = state_.find(path);
  return entry != state_.end() && entry->second == digest;
}

void LocalRecord::Enter(const std::string& path, const std::string& digest) {
  state_.insert_or_assign(path, digest);
  NoteChange(path);
}

bool LocalRecord::Forget(std::string_view path) {
  const auto entry = state_.find(path);
  if (entry == state_.end()) return false;
  state_.erase(entry);
  saved_.clear();  // it points to the keys, and a shorter text is written as a whole
  return true;
}

void LocalRecord::NoteChange(const std::string& path) {
  if (!changed_ || path < firstChange_) firstChange_ = path;
  changed_ = true;
}

void LocalRecord::Save() {
  if (saved_.empty() || !SaveTail()) SaveWhole();
  changed_ = false;
}

bool LocalRecord::SaveTail() {
  std::error_code error;
  if (std::filesystem::file_size(path_, error) != savedSize_ || error) return false;
  if (!changed_) return true;

  // Everything in front of the lowest changed path stands as it is; the first saved entry at or behind it
  // goes.
  const auto stale =
      std::lower_bound(saved_.begin(), saved_.end(), firstChange_,
                       [](const SavedEntry& entry, const std::string& path) { return *entry.path < path; });
  const bool append = stale == saved_.end();
  const std::uint64_t begin = append ? savedSize_ - kLocalManifestTail.size() : stale->offset;
  saved_.erase(stale, saved_.end());

  std::string text;
  if (append) text += kLocalManifestSeparator;
  const auto first = state_.lower_bound(firstChange_);
  for (auto entry = first; entry != state_.end(); ++entry) {
    if (entry != first) text += kLocalManifestSeparator;
    saved_.push_back({&entry->first, begin + text.size()});
    AppendLocalManifestEntry(text, entry->first, entry->second);
  }
  text += kLocalManifestTail;
  const std::uint64_t size = begin + text.size();

  std::fstream file(path_, std::ios::binary | std::ios::in | std::ios::out);
  file.seekp(static_cast<std::streamoff>(begin));
  file.write(text.data(), static_cast<std::streamsize>(text.size()));
  file.close();
  if (!file || size < savedSize_) return false;
  savedSize_ = size;
  return true;
}

void LocalRecord::SaveWhole() {
  SaveLocalManifest(path_, state_, version_);
  saved_.clear();
  std::uint64_t offset = LocalManifestHead(version_).size();
  std::string text;
  for (const auto& [path, digest] : state_) {
    saved_.push_back({&path, offset});
    text.clear();
    AppendLocalManifestEntry(text, path, digest);
    offset += text.size() + kLocalManifestSeparator.size();
  }
  savedSize_ = state_.empty() ? 0 : offset - kLocalManifestSeparator.size() + kLocalManifestTail.size();
}

}  // namespace patcher
