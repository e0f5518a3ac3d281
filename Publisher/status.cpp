#include "status.h"

#include <optional>
#include <string>
#include <system_error>

#include "content_store.h"
#include "download_table.h"
#include "history.h"
#include "live_manifest.h"
#include "progress_line.h"
#include "prune.h"
#include "publish_error.h"
#include "store_session.h"
#include "version_changes.h"

namespace patcher::publisher {
namespace {

namespace fs = std::filesystem;

using MiniJson::Value;

Amount FilesBelow(const fs::path& folder) {
  Amount amount;
  std::error_code error;
  if (!fs::exists(folder, error) && !error) return amount;
  for (fs::recursive_directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    if (entry->is_regular_file(error)) amount.Add(entry->file_size(error));
  }
  if (error) throw FileError("cannot list", folder, error);
  return amount;
}

class Status {
 public:
  Status(const fs::path& www, bool quiet, Report& report) : store_(www), progress_(quiet), report_(report) {}

  void Run(std::size_t keep) {
    RequireStore(store_);
    history_ = ReadHistory(store_);
    live_ = ReadManifest(store_);
    ReportLive();
    ReportHistory();
    ReportStore();
    if (!live_) return;
    const std::vector<DownloadRow> rows = DownloadRows(store_, history_, *live_);
    report_.Line(DownloadTable(rows));
    report_.Add("downloads", JsonDownloads(rows));
    ReportPruning(keep);
  }

 private:
  void ReportLive() {
    if (!live_) {
      const auto versions = ByTime(history_);
      report_.Line("live:      nothing" +
                   (versions.empty() ? std::string()
                                     : ": version.json is missing; --live " +
                                           std::to_string(versions.front()->version) + " makes it again"));
      report_.Add("live", Value());
      return;
    }
    const PatchManifest& manifest = live_->manifest;
    Amount files;
    Amount archives;
    for (const PatchFile& file : manifest.files) files.Add(file.size);
    for (const PublishedArchive& archive : live_->archives) archives.Add(archive.bundle.size);
    Value live = Value::MakeObject();
    live.Set("version", JsonNumber(static_cast<std::uint64_t>(manifest.version)));
    live.Set("sequence", JsonNumber(live_->sequence));
    live.Set("client", JsonAmount(files.files, files.bytes));
    live.Set("archives", JsonAmount(archives.files, archives.bytes));
    live.Set("manifestBytes", JsonNumber(live_->text.size()));
    live.Set("launcherBuild", JsonNumber(static_cast<std::uint64_t>(manifest.patcherVersion)));
    live.Set("launcher", Value::MakeString(manifest.patcherUrl));
    report_.Add("live", std::move(live));
    report_.Line("live:      version " + std::to_string(manifest.version) + ", " + Text(files) + ", " +
                 Counted(archives.files, "archive") + ", " + ReadableBytes(archives.bytes) + "; manifest " +
                 ReadableBytes(live_->text.size()));
    report_.Line("launcher:  " +
                 (manifest.patcherUrl.empty()
                      ? "none"
                      : "build " + std::to_string(manifest.patcherVersion) + ", " + manifest.patcherUrl));
  }

  void ReportHistory() {
    std::string held;
    std::string others;
    Value list = Value::MakeArray();
    for (const PublishedVersion& version : history_) {
      Value value = Value::MakeObject();
      value.Set("version", JsonNumber(static_cast<std::uint64_t>(version.version)));
      value.Set("held", Value::MakeBool(version.held));
      value.Set("launcherBuild", JsonNumber(static_cast<std::uint64_t>(version.launcher.build)));
      if (!version.problem.empty()) {
        value.Set("problem", Value::MakeString(version.problem));
        progress_.Notice("the history is damaged: " + version.problem);
      }
      list.arrayItems.push_back(std::move(value));
      (version.held ? held : others) += " " + std::to_string(version.version);
    }
    report_.Add("history", std::move(list));
    report_.Line("held:     " + (held.empty() ? " none" : held));
    report_.Line("history:  " + (others.empty() ? " none" : others));
  }

  void ReportStore() {
    Amount contents = FilesBelow(store_.Root() / "f");
    const Amount old = FilesBelow(store_.Root() / "files");
    contents.files += old.files;
    contents.bytes += old.bytes;
    const Amount archives = FilesBelow(store_.Root() / "archives");
    const Amount launchers = FilesBelow(store_.Root() / "launcher");
    Value value = Value::MakeObject();
    value.Set("contents", JsonAmount(contents.files, contents.bytes));
    value.Set("archives", JsonAmount(archives.files, archives.bytes));
    value.Set("launchers", JsonAmount(launchers.files, launchers.bytes));
    report_.Add("store", std::move(value));
    report_.Line("store:     contents " + Text(contents) + "; archives " + Text(archives) + "; launchers " +
                 Text(launchers));
  }

  void ReportPruning(std::size_t keep) {
    PruneResult pruning;
    try {
      pruning = ForecastPruning(store_, *live_, keep);
    } catch (const PublishError& error) {
      progress_.Notice(error.what());
      report_.Add("pruning", Value());
      return;
    }
    Value value = JsonAmount(pruning.files, pruning.bytes);
    value.Set("keep", JsonNumber(keep));
    report_.Add("pruning", std::move(value));
    report_.Line("--prune --keep " + std::to_string(keep) + " would delete " +
                 Counted(pruning.files, "file") + ", " + ReadableBytes(pruning.bytes));
  }

  static std::string Text(const Amount& amount) {
    return Counted(amount.files, "file") + ", " + ReadableBytes(amount.bytes);
  }

  const ContentStore store_;
  Progress progress_;
  Report& report_;
  History history_;
  std::optional<Publication> live_;
};

}  // namespace

void ReportStatus(const fs::path& www, std::size_t keep, bool quiet, Report& report) {
  Status(www, quiet, report).Run(keep);
}

}  // namespace patcher::publisher
