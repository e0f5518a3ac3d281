#include "server_check.h"

#include <algorithm>
#include <atomic>
#include <map>
#include <memory>
#include <mutex>
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
#include "progress_line.h"
#include "publish_error.h"
#include "server_probe.h"
#include "serving_rules.h"
#include "shared/parallel_run.h"
#include "update/manifest_paths.h"

namespace patcher::publisher {
namespace {

/// As many as the launcher opens at most.
constexpr std::uint32_t kConnections = 8;
/// Bytes of the sample.
constexpr std::uint64_t kSampleSize = std::uint64_t{256} << 20;
/// A body that is not read costs its connection: one of so few bytes is read.
constexpr std::uint64_t kSmall = 65536;
/// Bytes. The manifest does not give the size of a launcher; players accept no more than this.
constexpr std::uint64_t kMaxLauncherSize = std::uint64_t{256} << 20;
/// What a hostile server can make the check collect: contents, findings about the manifest, faults of
/// headers.
constexpr std::size_t kMaxFailures = 50;
constexpr std::size_t kMaxDocumentFindings = 100;
constexpr std::size_t kMaxSharedFaults = 100;
/// Bytes of a line, and of the part of a header in it.
constexpr std::size_t kMaxTextSize = 1000;
constexpr std::size_t kMaxHeaderSize = 100;
constexpr std::uint32_t kStatusOk = 200;

/// What the manifest names.
struct Content {
  std::string name;                   ///< below "/patch/"
  std::optional<std::uint64_t> size;  ///< unknown for a launcher
  std::string digest;                 ///< empty if unknown
  bool whole = false;                 ///< its body is to be read
};

/// The same fault of many contents is one finding. Any thread.
class SharedFaults {
 public:
  void Add(const std::string& fault, const std::string& name) {
    std::lock_guard guard(lock_);
    // A hostile server may send other headers each time.
    const bool isFull = faults_.size() >= kMaxSharedFaults && faults_.count(fault) == 0;
    const auto [entry, added] =
        faults_.try_emplace(isFull ? "its headers have other faults" : fault, Entry{name, 0});
    if (!added) ++entry->second.others;
  }

  void MoveTo(Findings& findings) const {
    for (const auto& [fault, entry] : faults_) {
      const std::string others =
          entry.others > 0 ? "; " + std::to_string(entry.others) + " others alike" : "";
      findings.Add(entry.name, fault + others);
    }
  }

 private:
  struct Entry {
    std::string name;  ///< of the first
    std::size_t others;
  };
  std::mutex lock_;  ///< guards faults_
  std::map<std::string, Entry> faults_;
};

/// Takes what a terminal would obey out of a text of a server, and bounds it.
std::string Harmless(std::string text) {
  if (text.size() > kMaxTextSize) text.replace(kMaxTextSize, std::string::npos, "...");
  for (char& c : text) {
    if (static_cast<unsigned char>(c) < ' ' || c == '\x7f') c = '?';
  }
  return text;
}

std::vector<std::string> HarmlessLines(const Findings& findings) {
  std::vector<std::string> lines = findings.Sorted();
  std::transform(lines.begin(), lines.end(), lines.begin(), Harmless);
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
    if (!ReadManifest()) return {request_.url + ": no manifest", HarmlessLines(findings_)};
    CheckManifest();
    CollectContents();
    ChooseSample();
    CheckContents();
    for (const std::string& name : {std::string(), std::to_string(live_.manifest.version) + ".json"}) {
      CheckIsNotServed("/patch/history/" + name);
    }
    faults_.MoveTo(findings_);
    if (!redirect_.empty()) progress_.Notice("redirected, which costs players time: " + Harmless(redirect_));
    return {Summary(), HarmlessLines(findings_)};
  }

