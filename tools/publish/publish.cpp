#include "publish.h"

#include <algorithm>
#include <fstream>
#include <system_error>

#include "all_cores.h"
#include "archive_writer.h"
#include "client_scan.h"
#include "content_store.h"
#include "download_table.h"
#include "history.h"
#include "manifest_document.h"
#include "platform/standard_streams.h"
#include "platform/text.h"
#include "progress.h"
#include "prune.h"
#include "publish_error.h"

namespace patcher {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMaxListed = 20;

/// An empty work folder while it lives.
class WorkFolder {
 public:
  explicit WorkFolder(ContentStore& store) : store_(store) { store_.OpenForWriting(); }
  ~WorkFolder() { store_.RemoveWorkFolder(); }
  WorkFolder(const WorkFolder&) = delete;
  WorkFolder& operator=(const WorkFolder&) = delete;

 private:
  ContentStore& store_;
};

struct ArchiveCount {
  std::size_t kept = 0;
  std::size_t built = 0;
};

/// One publication on its way.
class Publisher {
 public:
  explicit Publisher(const PublishRequest& request)
      : request_(request), store_(request.www), progress_(request.quiet) {}

  void Run() {
    RefuseNesting();
    previous_ = ReadPublication(store_.ManifestFile());
    RequireNewVersion();
    const ClientScan scan = Scan();
    WorkFolder work(store_);
    KeepHistory();
    StoreContents(scan);
    StoreLauncher();
    BuildArchives();
    RequireUnchanged(scan);
    ReplaceManifest();
    Report();
    if (request_.keep > 0) ReportPruning(Prune(store_, next_, request_.keep));
  }

 private:
  void RefuseNesting() const {
    std::error_code error;
    const fs::path client = fs::weakly_canonical(request_.client, error);
    const fs::path published = fs::weakly_canonical(store_.Root(), error);
    const auto holds = [](const fs::path& outer, const fs::path& inner) {
      return std::mismatch(outer.begin(), outer.end(), inner.begin(), inner.end()).first == outer.end();
    };
    if (holds(client, published) || holds(published, client)) {
      throw PublishError("the client directory and the published folder must not lie in each other");
    }
  }

  void RequireNewVersion() const {
    std::int32_t newest = previous_ ? previous_->manifest.version : 0;
    const std::vector<std::int32_t> published = PublishedVersions(store_);
    if (!published.empty()) newest = std::max(newest, published.front());
    if (request_.version <= newest) {
      throw PublishError("version " + std::to_string(request_.version) + " is not above version " +
                         std::to_string(newest) + ", which has been published");
    }
  }

  ClientScan Scan() {
    ClientScan scan = ScanClient(request_.client);
    for (const std::string& path : scan.skipped) {
      progress_.Notice("not published, since it belongs to an installation: " + path);
    }
    if (!scan.refused.empty()) throw PublishError(ListRefused(scan.refused));
    if (scan.files.empty()) {
      throw PublishError("there is no file to publish in " + platform::Utf8FromPath(request_.client));
    }
    const auto isProgram = [](const ClientFile& file) { return file.path == "Tolmira.exe"; };
    if (std::none_of(scan.files.begin(), scan.files.end(), isProgram)) {
      progress_.Notice("there is no Tolmira.exe: players could not start this game");
    }
    return scan;
  }

  static std::string ListRefused(const std::vector<std::string>& refused) {
    std::string text = "these names cannot be published:";
    for (std::size_t i = 0; i < refused.size() && i < kMaxListed; ++i) text += "\n  " + refused[i];
    if (refused.size() > kMaxListed) {
      text += "\n  and " + std::to_string(refused.size() - kMaxListed) + " more";
    }
    return text;
  }

  /// A run that died behind the replacement of the manifest left no copy of it.
  void KeepHistory() const {
    if (!previous_) return;
    std::error_code error;
    const fs::path copy = HistoryFile(store_, previous_->manifest.version);
    if (!fs::exists(copy, error)) store_.WriteDocument(copy, previous_->text);
  }

  void StoreContents(const ClientScan& scan) {
    std::error_code error;
    const bool anythingStored = !fs::is_empty(store_.Root() / "files", error);
    std::uint64_t bytes = 0;
    for (const ClientFile& file : scan.files) bytes += file.size;
    next_.manifest.version = request_.version;
    next_.manifest.files.resize(scan.files.size());
    progress_.Begin("hashing", scan.files.size(), bytes);
    RunOnAllCores(scan.files.size(), progress_, [&](std::size_t index, FileHasher& hasher) {
      const ClientFile& file = scan.files[index];
      const std::string digest = StoreContent(file, std::to_string(index), anythingStored, hasher);
      next_.manifest.files[index] = {file.path, file.size, digest, ContentStore::FileName(digest)};
      progress_.ItemDone();
    });
    progress_.End();
  }

  /// Stores a file's content unless it is there; returns its digest. Where contents lie already, most are
  /// unchanged: they are read only. Otherwise one pass reads, writes and hashes.
  std::string StoreContent(const ClientFile& file, const std::string& workKey, bool probablyStored,
                           FileHasher& hasher) const {
    if (probablyStored) {
      const FileContent content = hasher.Read(file.place);
      RequireSize(file, content);
      if (store_.Has(ContentStore::FileName(content.digest), content.size)) return content.digest;
    }
    const fs::path copy = store_.WorkFile(workKey);
    const FileContent content = hasher.Copy(file.place, copy);
    RequireSize(file, content);
    if (!probablyStored) hasher.Count(content.size);
    const std::string name = ContentStore::FileName(content.digest);
    if (store_.Has(name, content.size)) {
      fs::remove(copy);
    } else {
      store_.PutInPlace(copy, store_.Place(name));
    }
    return content.digest;
  }

