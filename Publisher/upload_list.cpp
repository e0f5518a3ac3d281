#include "upload_list.h"

#include <optional>
#include <set>
#include <system_error>

#include "content_store.h"
#include "history.h"
#include "live_manifest.h"
#include "manifest_document.h"
#include "platform/text.h"
#include "publish_error.h"
#include "serving_rules.h"

namespace patcher::publisher {
namespace {

namespace fs = std::filesystem;

/// The sorted names of a publication's contents, by kind, in the order in which they must be uploaded.
struct NamesByKind {
  std::set<std::string> files;
  std::set<std::string> archives;
  std::set<std::string> launchers;
};

NamesByKind NamesOf(const Publication& publication) {
  NamesByKind names;
  for (const PatchFile& file : publication.manifest.files) names.files.insert(file.url);
  for (const PublishedArchive& archive : publication.archives) names.archives.insert(archive.bundle.name);
  const std::string& launcher = publication.manifest.patcherUrl;
  if (!launcher.empty()) names.launchers.insert(launcher);
  return names;
}

void AddLine(std::vector<std::string>& list, const ContentStore& store, const std::string& name,
             const ServingRule& rule) {
  std::error_code error;
  const std::uint64_t size = fs::file_size(store.Place(name), error);
  if (error) throw FileError("cannot list", store.Place(name), error);
  list.push_back("patch/" + name + "\t" + std::to_string(size) + "\t" + std::string(rule.contentType) + "\t" +
                 std::string(rule.cacheControl));
}

void AddNew(std::vector<std::string>& list, const ContentStore& store, const std::set<std::string>& names,
            const std::set<std::string>& oldNames) {
  for (const std::string& name : names) {
    if (oldNames.count(name) == 0) AddLine(list, store, name, kContentRule);
  }
}

}  // namespace

std::vector<std::string> UploadList(const fs::path& www, std::int32_t since) {
  const ContentStore store(www);
  const std::optional<Publication> live = ReadManifest(store);
  if (!live) {
    throw PublishError("nothing is live: there is no " + platform::Utf8FromPath(store.ManifestFile()));
  }
  std::error_code error;
  if (since != 0 && !fs::exists(HistoryFile(store, since), error)) {
    throw PublishError("the history has no version " + std::to_string(since) +
                       "; --list-upload 0 lists everything");
  }
  const NamesByKind oldNames = since == 0 ? NamesByKind() : NamesOf(ReadCopy(store, since));
  const NamesByKind names = NamesOf(*live);
  std::vector<std::string> list;
  AddNew(list, store, names.files, oldNames.files);
  AddNew(list, store, names.archives, oldNames.archives);
  // Going live may have replaced the launcher in the old version's copy by one that the server lacks.
  AddNew(list, store, names.launchers, {});
  AddLine(list, store, "version.json", kManifestRule);
  return list;
}

}  // namespace patcher::publisher
