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
  void RunAs(const std::string& name) { SetExePath(directory_ / name); }

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
};

TEST_F(SelfUpdateSwapTest, TakesThePlaceUnderTheLaunchersOwnName) {
  RunAs("Mon jeu.exe");
  Put("Mon jeu.exe", "old");
  Put("Patcher.new.exe", "new");
  Put("Patcher.old.exe", "older");
  fs::permissions(directory_ / "Patcher.old.exe", fs::perms::owner_read);
  EXPECT_EQ(Swap(), Boxes());
  EXPECT_EQ(At("Mon jeu.exe"), "new");
  EXPECT_EQ(At("Patcher.old.exe"), "old");
  EXPECT_FALSE(Exists("Patcher.new.exe"));
  EXPECT_EQ(started_, "new");
}

TEST_F(SelfUpdateSwapTest, ARefusedFirstMoveChangesNothing) {
  RunAs("Patcher.exe");
  Put("Patcher.exe", "old");
  Put("Patcher.new.exe", "new");
  fs::create_directory(directory_ / "Patcher.old.exe");
  Put("Patcher.old.exe/mine", "kept");
  EXPECT_EQ(Swap(), Boxes{kLocked});
  EXPECT_EQ(At("Patcher.exe"), "old");
  EXPECT_EQ(At("Patcher.new.exe"), "new");
  EXPECT_EQ(At("Patcher.old.exe/mine"), "kept");
}

TEST_F(SelfUpdateSwapTest, ARefusedSecondMoveBringsTheOldLauncherBack) {
  RunAs("Patcher.exe");
  Put("Patcher.exe", "old");
  EXPECT_EQ(Swap(), Boxes{kIncomplete});
  EXPECT_EQ(At("Patcher.exe"), "old");
  EXPECT_FALSE(Exists("Patcher.old.exe"));
  EXPECT_EQ(started_, "");
}

TEST_F(SelfUpdateSwapTest, ALauncherThatCannotBeStartedIsTakenBack) {
  RunAs("Patcher.exe");
  Put("Patcher.exe", "old");
  Put("Patcher.new.exe", "new");
  EXPECT_EQ(Swap(193), Boxes{kIncomplete});
  EXPECT_EQ(started_, "new");
  EXPECT_EQ(At("Patcher.exe"), "old");
  EXPECT_EQ(At("Patcher.new.exe"), "new");
  EXPECT_FALSE(Exists("Patcher.old.exe"));
}

/// What a death between the two moves leaves where the file system has hard links.
TEST_F(SelfUpdateSwapTest, ASecondNameOfTheRunningLauncherMayGo) {
  RunAs("Patcher.exe");
  Put("Patcher.exe", "old");
  std::error_code error;
  fs::create_hard_link(directory_ / "Patcher.exe", directory_ / "Patcher.old.exe", error);
  // Windows moves the launcher, and the library does not count links there.
  if (error || fs::hard_link_count(directory_ / "Patcher.exe") != 2) return;
  EXPECT_TRUE(IsOwnName(directory_ / "Patcher.exe"));
  EXPECT_FALSE(IsOwnName(directory_ / "Patcher.old.exe"));
  Put("Patcher.new.exe", "new");
  EXPECT_EQ(Swap(), Boxes());
  EXPECT_EQ(At("Patcher.exe"), "new");
  EXPECT_EQ(At("Patcher.old.exe"), "old");
}

TEST_F(SelfUpdateSwapTest, AScannerThatHoldsTheNewLauncherIsWaitedFor) {
  RunAs("Patcher.exe");
  Put("Patcher.exe", "old");
  Put("Patcher.new.exe", "new");
  std::ifstream scanner(directory_ / "Patcher.new.exe");  // on Windows nobody can move it now
  std::thread release([&scanner] {
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    scanner.close();
  });
  EXPECT_EQ(Swap(), Boxes());
  release.join();
  EXPECT_EQ(At("Patcher.exe"), "new");
}

TEST_F(SelfUpdateSwapTest, ALauncherStartedUnderTheNameOfTheOldOneMakesWayToo) {
  RunAs("Patcher.old.exe");
  Put("Patcher.old.exe", "old");
  Put("Patcher.new.exe", "new");
  EXPECT_EQ(Swap(), Boxes());
  EXPECT_EQ(At("Patcher.old.exe"), "new");
  EXPECT_EQ(At("Patcher.old.exe.old"), "old");
}

TEST_F(SelfUpdateSwapTest, ALauncherStartedUnderTheNameOfTheNewOneFindsTheNextBesideIt) {
  RunAs("Patcher.new.exe");
  Put("Patcher.new.exe", "new");
  Put("Patcher.new.exe.new", "newer");
  EXPECT_EQ(Swap(), Boxes());
  EXPECT_EQ(At("Patcher.new.exe"), "newer");
  EXPECT_EQ(At("Patcher.old.exe"), "new");
}

}  // namespace
}  // namespace patcher