 private:
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
      std::lock_guard guard(lock_);
      if (redirect_.empty()) redirect_ = name + " to " + response.redirectedTo;
    }
    if (response.status == kStatusOk) return response;
    throw PublishError("the status is " + std::to_string(response.status) + ", and launchers take only 200");
  }

  /// Faults of headers, which the whole server has or has not.
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
      faults_.Add("its body is encoded (" + encoding + ") without having been asked to", name);
    }
    if (!response.length && !response.request.Header("Transfer-Encoding")) {
      faults_.Add("it announces neither its length nor chunks: a cut transfer may pass for a whole one",
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
    // Others are findings about the document.
    if (content.name.empty() || !StaysInside(content.name)) return;
    if (names_.insert(content.name).second) contents_.push_back(std::move(content));
  }

  /// Small contents are all read, the others by chance, so that further checks see further ones.
  void ChooseSample() {
    std::vector<Content*> order;
    for (Content& content : contents_) order.push_back(&content);
    std::shuffle(order.begin(), order.end(), std::mt19937(std::random_device{}()));
    std::uint64_t room = kSampleSize;
    for (Content* content : order) {
      const std::uint64_t size = content->size.value_or(0);
      if (request_.all || size <= kSmall) {
        content->whole = true;
      } else if (size <= room) {
        content->whole = true;
        room -= size;
      }
    }
  }

  void CheckContents() {
    std::uint64_t bytes = 0;
    for (const Content& content : contents_) bytes += content.whole ? content.size.value_or(0) : 0;
    std::vector<std::unique_ptr<Sha256>> digests;
    for (std::uint32_t i = 0; i < kConnections; ++i) digests.push_back(std::make_unique<Sha256>());
    progress_.Begin("checking the server", contents_.size(), bytes);
    const auto check = [&](std::size_t index, unsigned worker) {
      const Content& content = contents_[index];
      try {
        CheckContent(content, *digests[worker]);
      } catch (const PublishError& failure) {
        findings_.Add(content.name, failure.what());
        if (++failures_ >= kMaxFailures) return false;
      }
      ++asked_;
      progress_.ItemDone();
      return true;
    };
    if (!ParallelRun(contents_.size(), kConnections, check)) {
      findings_.Add("given up after " + std::to_string(kMaxFailures) + " contents that players cannot use");
    }
    progress_.End();
  }

  /// Raises PublishError if a launcher could not use the content.
  void CheckContent(const Content& content, Sha256& sha256) {
    ServerResponse response = Ask(content.name);
    CheckHeaders(response, content.name, kContentRule);
    if (response.length && content.size && *response.length != *content.size) {
      throw PublishError("it announces " + std::to_string(*response.length) + " bytes instead of " +
                         std::to_string(*content.size));
    }
    if (!content.whole && response.length) return;
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
    ++proven_;
    provenBytes_ += size;
  }

  void CheckIsNotServed(const std::string& path) {
    try {
      const ServerResponse response = server_.Ask(path);
      if (response.status == kStatusOk && response.redirectedTo.empty()) {
        findings_.Add(path, "it is served: copies of manifests are for the publisher only");
      }
    } catch (const PublishError&) {
      // Not served.
    }
  }

  std::string Summary() const {
    const PatchManifest& manifest = live_.manifest;
    return request_.url + ": version " + std::to_string(manifest.version) + ", " +
           std::to_string(manifest.files.size()) + " files, " + std::to_string(live_.archives.size()) +
           " archives, launcher build " + std::to_string(manifest.patcherVersion) + "; asked for " +
           std::to_string(asked_) + " of " + std::to_string(contents_.size()) + " contents, read " +
           std::to_string(proven_) + " whole, " + ReadableBytes(provenBytes_);
  }

  const ServerCheckRequest request_;
  ServerProbe server_;
  Progress progress_;
  Findings findings_;
  SharedFaults faults_;
  Publication live_;
  std::unordered_set<std::string> names_;
  std::vector<Content> contents_;
  std::atomic<std::size_t> failures_{0};
  std::atomic<std::size_t> asked_{0};
  std::atomic<std::size_t> proven_{0};
  std::atomic<std::uint64_t> provenBytes_{0};
  std::mutex lock_;  ///< guards redirect_
  std::string redirect_;
};

}  // namespace

CheckResult CheckServer(const ServerCheckRequest& request) { return ServerChecker(request).Run(); }

}  // namespace patcher::publisher
