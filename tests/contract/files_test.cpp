// Files, links and the reading of files.
#include "platform/files.h"

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/batch_flush.h"
#include "platform/file_reader.h"
#include "platform/links.h"
#include "support/directory_link.h"
#include "support/scratch_directory.h"

namespace platform {
namespace {

namespace fs = std::filesystem;
using patcher::DirectoryLink;
using patcher::ReadWhole;
using patcher::WriteWhole;

struct FilesContract : testing::Test {
  const patcher::ScratchDirectory directory;
  const fs::path file = directory / "file";
};
using FileReaderContract = FilesContract;
using LinksContract = FilesContract;

std::string Next(FileReader& reader, std::size_t size) {
  std::string block(size, '?');
  std::size_t count = 0;
  EXPECT_TRUE(reader.Read(block.data(), size, count));
  return block.substr(0, count);
}

TEST_F(FilesContract, AProbeChangesNothingAndAPrivateFileReplacesNothing) {
  WriteWhole(file, "content");
  fs::create_directory(directory / "folder");
  EXPECT_EQ(ProbeExclusiveWrite(file), ExclusiveWrite::kPossible);
  EXPECT_EQ(ReadWhole(file), "content");
  EXPECT_EQ(ProbeExclusiveWrite(directory / "folder"), ExclusiveWrite::kRefused);
  EXPECT_EQ(ProbeExclusiveWrite(directory / "missing"), ExclusiveWrite::kUnknown);
  EXPECT_FALSE(fs::exists(directory / "missing"));
  EXPECT_NE(CreatePrivateFile(file, "other"), 0);
  EXPECT_EQ(ReadWhole(file), "content");
  EXPECT_NE(CreatePrivateFile(directory / "missing/file", "content"), 0);
  EXPECT_EQ(CreatePrivateFile(directory / "new", "content"), 0);
  EXPECT_EQ(ReadWhole(directory / "new"), "content");
}

TEST_F(FilesContract, AMoveOrACopyReplacesAFileOrLeavesBothSides) {
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
  WriteWhole(directory / "longer", "old and longer");
  EXPECT_EQ(CopyOver(directory / "target", directory / "longer"), 0);
  EXPECT_EQ(ReadWhole(directory / "longer"), "new");
  EXPECT_NE(CopyOver(directory / "target", directory / "moved"), 0);
  EXPECT_NE(CopyOver(directory / "missing", directory / "target"), 0);
  EXPECT_NE(MoveReplacing(directory / "missing", directory / "target", true), 0);
  EXPECT_NE(MoveReplacing(directory / "target", directory / "moved", true), 0);
  EXPECT_NE(MoveReplacing(directory / "target", directory / "nowhere/file", true), 0);
  EXPECT_EQ(ReadWhole(directory / "target"), "new");
  EXPECT_TRUE(fs::is_directory(directory / "moved"));
}

TEST_F(FilesContract, AFileThatMakesWayIsThereUnderTheOtherName) {
  WriteWhole(file, "old");
  for (const char* next : {"new", "newer"}) {
    const std::string before = ReadWhole(file);
    EXPECT_EQ(MoveAside(file, directory / "aside"), 0);
    EXPECT_EQ(ReadWhole(directory / "aside"), before);
    WriteWhole(directory / "next", next);
    EXPECT_EQ(MoveDurably(directory / "next", file), 0);
    EXPECT_EQ(ReadWhole(file), next);
    EXPECT_EQ(ReadWhole(directory / "aside"), before);
  }
  fs::create_directory(directory / "folder");
  EXPECT_NE(MoveAside(file, directory / "folder"), 0);
  EXPECT_NE(MoveAside(directory / "missing", directory / "aside"), 0);
  EXPECT_NE(MoveDurably(directory / "missing", file), 0);
  EXPECT_EQ(ReadWhole(file), "newer");
}

TEST_F(FilesContract, OtherVolumeIsReachedByACopyIfAllowed) {
  const char* other = std::getenv("PATCHER_CONTRACT_OTHER_VOLUME");
  ASSERT_NE(other, nullptr) << "a directory on another volume than the temporary files is needed";
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

TEST_F(FilesContract, AnOpenFileIsOverwritten) {
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

TEST_F(FilesContract, ModeIsTakenOver) {
  WriteWhole(directory / "old", "");
  WriteWhole(directory / "new", "content");
  fs::permissions(directory / "old", fs::perms::group_exec, fs::perm_options::add);
  EXPECT_EQ(TakeOverOwner(directory / "old", directory / "new"), 0);
  EXPECT_EQ(fs::status(directory / "new").permissions(), fs::status(directory / "old").permissions());
}

TEST_F(FilesContract, ABatchIsFlushedInTwoSteps) {
  fs::create_directory(directory / "folder");
  const std::vector<fs::path> files{file, directory / "folder" / "read-only"};
  for (const fs::path& each : files) WriteWhole(each, "content");
  fs::permissions(files[1], fs::perms::owner_read);
  for (const fs::path& each : files) EXPECT_EQ(StartFlush(each), 0);
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

TEST_F(FilesContract, LinksAreFollowedToTheirEnd) {
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

// The cleanup relies on the removal: the standard library takes the link away or leaves it (under Wine), and
// never reaches through it.
TEST_F(LinksContract, OnlyTheEntryItselfIsALinkAndIsRemoved) {
  fs::create_directory(directory / "folder");
  WriteWhole(directory / "folder" / "file", "content");
  for (const char* other : {"folder", "folder/file", "missing", "missing/below"}) {
    EXPECT_FALSE(IsLink(directory / other)) << other;
  }
  const DirectoryLink link(directory / "link", directory / "folder");
  ASSERT_TRUE(link.IsThere());
  EXPECT_TRUE(IsLink(directory / "link"));
  EXPECT_FALSE(IsLink(directory / "link" / "file")) << "what a link leads to is itself no link";
  std::error_code error;
  const bool removed = fs::remove(directory / "link", error);
  EXPECT_EQ(fs::exists(directory / "link"), !removed);
  EXPECT_EQ(ReadWhole(directory / "folder" / "file"), "content");
}

TEST_F(FileReaderContract, ReadsToTheEndOfTheOpeningAndLocksNothing) {
  WriteWhole(file, "content");
  FileReader reader(file);
  EXPECT_EQ(reader.Size(), 7u);
  EXPECT_EQ(Next(reader, 4), "cont");
  WriteWhole(directory / "shorter", "content");
  FileReader shorter(directory / "shorter");
  WriteWhole(directory / "shorter", "cut");
  EXPECT_EQ(Next(shorter, 9), "cut");
  EXPECT_EQ(Next(shorter, 9), "");
  WriteWhole(file, "the changed content");
  EXPECT_TRUE(fs::remove(file));
  EXPECT_EQ(Next(reader, 4), "cha") << "the end is that of the opening";
  EXPECT_EQ(Next(reader, 4), "");
}

TEST_F(FileReaderContract, OnlyRegularFilesHaveASize) {
  fs::create_directory(directory / "folder");
  for (const char* name : {"folder", "missing", "missing/below"}) {
    FileReader reader(directory / name);
    EXPECT_FALSE(reader.Size()) << name;
    EXPECT_EQ(Next(reader, 4), "") << name;
  }
  WriteWhole(directory / "empty", "");
  EXPECT_EQ(FileReader(directory / "empty").Size(), 0u);
}

}  // namespace
}  // namespace platform
