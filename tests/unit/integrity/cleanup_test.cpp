#include "integrity/cleanup.h"

#include <algorithm>
#include <map>
#include <memory>
#include <random>
#include <regex>

#include <gtest/gtest.h>

#include "integrity/protected_path.h"
#include "platform/text.h"
#include "support/directory_link.h"
#include "support/recording_host.h"
#include "support/scratch_directory.h"

namespace patcher {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> Statuses(RecordingHost& host) {
  std::vector<std::string> texts;
  for (const UiEvent& event : host.TakeEvents()) {
    texts.push_back(*reinterpret_cast<std::string*>(event.lParam));
    ReleasePayload(event);
  }
  return texts;
}

void Put(const fs::path& file) {
  fs::create_directories(file.parent_path());
  WriteWhole(file, file.filename().string());
}

PatchManifest Listing(const std::vector<std::string>& paths) {
  PatchManifest manifest;
  for (const std::string& path : paths) manifest.files.push_back({path, 1, "", ""});
  return manifest;
}

TEST(ProtectedPathTest, Rules) {
  const struct {
    const char* path;
    bool isProtected;
  } cases[] = {
      {"World/log/trace.txt", true}, {"SFX/Capture/deep/shot.jpg", true},
      {"Client/log", true},          {"Client/log.txt", false},
      {"Client/xlog/a", false},      {"a/UserAccounts/b", true},
      {"PowerUps/a", true},          {"FARMDISPLAY", true},
      {"WebView2Data/x/y", true},    {"Icon/ostu.ini", true},
      {"Icon/RegInfo.DAT", true},    {"Icon/ostu.ini.txt", false},
      {"Icon/Patcher.EXE", true},    {"patcher.ini", true},
      {"patch_manifest.json", true}, {"a/Patcher.old.exe", true},
      {"a/patcher.new.exe", true},   {"patcher_debug.txt", true},
      {"WebView2Loader.dll", true},  {"Patcher.exe.bak", false},
      {"Char/x.pdb", true},          {"Char/x.PDB", false},
      {"Item/x.part", true},         {"Item/x.old", true},
      {"Item/x.repack_tmp", true},   {"Item/x.Old", false},
      {"Item/.old", false},          {"Item/x.old.dds", false},
      {"Model/old.o3d", false},      {"ostu.ini/inside", false},
  };
  for (const auto& c : cases) EXPECT_EQ(IsProtectedPath(c.path), c.isProtected) << c.path;
}

TEST(CleanupTest, TellsWhatWasRemoved) {
  const ScratchDirectory game;
  RecordingHost host;
  for (int i = 10; i < 35; ++i) Put(game / ("Model/f" + std::to_string(i)));
  Put(game / "World/kept.dds");
  WriteWhole(game / "Icon", "a plain file of that name");
  Put(game / "loose.txt");
  Put(game / "x64/log/a.txt");
  Put(game / "Ostu.exe");
  Put(game / "force32.txt");
  Put(game / "mss32.dll");
  CleanUp(host, Listing({"world\\KEPT.dds", "./Item//a", "OSTU.EXE", "mss32.dll/inside"}));

  std::string names;
  for (int i = 10; i < 30; ++i) names += (fs::path("Model") / ("f" + std::to_string(i))).string() + "; ";
  EXPECT_EQ(
      Statuses(host),
      (std::vector<std::string>{
          "25 fichier(s) residuel(s) supprime(s) (hors manifeste) : " + names,
          "2 element(s) obsolete(s) supprime(s) : x64 (doublon du client 64 bits, desormais a la racine); "
          "force32.txt (repli 32 bits supprime); "}));
  for (const char* kept : {"World/kept.dds", "Icon", "loose.txt", "Ostu.exe", "mss32.dll", "Model"}) {
    EXPECT_TRUE(fs::exists(game / kept)) << kept;
  }
  CleanUp(host, Listing({"world/kept.dds"}));
  EXPECT_EQ(Statuses(host).size(), 1u) << "what the later manifest no longer lists";
  CleanUp(host, Listing({"world/kept.dds"}));
  EXPECT_TRUE(Statuses(host).empty());
}

TEST(CleanupTest, AFileInstalledUnderAnySpellingStays) {
  const std::vector<std::string> listed = {"./Model//a", "Model/./b",  "./x64/c",         "Model/d\\\\e",
                                           "Model/f\\",  "Model/.\\g", "Model/h.",        "Model/i ",
                                           "Model/j. .", "Model/k\\l", "Model/\xE9T\xE9", "MODEL/m/.\\./n"};
  const ScratchDirectory game;
  RecordingHost host;
  for (const std::string& path : listed) Put(game / "" / platform::PathFromBytes(path));
  const auto before = fs::recursive_directory_iterator(game / "");
  const auto count = std::distance(begin(before), end(before));
  EXPECT_GE(count, 12) << "nearly all can be installed on every system";
  CleanUp(host, Listing(listed));
  EXPECT_TRUE(Statuses(host).empty());
  EXPECT_EQ(std::distance(fs::recursive_directory_iterator(game / ""), {}), count);
}

TEST(CleanupTest, TemporaryFilesOfPublishedFilesGo) {
  const ScratchDirectory game;
  RecordingHost host;
  const char* const kept[] = {"Model/a",        "data/sub/b",  "data/sub/c.part", "data/x.part",
                              "data/d.part/in", "real/e.part", "data/.part"};
  const char* const gone[] = {"Model/a.part", "data/sub/b.part", "top.part", "Patcher.new.exe.part"};
  for (const char* file : kept) Put(game / file);
  for (const char* file : gone) Put(game / file);
  const DirectoryLink link(game / "link", game / "real");
  ASSERT_TRUE(link.IsThere());
  CleanUp(host, Listing({"Model/a", "data/sub/b", "data/x.part", "data/d", "link/e", "./top", "nowhere/x"}));
  for (const char* file : kept) EXPECT_TRUE(fs::exists(game / file)) << file;
  for (const char* file : gone) EXPECT_FALSE(fs::exists(game / file)) << file;
  EXPECT_TRUE(Statuses(host).empty());
}

/// The rules once more, on plain text: what a listing of the disk says before, and what must be gone after.
class Rules {
 public:
  struct Entry {
    bool directory = false;  ///< itself or what it leads to
    bool link = false;
    bool dangling = false;
  };
  using Disk = std::map<std::string, Entry>;  // by path with slashes

