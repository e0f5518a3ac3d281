#include "update/update_run.h"

#include <exception>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "control/protocol/ui_event.h"
#include "platform/text.h"
#include "shared/own_files.h"
#include "shared/program.h"
#include "transport/config.h"
#include "transport/debug_log.h"
#include "transport/run_pool.h"
#include "update/install_lock.h"
#include "update/server_manifest.h"
#include "update/update_plan.h"
#include "update/verified_download.h"

namespace patcher {
namespace {

namespace fs = std::filesystem;

constexpr std::int32_t kFilesPerSave = 50;
constexpr std::int32_t kFilesPerStatus = 200;

/// Removes the leftovers of earlier runs: the old launcher, files that were in use when they were replaced,
/// temporary archives, a record that was not yet moved into place. The next run tries again what cannot be
/// deleted.
void SweepLeftovers() {
  std::error_code error;
  const auto remove = [](const fs::path& file) {
    std::error_code ignored;
    // A player may have started one of them, and Linux would allow its deletion.
    if (!IsOwnName(file)) fs::remove(file, ignored);
  };
  remove(ExeDir() / kOldLauncherFile);
  remove(ExeDir() / (std::string(kRecordFile) + ".part"));
  fs::directory_iterator entry(ExeDir(), error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    std::error_code ignored;
    if (entry->symlink_status(ignored).type() != fs::file_type::regular) continue;
    const fs::path name = entry->path().filename();
    if (name.extension() == ".old" || platform::BytesFromPath(name).starts_with("_bundle")) {
      remove(entry->path());
    }
  }
}

/// The steps of the run in order. A step returns `canPlay` if the run ends there, or nothing to continue.
class Steps {
 public:
  Steps(HostWindow& window, const UpdateStages& stages)
      : lock_(window, stages.lockTimeout), run_(window), stages_(stages) {}
  ~Steps() { run_.session.Close(); }
  Steps(const Steps&) = delete;
  Steps& operator=(const Steps&) = delete;

  /// Returns `canPlay`, or nothing if the launcher is being replaced.
  std::optional<bool> Run() {
    if (!lock_.IsTaken()) return ClientExists();
    SweepLeftovers();
    if (auto end = ReachServer()) return *end;
    if (stages_.selfUpdate(run_)) return std::nullopt;
    PostVersions(run_.window, LoadRecord(), run_.manifest.version);
    if (!SaveInstalledFiles(FindWantedFiles(run_))) {
      Status("Impossible de mettre a jour patch_manifest.json, aucun fichier modifie.");
      return ClientExists();
    }
    if (run_.wanted.empty()) {
      Status("A jour.");
      return true;
    }
    const bool complete = FetchArchives() && FetchSingles();
    EnterInRecord(run_, run_.unflushed.Flush());
    if (!complete) {
      RememberUntouchedFiles(run_);
      SaveAfterFailure();
      return ClientExists();
    }
    FinishCompleteRun();
    return true;
  }

 private:
  void Status(const std::string& text) { PostStatus(run_.window, text); }

  bool ClientExists() const { return stages_.clientExists(); }

  std::optional<bool> ReachServer() {
    Status("Connexion au serveur de patch...");
    std::string error;
    if (!run_.session.Connect(PatchConfig::Current().baseUrl, error)) {
      Status(error);
      PostServer(run_.window, false);
      return ClientExists();
    }
    const ServerManifest answer = FetchManifest();
    if (answer == ServerManifest::kUnreachable) {
      Status("Serveur de patch injoignable.");
      PostServer(run_.window, false);
      const bool canPlay = ClientExists();
      if (canPlay) Status("Hors ligne : utilisation des fichiers deja installes.");
      return canPlay;
    }
    PostServer(run_.window, true);
    if (answer == ServerManifest::kUnusable) {
      Status("Manifest de patch invalide.");
      return false;
    }
    return std::nullopt;
  }

  ServerManifest FetchManifest() {
    const platform::MutexLock guard(run_.stateLock);
    return FetchServerManifest(run_.session, run_.record, run_.manifestText, run_.manifest);
  }

  /// Returns the version of the record.
  std::int32_t LoadRecord() {
    const platform::MutexLock guard(run_.stateLock);
    if (!run_.record.IsLoaded()) run_.record.Load({run_.manifestText, &run_.manifest});
    return run_.record.Version();
  }

