#include "options/settings_file.h"

#include <chrono>
#include <thread>

#include <gtest/gtest.h>

#include "options/options_exchange.h"
#include "support/scratch_directory.h"

namespace patcher {
namespace {

namespace fs = std::filesystem;

SettingsFile Loaded(const fs::path& path) {
  SettingsFile file;
  file.Load(path, std::chrono::milliseconds(0));
  return file;
}

SettingsFile WithLine(const std::string& line) {
  SettingsFile file;
  file.lines = {"other 5", line, "key 77"};
  return file;
}

class SettingsFileTest : public testing::Test {
 protected:
  ScratchDirectory directory;
  fs::path path = directory / "ostu.ini";
};

TEST_F(SettingsFileTest, LinesAndValues) {
  EXPECT_FALSE(Loaded(path).loaded);
  WriteWhole(path, "");
  EXPECT_TRUE(Loaded(path).loaded);
  EXPECT_TRUE(Loaded(path).lines.empty());
  const std::string withZero("nul a\0b\x1a", 8);
  WriteWhole(path, "; vsync 1\r\n\n  fpslimit\t  90 \t\r\r\nvsync\nVSYNC 3\n" + withZero +
                       "\n\xef\xbb\xbf\rfpslimit 30");
  const SettingsFile file = Loaded(path);
  EXPECT_EQ(file.lines, (std::vector<std::string>{"; vsync 1", "", "  fpslimit\t  90 \t", "vsync", "VSYNC 3",
                                                  withZero, "\xef\xbb\xbf\rfpslimit 30"}));
  EXPECT_EQ(file.GetString("fpslimit"), "90");
  EXPECT_EQ(file.GetString("vsync"), "");
  EXPECT_EQ(file.GetString("VSYNC"), "3");
  EXPECT_EQ(file.GetString("nul"), std::string("a\0b\x1a", 4));
  EXPECT_EQ(file.GetString(""), "");
}

TEST_F(SettingsFileTest, AFileThatCannotBeReadIsTriedAgain) {
  WriteWhole(path, "vsync 1\n");
  fs::resize_file(path, kMaxSettingsSize + 1);
  EXPECT_TRUE(Loaded(path).unreadable);
  std::thread holder([&] { fs::resize_file(path, 8); });
  SettingsFile file;
  file.Load(path, std::chrono::minutes(1));
  holder.join();
  EXPECT_EQ(file.lines, std::vector<std::string>{"vsync 1"});
  EXPECT_FALSE(file.unreadable);
}

TEST_F(SettingsFileTest, IntegersAndPairs) {
  const std::pair<std::int32_t, std::vector<const char*>> cases[] = {
      {1000, {" 2147483648", " 99999999999999999999", " abc", "", " +-1", " - 1"}},
      {12, {" 12abc"}},
      {4, {" +4"}},
      {5, {"\t\v5"}},
      {2147483647, {" 2147483647"}},
      {0, {" 0x10"}},
      {-2147483647 - 1, {" -2147483648"}},
      {77, {"=3"}}};  // another key
  for (const auto& [value, texts] : cases) {
    for (const char* text : texts) {
      EXPECT_EQ(WithLine(std::string("key") + text).GetInt("key", 1000), value) << text;
    }
  }
  std::int32_t width = 1;
  std::int32_t height = 2;
  for (const char* line : {"key", "key 800", "key 800x600", "key 800 x", "key 800 99999999999"}) {
    EXPECT_FALSE(WithLine(line).GetIntPair("key", width, height)) << line;
  }
  EXPECT_TRUE(width == 1 && height == 2);
  EXPECT_TRUE(WithLine(" key  800 \t -600 60").GetIntPair("key", width, height));
  EXPECT_TRUE(width == 800 && height == -600);
}

TEST_F(SettingsFileTest, Floats) {
  const std::pair<float, std::vector<const char*>> cases[] = {
      {9.0f,
       {"0x1p128", "-0X.8P129", "0x1p-200", "0x1p99999999999", "1e39", "-1e999", "1e-60", "1e-41", "nan",
        "-NAN(1)", "inf", "-infinity", ".", "", "--1", "+-1"}},
      {0.0f, {"0x", "0x-1", "0xg", "0x.g", "0xinf", "0e-99", "0,5"}},
      {0.002f, {"0.002"}},
      {-0.5f, {"-0.5x"}},
      {0.5f, {"+.5", "0x.8"}},
      {1.0f, {"1e"}},
      {3.0f, {"0x1.8p1"}},
      {-16.0f, {"-0X10"}},
      {3.4e38f, {"3.4e38"}},
      {16777218.0f, {"16777217.5"}}};
  for (const auto& [value, texts] : cases) {
    for (const char* text : texts) {
      EXPECT_EQ(WithLine(std::string("key ") + text).GetFloat("key", 9), value) << text;
    }
  }
}

TEST_F(SettingsFileTest, OtherLinesKeepTheirBytesAndPlace) {
  using namespace std::string_literals;
  const std::string foreign = "; vsync 0\r\n\r\nvsync=1\r\nVSYNC 2\r\n\xff\x1a\0\r x \r\n"s;
  const std::pair<std::string, std::string> cases[] = {
      {"", "vsync 1\r\nexposure 0.5\r\nresolution 800 600\r\n"},
      {foreign, foreign + "vsync 1\r\nexposure 0.5\r\nresolution 800 600\r\n"},
      {" \tvsync\t 0 x\n" + foreign + "exposure\nvsync 7 \n\n  resolution 1 2",
       "vsync 1\r\n" + foreign + "exposure 0.5\r\nvsync 7 \r\n\r\nresolution 800 600\r\n"}};
  std::size_t position = 0;
  const MiniJson::Value values =
      MiniJson::Parse(R"({"exposure":0.5,"resWidth":800,"resHeight":600,"vsync":1})", position);
  for (const auto& [before, after] : cases) {
    WriteWhole(path, before);
    for (const char* which : {"first", "second"}) {
      ASSERT_TRUE(SaveOptions(path, values));
      EXPECT_EQ(ReadWhole(path), after) << which << " save";
    }
  }
}

TEST_F(SettingsFileTest, WhatCannotBeReadOrChangedIsNeverReplaced) {
  fs::create_directory(path);
  EXPECT_FALSE(Loaded(path).loaded);
  EXPECT_FALSE(SaveOptions(path, {}));
  EXPECT_TRUE(fs::remove(path)) << "the empty directory";
  WriteWhole(path, "mine 1");
  // A file of the largest size can be read, but the end of its last line would make it too large.
  for (const std::uintmax_t size : {kMaxSettingsSize + 1, kMaxSettingsSize}) {
    fs::resize_file(path, size);
    EXPECT_FALSE(SaveOptions(path, {})) << size;
    EXPECT_EQ(fs::file_size(path), size);
  }
  fs::resize_file(path, 6);
  EXPECT_FALSE(SettingsFile().Write(path)) << "not loaded";
  constexpr fs::perms kWrite = fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;
  fs::permissions(path, kWrite, fs::perm_options::remove);
  EXPECT_FALSE(SaveOptions(path, {})) << "read-only";
  EXPECT_EQ(ReadWhole(path), "mine 1");
  fs::permissions(path, fs::perms::owner_write, fs::perm_options::add);
  EXPECT_TRUE(SaveOptions(path, {}));
  EXPECT_EQ(ReadWhole(path), "mine 1\r\n");
  EXPECT_FALSE(SaveOptions(directory / "absent/ostu.ini", {}));
  EXPECT_EQ(std::distance(fs::directory_iterator(path.parent_path()), {}), 1) << "no other file is left";
}

TEST_F(SettingsFileTest, ASaveRemovesTheTemporaryFileOfOneThatDied) {
  const char* const names[] = {"ostu.ini.4294967295.part", "ostu.ini.mine.part",
                               "ostu.ini..part",           "ostu.ini.17",
                               "other.ini.17.part",        "ostu.ini.17.part"};
  for (const char* name : names) {
    WriteWhole(directory / name, "x");
    // The last one belongs to a save that is still running.
    if (name == names[5]) continue;
    fs::last_write_time(directory / name, fs::file_time_type::clock::now() - std::chrono::hours(2));
  }
  EXPECT_TRUE(SaveOptions(path, {}));
  for (const char* name : names) EXPECT_EQ(fs::exists(directory / name), name != names[0]) << name;
}

TEST_F(SettingsFileTest, ALinkStaysALink) {
  fs::create_directory(directory / "elsewhere");
  const fs::path real = directory / "elsewhere/real.ini";
  WriteWhole(real, "mine 1");
  std::error_code error;
  fs::create_symlink("elsewhere/real.ini", path, error);
  if (error) return;  // the library does not create links on Windows
  EXPECT_TRUE(SaveOptions(path, {}));
  EXPECT_TRUE(fs::is_symlink(path));
  EXPECT_EQ(ReadWhole(real), "mine 1\r\n");
  fs::remove(real);
  EXPECT_FALSE(SaveOptions(path, {})) << "the disk that it leads to may be away";
  EXPECT_TRUE(fs::is_symlink(path));
  EXPECT_FALSE(fs::exists(real));
}

}  // namespace
}  // namespace patcher
