#include "update/local_record.h"

#include <algorithm>
#include <fstream>
#include <system_error>

namespace patcher {
namespace {

bool ByPath(LocalState::const_iterator a, LocalState::const_iterator b) { return a->first < b->first; }

}  // namespace

LocalRecord::LocalRecord(std::filesystem::path path) : path_(std::move(path)) {}

void LocalRecord::Load(const ParsedDocument& parsed) {
  version_ = 0;
  state_ = LoadLocalManifest(path_, &version_, parsed);
  Restart();
}

bool LocalRecord::Has(std::string_view path, std::string_view digest) const {
  const auto entry = state_.find(path);
  return entry != state_.end() && entry->second == digest;
}

void LocalRecord::Enter(const std::string& path, const std::string& digest) {
  changes_.push_back(state_.insert_or_assign(path, digest).first);
}

bool LocalRecord::Forget(std::string_view path) {
  const auto entry = state_.find(path);
  if (entry == state_.end()) return false;
  Restart();  // the lists point to the entry, and a shorter text is written as a whole
  state_.erase(entry);
  return true;
}

void LocalRecord::Restart() {
  text_.clear();
  saved_.clear();
  changes_.clear();
}

void LocalRecord::Save() {
  if (saved_.empty() || !SaveTail()) SaveWhole();
  changes_.clear();
}

bool LocalRecord::SaveTail() {
  std::error_code error;
  if (std::filesystem::file_size(path_, error) != text_.size() || error) return false;
  if (changes_.empty()) return true;

  std::sort(changes_.begin(), changes_.end(), ByPath);
  changes_.erase(std::unique(changes_.begin(), changes_.end()), changes_.end());
  // Everything in front of the lowest changed path stands as it is.
  const auto stale = std::lower_bound(
      saved_.begin(), saved_.end(), changes_.front(),
      [](const SavedEntry& saved, LocalState::const_iterator change) { return ByPath(saved.entry, change); });
  const bool append = stale == saved_.end();
  const std::size_t begin = append ? text_.size() - kLocalManifestTail.size() : stale->begin;
  const std::size_t oldSize = text_.size();
  const std::string oldText = text_.substr(begin);
  const std::vector<SavedEntry> oldEntries(stale, saved_.end());
  text_.resize(begin);
  saved_.erase(stale, saved_.end());

  if (append) text_ += kLocalManifestSeparator;
  MergeChanges(oldText, oldEntries, begin);
  text_ += kLocalManifestTail;
  return text_.size() >= oldSize && WriteFrom(begin);
}

void LocalRecord::MergeChanges(std::string_view oldText, const std::vector<SavedEntry>& oldEntries,
                               std::size_t oldBegin) {
  const std::size_t textBegin = text_.size();
  const auto separate = [&] {
    if (text_.size() != textBegin) text_ += kLocalManifestSeparator;
  };
  auto change = changes_.begin();
  for (std::size_t i = 0; i < oldEntries.size(); ++i) {
    const LocalState::const_iterator old = oldEntries[i].entry;
    for (; change != changes_.end() && ByPath(*change, old); ++change) {
      separate();
      AppendEntry(*change);
    }
    separate();
    if (change != changes_.end() && *change == old) {
      AppendEntry(*change++);
      continue;
    }
    const bool last = i + 1 == oldEntries.size();
    const std::size_t from = oldEntries[i].begin - oldBegin;
    const std::size_t to = last ? oldText.size() - kLocalManifestTail.size()
                                : oldEntries[i + 1].begin - oldBegin - kLocalManifestSeparator.size();
    saved_.push_back({old, text_.size()});
    text_ += oldText.substr(from, to - from);
  }
  for (; change != changes_.end(); ++change) {
    separate();
    AppendEntry(*change);
  }
}

void LocalRecord::AppendEntry(LocalState::const_iterator entry) {
  saved_.push_back({entry, text_.size()});
  AppendLocalManifestEntry(text_, entry->first, entry->second);
}

bool LocalRecord::WriteFrom(std::size_t begin) {
  std::fstream file(path_, std::ios::binary | std::ios::in | std::ios::out);
  file.seekp(static_cast<std::streamoff>(begin));
  file.write(text_.data() + begin, static_cast<std::streamsize>(text_.size() - begin));
  file.close();
  return !file.fail();
}

void LocalRecord::SaveWhole() {
  SaveLocalManifest(path_, state_, version_);
  Restart();
  if (state_.empty()) return;
  text_ = LocalManifestHead(version_);
  for (auto entry = state_.cbegin(); entry != state_.cend(); ++entry) {
    if (entry != state_.cbegin()) text_ += kLocalManifestSeparator;
    AppendEntry(entry);
  }
  text_ += kLocalManifestTail;
}

}  // namespace patcher
