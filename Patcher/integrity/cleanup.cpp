#include "integrity/cleanup.h"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "control/protocol/ui_event.h"
#include "integrity/leftover_downloads.h"
#include "integrity/protected_path.h"
#include "integrity/published_paths.h"
#include "platform/links.h"
#include "platform/text.h"
#include "shared/program.h"

namespace patcher {
namespace {

namespace fs = std::filesystem;

/// The only directories that the sweep reads.
constexpr const char* ResidualRoots[] = {"Model", "World", "Icon", "Item", "Char", "SFX", "Client"};
constexpr std::size_t kMaxListedFiles = 20;

struct ObsoleteItem {
  const char* path;
  const char* reason;  ///< shown to the player
};

constexpr ObsoleteItem ObsoleteTable[] = {
    {"ui-assets", "atelier d'interface, plus livre depuis le 02/10/2026"},
    {"patcher-assets", "images du lanceur, desormais embarquees dans Patcher.exe"},
    {"x64", "doublon du client 64 bits, desormais a la racine"},
    {"force32.txt", "repli 32 bits supprime"},
    {"Ostu.exe", "ancien nom du client, remplace par Tolmira.exe"},
    {"OstuD.dll", "DLL 32 bits de l'ancien client"},
    {"mss32.dll", "Miles Sound System, retire le 21/09/2026"},
    {"mssmp3.asi", "Miles Sound System, retire le 21/09/2026"},
    {"mssogg.asi", "Miles Sound System, retire le 21/09/2026"},
};

/// Whether this is a directory and not a link to one: only then a walk enters it.
bool IsOwnDirectory(const fs::path& place) {
  std::error_code error;
  return fs::is_directory(place, error) && !platform::IsLink(place);
}

/// The sorted names in a directory. A directory that is gone or may not be read has none. Sets `error` if
/// reading stops in the middle.
std::vector<fs::path> NamesIn(const fs::path& directory, std::error_code& error) {
  std::vector<fs::path> names;
  error.clear();
  std::error_code openError;
  fs::directory_iterator entry(directory, fs::directory_options::skip_permission_denied, openError);
  if (openError) return names;
  for (; entry != fs::directory_iterator(); entry.increment(error)) {
    names.push_back(entry->path().filename());
  }
  std::sort(names.begin(), names.end());
  return names;
}

/// Whether the name is the same after a conversion to bytes and back. Only such a name can be compared with
/// the manifest.
bool HasExactBytes(const fs::path& path) {
  return platform::PathFromBytes(platform::BytesFromPath(path)).native() == path.native();
}

class Sweep {
 public:
  explicit Sweep(const PatchManifest& manifest) : published_(manifest) {}

  void WalkRoot(const fs::path& root) {
    if (!IsOwnDirectory(ExeDir() / root)) return;
    std::vector<fs::path> directories{root};  // relative to the install directory
    while (!directories.empty()) {
      const fs::path directory = std::move(directories.back());
      directories.pop_back();
      std::error_code error;
      for (const fs::path& name : NamesIn(ExeDir() / directory, error)) Visit(directory / name, directories);
      if (error) return;
    }
  }

  void Report(HostWindow& window) const {
    if (count_ == 0) return;
    PostStatus(window,
               std::to_string(count_) + " fichier(s) residuel(s) supprime(s) (hors manifeste) : " + list_);
  }

 private:
  void Visit(const fs::path& relative, std::vector<fs::path>& directories) {
    try {
      const fs::path place = ExeDir() / relative;
      std::error_code error;
      const fs::file_status status = fs::status(place, error);
      if (fs::is_directory(status)) {
        if (!platform::IsLink(place)) directories.push_back(relative);
      } else if (fs::exists(status) && IsResidual(relative) && fs::remove(place, error) && !error) {
        Count(relative);
      }
    } catch (const std::exception&) {
      // The sweep skips an entry that cannot be handled.
    }
  }

  bool IsResidual(const fs::path& relative) const {
    return relative.extension() != ".res" && HasExactBytes(relative) && !IsProtectedPath(relative) &&
           !published_.Contains(platform::BytesFromPath(relative));
  }

  void Count(const fs::path& relative) {
    if (count_++ < kMaxListedFiles) list_ += platform::Utf8FromPath(relative) + "; ";
  }

  const PublishedPaths published_;
  std::size_t count_ = 0;
  std::string list_;
};

/// Removes a directory and its content. Removes links in it, but not their targets. Stops at the first error.
/// (std::filesystem::remove_all follows the junctions of Windows.)
bool RemoveTree(const fs::path& directory) {
  std::error_code error;
  for (const fs::path& name : NamesIn(directory, error)) {
    const fs::path place = directory / name;
    if (IsOwnDirectory(place)) {
      if (!RemoveTree(place)) return false;
    } else if (fs::remove(place, error); error) {
      return false;
    }
  }
  return !error && fs::remove(directory, error) && !error;
}

bool RemoveItem(const fs::path& item) {
  std::error_code error;
  if (fs::remove(item, error)) return true;
  // On Windows the standard library has no distinct error for a directory that is not empty.
  return IsOwnDirectory(item) && RemoveTree(item);
}

void RemoveObsolete(HostWindow& window, const PatchManifest& manifest) {
  std::optional<PublishedPaths> published;  // built on first use: usually there is no obsolete item
  std::size_t count = 0;
  std::string list;
  for (const ObsoleteItem& row : ObsoleteTable) {
    const fs::path item = ExeDir() / row.path;
    std::error_code error;
    if (!fs::exists(item, error)) continue;
    if (!published) published.emplace(manifest);
    if (published->ContainsAtOrBelow(row.path) || IsProtectedPath(row.path)) continue;
    if (!RemoveItem(item)) continue;
    ++count;
    list += std::string(row.path) + " (" + row.reason + "); ";
  }
  if (count > 0) PostStatus(window, std::to_string(count) + " element(s) obsolete(s) supprime(s) : " + list);
}

}  // namespace

void SweepResidualFiles(HostWindow& window, const PatchManifest& manifest) {
  try {
    Sweep sweep(manifest);
    for (const char* root : ResidualRoots) sweep.WalkRoot(root);
    sweep.Report(window);
  } catch (const std::exception&) {
    // The update itself is complete. The next run tries the cleanup again.
  }
}

void RemoveObsoleteItems(HostWindow& window, const PatchManifest& manifest) {
  try {
    RemoveObsolete(window, manifest);
  } catch (const std::exception&) {
    // As above.
  }
}

void CleanUp(HostWindow& window, const PatchManifest& manifest) {
  SweepResidualFiles(window, manifest);
  RemoveObsoleteItems(window, manifest);
  try {
    RemoveLeftoverDownloads(manifest);
  } catch (const std::exception&) {
    // As above.
  }
}

}  // namespace patcher
