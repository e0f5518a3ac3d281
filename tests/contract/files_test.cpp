#include "platform/files.h"

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/batch_flush.h"
#include "support/scratch_directory.h"

namespace platform {
namespace {

namespace fs = std::filesystem;
using patcher::ReadWhole;
using patcher::ScratchDirectory;
using patcher::WriteWhole;

TEST(FilesContract, ProbeChangesNothing) {
  const ScratchDirectory directory;
  const fs::path file = directory / "file";
  WriteWhole(file, "content");
  fs::create_directory(directory / "folder");
  EXPECT_EQ(ProbeExclusiveWrite(file), ExclusiveWrite::kPossible);
  EXPECT_EQ(ReadWhole(file), "content");
  EXPECT_EQ(ProbeExclusiveWrite(directory / "folder"), ExclusiveWrite::kRefused);
  EXPECT_EQ(ProbeExclusiveWrite(directory / "missing"), ExclusiveWrite::kUnknown);
  EXPECT_FALSE(fs::exists(directory / "missing"));
}

TEST(FilesContract, AMoveReplacesAFileOrLeavesBothSides) {
  const ScratchDirectory directory;
  for (const bool copyAcrossVolumes : {false, true}) {
    WriteWhole(directory / "source", "new");
    WriteWhole(directory / "target", "old and longer");
    EXPECT_EQ(MoveReplacing(directory / "source", directory / "target", copyAcrossVolumes), 0);
    EXPECT_EQ(ReadWhole(directory / "target"), "new");
    EXPECT_FALSE(fs::exists(directory / "source"));
  }
  fs::create_directory(directory / "folder");
  WriteWhole(directory / "folder/file", "content");
  EXPECT_EQ(MoveReplacing(directory / "folder", directory / "moved", false), 0);
  EXPECT_EQ(ReadWhole(directory / "moved/file"), "content");
  EXPECT_FALSE(fs::exists(directory / "folder"));
  EXPECT_NE(MoveReplacing(directory / "missing", directory / "target", true), 0);
  EXPECT_NE(MoveReplacing(directory / "target", directory / "moved", true), 0);
  EXPECT_NE(MoveReplacing(directory / "target", directory / "nowhere/file", true), 0);
  EXPECT_EQ(ReadWhole(directory / "target"), "new");
  EXPECT_TRUE(fs::is_directory(directory / "moved"));
}

TEST(FilesContract, APrivateFileReplacesNothing) {
  const ScratchDirectory directory;
  EXPECT_EQ(CreatePrivateFile(directory / "file", "content"), 0);
  EXPECT_NE(CreatePrivateFile(directory / "file", "other"), 0);
  EXPECT_NE(CreatePrivateFile(directory / "missing/file", "content"), 0);
  EXPECT_EQ(ReadWhole(directory / "file"), "content");
}

TEST(FilesContract, AFileThatMakesWayIsThereUnderTheOtherName) {
  const ScratchDirectory directory;
  WriteWhole(directory / "file", "old");
  for (const char* next : {"new", "newer"}) {
    const std::string before = ReadWhole(directory / "file");
    EXPECT_EQ(MoveAside(directory / "file", directory / "aside"), 0);
    EXPECT_EQ(ReadWhole(directory / "aside"), before);
    WriteWhole(directory / "next", next);
    EXPECT_EQ(MoveDurably(directory / "next", directory / "file"), 0);
    EXPECT_EQ(ReadWhole(directory / "file"), next);
    EXPECT_EQ(ReadWhole(directory / "aside"), before);
  }
  fs::create_directory(directory / "folder");
  EXPECT_NE(MoveAside(directory / "file", directory / "folder"), 0);
  EXPECT_NE(MoveAside(directory / "missing", directory / "aside"), 0);
  EXPECT_NE(MoveDurably(directory / "missing", directory / "file"), 0);
  EXPECT_EQ(ReadWhole(directory / "file"), "newer");
}

TEST(FilesContract, OtherVolumeIsReachedByACopyIfAllowed) {
  const char* other = std::getenv("PATCHER_CONTRACT_OTHER_VOLUME");
  ASSERT_NE(other, nullptr) << "a directory on another volume than the temporary files is needed";
  const ScratchDirectory directory;
  const fs::path source = directory / "source";
  const fs::path target = fs::path(other) / "target";
  const std::string content(300000, 'x');
  WriteWhole(source, content);
  WriteWhole(target, "old");

  EXPECT_NE(MoveReplacing(source, target, false), 0);
  EXPECT_EQ(ReadWhole(source), content);
  EXPECT_EQ(ReadWhole(target), "old");

  EXPECT_EQ(MoveReplacing(source, target, true), 0);
  EXPECT_FALSE(fs::exists(source));
  EXPECT_EQ(ReadWhole(target), content);
  EXPECT_EQ(std::distance(fs::directory_iterator(other), {}), 1) << "nothing is left beside the target";
}

TEST(FilesContract, ACopyReplacesWhatAFileHeld) {
  const ScratchDirectory directory;
  WriteWhole(directory / "source", "new");
  WriteWhole(directory / "target", "old and longer");
  EXPECT_EQ(CopyOver(directory / "source", directory / "target"), 0);
  EXPECT_EQ(ReadWhole(directory / "target"), "new");
  EXPECT_EQ(ReadWhole(directory / "source"), "new");
  fs::create_directory(directory / "folder");
  EXPECT_NE(CopyOver(directory / "source", directory / "folder"), 0);
  EXPECT_NE(CopyOver(directory / "missing", directory / "target"), 0);
  EXPECT_EQ(ReadWhole(directory / "target"), "new");
}

TEST(FilesContract, AnOpenFileIsOverwritten) {
  const ScratchDirectory directory;
  const fs::path file = directory / "file";
  WriteWhole(file, "content");
  std::ifstream holder(file, std::ios::binary);  // shares reading and writing, on Windows not a move
  EXPECT_TRUE(CanBeWritten(file));
  for (const std::string& content : {std::string("longer content"), std::string("short"),
                                     std::string("equal"), std::string(), std::string(100000, 'x')}) {
    EXPECT_EQ(OverwriteInPlace(file, content), Overwriting::kDone);
    EXPECT_EQ(ReadWhole(file), content);
  }
  holder.seekg(99999);
  EXPECT_EQ(holder.get(), 'x') << "the same file";
  holder.close();
  for (const fs::path& other : {fs::path(directory / "missing"), fs::path(directory / "")}) {
    EXPECT_FALSE(CanBeWritten(other));
    EXPECT_EQ(OverwriteInPlace(other, "x"), Overwriting::kUntouched);
  }
  EXPECT_FALSE(fs::exists(directory / "missing"));
}

TEST(FilesContract, ModeIsTakenOver) {
  const ScratchDirectory directory;
  WriteWhole(directory / "old", "");
  WriteWhole(directory / "new", "content");
  fs::permissions(directory / "old", fs::perms::group_exec, fs::perm_options::add);
  EXPECT_EQ(TakeOverOwner(directory / "old", directory / "new"), 0);
  EXPECT_EQ(fs::status(directory / "new").permissions(), fs::status(directory / "old").permissions());
}

TEST(FilesContract, ABatchIsFlushedInTwoSteps) {
  const ScratchDirectory directory;
  fs::create_directory(directory / "folder");
  const std::vector<fs::path> files{directory / "file", directory / "folder" / "read-only"};
  for (const fs::path& file : files) WriteWhole(file, "content");
  fs::permissions(files[1], fs::perms::owner_read);
  for (const fs::path& file : files) EXPECT_EQ(StartFlush(file), 0);
  EXPECT_EQ(FinishFlush(files), 0);
  EXPECT_EQ(fs::status(files[1]).permissions() & fs::perms::owner_write, fs::perms::none);
  EXPECT_EQ(FlushToDisk(files[0]), 0);
  EXPECT_EQ(ReadWhole(files[0]), "content");
  EXPECT_NE(FlushToDisk(directory / "missing"), 0);
  // One of the steps reports what cannot be flushed.
  const std::vector<fs::path> missing{directory / "nowhere" / "file"};
  EXPECT_TRUE(StartFlush(missing[0]) != 0 || FinishFlush(missing) != 0);
  EXPECT_EQ(FinishFlush({}), 0);
  EXPECT_EQ(FlushDirectory(directory / "folder"), 0);
  fs::permissions(files[1], fs::perms::owner_write, fs::perm_options::add);
}

TEST(FilesContract, LinksAreFollowedToTheirEnd) {
  const ScratchDirectory directory;
  const fs::path file = directory / "file";
  WriteWhole(file, "content");
  EXPECT_TRUE(fs::equivalent(ResolveLinks(file), file));
  EXPECT_EQ(ResolveLinks(directory / "missing"), directory / "missing");
  std::error_code error;
  fs::create_symlink("file", directory / "link", error);
  if (error) return;  // the library makes none on Windows
  fs::create_symlink("link", directory / "link to link");
  fs::create_symlink("missing", directory / "dangling");
  EXPECT_EQ(ResolveLinks(directory / "link to link").filename(), "file");
  EXPECT_EQ(ResolveLinks(directory / "dangling"), directory / "dangling");
}

}  // namespace
}  // namespace platform
