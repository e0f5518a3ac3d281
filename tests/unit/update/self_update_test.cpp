#include "update/self_update.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "support/scratch_directory.h"

namespace patcher {
namespace {

namespace fs = std::filesystem;

constexpr char kLocked[] = "Impossible de remplacer le patcher (fichier verrouille).";
constexpr char kIncomplete[] = "Mise a jour du patcher incomplete, relance annulee.";

/// An installation whose launchers are texts.
class SelfUpdateSwapTest : public testing::Test {
 protected:
  /// Returns the boxes. The new launcher's start gives `startError`.
  std::vector<std::string> Swap(int startError = 0) {
    std::vector<std::string> boxes;
    SelfUpdateSwap(
        [&](const std::u16string& text, const std::u16string& title) {
          EXPECT_EQ(title, BuildWindowTitle());
          boxes.emplace_back(text.begin(), text.end());
        },
        [&](const fs::path& launcher) {
          EXPECT_EQ(launcher, ExePath());
          started_ = ReadWhole(launcher);
          return startError;
        });
    return boxes;
  }

  std::string At(const std::string& name) { return ReadWhole(directory_ / name); }
  void Put(const std::string& name, const std::string& text) { WriteWhole(directory_ / name, text); }
  bool Exists(const std::string& name) { return fs::exists(directory_ / name); }

  std::string started_;
  ScratchDirectory directory_;
  using Boxes = std::vector<std::string>;

  /// Swaps as the launcher `own`, beside a new one.
  Boxes SwapAs(const std::string& own, const std::string& fetched = "Patcher.new.exe", int startError = 0) {
    SetExePath(directory_ / own);
    Put(own, "old");
    if (!fetched.empty()) Put(fetched, "new");
    return Swap(startError);
  }
};

TEST_F(SelfUpdateSwapTest, ReplacesTheLauncherUnderWhateverNameItRuns) {
  const struct {
    const char *own, *fetched, *aside;
  } cases[] = {{"Mon jeu.exe", "Patcher.new.exe", "Patcher.old.exe"},
               {"Patcher.old.exe", "Patcher.new.exe", "Patcher.old.exe.old"},
               {"Patcher.new.exe", "Patcher.new.exe.new", "Patcher.old.exe"}};
  for (const auto& [own, fetched, aside] : cases) {
    Put(aside, "older");
    fs::permissions(directory_ / aside, fs::perms::owner_read);
    EXPECT_EQ(SwapAs(own, fetched), Boxes()) << own;
    EXPECT_EQ(At(own), "new") << own;
    EXPECT_EQ(At(aside), "old") << own;
    EXPECT_FALSE(Exists(fetched)) << own;
    EXPECT_EQ(started_, "new") << own;
    fs::remove(directory_ / own);
    fs::remove(directory_ / aside);
  }
}

TEST_F(SelfUpdateSwapTest, ARefusedFirstMoveChangesNothing) {
  fs::create_directory(directory_ / "Patcher.old.exe");
  Put("Patcher.old.exe/mine", "kept");
  EXPECT_EQ(SwapAs("Patcher.exe"), Boxes{kLocked});
  EXPECT_EQ(At("Patcher.exe"), "old");
  EXPECT_EQ(At("Patcher.new.exe"), "new");
  EXPECT_EQ(At("Patcher.old.exe/mine"), "kept");
}

TEST_F(SelfUpdateSwapTest, ASwapThatFailsBringsTheOldLauncherBack) {
  EXPECT_EQ(SwapAs("Patcher.exe", ""), Boxes{kIncomplete});
  EXPECT_EQ(started_, "");
  EXPECT_EQ(SwapAs("Patcher.exe", "Patcher.new.exe", 193), Boxes{kIncomplete});
  EXPECT_EQ(started_, "new");
  EXPECT_EQ(At("Patcher.exe"), "old");
  EXPECT_EQ(At("Patcher.new.exe"), "new");
  EXPECT_FALSE(Exists("Patcher.old.exe"));
}

/// What a death between the two moves leaves where the file system has hard links.
TEST_F(SelfUpdateSwapTest, ASecondNameOfTheRunningLauncherMayGo) {
  SetExePath(directory_ / "Patcher.exe");
  Put("Patcher.exe", "old");
  std::error_code error;
  fs::create_hard_link(directory_ / "Patcher.exe", directory_ / "Patcher.old.exe", error);
  // Windows moves the launcher, and the library does not count links there.
  if (error || fs::hard_link_count(directory_ / "Patcher.exe") != 2) return;
  EXPECT_TRUE(IsOwnName(directory_ / "Patcher.exe"));
  EXPECT_FALSE(IsOwnName(directory_ / "Patcher.old.exe"));
  EXPECT_EQ(SwapAs("Patcher.exe"), Boxes());
  EXPECT_EQ(At("Patcher.exe"), "new");
  EXPECT_EQ(At("Patcher.old.exe"), "old");
}

TEST_F(SelfUpdateSwapTest, AScannerThatHoldsTheNewLauncherIsWaitedFor) {
  Put("Patcher.new.exe", "new");
  std::ifstream scanner(directory_ / "Patcher.new.exe");  // on Windows it cannot be moved now
  std::thread release([&scanner] {
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    scanner.close();
  });
  EXPECT_EQ(SwapAs("Patcher.exe", ""), Boxes());
  release.join();
  EXPECT_EQ(At("Patcher.exe"), "new");
}

}  // namespace
}  // namespace patcher
