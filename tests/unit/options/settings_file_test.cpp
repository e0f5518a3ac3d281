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

TEST(SettingsFileTest, LinesAndValues) {
  ScratchDirectory directory;
  const fs::path path = directory / "ostu.ini";
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

TEST(SettingsFileTest, AFileThatCannotBeReadIsTriedAgain) {
  ScratchDirectory directory;
  const fs::path path = directory / "ostu.ini";
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

TEST(SettingsFileTest, Integers) {
  const auto read = [](const std::string& value) { return WithLine("key" + value).GetInt("key", 1000); };
  for (const char* none : {" 2147483648", " 99999999999999999999", " abc", "", " +-1", " - 1"}) {
    EXPECT_EQ(read(none), 1000) << none;
  }
  EXPECT_EQ(read(" 12abc"), 12);
  EXPECT_EQ(read(" -3"), -3);
  EXPECT_EQ(read(" +4"), 4);
  EXPECT_EQ(read("\t\v5"), 5);
  EXPECT_EQ(read(" 2147483647"), 2147483647);
  EXPECT_EQ(read(" -2147483648"), -2147483648LL);
  EXPECT_EQ(read(" 0x10"), 0);
  EXPECT_EQ(read("=3"), 77) << "another key";
}

TEST(SettingsFileTest, Floats) {
  const auto read = [](const char* value) {
    return WithLine(std::string("key ") + value).GetFloat("key", 9);
  };
  for (const char* none : {"0x1p128", "-0X.8P129", "0x1p-200", "0x1p99999999999", "1e39", "-1e999", "1e-60",
                           "1e-41", "nan", "-NAN(1)", "inf", "-infinity", ".", "", "--1", "+-1"}) {
    EXPECT_EQ(read(none), 9) << none;
  }
  for (const char* zero : {"0x", "0x-1", "0xg", "0x.g", "0xinf", "0e-99", "0,5"}) {
    EXPECT_EQ(read(zero), 0) << zero;
  }
  EXPECT_EQ(read("0.002"), 0.002f);
  EXPECT_EQ(read("-0.5x"), -0.5f);
  EXPECT_EQ(read("+.5"), 0.5f);
  EXPECT_EQ(read("1e"), 1);
  EXPECT_EQ(read("0x1.8p1"), 3);
  EXPECT_EQ(read("-0X10"), -16);
  EXPECT_EQ(read("0x.8"), 0.5f);
  EXPECT_EQ(read("3.4e38"), 3.4e38f);
  EXPECT_EQ(read("16777217.5"), 16777218.0f);
}

TEST(SettingsFileTest, IntegerPairs) {
  std::int32_t width = 1;
  std::int32_t height = 2;
  for (const char* line : {"key", "key 800", "key 800x600", "key 800 x", "key 800 99999999999"}) {
    EXPECT_FALSE(WithLine(line).GetIntPair("key", width, height)) << line;
    EXPECT_EQ(width * 10 + height, 12) << line;
  }
  EXPECT_TRUE(WithLine(" key  800 \t -600 60").GetIntPair("key", width, height));
  EXPECT_EQ(width, 800);
  EXPECT_EQ(height, -600);
}

class SavedLinesTest : public testing::Test {
 protected:
  ScratchDirectory directory;
  fs::path path = directory / "ostu.ini";
};

TEST_F(SavedLinesTest, OtherLinesKeepTheirBytesAndPlace) {
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

TEST_F(SavedLinesTest, WhatCannotBeReadIsNeverReplaced) {
  MiniJson::Value nothing;
  fs::create_directory(path);
  WriteWhole(path / "mine", "kept");
  EXPECT_FALSE(Loaded(path).loaded);
  EXPECT_FALSE(SaveOptions(path, nothing));
  EXPECT_EQ(ReadWhole(path / "mine"), "kept");
  fs::remove_all(path);
  WriteWhole(path, "mine 1");
  fs::resize_file(path, kMaxSettingsSize + 1);
  EXPECT_FALSE(SaveOptions(path, nothing));
  EXPECT_EQ(fs::file_size(path), kMaxSettingsSize + 1);
  fs::resize_file(path, kMaxSettingsSize);
  EXPECT_FALSE(SaveOptions(path, nothing)) << "with its last line's end no later save could read it";
  EXPECT_EQ(fs::file_size(path), kMaxSettingsSize);
  fs::resize_file(path, 6);
  EXPECT_FALSE(SettingsFile().Write(path)) << "not loaded";
  fs::permissions(path, fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                  fs::perm_options::remove);
  EXPECT_FALSE(SaveOptions(path, nothing)) << "read-only";
  EXPECT_EQ(ReadWhole(path), "mine 1");
  fs::permissions(path, fs::perms::owner_write, fs::perm_options::add);
  EXPECT_TRUE(SaveOptions(path, nothing));
  EXPECT_EQ(ReadWhole(path), "mine 1\r\n");
  EXPECT_FALSE(SaveOptions(directory / "absent/ostu.ini", nothing));
  EXPECT_EQ(std::distance(fs::directory_iterator(path.parent_path()), {}), 1) << "nothing is left beside it";
}

TEST_F(SavedLinesTest, ASaveRemovesTheTemporaryFileOfOneThatDied) {
  const auto twoHoursAgo = fs::file_time_type::clock::now() - std::chrono::hours(2);
  const auto left = [&](const std::string& name, bool old) {
    WriteWhole(directory / name, "x");
    if (old) fs::last_write_time(directory / name, twoHoursAgo);
    return fs::path(directory / name);
  };
  const fs::path dead = left("ostu.ini.4294967295.part", true);
  const fs::path others[] = {left("ostu.ini.17.part", false), left("ostu.ini.mine.part", true),
                             left("ostu.ini..part", true), left("ostu.ini.17", true),
                             left("other.ini.17.part", true)};
  EXPECT_TRUE(SaveOptions(path, {}));
  EXPECT_FALSE(fs::exists(dead));
  for (const fs::path& other : others) EXPECT_TRUE(fs::exists(other)) << other;
}

TEST_F(SavedLinesTest, ALinkStaysALink) {
  fs::create_directory(directory / "elsewhere");
  const fs::path real = directory / "elsewhere/real.ini";
  WriteWhole(real, "mine 1");
  std::error_code error;
  fs::create_symlink("elsewhere/real.ini", path, error);
  if (error) return;  // systems on which players have no links
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
