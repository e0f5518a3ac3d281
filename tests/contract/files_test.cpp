// Files and the reading of files.
#include "platform/files.h"

#include <cstdlib>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "platform/batch_flush.h"
#include "platform/file_reader.h"
#include "support/scratch_directory.h"

namespace platform {
namespace {

namespace fs = std::filesystem;
using patcher::ReadWhole;
using patcher::WriteWhole;

struct FilesContract : testing::Test {
  const patcher::ScratchDirectory directory;
  const fs::path file = directory / "file";
};
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
  EXPECT_EQ(ProbeExclusiveWrite(directory / "folder"), ExclusiveWrite::kRefused);
  EXPECT_EQ(ProbeExclusiveWrite(directory / "missing"), ExclusiveWrite::kUnknown);
  EXPECT_FALSE(fs::exists(directory / "missing"));
  EXPECT_NE(CreatePrivateFile(file, "other"), 0);
  EXPECT_EQ(ReadWhole(file), "content");
}

TEST_F(FilesContract, AMoveOrCopyReplacesAFileOrChangesNothing) {
  using Move = int (*)(const fs::path& from, const fs::path& to);
  const std::pair<const char*, Move> moves[] = {
      {"move", [](const fs::path& from, const fs::path& to) { return MoveReplacing(from, to, false); }},
      {"move or copy",
       [](const fs::path& from, const fs::path& to) { return MoveReplacing(from, to, true); }},
      {"move durably", MoveDurably},
      {"move aside", MoveAside},
      {"copy", CopyOver}};
  fs::create_directory(directory / "folder");
  for (const auto& [name, move] : moves) {
    WriteWhole(file, "new");
    WriteWhole(directory / "target", "old and longer");
    EXPECT_NE(move(file, directory / "folder"), 0) << name;
    EXPECT_NE(move(file, directory / "nowhere/file"), 0) << name;
    EXPECT_NE(move(directory / "missing", directory / "target"), 0) << name;
    EXPECT_EQ(ReadWhole(file) + ReadWhole(directory / "target"), "newold and longer") << name;
    EXPECT_EQ(move(file, directory / "target"), 0) << name;
    EXPECT_EQ(ReadWhole(directory / "target"), "new") << name;
    EXPECT_EQ(fs::exists(file), move == CopyOver) << name;
  }
  EXPECT_EQ(MoveReplacing(directory / "folder", directory / "moved", false), 0);
  EXPECT_TRUE(fs::is_directory(directory / "moved"));
}

TEST_F(FilesContract, MovesToAnotherVolumeIfAllowed) {
  const char* other = std::getenv("PATCHER_CONTRACT_OTHER_VOLUME");
  ASSERT_NE(other, nullptr) << "a directory on another volume than the temporary files is needed";
  const fs::path target = fs::path(other) / "target";
  WriteWhole(file, "new");
  WriteWhole(target, "old");
  EXPECT_NE(MoveReplacing(file, target, false), 0);
  EXPECT_EQ(ReadWhole(file) + ReadWhole(target), "newold");
  EXPECT_EQ(MoveReplacing(file, target, true), 0);
  EXPECT_FALSE(fs::exists(file));
  EXPECT_EQ(ReadWhole(target), "new");
  EXPECT_EQ(std::distance(fs::directory_iterator(other), {}), 1) << "no temporary file is left";
}

TEST_F(FilesContract, AnOpenFileIsOverwritten) {
  WriteWhole(file, "content");
  std::ifstream holder(file, std::ios::binary);  // shares reading and writing, on Windows not a move
  EXPECT_TRUE(CanBeWritten(file));
  for (const std::string& content :
       {std::string("longer content"), std::string("short"), std::string(), std::string(100000, 'x')}) {
    EXPECT_EQ(OverwriteInPlace(file, content), Overwriting::kDone);
    EXPECT_EQ(ReadWhole(file), content);
  }
  holder.seekg(99999);
  EXPECT_EQ(holder.get(), 'x') << "the same file";
  EXPECT_FALSE(CanBeWritten(directory / "missing"));
  EXPECT_EQ(OverwriteInPlace(directory / "missing", "x"), Overwriting::kUntouched);
  EXPECT_FALSE(fs::exists(directory / "missing"));
}

TEST_F(FilesContract, AReadOnlyFileIsFlushedAndAMissingFileIsReported) {
  WriteWhole(file, "content");
  fs::permissions(file, fs::perms::owner_read);
  EXPECT_EQ(StartFlush(file), 0);
  EXPECT_TRUE(FinishFlush({&file, 1}).front());
  EXPECT_EQ(fs::status(file).permissions() & fs::perms::owner_write, fs::perms::none);
  fs::permissions(file, fs::perms::owner_write, fs::perm_options::add);
  EXPECT_EQ(FlushDirectory(directory / ""), 0);
  const fs::path missing = directory / "nowhere" / "file";
  EXPECT_NE(FlushToDisk(missing), 0);
  const fs::path both[] = {missing, file};
  const std::vector<bool> flushed = FinishFlush(both);
  EXPECT_TRUE(StartFlush(missing) != 0 || !flushed[0]) << "one of the steps reports it";
  EXPECT_TRUE(flushed[1]);
}

TEST_F(FilesContract, AReaderDoesNotLockAndEndsAtTheFirstSize) {
  WriteWhole(file, "content");
  FileReader reader(file);
  EXPECT_EQ(reader.Size(), 7u);
  EXPECT_EQ(Next(reader, 4), "cont");
  WriteWhole(file, "the changed content");
  EXPECT_TRUE(fs::remove(file));
  EXPECT_EQ(Next(reader, 4), "cha");
  EXPECT_EQ(Next(reader, 4), "");
  WriteWhole(directory / "shorter", "content");
  FileReader shorter(directory / "shorter");
  WriteWhole(directory / "shorter", "cut");
  EXPECT_EQ(Next(shorter, 9), "cut");
  fs::create_directory(directory / "folder");
  for (const char* name : {"folder", "missing"}) {
    FileReader other(directory / name);
    EXPECT_FALSE(other.Size()) << name;
    EXPECT_EQ(Next(other, 4), "") << name;
  }
}

}  // namespace
}  // namespace platform
