#include "publish.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <system_error>

#include "archive_set.h"
#include "client_contents.h"
#include "client_notices.h"
#include "client_scan.h"
#include "content_names.h"
#include "content_store.h"
#include "download_table.h"
#include "dry_run.h"
#include "exclusions.h"
#include "free_space.h"
#include "history.h"
#include "is_below.h"
#include "launcher_file.h"
#include "launcher_store.h"
#include "live_manifest.h"
#include "manifest_document.h"
#include "platform/text.h"
#include "progress_line.h"
#include "prune.h"
#include "publish_error.h"
#include "store_session.h"
#include "version_changes.h"

namespace patcher::publisher {
namespace {

namespace fs = std::filesystem;

/// The steps of one publication.
class Publisher {
 public:
  Publisher(const PublishRequest& request, Report& report)
      : request_(request),
        report_(report),
        store_(request.www),
        progress_(request.quiet),
        signer_(request.signing, request.www) {}

  void Run() {
    RequireFolders();
    if (request_.launcher) {
      launcherBuild_ = LauncherBuild(request_.launcher->file, request_.launcher->build);
    }
    Exclusions exclusions(request_.client, request_.excluded);
    std::optional<StoreSession> session;
    if (!request_.dryRun) session.emplace(store_);
    ReadStore();
    ChooseVersion();
    RequireLauncherOrder();
    // A held version is signed when it goes live, and a dry run needs no key.
    if (!request_.hold && !request_.dryRun) {
      signer_.RequireKeyAfter(Previous());
      signer_.NoticeOtherKey(Previous(), progress_);
    }
    const ClientScan scan = ScanClient(request_.client, exclusions);
    PrintNotices(scan, exclusions, progress_);
    if (IsPublished(scan)) {
      report_.Add("already", MiniJson::Value::MakeBool(true));
      Finish(Name() + " is already published", Previous());
      return;
    }
    RequireSpace(scan, store_, progress_);
    ReadNames();
    if (request_.dryRun) {
      Forecast(scan);
      return;
    }
    if (previous_) KeepCopy(store_, *previous_);
    Prepare(scan);
    RequireUnchanged(scan, ScanClient(request_.client, exclusions));
    Commit();
  }

 private:
  void RequireFolders() const {
    std::error_code error;
    if (!fs::is_directory(request_.client, error)) {
      throw PublishError("the client directory " + platform::Utf8FromPath(request_.client) +
                         " is not a directory");
    }
    if (IsBelow(store_.Root(), request_.client) || IsBelow(request_.client, store_.Root())) {
      throw PublishError("the client directory and the published folder must not contain each other");
    }
    const auto has = [&](const char* name) { return fs::exists(request_.www / name, error); };
    if (has("history") && (has("f") || has("files"))) {
      throw PublishError(platform::Utf8FromPath(request_.www) +
                         " is itself a published folder: --out takes the folder above it");
    }
    RequireKeyOutside(request_.signing, request_.client);
  }

  void ReadStore() {
    history_ = ReadHistory(store_);
    for (const PublishedVersion& version : history_) {
      if (!version.problem.empty()) {
        progress_.Notice("the history is damaged; delete this copy, or get it from a backup: " +
                         version.problem);
      }
    }
    previous_ = request_.dryRun ? FindLive(store_, history_) : ReadLive(store_, history_, progress_);
    newestLauncher_ = NewestLauncher(history_, Previous());
  }

  /// The highest published version that is known.
  std::int32_t HighestVersion() const {
    const std::int32_t live = previous_ ? previous_->manifest.version : 0;
    return history_.empty() ? live : std::max(live, history_.front().version);
  }

  void ChooseVersion() {
    if (!request_.version && HighestVersion() == std::numeric_limits<std::int32_t>::max()) {
      throw PublishError("there is no number above the highest version");
    }
    version_ = request_.version ? *request_.version : HighestVersion() + 1;
    report_.Add("version", static_cast<std::uint64_t>(version_));
  }

  std::string Name() const { return "version " + std::to_string(version_); }

  const Publication* Previous() const { return previous_ ? &*previous_ : nullptr; }

