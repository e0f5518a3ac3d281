#include "check.h"

#include <algorithm>
#include <mutex>
#include <string_view>
#include <unordered_map>

#include "all_cores.h"
#include "archive_contents.h"
#include "client_names.h"
#include "content_store.h"
#include "manifest_document.h"
#include "platform/text.h"
#include "progress.h"
#include "publish_error.h"
#include "update/manifest_paths.h"

namespace patcher {
namespace {

namespace fs = std::filesystem;

bool IsDigest(std::string_view text) {
  return text.size() == 64 && text.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

class Checker {
 public:
  Checker(const fs::path& www, bool quiet) : store_(www), progress_(quiet) {}

  CheckResult Run() {
    auto publication = ReadPublication(store_.ManifestFile());
    if (!publication) {
      throw PublishError("nothing is published: there is no " +
                         platform::Utf8FromPath(store_.ManifestFile()));
    }
    published_ = std::move(*publication);
    CheckPaths();
    CheckContents();
    CheckArchives();
    CheckLauncher();
    std::sort(findings_.begin(), findings_.end());
    return {"version " + std::to_string(published_.manifest.version) + ": " +
                std::to_string(published_.manifest.files.size()) + " files, " +
                std::to_string(published_.archives.size()) + " archives, launcher build " +
                std::to_string(published_.manifest.patcherVersion),
            std::move(findings_)};
  }

 private:
  void Find(std::string finding) {
    std::lock_guard guard(lock_);
    findings_.push_back(std::move(finding));
  }

  void Find(const std::string& subject, const std::string& what) { Find(subject + ": " + what); }

  void CheckPaths() {
    if (published_.manifest.version < 1) Find("the manifest has no version");
    std::vector<std::string_view> paths;
    for (const PatchFile& file : published_.manifest.files) {
      const std::string problem = NameProblem(file.path);
      if (!problem.empty()) Find("file " + file.path + ": its path " + problem);
      if (BelongsToInstallation(file.path, false)) Find("file " + file.path + " is an installation's own");
      if (!IsDigest(file.sha256)) Find("file " + file.path + ": its digest is no lower-case SHA-256");
      paths.push_back(file.path);
      files_.emplace(file.path, &file);
    }
    if (!std::is_sorted(paths.begin(), paths.end())) Find("the manifest's files are not sorted by path");
    for (const std::string& clash : PathClashes(paths)) Find("file " + clash);
  }

  /// Size and digest of one content; `subject` begins the findings. False if it is not sound.
  bool CheckContent(const std::string& subject, const std::string& name, std::uint64_t size,
                    const std::string& digest, FileHasher& hasher) {
    if (name.empty() || !StaysInside(name)) {
      Find(subject, "it has no name below /patch/");
      return false;
    }
    std::error_code error;
    const fs::path place = store_.Place(name);
    if (!fs::is_regular_file(place, error)) {
      Find(subject, name + " is missing");
      return false;
    }
    FileContent content;
    try {
      content = hasher.Read(place);
    } catch (const PublishError& failure) {
      Find(subject, failure.what());
      return false;
    }
    if (content.size != size) {
      Find(subject,
           name + " has " + std::to_string(content.size) + " bytes instead of " + std::to_string(size));
    } else if (content.digest != digest) {
      Find(subject, name + " has another digest");
    }
    return content.size == size && content.digest == digest;
  }

  void CheckContents() {
    // Files of the same content share a name: each is read once, and the others must agree with it.
    std::unordered_map<std::string_view, const PatchFile*> byName;
    std::vector<const PatchFile*> contents;
    std::uint64_t bytes = 0;
    for (const PatchFile& file : published_.manifest.files) {
      const auto [first, added] = byName.emplace(file.url, &file);
      if (added) {
        contents.push_back(&file);
        bytes += file.size;
      } else if (first->second->sha256 != file.sha256 || first->second->size != file.size) {
        Find("file " + file.path + ": " + file.url + " cannot be the content of " + first->second->path +
             " too");
      }
    }
    progress_.Begin("checking files", contents.size(), bytes);
    RunOnAllCores(contents.size(), progress_, [&](std::size_t index, FileHasher& hasher) {
      const PatchFile& file = *contents[index];
      CheckContent("file " + file.path, file.url, file.size, file.sha256, hasher);
      progress_.ItemDone();
    });
    progress_.End();
  }

  void CheckArchives() {
    std::unordered_map<std::string_view, std::string_view> owners;
    std::uint64_t bytes = 0;
    for (const PublishedArchive& archive : published_.archives) {
      bytes += archive.bundle.size;
      for (const std::string& path : archive.bundle.files) {
        const auto [owner, added] = owners.emplace(path, archive.bundle.name);
        if (!added) {
          Find("archive " + archive.bundle.name + ": it lists " + path + ", which " +
               std::string(owner->second) + " lists too");
        }
      }
    }
    progress_.Begin("checking archives", published_.archives.size(), bytes);
    RunOnAllCores(published_.archives.size(), progress_, [&](std::size_t index, FileHasher& hasher) {
      CheckArchive(published_.archives[index].bundle, hasher);
      progress_.ItemDone();
    });
    progress_.End();
  }

  void CheckArchive(const PatchBundle& bundle, FileHasher& hasher) {
    const std::string subject = "archive " + bundle.name;
    std::vector<const PatchFile*> expected;
    for (const std::string& path : bundle.files) {
      const auto file = files_.find(path);
      if (file != files_.end()) {
        expected.push_back(file->second);
      } else {
        Find(subject, "it lists " + path + ", which is no file of the manifest");
      }
      if (!MayStandInArchive(path)) Find(subject, "launchers do not extract " + path);
    }
    if (!CheckContent(subject, bundle.name, bundle.size, bundle.sha256, hasher)) return;
    for (const std::string& finding :
         ArchiveFindings(store_.Place(bundle.name), expected, hasher.Digests())) {
      Find(subject, "it " + finding);
    }
  }

  void CheckLauncher() {
    const PatchManifest& manifest = published_.manifest;
    if (manifest.patcherUrl.empty()) {
      if (manifest.patcherVersion != 0) Find("launcher: it has a build number and no name");
      return;
    }
    // The manifest holds neither its size nor its digest, but its name holds the digest.
    const std::string digest = platform::Utf8FromPath(platform::PathFromUtf8(manifest.patcherUrl).stem());
    std::error_code error;
    const std::uint64_t size = fs::file_size(store_.Place(manifest.patcherUrl), error);
    FileHasher hasher(progress_);
    CheckContent("launcher", manifest.patcherUrl, error ? 0 : size, digest, hasher);
  }

  const ContentStore store_;
  Progress progress_;
  Publication published_;
  std::unordered_map<std::string_view, const PatchFile*> files_;
  std::mutex lock_;  ///< guards findings_
  std::vector<std::string> findings_;
};

}  // namespace

CheckResult CheckPublication(const fs::path& www, bool quiet) { return Checker(www, quiet).Run(); }

}  // namespace patcher
