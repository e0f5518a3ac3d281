#include "history.h"

#include <algorithm>
#include <charconv>
#include <functional>
#include <string>
#include <system_error>

#include "platform/text.h"
#include "publish_error.h"

namespace patcher::publisher {
namespace {

namespace fs = std::filesystem;

std::vector<std::int32_t> VersionsInFolder(const ContentStore& store) {
  std::vector<std::int32_t> versions;
  std::error_code error;
  if (!fs::exists(store.HistoryFolder(), error) && !error) return versions;
  for (fs::directory_iterator entry(store.HistoryFolder(), error), end; !error && entry != end;
       entry.increment(error)) {
    const std::string name = platform::Utf8FromPath(entry->path().stem());
    std::int32_t version = 0;
    const auto [rest, failure] = std::from_chars(name.data(), name.data() + name.size(), version);
    const bool isNumber = failure == std::errc() && rest == name.data() + name.size();
    if (isNumber && version > 0 && entry->path() == HistoryFile(store, version)) versions.push_back(version);
  }
  if (error) throw FileError("cannot list", store.HistoryFolder(), error);
  std::sort(versions.begin(), versions.end(), std::greater<>());
  return versions;
}

/// Raises PublishError if a copy contains another version than its name says.
void RequireCopyOf(std::int32_t version, std::int32_t present, const fs::path& file) {
  if (version == present) return;
  throw PublishError(platform::Utf8FromPath(file) + " is the manifest of version " + std::to_string(present));
}

PublishedVersion ReadVersion(const ContentStore& store, std::int32_t version) {
  const fs::path file = HistoryFile(store, version);
  PublishedVersion entry;
  try {
    const auto head = ReadHead(file);
    if (!head) throw PublishError(platform::Utf8FromPath(file) + " is missing");
    RequireCopyOf(version, head->version, file);
    static_cast<DocumentHead&>(entry) = *head;
  } catch (const PublishError& error) {
    entry.problem = error.what();
    entry.version = version;
  }
  return entry;
}

}  // namespace

fs::path HistoryFile(const ContentStore& store, std::int32_t version) {
  return store.HistoryFolder() / (std::to_string(version) + ".json");
}

Publication ReadCopy(const ContentStore& store, std::int32_t version) {
  const fs::path file = HistoryFile(store, version);
  auto copy = ReadPublication(file);
  if (!copy) throw PublishError(platform::Utf8FromPath(file) + " is missing");
  RequireCopyOf(version, copy->manifest.version, file);
  return std::move(*copy);
}

History ReadHistory(const ContentStore& store) {
  History history;
  for (const std::int32_t version : VersionsInFolder(store)) history.push_back(ReadVersion(store, version));
  return history;
}

const PublishedVersion* FindVersion(const History& history, std::int32_t version) {
  const auto entry = std::find_if(history.begin(), history.end(),
                                  [version](const PublishedVersion& v) { return v.version == version; });
  return entry != history.end() ? &*entry : nullptr;
}

std::vector<const PublishedVersion*> ByTime(const History& history) {
  std::vector<const PublishedVersion*> versions;
  for (const PublishedVersion& version : history) {
    if (!version.held && version.problem.empty()) versions.push_back(&version);
  }
  // Manifests of earlier releases all have sequence 0. The stable sort keeps them ordered by version.
  std::stable_sort(
      versions.begin(), versions.end(),
      [](const PublishedVersion* a, const PublishedVersion* b) { return a->sequence > b->sequence; });
  return versions;
}

std::uint64_t NextSequence(const History& history, const Publication* live) {
  // A copy that cannot be read may have a higher sequence than the others. Gaps do no harm.
  constexpr std::uint64_t kRoomForUnknown = 1000;
  std::uint64_t highest = live != nullptr ? live->sequence : 0;
  std::uint64_t room = 0;
  for (const PublishedVersion& version : history) {
    highest = std::max(highest, version.sequence);
    if (!version.problem.empty()) room += kRoomForUnknown;
  }
  return highest + room + 1;
}

AnnouncedLauncher NewestLauncher(const History& history, const Publication* live) {
  AnnouncedLauncher newest = live != nullptr ? LauncherOf(*live) : AnnouncedLauncher();
  for (const PublishedVersion* version : ByTime(history)) {
    if (version->launcher.build > newest.build) newest = version->launcher;
  }
  return newest;
}

void KeepCopy(const ContentStore& store, const Publication& live) {
  if (live.manifest.version < 1) return;
  const fs::path copy = HistoryFile(store, live.manifest.version);
  try {
    const auto kept = ReadPublication(copy);
    if (kept && kept->text == live.text) return;
  } catch (const PublishError&) {
    // A copy that cannot be read is replaced too.
  }
  store.WriteDocument(copy, live.text);
  store.FlushFolder(store.HistoryFolder());
}

}  // namespace patcher::publisher