  void RequireLauncherOrder() const {
    if (!request_.launcher || request_.allowOlderLauncher || launcherBuild_ >= newestLauncher_.build) return;
    throw PublishError("launcher build " + std::to_string(launcherBuild_) + " is below build " +
                       std::to_string(newestLauncher_.build) +
                       ", which has been published, and launchers never go back; --allow-older-launcher "
                       "announces it nevertheless");
  }

  /// Whether an earlier run has published this version of this client. Raises PublishError if the number was
  /// used for something else.
  bool IsPublished(const ClientScan& scan) {
    const PublishedVersion* copy = FindVersion(history_, version_);
    const bool isHeld = copy != nullptr && copy->held;
    std::optional<Publication> published;
    if (previous_ && previous_->manifest.version == version_) {
      if (!request_.hold) published = previous_;
    } else if (isHeld && request_.hold) {
      published = ReadCopy(store_, version_);
    }
    if (published) {
      RequireSame(*published, scan);
      RequireSignature(*published);
      return true;
    }
    if (isHeld) {
      throw PublishError(Name() + " is already held; make it live with --live " + std::to_string(version_));
    }
    if (version_ > HighestVersion()) return false;
    throw PublishError(Name() + " is not above version " + std::to_string(HighestVersion()) +
                       ", which has been published");
  }

  void RequireSame(const Publication& published, const ClientScan& scan) {
    const std::vector<PatchFile>& before = published.manifest.files;
    const auto sameSize = [](const PatchFile& a, const ClientFile& b) {
      return a.path == b.path && a.size == b.size;
    };
    bool same = std::equal(before.begin(), before.end(), scan.files.begin(), scan.files.end(), sameSize);
    if (same) {
      const std::vector<PatchFile> files = HashContents(scan, names_, progress_);
      same = std::equal(before.begin(), before.end(), files.begin(), files.end(),
                        [](const PatchFile& a, const PatchFile& b) { return a.sha256 == b.sha256; });
    }
    if (same && request_.launcher) {
      same = ContentStore::LauncherName(FileHasher(progress_).Read(request_.launcher->file).digest) ==
             published.manifest.patcherUrl;
    }
    if (!same) {
      throw PublishError(Name() +
                         " has been published with other contents: a new version needs a number above it");
    }
  }

  void RequireSignature(const Publication& published) const {
    if (signer_.Accepts(published)) return;
    throw PublishError(Name() + " has been published with another signature, or without one: --live " +
                       std::to_string(version_) + " publishes it anew");
  }

  /// A published name must never get another content.
  void ReadNames() {
    if (previous_) names_.Add(*previous_);
    for (const PublishedVersion& version : history_) {
      if (version.problem.empty()) names_.Add(ReadCopy(store_, version.version));
    }
  }

  void Prepare(const ClientScan& scan) {
    VerifiedContents verified(store_);
    next_.manifest.version = version_;
    next_.manifest.files = StoreContents(scan, store_, names_, verified, progress_);
    Announce(next_, Launcher());
    ArchiveSet set = MakeArchives(next_.manifest, Previous(), store_, verified, request_.limits, progress_);
    next_.archives = std::move(set.archives);
    archivesKept_ = set.kept;
    archivesBuilt_ = set.built;
    next_.sequence = NextSequence(history_, Previous());
    next_.held = request_.hold;
    next_.text = signer_.WithSignature(ManifestText(next_));
  }

  void Forecast(const ClientScan& scan) {
    next_.manifest.version = version_;
    next_.manifest.files = HashContents(scan, names_, progress_);
    next_.sequence = NextSequence(history_, Previous());
    Announce(next_, PublishedLauncher());
    std::uint64_t launcherBytes = 0;
    if (request_.launcher) {
      const FileContent content = FileHasher(progress_).Read(request_.launcher->file);
      Announce(next_, {launcherBuild_, ContentStore::LauncherName(content.digest), content.digest});
      if (!store_.Has(next_.manifest.patcherUrl, content.size)) launcherBytes = content.size;
    }
    ReportDryRun({store_, history_, Previous(), request_.limits, std::move(next_), launcherBytes}, report_);
  }

  /// The launcher that stays if the request has none.
  AnnouncedLauncher PublishedLauncher() const {
    return request_.allowOlderLauncher && previous_ ? LauncherOf(*previous_) : newestLauncher_;
  }

