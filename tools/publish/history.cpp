#include "history.h"

#include <algorithm>
#include <charconv>
#include <functional>
#include <string>
#include <system_error>

#include "platform/text.h"

namespace patcher {

namespace fs = std::filesystem;

fs::path HistoryFile(const ContentStore& store, std::int32_t version) {
  return store.HistoryFolder() / (std::to_string(version) + ".json");
}

std::vector<std::int32_t> PublishedVersions(const ContentStore& store) {
  std::vector<std::int32_t> versions;
  std::error_code error;
  for (fs::directory_iterator entry(store.HistoryFolder(), error), end; !error && entry != end;
       entry.increment(error)) {
    const std::string name = platform::Utf8FromPath(entry->path().stem());
    std::int32_t version = 0;
    const auto [rest, failure] = std::from_chars(name.data(), name.data() + name.size(), version);
    const bool whole = failure == std::errc() && rest == name.data() + name.size();
    if (whole && version > 0 && entry->path() == HistoryFile(store, version)) versions.push_back(version);
  }
  std::sort(versions.begin(), versions.end(), std::greater<>());
  return versions;
}

}  // namespace patcher
