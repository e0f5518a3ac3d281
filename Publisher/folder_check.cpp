#include "folder_check.h"

#include <system_error>
#include <unordered_map>

#include "all_cores.h"
#include "archive_check.h"
#include "content_check.h"
#include "content_store.h"
#include "document_check.h"
#include "findings.h"
#include "history.h"
#include "live_manifest.h"
#include "platform/text.h"
#include "progress_line.h"
#include "publish_error.h"
#include "report.h"

namespace patcher::publisher {
namespace {

namespace fs = std::filesystem;

class FolderChecker {
 public:
  FolderChecker(const fs::path& www, bool quiet) : store_(www), progress_(quiet) {}

  CheckResult Run() {
    const History history = ReadHistory(store_);
    ReadLive(history);
    CheckDocument(live_, findings_);
    ContentCheck contents(store_, progress_, findings_);
    contents.Add(live_, "");
    AddHistory(history, contents);
    contents.AddOtherContents();
    contents.Run();
    CheckArchives(contents);
    return {Summary(history), findings_.Sorted()};
  }

 private:
  void ReadLive(const History& history) {
    auto live = ReadManifest(store_);
    if (live) {
      live_ = std::move(*live);
      return;
    }
    std::string problem =
        "nothing is published: there is no " + platform::Utf8FromPath(store_.ManifestFile());
    const auto versions = ByTime(history);
    if (!versions.empty()) {
      problem += "; --live " + std::to_string(versions.front()->version) +
                 " makes the version live that was live last";
    }
    throw PublishError(problem);
  }

  /// Every version with a copy may go live again, so its contents are checked too.
  void AddHistory(const History& history, ContentCheck& contents) {
    for (const PublishedVersion& version : history) {
      if (!version.problem.empty()) {
        findings_.Add("history", version.problem);
      } else {
        contents.Add(ReadCopy(store_, version.version), "version " + std::to_string(version.version) + ", ");
      }
    }
  }

  /// Unpacks the archives of the live version.
  void CheckArchives(const ContentCheck& contents) {
    std::unordered_map<std::string_view, const PatchFile*> files;
    for (const PatchFile& file : live_.manifest.files) files.emplace(file.path, &file);
    std::vector<std::vector<const PatchFile*>> expected;
    std::vector<std::uint64_t> sizes;
    for (const PublishedArchive& archive : live_.archives) {
      expected.emplace_back();
      sizes.push_back(0);
      for (const std::string& path : archive.bundle.files) {
        const auto file = files.find(path);
        if (file == files.end()) continue;
        expected.back().push_back(file->second);
        sizes.back() += file->second->size;
      }
    }
    RunOnAllCores("unpacking archives", sizes, progress_, [&](std::size_t index, FileHasher& hasher) {
      const std::string& name = live_.archives[index].bundle.name;
      if (!contents.IsSound(name)) return;
      for (const std::string& finding : ArchiveFindings(store_.Place(name), expected[index], hasher)) {
        findings_.Add("archive " + name, "it " + finding);
      }
    });
  }

  std::string Summary(const History& history) const {
    return "version " + std::to_string(live_.manifest.version) + ": " +
           Counted(live_.manifest.files.size(), "file") + ", " + Counted(live_.archives.size(), "archive") +
           ", launcher build " + std::to_string(live_.manifest.patcherVersion) + "; " +
           Counted(history.size(), "version") + " in the history";
  }

  const ContentStore store_;
  Progress progress_;
  Findings findings_;
  Publication live_;
};

}  // namespace

CheckResult CheckPublication(const fs::path& www, bool quiet) {
  std::error_code error;
  if (!fs::is_directory(www, error)) {
    throw PublishError(platform::Utf8FromPath(www) +
                       " is not a folder; the address of a server begins with https://");
  }
  return FolderChecker(www, quiet).Run();
}

}  // namespace patcher::publisher
