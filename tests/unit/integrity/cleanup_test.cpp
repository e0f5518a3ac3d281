#include "integrity/cleanup.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "integrity/protected_path.h"
#include "platform/text.h"
#include "support/directory_link.h"
#include "support/recording_host.h"
#include "support/scratch_directory.h"

namespace patcher {
namespace {

namespace fs = std::filesystem;

using Names = std::vector<std::string>;

class CleanupTest : public testing::Test {
 protected:
  void Put(const Names& files) {
    for (const std::string& name : files) {
      const fs::path file = game / "" / platform::PathFromBytes(name);
      fs::create_directories(file.parent_path());
      WriteWhole(file, "x");
    }
  }

  /// Cleans up by a manifest with these paths; returns the texts of the status.
  Names CleanUpFor(const Names& paths) {
    PatchManifest manifest;
    for (const std::string& path : paths) manifest.files.push_back({path, 1, "", ""});
    CleanUp(host, manifest);
    Names texts;
    for (const UiEvent& event : host.TakeEvents()) {
      texts.push_back(*reinterpret_cast<std::string*>(event.lParam));
      ReleasePayload(event);
    }
    return texts;
  }

  void Expect(const Names& kept, const Names& gone) {
    for (const std::string& file : kept) EXPECT_TRUE(fs::exists(game / file)) << file;
    for (const std::string& file : gone) EXPECT_FALSE(fs::exists(game / file)) << file;
  }

  const ScratchDirectory game;
  RecordingHost host;
};

TEST(ProtectedPathTest, Rules) {
  const std::pair<const char*, bool> cases[] = {
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
  for (const auto& [path, isProtected] : cases) EXPECT_EQ(IsProtectedPath(path), isProtected) << path;
}

TEST_F(CleanupTest, RemovesOnlyUnlistedFilesOfTheGameDirectories) {
  const Names kept{"World/kept.dds", "Model/pack.res", "Capture/a.o3d", "model2/a.o3d", "SFX/LOG/a/b",
                   "Icon",           "loose.txt",      "Ostu.exe",      "mss32.dll",    "Item/a"};
  const Names gone{"Model/a.o3d", "Char/pack.RES", "Item/x.old.dds",
                   "Char/.old",   "SFX/no dot",    "World/deep/b.dds"};
  Put(kept);
  Put(gone);
  Put({"ui-assets/a", "patcher-assets/a", "x64/log/a", "force32.txt", "OstuD.dll", "mssmp3.asi",
       "mssogg.asi"});
  for (int i = 10; i < 35; ++i) Put({"Model/f" + std::to_string(i)});
  const Names texts = CleanUpFor({"world\\KEPT.dds", "./Item//a", "OSTU.EXE", "mss32.dll/inside"});
  Expect(kept, gone);
  Expect({"Model"},
         {"ui-assets", "patcher-assets", "x64", "force32.txt", "OstuD.dll", "mssmp3.asi", "mssogg.asi"});
  ASSERT_EQ(texts.size(), 2u);
  EXPECT_TRUE(texts[0].starts_with("31 fichier(s) residuel(s) supprime(s) (hors manifeste) : ")) << texts[0];
  EXPECT_EQ(std::count(texts[0].begin(), texts[0].end(), ';'), 20);
  EXPECT_TRUE(texts[1].starts_with("7 element(s) obsolete(s) supprime(s) : ")) << texts[1];
  EXPECT_NE(texts[1].find("x64 (doublon du client 64 bits, desormais a la racine); "), std::string::npos);
  EXPECT_EQ(CleanUpFor({"world/kept.dds"}).size(), 2u) << "removes what this manifest does not list";
  EXPECT_TRUE(CleanUpFor({"world/kept.dds"}).empty());
}

TEST_F(CleanupTest, RemovesTemporaryFilesOfPublishedFiles) {
  const Names kept{"Model/a",        "data/sub/b",  "data/sub/c.part", "data/x.part",
                   "data/d.part/in", "real/e.part", "data/.part"};
  const Names gone{"Model/a.part", "data/sub/b.part", "top.part", "Patcher.new.exe.part"};
  Put(kept);
  Put(gone);
  const DirectoryLink link(game / "link", game / "real");
  ASSERT_TRUE(link.IsThere());
  const Names listed{"Model/a", "data/sub/b", "data/x.part", "data/d", "link/e", "./top", "nowhere/x"};
  EXPECT_TRUE(CleanUpFor(listed).empty());
  Expect(kept, gone);
}

TEST_F(CleanupTest, DoesNotFollowLinks) {
  Put({"outside/a.o3d", "outside/sub/b.o3d", "World/c.o3d", "x64/a", "patcher-assets/sub/a"});
  const DirectoryLink links[] = {{game / "Model", game / "outside"},
                                 {game / "World/link", game / "outside"},
                                 {game / "ui-assets", game / "outside"},
                                 {game / "x64/link", game / "outside"},
                                 {game / "patcher-assets/sub/link", game / "outside"}};
  for (const DirectoryLink& link : links) ASSERT_TRUE(link.IsThere());
  const Names texts = CleanUpFor({"Model/never there.o3d"});
  Expect({"outside/a.o3d", "outside/sub/b.o3d"}, {"World/c.o3d", "x64/a", "patcher-assets/sub/a"});
  // Under Wine the library does not remove every link.
  for (const std::string name : {"x64", "patcher-assets"}) {
    EXPECT_EQ(texts.back().find(name + " (") == std::string::npos, fs::exists(game / name)) << texts.back();
  }
}

}  // namespace
}  // namespace patcher