  static Disk Read(const fs::path& root) {
    Disk disk;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root)) {
      const std::string path =
          platform::BytesFromPath(entry.path().lexically_relative(root).generic_u16string());
      disk[path] = {entry.is_directory(), entry.is_symlink(), !entry.exists()};
    }
    return disk;
  }

  Rules(Disk disk, const std::vector<std::string>& listed) : disk_(std::move(disk)) {
    for (const std::string& path : listed) published_.push_back(Lower(path));
  }

  bool IsResidual(const std::string& path) const {
    static const std::regex kPlace("(Model|World|Icon|Item|Char|SFX|Client)/.*");
    static const std::regex kPlayer(".*/(log|webview2data|capture|useraccounts|powerups|farmdisplay)(/.*)?",
                                    std::regex::icase);
    static const std::regex kNames(
        ".*/(reginfo\\.dat|ostu\\.ini|patcher\\.(exe|ini|old\\.exe|new\\.exe)|patch_manifest\\.json|"
        "patcher_debug\\.txt|webview2loader\\.dll)",
        std::regex::icase);
    static const std::regex kExtensions(".*[^/]\\.(pdb|part|old|repack_tmp|res)");
    const Entry& entry = disk_.at(path);
    if (entry.directory || entry.dangling || !std::regex_match(path, kPlace)) return false;
    for (std::size_t at = path.find('/'); at != std::string::npos; at = path.find('/', at + 1)) {
      if (disk_.at(path.substr(0, at)).link) return false;
    }
    return !std::regex_match(path, kPlayer) && !std::regex_match(path, kNames) &&
           !std::regex_match(path, kExtensions) && !IsPublished(path);
  }

  bool IsObsolete(const std::string& path) const {
    const std::string row = path.substr(0, path.find('/'));
    static const std::regex kRows(
        "ui-assets|patcher-assets|x64|force32\\.txt|Ostu\\.exe|OstuD\\.dll|mss32\\.dll|mss(mp3|ogg)\\.asi");
    if (!std::regex_match(row, kRows) || disk_.at(row).dangling) return false;
    return std::none_of(published_.begin(), published_.end(), [&](const std::string& listed) {
      return listed == Lower(row) || listed.rfind(Lower(row) + "/", 0) == 0;
    });
  }

  const Disk& Before() const { return disk_; }

 private:
  static std::string Lower(std::string path) {
    std::transform(path.begin(), path.end(), path.begin(), [](char c) {
      if (c == '\\') return '/';
      return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
    });
    return path;
  }

  bool IsPublished(const std::string& path) const {
    return std::find(published_.begin(), published_.end(), Lower(path)) != published_.end();
  }

  Disk disk_;
  std::vector<std::string> published_;
};

