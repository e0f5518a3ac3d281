#include "update/local_record.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <system_error>

#include "platform/files.h"
#include "shared/own_files.h"
#include "shared/retry_while_held.h"
#include "shared/signing_keys.h"
#include "shared/whole_file.h"

namespace patcher {
namespace {

constexpr std::size_t kFewChanges = 50;
/// A full save waits for this share of the entries, so that the number of written bytes stays proportional to
/// the number of entries.
constexpr std::size_t kShareOfEntries = 100;

bool WriteAt(const std::filesystem::path& path, std::uint64_t offset, std::string_view text) {
  std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
  file.seekp(static_cast<std::streamoff>(offset));
  file.write(text.data(), static_cast<std::streamsize>(text.size()));
  file.close();
  return !file.fail();
}

/// 0 if the file has no number.
std::uint64_t ReadNumber(const std::filesystem::path& file) {
  std::uint64_t number = 0;
  std::ifstream(file) >> number;
  return number;
}

/// Compares block by block, to avoid a second copy of the document in memory.
bool FileHolds(const std::filesystem::path& path, std::string_view text) {
  std::error_code error;
  if (std::filesystem::file_size(path, error) != text.size() || error) return false;
  std::ifstream in(path, std::ios::binary);
  std::array<char, 65536> block;
  while (!text.empty()) {
    const std::size_t size = std::min(block.size(), text.size());
    if (!in.read(block.data(), static_cast<std::streamsize>(size))) return false;
    if (text.substr(0, size) != std::string_view(block.data(), size)) return false;
    text.remove_prefix(size);
  }
  return true;
}

}  // namespace

LocalRecord::LocalRecord(std::filesystem::path path) : path_(std::move(path)) {}

void LocalRecord::Load(const ParsedDocument& parsed) {
  const bool hasKeys = !LauncherKeys().empty();
  loaded_ = true;
  version_ = 0;
  sequence_ = 0;
  savedSize_ = 0;
  state_.clear();
  document_ = parsed.manifest != nullptr && FileHolds(path_, parsed.text) ? parsed.manifest : nullptr;
  if (document_ != nullptr) {
    version_ = document_->version;
    if (hasKeys) sequence_ = document_->sequence;
  } else {
    state_ = LoadLocalManifest(path_, &version_, hasKeys ? &sequence_ : nullptr);
  }
  const bool isEmpty = document_ != nullptr ? document_->files.empty() : state_.empty();
  std::error_code error;
  wasUnreadable_ = isEmpty && std::filesystem::symlink_status(path_, error).type() !=
                                  std::filesystem::file_type::not_found;
  fileSequence_ = hasKeys ? ReadNumber(SequenceFile()) : 0;
  sequence_ = std::max(sequence_, fileSequence_);
}

std::filesystem::path LocalRecord::SequenceFile() const { return path_.parent_path() / kSequenceFile; }

void LocalRecord::SaveSequence() {
  if (sequence_ <= fileSequence_) return;
  // A failure to write the number does not end the run.
  const std::string text = std::to_string(sequence_) + "\n";
  if (RetryWhileHeld([&] { return ReplaceWholeFile(SequenceFile(), text); }) == 0) fileSequence_ = sequence_;
}

const LocalState& LocalRecord::State() {
  if (document_ != nullptr) {
    for (const PatchFile& file : document_->files) {
      state_.insert_or_assign(state_.end(), file.path, file.sha256);
    }
    document_ = nullptr;
  }
  return state_;
}

void LocalRecord::Enter(const std::string& path, const std::string& digest) {
  State();
  const auto [entry, isNew] = state_.try_emplace(path, digest);
  if (!isNew && entry->second != digest) {
    entry->second = digest;
    savedSize_ = 0;  // the file has an old digest for this path
  }
  if (isNew && savedSize_ != 0) changed_.push_back(path);
}

void LocalRecord::Forget(std::string_view path) {
  State();
  const auto entry = state_.find(path);
  if (entry == state_.end()) return;
  state_.erase(entry);
  savedSize_ = 0;
}

bool LocalRecord::Save() {
  SaveSequence();
  const std::string text = RecordText(State(), version_);
  changed_.clear();
  savedSize_ = 0;
  if (!Replace(text)) return false;
  if (!state_.empty()) {
    savedSize_ = text.size();
    lastPath_ = state_.rbegin()->first;
  }
  return true;
}

bool LocalRecord::SaveOrRemove() { return Save() || RemoveFile(path_); }

void LocalRecord::SaveProgress() {
  if (savedSize_ == 0 || !SaveTail()) Save();
}

bool LocalRecord::SaveTail() {
  std::error_code error;
  if (std::filesystem::file_size(path_, error) != savedSize_ || error) return false;
  const auto later = std::partition(changed_.begin(), changed_.end(),
                                    [this](const std::string& path) { return path <= lastPath_; });
  const auto early = static_cast<std::size_t>(later - changed_.begin());
  if (early >= std::max(kFewChanges, state_.size() / kShareOfEntries)) return false;
  std::sort(later, changed_.end());
  const std::vector<std::string> paths(later, changed_.end());
  changed_.erase(later, changed_.end());
  return paths.empty() || Append(paths);
}

bool LocalRecord::Append(const std::vector<std::string>& paths) {
  std::string text;
  for (const std::string& path : paths) {
    text += kRecordSeparator;
    AppendRecordEntry(text, path, state_.find(path)->second);
  }
  text += kRecordTail;
  // First writes the part after the old text: a reader ignores it while the old text is complete. Once that
  // part is on the disk, writes the few bytes that join the two.
  const std::size_t tail = kRecordTail.size();
  if (!WriteAt(path_, savedSize_, std::string_view(text).substr(tail)) || platform::FlushToDisk(path_) != 0 ||
      !WriteAt(path_, savedSize_ - tail, std::string_view(text).substr(0, tail))) {
    return false;
  }
  savedSize_ += text.size() - tail;
  lastPath_ = paths.back();
  return true;
}

bool LocalRecord::Replace(std::string_view text) {
  const auto replace = [&] { return ReplaceWholeFile(path_, text); };
  // If the directory cannot be written to, each of the many saves of a run would wait.
  replaceFailed_ = (replaceFailed_ ? replace() : RetryWhileHeld(replace)) != 0;
  return !replaceFailed_;
}

bool LocalRecord::SaveDocument(std::string_view document) {
  changed_.clear();
  savedSize_ = 0;
  if (!Replace(document)) {
    SaveSequence();
    return false;
  }
  // The document contains the sequence now. If the file stays, its number is lower and does no harm.
  if (fileSequence_ != 0) static_cast<void>(RemoveFile(SequenceFile()));
  fileSequence_ = 0;
  return true;
}

}  // namespace patcher
