#include "update/archive_choice.h"

#include <algorithm>

namespace patcher {

ArchiveChoice ChooseArchives(const std::vector<const PatchBundle*>& archives,
                             const std::set<std::string, std::less<>>& wanted, std::uint64_t wantedBytes) {
  ArchiveChoice choice;
  for (const PatchBundle* archive : archives) {
    const bool useful = std::any_of(archive->files.begin(), archive->files.end(),
                                    [&](const std::string& path) { return wanted.count(path) != 0; });
    if (!useful) continue;
    choice.archives.push_back(archive);
    choice.bytes += archive->size;
  }
  choice.isCheaper = !choice.archives.empty() && choice.bytes < wantedBytes;
  return choice;
}

}  // namespace patcher