  /// Saves the record with the files found correct and without the wanted files. False if an old record still
  /// exists that may name files that are about to change.
  bool SaveInstalledFiles(std::size_t correctFiles) {
    if (correctFiles > 0)
      Status(std::to_string(correctFiles) + " fichier(s) deja corrects retrouves sur le disque.");
    const bool hasForgotten = ForgetWantedFiles(run_);
    const platform::MutexLock guard(run_.stateLock);
    const bool mayNameWanted = hasForgotten || run_.record.WasUnreadable();
    if (mayNameWanted && !run_.wanted.empty()) return run_.record.SaveOrRemove();
    if (correctFiles > 0 || mayNameWanted) run_.record.Save();
    return true;
  }

  /// False if the whole stage failed. If one archive fails, the next stage downloads its files.
  bool FetchArchives() {
    if (!ChooseRunArchives(run_)) {
      Status(std::to_string(run_.wanted.size()) + " fichier(s) a telecharger...");
      return true;
    }
    Status(std::to_string(run_.wanted.size()) + " fichier(s) via " +
           std::to_string(run_.chosenBundles.size()) + " archive(s)...");
    AssignArchivePaths(run_);
    ProgressTracker tracker(run_.window, run_.bundleBytes,
                            static_cast<std::uint32_t>(run_.chosenBundles.size()));
    const bool done = RunPool(run_.chosenBundles.size(), [&](std::size_t index, unsigned worker) {
      return stages_.installArchive(run_, tracker, index, worker);
    });
    LeaveFailedArchives();
    return done;
  }

  /// Hands the files of archives that failed to the next stage.
  void LeaveFailedArchives() {
    const platform::MutexLock guard(run_.stateLock);
    if (run_.retryPaths.empty()) return;
    for (const std::string& path : run_.retryPaths) run_.archivePaths.erase(path);
    Status(std::to_string(run_.retryPaths.size()) +
           " fichier(s) d archive(s) manquante(s) seront pris un par un.");
  }

  bool FetchSingles() {
    ListSingles(run_);
    if (run_.singles.empty()) return true;
    ProgressTracker tracker(run_.window, run_.singleBytes, static_cast<std::uint32_t>(run_.singles.size()));
    return RunPool(run_.singles.size(),
                   [&](std::size_t index, unsigned) { return FileWorker(tracker, index); });
  }

  bool FileWorker(ProgressTracker& tracker, std::size_t index) {
    const PatchFile& file = *run_.singles[index];
    tracker.SetCurrentFile(file.path);
    const fs::path place = InstalledPlace(file.path);
    std::string reason;
    if (!DownloadVerified(run_.session, "/patch/" + file.url, place, {file.sha256, file.size}, tracker,
                          reason)) {
      Status("Echec du telechargement: " + file.path + " (" + reason + ")");
      return false;
    }
    const std::int32_t done = tracker.ItemDone();
    run_.unflushed.Add({file.path, file.sha256});
    if (done % kFilesPerSave == 0) SaveProgress();
    if (done % kFilesPerStatus == 0) {
      Status(std::to_string(done) + "/" + std::to_string(run_.singles.size()) + " fichiers...");
    }
    return true;
  }

  /// If another worker is flushing, a later call saves these files.
  void SaveProgress() {
    const std::vector<InstalledFile> files = run_.unflushed.TryFlush();
    if (files.empty()) return;
    EnterInRecord(run_, files);
    const platform::MutexLock guard(run_.stateLock);
    run_.record.SaveProgress();
  }

  void SaveAfterFailure() {
    const platform::MutexLock guard(run_.stateLock);
    run_.record.Save();
  }

  void SaveAfterSuccess() {
    const platform::MutexLock guard(run_.stateLock);
    // The document names every file, so it must not be saved if files are missing.
    if (run_.unflushed.IsEmpty() && !run_.lacksFiles) {
      run_.record.SaveDocument(run_.manifestText);
    } else {
      run_.record.Save();
    }
  }

  void FinishCompleteRun() {
    SaveAfterSuccess();
    stages_.cleanUp(run_.window, run_.manifest);
    PostVersions(run_.window, run_.manifest.version, run_.manifest.version);
    Status("Pret a jouer.");
  }

  InstallLock lock_;
  RunState run_;
  const UpdateStages& stages_;
};

}  // namespace

void RunUpdate(HostWindow& window, const UpdateStages& stages) {
  bool canPlay = false;
  try {
    // A temporary object, so that the run's lists are freed and its session is closed before `ready` is
    // posted.
    const std::optional<bool> end = Steps(window, stages).Run();
    if (!end) {
      PostSelfUpdate(window);
      return;
    }
    canPlay = *end;
  } catch (const std::exception& failure) {
    DebugLog::WriteException("the update run", failure);
    PostStatus(window, "La mise a jour a rencontre une erreur inattendue.");
    canPlay = stages.clientExists();
  }
  PostReady(window, canPlay);
}

}  // namespace patcher
