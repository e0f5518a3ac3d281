#include "server_check.h"

#include <algorithm>
#include <atomic>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <unordered_set>
#include <utility>
#include <vector>

#include "document_check.h"
#include "findings.h"
#include "integrity/digest/sha256.h"
#include "launcher_store.h"
#include "manifest_document.h"
#include "platform/mutex.h"
#include "progress_line.h"
#include "publish_error.h"
#include "report.h"
#include "server_probe.h"
#include "serving_rules.h"
#include "shared/parallel_run.h"
#include "update/manifest_paths.h"

namespace patcher::publisher {
namespace {

/// The most connections that a launcher opens.
constexpr std::uint32_t kConnections = 8;
/// Total bytes of the large contents in the sample.
constexpr std::uint64_t kSampleSize = std::uint64_t{256} << 20;
/// Bodies up to this size are always read, since skipping a body closes its connection.
constexpr std::uint64_t kSmall = 65536;
/// Bytes. The manifest has no size for the launcher; launchers do not accept more.
constexpr std::uint64_t kMaxLauncherSize = std::uint64_t{256} << 20;
/// Limits against a hostile server: failed contents, findings about the manifest, faults of headers.
constexpr std::size_t kMaxFailures = 50;
constexpr std::size_t kMaxDocumentFindings = 100;
constexpr std::size_t kMaxSharedFaults = 100;
/// Limits in bytes of a printed line, and of a header in it.
constexpr std::size_t kMaxTextSize = 1000;
constexpr std::size_t kMaxHeaderSize = 100;
constexpr std::uint32_t kStatusOk = 200;

/// A file, archive or launcher of the manifest.
struct Content {
  std::string name;                   ///< below "/patch/"
  std::optional<std::uint64_t> size;  ///< nothing for a launcher: unknown
  std::string digest;                 ///< empty if unknown
  bool readsBody = false;             ///< true: read the body
};

/// Collects faults. The same fault of many contents becomes one finding. Any thread.
class SharedFaults {
 public:
  void Add(const std::string& fault, const std::string& name) {
    const platform::MutexLock guard(lock_);
    // A hostile server may send different headers each time.
    const bool isFull = faults_.size() >= kMaxSharedFaults && faults_.count(fault) == 0;
    const auto [entry, added] =
        faults_.try_emplace(isFull ? "its headers have other faults" : fault, Entry{name, 0});
    if (!added) ++entry->second.others;
  }

  void MoveTo(Findings& findings) const {
    const platform::MutexLock guard(lock_);
    for (const auto& [fault, entry] : faults_) {
      const std::string others = entry.others > 0 ? "; " + std::to_string(entry.others) +
                                                        (entry.others == 1 ? " other has" : " others have") +
                                                        " the same fault"
                                                  : "";
      findings.Add(entry.name, fault + others);
    }
  }

 private:
  struct Entry {
    std::string name;  ///< the first content with the fault
    std::size_t others;
  };
  mutable platform::Mutex lock_;
  std::map<std::string, Entry> faults_ PATCHER_GUARDED_BY(lock_);
};

/// Replaces control characters in a text from a server, which a terminal could execute, and limits its size.
std::string Sanitized(std::string text) {
  if (text.size() > kMaxTextSize) text.replace(kMaxTextSize, std::string::npos, "...");
  for (char& c : text) {
    if (static_cast<unsigned char>(c) < ' ' || c == '\x7f') c = '?';
  }
  return text;
}

std::vector<std::string> SanitizedLines(const Findings& findings) {
  std::vector<std::string> lines = findings.Sorted();
  std::transform(lines.begin(), lines.end(), lines.begin(), Sanitized);
  return lines;
}

std::string HeaderOf(const ServerResponse& response, const std::string& name) {
  return response.request.Header(name).value_or("").substr(0, kMaxHeaderSize);
}

bool IsLoopback(const std::string& host) {
  const bool isNumeric = host.find_first_not_of("0123456789.") == std::string::npos;
  return host == "localhost" || host == "[::1]" || (isNumeric && host.starts_with("127."));
}

class ServerChecker {
 public:
  explicit ServerChecker(const ServerCheckRequest& request)
      : request_(request), server_(request.url, kConnections), progress_(request.quiet) {}

