#include <gtest/gtest.h>

#include "integrity/damaged_files.h"
#include "integrity/verify_files.h"
#include "support/directory_link.h"
#include "support/recording_host.h"
#include "support/scratch_directory.h"
#include "update/local_manifest.h"

namespace patcher {
namespace {

namespace fs = std::filesystem;

TEST(VerifyFilesTest, EveryFileGetsOneVerdict) {
  const ScratchDirectory game;
  RecordingHost host;
  const std::string digest = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";
  for (const char* name : {"good", "short", "changed", "capitals"}) WriteWhole(game / name, "abc");
  WriteWhole(game / "short", "ab");
  WriteWhole(game / "changed", "abd");
  fs::create_directory(game / "folder");
  PatchManifest manifest;
  const std::string tooLong(300, 'n');
  for (const std::string name :
       {"short", "good", "folder", "capitals", "changed", "absent", "good/below", "\xff", tooLong.c_str()}) {
    manifest.files.push_back({name, 3, digest, ""});
  }
  manifest.files[3].sha256[0] = 'B';
  CheckResult result;
  VerifyFiles(host, manifest, result);
  EXPECT_TRUE(result.total == 9 && result.ok == 1 && result.bytes == 24u);
  EXPECT_TRUE(result.missing == 4 && result.corrupt == 4) << result.missing << ", " << result.corrupt;
  std::error_code error;
  const bool isKnown = fs::status(game / tooLong, error).type() == fs::file_type::not_found;  // on Windows
  EXPECT_EQ(result.unexamined, isKnown ? std::vector<std::string>() : std::vector<std::string>{tooLong});
  EXPECT_EQ(result.samples, (std::vector<std::string>{"absent", "capitals", "changed", "folder", "good/below",
                                                      tooLong, "short", "\xff"}));
}

TEST(DamagedFilesTest, RemovesOnlyListedFilesOfTheInstallation) {
  const ScratchDirectory scratch;
  const fs::path root = scratch / "";
  fs::create_directories(root / "game" / "folder");
  fs::create_directory(root / "game" / "empty");
  fs::create_directory(root / "game" / "real");
  SetExePath(root / "game" / "Patcher");
  for (const char* name :
       {"victim", "game/Patcher", "game/a", "game/kept", "game/unread", "game/folder/mine", "game/real/b"}) {
    WriteWhole(root / name, "x");
  }
  const DirectoryLink link(root / "game" / "link", root / "game" / "real");
  ASSERT_TRUE(link.IsThere());
  std::vector<std::string> listed{"../victim", "unread", "Patcher", "a", "empty",
                                  "folder",    "link/b", "",        ".", "folder/../../victim",
                                  "absent/x"};
  listed.push_back((root / "victim").string());
  LocalState state{{"kept", "1"}};
  for (const std::string& path : listed) state[path] = "2";
  WriteWhole(root / "game" / "patch_manifest.json", RecordText(state, 7));

  EXPECT_TRUE(DiscardDamagedFiles({0, 0, 0, 0, 0, listed, {"unread"}}));
  for (const char* name : {"victim", "game/Patcher", "game/kept", "game/unread", "game/folder/mine",
                           "game/real/b", "game/link"}) {
    EXPECT_TRUE(fs::exists(root / name)) << name;
  }
  EXPECT_FALSE(fs::exists(root / "game" / "a"));
  EXPECT_FALSE(fs::exists(root / "game" / "empty"));
  std::int32_t version = 0;
  EXPECT_EQ(LoadLocalManifest(root / "game" / "patch_manifest.json", &version), (LocalState{{"kept", "1"}}));
  EXPECT_EQ(version, 7);
}

}  // namespace
}  // namespace patcher
