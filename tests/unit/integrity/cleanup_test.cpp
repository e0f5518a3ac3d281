#include "integrity/cleanup.h"

#include <gtest/gtest.h>

#include "integrity/protected_path.h"
#include "platform/text.h"
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

TEST(CleanupTest, AFileInstalledUnderAnotherSpellingStays) {
  const ScratchDirectory game;
  RecordingHost host;
  Put(game / "Model/a");
  Put(game / "Model/b");
  Put(game / "x64/c");
  CleanUp(host, Listing({"./Model//a", "Model/./b", "./x64/c"}));
  EXPECT_TRUE(Statuses(host).empty());
}

TEST(CleanupTest, OnlyLooseFilesAndObsoleteItemsGo) {
  const ScratchDirectory scratch;
  const fs::path root = scratch / "";
  const fs::path game = root / "game";
  fs::create_directory(game);
  SetExePath(game / "Patcher");
  const struct {
    const char* path;
    bool goes;
  } kEntries[] = {
      {"game/Model/loose.o3d", true},
      {"game/Model/deep one/B/loose", true},
      {"game/World/\u00e9t\u00e9.dds", true},
      {"game/Icon/pack.RES", true},
      {"game/SFX/Ostu.exe", true},
      {"game/Icon/pack.res", false},
      {"game/Item/log/trace.txt", false},
      {"game/Item/deep/ostu.ini", false},
      {"game/Char/Listed.O3D", false},
      {"game/Client/.old", true},
      {"game/model2/loose.o3d", false},
      {"game/Capture/shot.jpg", false},
      {"game/Data/loose.o3d", false},
      {"game/x64/Capture/shot.jpg", true},
      {"game/x64/deep/lib.dll", true},
      {"game/force32.txt", true},
      {"game/OstuD.dll", false},
      {"game/patcher-assets/logo.png", false},
      {"outside/Model/a.o3d", false},
      {"outside/b.o3d", false},
  };
  for (const auto& entry : kEntries) Put(root / platform::PathFromUtf8(entry.path));
  std::error_code noLinks;  // the library makes none on Windows
  fs::create_directory_symlink(root / "outside", game / "Model/link", noLinks);
  fs::create_directory_symlink(root / "outside", game / "x64/link", noLinks);
  fs::create_directory_symlink(root / "outside", game / "World/deep", noLinks);
  fs::create_directory_symlink(root / "outside", game / "ui-assets", noLinks);
  fs::create_symlink("nowhere", game / "Model/dangling", noLinks);
  fs::create_symlink(root / "outside/b.o3d", game / "Model/file link", noLinks);

  RecordingHost host;
  CleanUp(host, Listing({"char\\LISTED.o3d", "OSTUD.DLL/inside", "Patcher-Assets/logo.png"}));
  for (const auto& entry : kEntries) {
    EXPECT_EQ(fs::exists(root / platform::PathFromUtf8(entry.path)), !entry.goes) << entry.path;
  }
  for (const char* kept : {"Model/link", "World/deep", "Model/dangling"}) {
    EXPECT_TRUE(noLinks || fs::is_symlink(game / kept)) << kept;
  }
  for (const char* gone : {"x64", "ui-assets", "Model/file link"}) {
    EXPECT_FALSE(fs::exists(fs::symlink_status(game / gone))) << gone;
  }
  EXPECT_EQ(Statuses(host).size(), 2u);
}

}  // namespace
}  // namespace patcher