  CheckResult Run() {
    if (!server_.Address().secure && !IsLoopback(server_.Address().host)) {
      findings_.Add(request_.url,
                    "plain http: anyone between the server and a player can give the player "
                    "other programs; publish over https only");
    }
    if (!ReadManifest()) return {request_.url + ": no manifest", SanitizedLines(findings_)};
    CheckManifest();
    CollectContents();
    ChooseSample();
    CheckContents();
    for (const std::string& name : {std::string(), std::to_string(live_.manifest.version) + ".json"}) {
      CheckIsNotServed("/patch/history/" + name);
    }
    faults_.MoveTo(findings_);
    ReportRedirect();
    return {Summary(), SanitizedLines(findings_)};
  }

 private:
  void ReportRedirect() {
    const platform::MutexLock guard(lock_);
    if (redirect_.empty()) return;
    progress_.Notice("redirected, which costs players time: " + Sanitized(redirect_));
  }

  bool ReadManifest() {
    const std::string path = "/patch/version.json";
    try {
      ServerResponse response = Ask("version.json");
      CheckHeaders(response, "version.json", kManifestRule);
      std::string text;
      ReadBody(response, kMaxManifestSize,
               [&](const char* block, std::size_t size) { text.append(block, size); });
      live_ = ParsePublication(std::move(text), path);
      return true;
    } catch (const PublishError& failure) {
      findings_.Add("version.json", failure.what());
      faults_.MoveTo(findings_);
      return false;
    }
  }

  void CheckManifest() {
    Findings document;
    CheckDocument(live_, document);
    const std::vector<std::string> all = document.Sorted();
    const std::size_t shown = std::min(all.size(), kMaxDocumentFindings);
    for (std::size_t i = 0; i < shown; ++i) findings_.Add(all[i]);
    if (shown < all.size()) {
      findings_.Add("version.json", std::to_string(all.size() - shown) + " further faults of the manifest");
    }
  }

  /// Raises PublishError unless the status is 200.
  ServerResponse Ask(const std::string& name) {
    ServerResponse response = server_.Ask("/patch/" + name);
    if (!response.redirectedTo.empty()) {
      const platform::MutexLock guard(lock_);
      if (redirect_.empty()) redirect_ = name + " to " + response.redirectedTo;
    }
    if (response.status == kStatusOk) return response;
    throw PublishError("the status is " + std::to_string(response.status) + ", and launchers take only 200");
  }

  /// Adds faults of headers, which are usually the same for all contents.
  void CheckHeaders(const ServerResponse& response, const std::string& name, const ServingRule& rule) {
    const bool isManifest = &rule == &kManifestRule;
    const std::string cache = HeaderOf(response, "Cache-Control");
    if (isManifest ? !ForbidsCaching(cache) : !AllowsLongCaching(cache)) {
      faults_.Add(
          "its Cache-Control is \"" + cache + "\" instead of \"" + std::string(rule.cacheControl) + "\"",
          name);
    }
    const std::string age = HeaderOf(response, "Age");
    if (isManifest && !age.empty() && age != "0") {
      faults_.Add("it comes from a cache: it has a header Age", name);
    }
    const std::string encoding = HeaderOf(response, "Content-Encoding");
    if (!encoding.empty() && encoding != "identity") {
      faults_.Add("its body is encoded (" + encoding + "), although no encoding was requested", name);
    }
    if (!response.length && !response.request.Header("Transfer-Encoding")) {
      faults_.Add("it announces neither its length nor chunks: an incomplete transfer may look complete",
                  name);
    }
  }

  void CollectContents() {
    const AnnouncedLauncher launcher = LauncherOf(live_);
    Expect({launcher.name, std::nullopt, ExpectedDigest(launcher), true});
    for (const PublishedArchive& archive : live_.archives) {
      Expect({archive.bundle.name, archive.bundle.size, archive.bundle.sha256});
    }
    for (const PatchFile& file : live_.manifest.files) Expect({file.url, file.size, file.sha256});
    if (!launcher.name.empty() && !StaysInside(launcher.name)) {
      findings_.Add("launcher", "it has no name below /patch/");
    }
  }

  void Expect(Content content) {
    // CheckDocument reports other names.
    if (content.name.empty() || !StaysInside(content.name)) return;
    if (names_.insert(content.name).second) contents_.push_back(std::move(content));
  }