  AnnouncedLauncher Launcher() {
    if (!request_.launcher) return VerifyLauncher(PublishedLauncher(), store_, progress_);
    AnnouncedLauncher launcher = StoreLauncher(request_.launcher->file, launcherBuild_, store_, progress_);
    if (launcher.build == newestLauncher_.build && launcher.name != newestLauncher_.name) {
      progress_.Notice("another launcher with the published build number: players who have it keep it");
    }
    return launcher;
  }

  void RequireUnchanged(const ClientScan& before, const ClientScan& after) const {
    const std::string path = FirstDifference(before, after);
    if (!path.empty()) {
      throw PublishError("the client directory changed while it was being published: " + path);
    }
    // Somebody may have replaced it by hand, or a machine that does not share the lock.
    const auto live = ReadManifest(store_);
    if (live && (!previous_ || live->text != previous_->text)) {
      throw PublishError("version.json was replaced by another program in the meantime");
    }
  }

  void Commit() {
    std::string done = "published " + Name();
    if (request_.hold) {
      store_.FlushNames();
      store_.WriteDocument(HistoryFile(store_, version_), next_.text);
      done += ", held";
      DoLaterStep(done, [&] { store_.FlushFolder(store_.HistoryFolder()); });
    } else {
      PutLive(store_, next_);
    }
    Finish(done, request_.hold ? Previous() : &next_);
  }

  /// The steps after the publication. `live` is what players get now; null if they get nothing.
  void Finish(const std::string& done, const Publication* live) {
    DoLaterStep(done, [&] {
      report_.Line(done + Summary());
      if (live == nullptr || request_.dryRun) return;
      if (live == Previous()) KeepCopy(store_, *live);
      if (request_.keep == 0) return;
      const bool replaced = live != Previous() && previous_;
      ReportPruned(Prune(store_, *live, replaced ? std::optional(previous_->manifest.version) : std::nullopt,
                         request_.keep),
                   report_);
    });
  }

  /// What this run has published: the rest of the result line, and the table. Empty if nothing.
  std::string Summary() {
    if (next_.text.empty()) return {};
    Amount all;
    for (const PatchFile& file : next_.manifest.files) all.Add(file.size);
    const VersionChanges changes =
        CompareVersions(previous_ ? &previous_->manifest : nullptr, next_.manifest);
    const std::vector<DownloadRow> rows = DownloadRows(store_, history_, next_);
    report_.Add("already", MiniJson::Value::MakeBool(false));
    report_.Add("held", MiniJson::Value::MakeBool(next_.held));
    report_.Add("client", JsonAmount(all.files, all.bytes));
    report_.Add("changes", JsonChanges(changes));
    report_.Add("archivesBuilt", archivesBuilt_);
    report_.Add("archivesKept", archivesKept_);
    report_.Add("launcherBuild", static_cast<std::uint64_t>(next_.manifest.patcherVersion));
    report_.Add("manifestBytes", next_.text.size());
    report_.Add("downloads", JsonDownloads(rows));
    return ": " + Counted(all.files, "file") + ", " + ReadableBytes(all.bytes) + "; " +
           std::to_string(changes.files.size()) + " new or changed, " +
           ReadableBytes(changes.added.bytes + changes.changed.bytes) + "; " +
           std::to_string(changes.removed.files) + " removed; " + Counted(archivesBuilt_, "archive") +
           " built, " + std::to_string(archivesKept_) + " kept; launcher build " +
           std::to_string(next_.manifest.patcherVersion) + "; manifest " + ReadableBytes(next_.text.size()) +
           "\n" + DownloadTable(rows);
  }

  const PublishRequest& request_;
  Report& report_;
  const ContentStore store_;
  Progress progress_;
  const DocumentSigner signer_;
  ContentNames names_;
  std::int32_t version_ = 0;
  std::int32_t launcherBuild_ = 0;  ///< of the request's launcher
  History history_;
  std::optional<Publication> previous_;  ///< what is live
  AnnouncedLauncher newestLauncher_;
  Publication next_;
  std::size_t archivesKept_ = 0;
  std::size_t archivesBuilt_ = 0;
};

}  // namespace

void Publish(const PublishRequest& request, Report& report) { Publisher(request, report).Run(); }

}  // namespace patcher::publisher
