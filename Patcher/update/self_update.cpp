#include "update/self_update.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <system_error>

#include "control/protocol/ui_event.h"
#include "integrity/digest/sha256.h"
#include "platform/files.h"
#include "platform/process.h"
#include "shared/own_files.h"
#include "shared/program.h"
#include "shared/retry_while_held.h"
#include "shared/whole_file.h"
#include "transport/debug_log.h"
#include "update/program_file.h"

namespace patcher {
namespace {

namespace fs = std::filesystem;

/// Much larger than any launcher.
constexpr std::uint64_t kMaxLauncherSize = std::uint64_t{256} << 20;

/// The new launcher before the swap. After an interrupted swap, a player may start this file itself.
fs::path NewLauncher() {
  fs::path file = ExeDir() / kNewLauncherFile;
  if (IsOwnName(file)) file += ".new";
  return file;
}

/// The old launcher after the swap. The next run removes a file of either name.
fs::path OldLauncher() {
  fs::path old = ExeDir() / kOldLauncherFile;
  if (IsOwnName(old)) old += ".old";
  return old;
}

/// Gives a downloaded file the running launcher's mode, since on Linux it is not executable yet. The file
/// must stay writable: on Windows the mode is only the read-only attribute, and the next launcher could not
/// replace a read-only file.
bool MakeExecutable(const fs::path& file) {
  std::error_code error;
  const fs::perms mode = fs::status(ExePath(), error).permissions() & fs::perms::all;
  if (error) return false;
  fs::permissions(file, mode | fs::perms::owner_write, error);
  return !error;
}

enum class FetchResult { kNewer, kSame, kNothing };

/// One download of the announced launcher.
class LauncherFetch {
 public:
  explicit LauncherFetch(RunState& run) : run_(run), runningDigest_(sha256_.HashFile(ExePath())) {}

  FetchResult Run() {
    const fs::path file = NewLauncher();
    DownloadRules rules;
    rules.maxSize = kMaxLauncherSize;
    rules.accept = [&](const fs::path& part, const ReceivedFile& received) { return Accept(part, received); };
    std::string digest;
    if (run_.session.DownloadToFile("/patch/" + run_.manifest.patcherUrl, file, rules, digest)) {
      // Flushes again, since some systems copy the file to its place.
      return platform::FlushToDisk(file) == 0 ? FetchResult::kNewer : FetchResult::kNothing;
    }
    if (!isRunningLauncher_) return FetchResult::kNothing;
    std::error_code ignored;
    fs::remove(file, ignored);
    return FetchResult::kSame;
  }

 private:
  bool Accept(const fs::path& part, const ReceivedFile& received) {
    const char* reason = RefusalReason(part, received);
    if (reason == nullptr) {
      isRunningLauncher_ = received.digest == runningDigest_;
      if (isRunningLauncher_) return false;
      if (!MakeExecutable(part) || platform::FlushToDisk(part) != 0) reason = "not flushed to the disk";
    }
    if (reason == nullptr) return true;
    DebugLog::Write("Launcher " + run_.manifest.patcherUrl + " : " + reason);
    return false;
  }

  /// Why this file must not become the launcher; null if it may.
  const char* RefusalReason(const fs::path& part, const ReceivedFile& received) {
    const std::string& announced = run_.manifest.patcherSha256;
    if (received.size == 0) return "empty";
    if (!announced.empty() && announced != received.digest) return "not the announced digest";
    const ProgramFile program = ExamineProgram(part);
    if (program == ProgramFile::kIncomplete) return "an incomplete program";
    if (program == ProgramFile::kComplete && !HaveSameFormat(part, ExePath())) {
      return "a program for another system";
    }
    if (program == ProgramFile::kNone && !received.announced) return "not a program, and of unknown length";
    // Another launcher that downloads at the same time writes the same temporary file.
    if (sha256_.HashFile(part) != received.digest) return "changed by another program";
    return nullptr;
  }

  RunState& run_;
  Sha256 sha256_;
  const std::string runningDigest_;  // digest of the running launcher
  bool isRunningLauncher_ = false;
};

/// Gives the old launcher its original name again.
void RestoreLauncher(const fs::path& old, const fs::path& launcher) {
  // If this fails, the player can start the launcher under the name of the old one.
  static_cast<void>(RetryWhileHeld([&] { return platform::MoveDurably(old, launcher); }));
  // If both names are the same file, nothing was moved.
  std::error_code error;
  if (fs::equivalent(old, launcher, error) && !error) fs::remove(old, error);
}

}  // namespace

bool FetchNewLauncher(RunState& run) {
  if (run.manifest.patcherVersion <= launcherBuild || run.manifest.patcherUrl.empty()) return false;
  PostStatus(run.window, "Mise a jour du patcher...");
  switch (LauncherFetch(run).Run()) {
    case FetchResult::kNewer:
      return true;
    case FetchResult::kSame:
      return false;
    case FetchResult::kNothing:
      PostStatus(run.window, "Echec de la mise a jour du patcher, poursuite avec la version actuelle.");
      return false;
  }
  return false;
}

int StartLauncher(const fs::path& launcher) { return platform::StartProgram(launcher, {}, ExeDir()); }

void SelfUpdateSwap(const ShowError& showError, const LauncherStart& start) {
  const fs::path newLauncher = NewLauncher();
  const fs::path& launcher = ExePath();
  const fs::path old = OldLauncher();
  // If this fails, the move below fails too.
  static_cast<void>(RemoveFile(old));
  if (RetryWhileHeld([&] { return platform::MoveAside(launcher, old); }) != 0) {
    showError(u"Impossible de remplacer le patcher (fichier verrouille).", BuildWindowTitle());
    return;
  }
  if (RetryWhileHeld([&] { return platform::MoveDurably(newLauncher, launcher); }) == 0) {
    if (start(launcher) == 0) return;
    // If this fails, the next run downloads the new launcher again.
    static_cast<void>(RetryWhileHeld([&] { return platform::MoveAside(launcher, newLauncher); }));
  }
  // Done before the error box, which the player may leave open for a long time.
  RestoreLauncher(old, launcher);
  showError(u"Mise a jour du patcher incomplete, relance annulee.", BuildWindowTitle());
}

}  // namespace patcher