  /// Reads all small contents and a random sample of the others, so that repeated checks read different ones.
  void ChooseSample() {
    std::vector<Content*> order;
    for (Content& content : contents_) order.push_back(&content);
    std::shuffle(order.begin(), order.end(), std::mt19937(std::random_device{}()));
    std::uint64_t room = kSampleSize;
    for (Content* content : order) {
      const std::uint64_t size = content->size.value_or(0);
      if (request_.all || size <= kSmall) {
        content->readsBody = true;
      } else if (size <= room) {
        content->readsBody = true;
        room -= size;
      }
    }
  }

  void CheckContents() {
    std::uint64_t bytes = 0;
    for (const Content& content : contents_) bytes += content.readsBody ? content.size.value_or(0) : 0;
    std::vector<std::unique_ptr<Sha256>> digests;
    for (std::uint32_t i = 0; i < kConnections; ++i) digests.push_back(std::make_unique<Sha256>());
    progress_.Begin("checking the server", contents_.size(), bytes);
    const auto check = [&](std::size_t index, unsigned worker) {
      const Content& content = contents_[index];
      try {
        CheckContent(content, *digests[worker]);
      } catch (const PublishError& failure) {
        findings_.Add(content.name, failure.what());
        if (++failureCount_ >= kMaxFailures) return false;
      }
      ++requestCount_;
      progress_.ItemDone();
      return true;
    };
    if (!ParallelRun(contents_.size(), kConnections, check)) {
      findings_.Add("given up after " + Counted(kMaxFailures, "content") + " that players cannot use");
    }
    progress_.End();
  }

  /// Checks one content. Raises PublishError if a launcher could not use it.
  void CheckContent(const Content& content, Sha256& sha256) {
    ServerResponse response = Ask(content.name);
    CheckHeaders(response, content.name, kContentRule);
    if (response.length && content.size && *response.length != *content.size) {
      throw PublishError("it announces " + std::to_string(*response.length) + " bytes instead of " +
                         std::to_string(*content.size));
    }
    if (!content.readsBody && response.length) return;
    platform::DigestHash hash = sha256.BeginHash();
    std::uint64_t size = 0;
    ReadBody(response, content.size.value_or(kMaxLauncherSize), [&](const char* block, std::size_t count) {
      hash.Update(block, count);
      size += count;
      progress_.AddBytes(count);
    });
    const std::string digest = sha256.FinishHex(hash);
    if (content.size && size != *content.size) {
      throw PublishError("it has " + std::to_string(size) + " bytes instead of " +
                         std::to_string(*content.size));
    }
    if (!content.digest.empty() && digest != content.digest) throw PublishError("it has another digest");
    ++verifiedCount_;
    verifiedBytes_ += size;
  }

  void CheckIsNotServed(const std::string& path) {
    try {
      const ServerResponse response = server_.Ask(path);
      if (response.status == kStatusOk && response.redirectedTo.empty()) {
        findings_.Add(path, "it is served: copies of manifests are for the publisher only");
      }
    } catch (const PublishError&) {
      // It is not served, as it should be.
    }
  }

  std::string Summary() const {
    const PatchManifest& manifest = live_.manifest;
    return request_.url + ": version " + std::to_string(manifest.version) + ", " +
           Counted(manifest.files.size(), "file") + ", " + Counted(live_.archives.size(), "archive") +
           ", launcher build " + std::to_string(manifest.patcherVersion) + "; asked for " +
           std::to_string(requestCount_) + " of " + Counted(contents_.size(), "content") + ", read " +
           std::to_string(verifiedCount_) + " whole, " + ReadableBytes(verifiedBytes_);
  }

  const ServerCheckRequest request_;
  ServerProbe server_;
  Progress progress_;
  Findings findings_;
  SharedFaults faults_;
  Publication live_;
  std::unordered_set<std::string> names_;
  std::vector<Content> contents_;
  std::atomic<std::size_t> failureCount_{0};
  std::atomic<std::size_t> requestCount_{0};
  std::atomic<std::size_t> verifiedCount_{0};
  std::atomic<std::uint64_t> verifiedBytes_{0};
  platform::Mutex lock_;
  std::string redirect_ PATCHER_GUARDED_BY(lock_);  ///< the first one; empty: none
};

}  // namespace

CheckResult CheckServer(const ServerCheckRequest& request) { return ServerChecker(request).Run(); }

}  // namespace patcher::publisher