/// A directory full of everything that the rules tell apart, and a manifest that lists some of it.
class RandomGame {
 public:
  explicit RandomGame(std::uint32_t seed) : random_(seed) {
    fs::create_directories(root_ / "game");
    SetExePath(root_ / "game" / "Patcher");
    for (const char* outside : {"outside/a.o3d", "outside/Sub/b.o3d", "outside/x64"}) Put(root_ / outside);
    for (int i = 0; i < 120; ++i) AddEntry();
  }

  std::vector<std::string> RandomListing() {
    std::vector<std::string> listed{"Model/never there.o3d"};
    for (const auto& [path, entry] : Rules::Read(root_ / "game")) {
      if (entry.directory || Chance(60)) continue;
      std::string spelled = path;
      for (char& c : spelled) {
        if (c == '/' && Chance(10)) c = '\\';
        if (c >= 'a' && c <= 'z' && Chance(10)) c = static_cast<char>(c - 32);
      }
      listed.push_back(spelled);
    }
    return listed;
  }

  fs::path Game() const { return root_ / "game"; }
  fs::path Outside() const { return root_ / "outside"; }

 private:
  static constexpr const char* kTops[] = {
      "Model",     "World",     "Icon",           "Item",        "Char",     "SFX",
      "Client",    "Data",      "Capture",        "model2",      "x64",      "Ostu.exe",
      "OstuD.dll", "ui-assets", "patcher-assets", "force32.txt", "mss32.dll"};
  static constexpr const char* kDirectories[] = {"a",    "B",       "log",          "LOG",
                                                 "Logs", "Capture", "UserAccounts", "deep one"};
  static constexpr const char* kFiles[] = {
      "a.o3d",       "A.O3D",       "pack.res", "pack.RES",       "ostu.ini",
      "Patcher.EXE", "x.part",      "x.old",    "x.PDB",          "x.pdb",
      "log",         "log.txt",     ".old",     "x.repack_tmp",   "\u00e9t\u00e9.dds",
      "no dot",      "regInfo.dat", "powerups", "Patcher.exe.bak"};

  template <std::size_t Size>
  const char* Any(const char* const (&names)[Size]) {
    return names[random_() % Size];
  }
  bool Chance(unsigned percent) { return random_() % 100 < percent; }

  void AddEntry() {
    fs::path place = Game() / Any(kTops);
    for (auto depth = random_() % 4; depth > 0; --depth) place /= Any(kDirectories);
    if (Chance(95)) place /= platform::PathFromUtf8(Any(kFiles));
    std::error_code error;
    // Not through a link that an earlier entry made: this is the outside of the game's directory.
    for (fs::path at = place.parent_path(); at != Game(); at = at.parent_path()) {
      if (fs::is_symlink(at, error)) return;
    }
    fs::create_directories(place.parent_path(), error);
    if (error || fs::exists(fs::symlink_status(place, error))) return;
    if (Chance(85)) {
      WriteWhole(place, "content");
      return;
    }
    // Where the system has no symbolic links the tree does without.
    switch (random_() % 5) {
      case 0:
        return fs::create_directory_symlink(Outside(), place, error);
      case 1:
        return fs::create_symlink(Outside() / "a.o3d", place, error);
      case 2:
        return fs::create_directory_symlink(Game() / "Capture", place, error);
      case 3:
        return fs::create_symlink("nowhere", place, error);
      default:
        fs::create_directory(place, error);
    }
  }

  ScratchDirectory scratch_;
  fs::path root_ = scratch_ / "";
  std::mt19937 random_;
};

TEST(CleanupTest, RemovesExactlyWhatEveryRuleAllows) {
  for (std::uint32_t seed = 1; seed <= 12; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomGame game(seed);
    const std::vector<std::string> listed = game.RandomListing();
    const Rules rules(Rules::Read(game.Game()), listed);
    const Rules::Disk outside = Rules::Read(game.Outside());
    RecordingHost host;
    CleanUp(host, Listing(listed));

    const Rules::Disk after = Rules::Read(game.Game());
    std::size_t residual = 0;
    for (const auto& [path, entry] : rules.Before()) {
      const bool isResidual = rules.IsResidual(path);
      residual += isResidual ? 1 : 0;
      EXPECT_EQ(after.count(path) == 0, isResidual || rules.IsObsolete(path)) << path;
    }
    EXPECT_EQ(Rules::Read(game.Outside()).size(), outside.size());
    const std::vector<std::string> told = Statuses(host);
    ASSERT_GE(told.size(), residual > 0 ? 1u : 0u);
    if (residual > 0) {
      EXPECT_EQ(told[0].substr(0, told[0].find(' ')), std::to_string(residual));
    }
  }
}

}  // namespace
}  // namespace patcher
