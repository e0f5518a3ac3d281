#include "platform/file_names.h"

#include <filesystem>
#include <system_error>

#include <gtest/gtest.h>

#include "platform/text.h"
#include "support/scratch_directory.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

/// Asks the system: creates a file under one path and looks for it under the other.
TEST(FileNamesContract, EqualIdentitiesMeanTheSameFile) {
  const std::pair<const char*, const char*> pairs[] = {
      {"d/data", "./d/data"}, {"d/data", "d//data"},  {"d/data", "d/./data"},  {"d/data", "d\\data"},
      {"d/data", "D/DATA"},   {"d/data", "d/data."},  {"d/data", "d/data. ."}, {"d/data", "d/data "},
      {"d/data", "d/ data"},  {"d/data", "d/data.x"}, {"d/data", "d/dat"},     {"d.x/a", "d./x/a"},
      {"d/\xE9", "d/\xC9"},   {"d/data", "d./data"},  {"d/data", "d /data"},   {"d/.data", "d/data"},
      {"d/a\\b", "d/a/b"},
  };
  for (const auto& [made, asked] : pairs) {
    const patcher::ScratchDirectory directory;
    const fs::path file = directory / "" / PathFromBytes(made);
    fs::create_directories(file.parent_path());
    patcher::WriteWhole(file, "content");
    ASSERT_TRUE(fs::exists(file)) << made;
    std::error_code error;
    EXPECT_EQ(FileIdentity(made) == FileIdentity(asked),
              fs::exists(directory / "" / PathFromBytes(asked), error))
        << made << " and " << asked << ": " << FileIdentity(made) << ", " << FileIdentity(asked);
  }
  EXPECT_EQ(FileIdentity(""), FileIdentity("."));
  EXPECT_EQ(FileIdentity("a/"), FileIdentity("a"));
}

TEST(FileNamesContract, StreamsAndDevicesAreNotFiles) {
  const bool windows = FileIdentity("a") == FileIdentity("A");
  for (const char* path :
       {"a:b", "d/a::$DATA", "nul", "d/NUL", "com1", "Lpt9 ", "a\\con", "aux.", "conout$"}) {
    EXPECT_EQ(NamesAFile(path), !windows) << path;
  }
  for (const char* path : {"", "a", "null", "d/com", "com12", "nul/a", "a.nul", "d/"}) {
    EXPECT_TRUE(NamesAFile(path)) << path;
  }
}

}  // namespace
}  // namespace platform
