#include "update/bundle_install.h"

#include <array>
#include <system_error>
#include <vector>

#include <miniz.h>

#include "control/ui_event.h"
#include "platform/links.h"
#include "platform/text.h"
#include "shared/program.h"
#include "transport/config.h"
#include "transport/http_session.h"
#include "update/archive_directory.h"
#include "update/download_pool.h"

namespace patcher {
namespace {

namespace fs = std::filesystem;

constexpr mz_uint kMaxNameSize = 1024;

/// An open ZIP reader.
class ZipReader {
 public:
  explicit ZipReader(const fs::path& archive) {
    mz_zip_zero_struct(&zip_);
    open_ = ArchiveDirectoryIsSound(archive) &&
            mz_zip_reader_init_file(&zip_, platform::Utf8FromPath(archive).c_str(), 0) != 0;
  }
  ~ZipReader() {
    if (open_) mz_zip_reader_end(&zip_);
  }
  ZipReader(const ZipReader&) = delete;
  ZipReader& operator=(const ZipReader&) = delete;

  bool IsOpen() const { return open_; }
  mz_uint EntryCount() { return mz_zip_reader_get_num_files(&zip_); }
  bool IsDirectory(mz_uint entry) { return mz_zip_reader_is_file_a_directory(&zip_, entry) != 0; }

  std::string Name(mz_uint entry) {
    std::array<char, kMaxNameSize> name{};
    mz_zip_reader_get_filename(&zip_, entry, name.data(), kMaxNameSize);
    return name.data();
  }

  bool Extract(mz_uint entry, const fs::path& place) {
    return mz_zip_reader_extract_to_file(&zip_, entry, platform::Utf8FromPath(place).c_str(), 0) != 0;
  }

 private:
  mz_zip_archive zip_;
  bool open_ = false;
};

bool NameStaysInside(const std::string& name) {
  const bool absolute = name.front() == '/' || name.front() == '\\';
  const bool drive = name.size() > 1 && name[1] == ':';
  return !absolute && !drive && name.find("..") == std::string::npos;
}

fs::path InstalledPlace(const std::string& path) { return ExeDir() / platform::PathFromBytes(path); }

bool HasExpectedSize(const fs::path& file, std::uint64_t size) {
  std::error_code error;
  return fs::exists(file, error) && fs::file_size(file, error) == size && !error;
}

/// The archive's files that arrived. What did not is reported.
std::vector<InstalledFile> InstalledFiles(UpdateRun& run, std::size_t index) {
  const PatchBundle& bundle = *run.chosenBundles[index];
  std::vector<InstalledFile> installed;
  for (const std::string& path : bundle.files) {
    const auto owner = run.archivePaths.find(path);
    const auto digest = run.expectedDigests.find(path);
    if (owner == run.archivePaths.end() || owner->second != index || digest == run.expectedDigests.end())
      continue;
    if (HasExpectedSize(InstalledPlace(path), run.expectedSizes.find(path)->second)) {
      installed.push_back({path, std::string(digest->second)});
    } else {
      PostStatus(run.window,
                 "Anomalie: " + path + " absent apres extraction de " + bundle.name + ", sera repris.");
    }
  }
  return installed;
}

/// Brings the files to the disk and then into the record.
void Record(UpdateRun& run, const std::vector<InstalledFile>& files) {
  ParallelRun(files.size(), PatchConfig::Current().connections, [&](std::size_t index, unsigned) {
    run.unflushed.Add(files[index]);
    return true;
  });
  EnterInRecord(run, run.unflushed.Flush());
  std::lock_guard guard(run.stateLock);
  run.record.SaveProgress();
}

/// Leaves the archive's wanted files to the single-file stage.
void GiveUp(UpdateRun& run, const PatchBundle& bundle, const std::string& status) {
  PostStatus(run.window, status + " - ses fichiers seront pris un par un.");
  std::lock_guard guard(run.stateLock);
  for (const std::string& path : bundle.files) {
    if (run.wantedPaths.count(path) != 0) run.retryPaths.insert(path);
  }
}

}  // namespace

bool ExtractArchive(const fs::path& archive, const std::function<bool(std::string_view path)>& wanted,
                    std::string& failure) {
  ZipReader zip(archive);
  if (!zip.IsOpen()) {
    failure = "archive illisible";
    return false;
  }
  for (mz_uint entry = 0; entry < zip.EntryCount(); ++entry) {
    if (zip.IsDirectory(entry)) continue;
    const std::string name = zip.Name(entry);
    if (name.empty() || !NameStaysInside(name) || !wanted(name)) continue;
    const fs::path place = InstalledPlace(name);
    std::error_code ignored;
    fs::create_directories(place.parent_path(), ignored);
    // Whatever a link leads to is not ours to overwrite.
    if (platform::IsLink(place)) fs::remove(place, ignored);
    MoveLockedTargetAside(place);
    if (!zip.Extract(entry, place)) {
      failure = name;
      return false;
    }
  }
  return true;
}

bool BundleWorker(UpdateRun& run, ProgressTracker& tracker, std::size_t index, unsigned worker) {
  const PatchBundle& bundle = *run.chosenBundles[index];
  tracker.SetCurrentFile(bundle.name);
  const fs::path archive = ExeDir() / ("_bundle" + std::to_string(worker) + ".part");
  std::error_code ignored;

  std::string reason;
  if (!DownloadVerified(run.session, "/patch/" + bundle.name, archive, {bundle.sha256, bundle.size}, tracker,
                        reason)) {
    fs::remove(archive, ignored);
    GiveUp(run, bundle, "Archive indisponible: " + bundle.name + " (" + reason + ")");
    return true;
  }

  std::string failure;
  const bool extracted = ExtractArchive(
      archive,
      [&](std::string_view path) {
        const auto owner = run.archivePaths.find(path);
        return owner != run.archivePaths.end() ? owner->second == index : run.wantedPaths.count(path) != 0;
      },
      failure);
  fs::remove(archive, ignored);
  if (!extracted) {
    GiveUp(run, bundle, "Archive illisible: " + bundle.name + " (" + failure + ")");
    return true;
  }

  const std::int32_t done = tracker.ItemDone();
  Record(run, InstalledFiles(run, index));
  PostStatus(run.window, "Archive " + std::to_string(done) + "/" + std::to_string(run.chosenBundles.size()) +
                             " : " + bundle.name);
  return true;
}

}  // namespace patcher
