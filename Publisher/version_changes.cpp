#include "version_changes.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

namespace patcher::publisher {

VersionChanges CompareVersions(const PatchManifest* before, const PatchManifest& after) {
  std::unordered_map<std::string_view, const PatchFile*> missing;
  if (before != nullptr) {
    for (const PatchFile& file : before->files) missing.emplace(file.path, &file);
  }
  VersionChanges changes;
  for (const PatchFile& file : after.files) {
    const auto old = missing.find(file.path);
    const bool isNew = old == missing.end();
    if (isNew || old->second->sha256 != file.sha256) {
      (isNew ? changes.added : changes.changed).Add(file.size);
      changes.files.push_back({&file, isNew});
    }
    if (!isNew) missing.erase(old);
  }
  for (const auto& [path, file] : missing) changes.removed.Add(file->size);
  return changes;
}

std::vector<VersionChanges::File> LargestChanges(const VersionChanges& changes, std::size_t count) {
  std::vector<VersionChanges::File> files = changes.files;
  std::stable_sort(files.begin(), files.end(),
                   [](const auto& a, const auto& b) { return a.file->size > b.file->size; });
  if (files.size() > count) files.resize(count);
  return files;
}

MiniJson::Value JsonChanges(const VersionChanges& changes) {
  MiniJson::Value value = MiniJson::Value::MakeObject();
  value.Set("added", JsonAmount(changes.added.files, changes.added.bytes));
  value.Set("changed", JsonAmount(changes.changed.files, changes.changed.bytes));
  value.Set("removed", JsonAmount(changes.removed.files, changes.removed.bytes));
  return value;
}

}  // namespace patcher::publisher