  static void RequireSize(const ClientFile& file, const FileContent& content) {
    if (content.size != file.size) throw PublishError(file.path + " changed while it was being published");
  }

  void StoreLauncher() {
    if (previous_) {
      next_.manifest.patcherVersion = previous_->manifest.patcherVersion;
      next_.manifest.patcherUrl = previous_->manifest.patcherUrl;
    }
    if (!request_.launcher) return;
    const NewLauncher& launcher = *request_.launcher;
    const std::int32_t published = next_.manifest.patcherVersion;
    if (launcher.build < published) {
      throw PublishError("launcher build " + std::to_string(launcher.build) +
                         " is below the published build " + std::to_string(published) +
                         ": no launcher goes back");
    }
    const fs::path copy = store_.WorkFile("launcher");
    FileHasher hasher(progress_);
    const FileContent content = hasher.Copy(launcher.file, copy);
    if (content.size == 0) throw PublishError("the launcher is an empty file");
    WarnOfLauncher(copy, launcher, content.digest);
    const std::string name = ContentStore::LauncherName(content.digest);
    store_.PutInPlace(copy, store_.Place(name));
    next_.manifest.patcherVersion = launcher.build;
    next_.manifest.patcherUrl = name;
  }

  /// Players run what is published here without any test.
  void WarnOfLauncher(const fs::path& file, const NewLauncher& launcher, const std::string& digest) {
    char mark[2] = {};
    std::ifstream(file, std::ios::binary).read(mark, sizeof mark);
    if (mark[0] != 'M' || mark[1] != 'Z') progress_.Notice("the launcher is no Windows program");
    const PatchManifest& manifest = next_.manifest;
    if (launcher.build == manifest.patcherVersion &&
        ContentStore::LauncherName(digest) != manifest.patcherUrl) {
      progress_.Notice(
          "another launcher with the published build number: no player who has it will fetch it");
    }
  }

  void BuildArchives() {
    const Publication* previous = previous_ ? &*previous_ : nullptr;
    const std::vector<PlannedArchive> plan = PlanArchives(next_.manifest, previous, store_, request_.limits);
    std::vector<std::size_t> toBuild;
    std::uint64_t bytes = 0;
    for (std::size_t i = 0; i < plan.size(); ++i) {
      next_.archives.push_back({plan[i].kept != nullptr ? *plan[i].kept : PatchBundle{}, plan[i].since});
      if (plan[i].kept != nullptr) continue;
      toBuild.push_back(i);
      for (const PatchFile* file : plan[i].files) bytes += file->size;
    }
    progress_.Begin("packing", toBuild.size(), bytes);
    RunOnAllCores(toBuild.size(), progress_, [&](std::size_t index, FileHasher& hasher) {
      const std::size_t number = toBuild[index];
      const std::string workKey = "archive" + std::to_string(number);
      next_.archives[number].bundle =
          WriteArchive(store_, plan[number].files, plan[number].since, workKey, hasher);
      progress_.ItemDone();
    });
    progress_.End();
    archiveCount_ = {plan.size() - toBuild.size(), toBuild.size()};
  }

  void RequireUnchanged(const ClientScan& scan) const {
    const std::string path = FirstDifference(scan, ScanClient(request_.client));
    if (!path.empty()) {
      throw PublishError("the client directory changed while it was being published: " + path);
    }
    const auto published = ReadPublication(store_.ManifestFile());
    if (published.has_value() != previous_.has_value() || (published && published->text != previous_->text)) {
      throw PublishError("somebody else published at the same time");
    }
  }

  void ReplaceManifest() {
    next_.text = ManifestText(next_);
    store_.FlushNames();
    store_.WriteDocument(store_.ManifestFile(), next_.text);
    store_.WriteDocument(HistoryFile(store_, request_.version), next_.text);
  }

  void Report() const {
    if (request_.quiet) return;
    std::uint64_t bytes = 0;
    for (const PatchFile& file : next_.manifest.files) bytes += file.size;
    const DownloadCost change = CostOfUpdate(next_, previous_ ? &previous_->manifest : nullptr);
    platform::WriteLine("published version " + std::to_string(request_.version) + ": " +
                        std::to_string(next_.manifest.files.size()) + " files, " + ReadableBytes(bytes) +
                        "; " + std::to_string(change.files) + " new or changed, " +
                        ReadableBytes(change.fileBytes) + "; " + std::to_string(archiveCount_.built) +
                        " archives built, " + std::to_string(archiveCount_.kept) + " kept; launcher build " +
                        std::to_string(next_.manifest.patcherVersion) + "; manifest " +
                        ReadableBytes(next_.text.size()));
    std::string table = DownloadTable(store_, next_);
    table.pop_back();
    platform::WriteLine(table);
  }

  void ReportPruning(const PruneResult& result) const {
    if (request_.quiet) return;
    platform::WriteLine("pruned " + std::to_string(result.files) + " files, " + ReadableBytes(result.bytes));
  }

  const PublishRequest& request_;
  ContentStore store_;
  Progress progress_;
  std::optional<Publication> previous_;
  Publication next_;
  ArchiveCount archiveCount_;
};

}  // namespace

void Publish(const PublishRequest& request) { Publisher(request).Run(); }

}  // namespace patcher
