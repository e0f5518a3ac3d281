#include "platform/file_reader.h"

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "support/scratch_directory.h"

namespace platform {
namespace {

namespace fs = std::filesystem;
using patcher::ScratchDirectory;
using patcher::WriteWhole;

std::string Next(FileReader& reader, std::size_t size) {
  std::string block(size, '?');
  std::size_t count = 0;
  EXPECT_TRUE(reader.Read(block.data(), size, count));
  return block.substr(0, count);
}

TEST(FileReaderContract, ReadsToTheEndOfTheOpeningAndLocksNothing) {
  const ScratchDirectory directory;
  const fs::path file = directory / "file";
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

TEST(FileReaderContract, OnlyRegularFilesHaveASize) {
  const ScratchDirectory directory;
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
