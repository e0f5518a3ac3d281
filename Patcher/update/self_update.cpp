#include "update/self_update.h"

#include <filesystem>
#include <string>
#include <system_error>

#include "control/ui_event.h"
#include "integrity/sha256.h"
#include "platform/files.h"
#include "platform/process.h"
#include "shared/program.h"
#include "shared/retry_while_held.h"

namespace patcher {
namespace {

namespace fs = std::filesystem;

fs::path NewLauncher() { return ExeDir() / "Patcher.new.exe"; }

/// Whether the running launcher is this file: a player may start either of the two after a swap that died.
bool IsRunningLauncher(const fs::path& file) {
  std::error_code error;
  return fs::equivalent(ExePath(), file, error) && !error;
}

/// Where the running launcher makes way to. Either name is swept by the next run.
fs::path OldLauncher() {
  fs::path old = ExeDir() / "Patcher.old.exe";
  if (IsRunningLauncher(old)) old += ".old";
  return old;
}

/// A downloaded file is no program yet on Linux: it gets the running launcher's mode. On Windows the mode is
/// the read-only attribute alone, which no launcher shall have: the next one could not be put over it.
bool MakeAsExecutableAs(const fs::path& model, const fs::path& file) {
  std::error_code error;
  const fs::perms mode = fs::status(model, error).permissions() & fs::perms::all;
  if (error) return false;
  fs::permissions(file, mode | fs::perms::owner_write, error);
  return !error;
}

void DeleteEvenReadOnly(const fs::path& file) {
  std::error_code ignored;
  if (fs::symlink_status(file, ignored).type() != fs::file_type::regular) return;
  if (fs::remove(file, ignored)) return;
  fs::permissions(file, fs::perms::owner_write, fs::perm_options::add, ignored);
  fs::remove(file, ignored);
}

enum class Fetched { kNewer, kSame, kNothing };

Fetched Fetch(UpdateRun& run) {
  const fs::path file = NewLauncher();
  Sha256 sha256;
  // Before the transfer, which replaces the running launcher if its name is that of the new one.
  const std::string running = sha256.HashFile(ExePath());
  const bool inPlace = IsRunningLauncher(file);
  std::string digest;
  if (!run.session.DownloadToFile("/patch/" + run.manifest.patcherUrl, file, {std::uint64_t{256} << 20}, digest)) {
    return Fetched::kNothing;
  }
  if (digest == running) {
    std::error_code ignored;
    if (!inPlace) fs::remove(file, ignored);
    return Fetched::kSame;
  }
  // Another launcher that fetches at the same moment writes the same temporary file.
  const bool whole = sha256.HashFile(file) == digest;
  const bool ready =
      whole && MakeAsExecutableAs(inPlace ? file : ExePath(), file) && platform::FlushToDisk(file) == 0;
  return ready ? Fetched::kNewer : Fetched::kNothing;
}

/// True if the file is in its new place.
bool MoveLauncher(const fs::path& from, const fs::path& to, bool copyAcrossVolumes) {
  return RetryWhileHeld([&] { return platform::MoveReplacing(from, to, copyAcrossVolumes); }) == 0;
}

}  // namespace

bool FetchNewLauncher(UpdateRun& run) {
  if (run.manifest.patcherVersion <= launcherBuild || run.manifest.patcherUrl.empty()) return false;
  PostStatus(run.window, "Mise a jour du patcher...");
  switch (Fetch(run)) {
    case Fetched::kNewer:
      return true;
    case Fetched::kSame:
      return false;
    case Fetched::kNothing:
      PostStatus(run.window, "Echec de la mise a jour du patcher, poursuite avec la version actuelle.");
      return false;
  }
  return false;
}

void SelfUpdateSwap(const ErrorBox& showErrorBox) {
  const fs::path fetched = NewLauncher();
  const fs::path& launcher = ExePath();
  if (!IsRunningLauncher(fetched)) {
    const fs::path old = OldLauncher();
    DeleteEvenReadOnly(old);
    if (!MoveLauncher(launcher, old, false)) {
      showErrorBox(u"Impossible de remplacer le patcher (fichier verrouille).", BuildWindowTitle());
      return;
    }
    if (!MoveLauncher(fetched, launcher, true)) {
      // Before the box, which may stand for long.
      MoveLauncher(old, launcher, false);
      showErrorBox(u"Mise a jour du patcher incomplete, relance annulee.", BuildWindowTitle());
      return;
    }
  }
  platform::StartProgram(launcher, {}, ExeDir());
}

}  // namespace patcher
