#include "go_live.h"

#include <optional>
#include <string>
#include <vector>

#include "content_check.h"
#include "content_store.h"
#include "document_check.h"
#include "download_table.h"
#include "findings.h"
#include "history.h"
#include "launcher_store.h"
#include "live_manifest.h"
#include "progress_line.h"
#include "prune.h"
#include "publish_error.h"
#include "store_session.h"

namespace patcher::publisher {
namespace {

class LiveSwitch {
 public:
  LiveSwitch(const GoLiveRequest& request, Report& report)
      : request_(request),
        report_(report),
        store_(request.www),
        progress_(request.quiet),
        signer_(request.signing, request.www) {}

  void Run() {
    RequireStore(store_);
    const StoreSession session(store_);
    ReadCurrent();
    if (live_) KeepCopy(store_, *live_);
    history_ = ReadHistory(store_);
    ReadNext();
    Verify();
    const bool already = IsLive();
    report_.Add("version", static_cast<std::uint64_t>(request_.version));
    report_.Add("already", MiniJson::Value::MakeBool(already));
    if (already) {
      Finish(Name() + " is live already", std::nullopt);
      return;
    }
    next_.sequence = NextSequence(history_, Live());
    next_.text = signer_.WithSignature(ManifestText(next_));
    PutLive(store_, next_);
    Finish(Name() + " is live" + Summary(), live_ ? std::optional(live_->manifest.version) : std::nullopt);
  }

 private:
  const Publication* Live() const { return live_ ? &*live_ : nullptr; }
  std::string Name() const { return "version " + std::to_string(request_.version); }

  /// Going live also replaces a damaged manifest, so that is not an error.
  void ReadCurrent() {
    try {
      live_ = ReadPublication(store_.ManifestFile());
    } catch (const PublishError& error) {
      progress_.Notice(std::string("the present manifest is replaced: ") + error.what());
    }
  }

  void ReadNext() {
    if (FindVersion(history_, request_.version) == nullptr) {
      throw PublishError("the history has no " + Name() + ListOfVersions());
    }
    next_ = ReadCopy(store_, request_.version);
    RequireKey();
    next_.held = false;
    if (!request_.allowOlderLauncher) {
      const AnnouncedLauncher newest = NewestLauncher(history_, Live());
      if (newest.build > next_.manifest.patcherVersion) Announce(next_, newest);
    }
  }

  /// Players may have a launcher that expects signatures if the last live version or this copy is signed.
  void RequireKey() {
    std::optional<Publication> last = live_;
    const auto versions = ByTime(history_);
    if (!last && !versions.empty()) last = ReadCopy(store_, versions.front()->version);
    if (last) {
      signer_.RequireKeyAfter(&*last);
      signer_.NoticeOtherKey(&*last, progress_);
    }
    signer_.RequireKeyAfter(&next_);
  }

  std::string ListOfVersions() const {
    std::string text;
    for (const PublishedVersion& version : history_) {
      text += (text.empty() ? "; it has " : ", ") + std::to_string(version.version);
    }
    return text;
  }

  /// The content of archives was verified when they were packed, so their digests are enough.
  void Verify() {
    Findings findings;
    CheckDocument(next_, findings);
    ContentCheck contents(store_, progress_, findings);
    contents.Add(next_, "");
    contents.Run();
    const std::vector<std::string> sentences = findings.Sorted();
    if (!sentences.empty()) {
      throw PublishError(Name() + " cannot go live, " + Counted(sentences.size(), "finding") + ": " +
                         sentences.front());
    }
    Announce(next_, VerifyLauncher(LauncherOf(next_), store_, progress_));
  }

  /// Compares the JSON values without white space. Of the text after them only the signature counts.
  bool IsLive() {
    if (!live_ || live_->manifest.version != request_.version) return false;
    next_.sequence = live_->sequence;
    return JsonText(*live_) == JsonText(next_) && signer_.Accepts(*live_);
  }

  std::string Summary() {
    report_.Add("launcherBuild", static_cast<std::uint64_t>(next_.manifest.patcherVersion));
    std::string text = ": launcher build " + std::to_string(next_.manifest.patcherVersion);
    if (!live_) return text;
    const DownloadRow row{live_->manifest.version, CostOfUpdate(next_, &live_->manifest)};
    report_.Add("downloads", JsonDownloads({row}));
    return text + "; players of version " + std::to_string(row.version) + " fetch " +
           Counted(row.cost.files, "file") + ", " + ReadableBytes(row.cost.bytes);
  }

  void Finish(const std::string& done, std::optional<std::int32_t> before) {
    report_.Line(done);
    if (request_.keep == 0) return;
    DoLaterStep(done, [&] { ReportPruned(Prune(store_, next_, before, request_.keep), report_); });
  }

  const GoLiveRequest& request_;
  Report& report_;
  const ContentStore store_;
  Progress progress_;
  const DocumentSigner signer_;
  std::optional<Publication> live_;
  History history_;
  Publication next_;
};

}  // namespace

void GoLive(const GoLiveRequest& request, Report& report) { LiveSwitch(request, report).Run(); }

}  // namespace patcher::publisher
