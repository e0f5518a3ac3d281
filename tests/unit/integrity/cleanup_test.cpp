#include "integrity/cleanup.h"

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

TEST(CleanupTest, ReportsWhatItRemoved) {
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

TEST(CleanupTest, OnlyUnlistedFilesOfTheGamesOwnDirectoriesGo) {
  const ScratchDirectory game;
  RecordingHost host;
  const char* const kept[] = {"Model/pack.res", "Capture/a.o3d", "model2/a.o3d", "Data/a.o3d", "SFX/LOG/a/b"};
  const char* const gone[] = {"Model/a.o3d", "World/deep/b.dds", "Icon/pack.RES", "Item/x.old.dds",
                              "Char/.old",   "SFX/no dot",       "Client/log.txt"};
  const char* const obsolete[] = {"ui-assets/a", "patcher-assets/a", "x64/a/b",    "force32.txt", "Ostu.exe",
                                  "OstuD.dll",   "mss32.dll",        "mssmp3.asi", "mssogg.asi"};
  for (const char* file : kept) Put(game / file);
  for (const char* file : gone) Put(game / file);
  for (const char* file : obsolete) Put(game / file);
  CleanUp(host, Listing({"Model/never there.o3d"}));
  for (const char* file : kept) EXPECT_TRUE(fs::exists(game / file)) << file;
  for (const char* file : gone) EXPECT_FALSE(fs::exists(game / file)) << file;
  for (const char* file : obsolete) EXPECT_FALSE(fs::exists(game / "" / *fs::path(file).begin())) << file;
  const std::vector<std::string> texts = Statuses(host);
  ASSERT_EQ(texts.size(), 2u);
  EXPECT_TRUE(texts[0].starts_with("7 fichier(s)")) << texts[0];
  EXPECT_TRUE(texts[1].starts_with("9 element(s)")) << texts[1];
}

TEST(CleanupTest, WhatALinkLeadsToStays) {
  const ScratchDirectory game;
  RecordingHost host;
  for (const char* file : {"outside/a.o3d", "outside/sub/b.o3d", "World/c.o3d", "x64/a"}) Put(game / file);
  const DirectoryLink links[] = {{game / "Model", game / "outside"},
                                 {game / "World/link", game / "outside"},
                                 {game / "ui-assets", game / "outside"},
                                 {game / "x64/link", game / "outside"}};
  for (const DirectoryLink& link : links) ASSERT_TRUE(link.IsThere());
  CleanUp(host, Listing({"Model/never there.o3d"}));
  EXPECT_TRUE(fs::exists(game / "outside/a.o3d"));
  EXPECT_TRUE(fs::exists(game / "outside/sub/b.o3d"));
  EXPECT_FALSE(fs::exists(game / "World/c.o3d"));
  EXPECT_FALSE(fs::exists(game / "x64/a"));
}

}  // namespace
}  // namespace patcher
