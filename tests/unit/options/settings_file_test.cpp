#include "options/settings_file.h"

#include <chrono>
#include <random>
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
  const struct {
    const char* line;
    std::int32_t value;
  } cases[] = {{"key 12abc", 12},
               {"key -3", -3},
               {"key +4", 4},
               {"\tkey\t\v5", 5},
               {"key 2147483647", 2147483647},
               {"key -2147483648", -2147483648},
               {"key 2147483648", 1000},
               {"key 99999999999999999999", 1000},
               {"key abc", 1000},
               {"key", 1000},
               {"key +-1", 1000},
               {"key - 1", 1000},
               {"key 0x10", 0},
               {"key=3", 77}};
  for (const auto& row : cases) EXPECT_EQ(WithLine(row.line).GetInt("key", 1000), row.value) << row.line;
}

TEST(SettingsFileTest, Floats) {
  const struct {
    const char* line;
    float value;
  } cases[] = {{"key 0.002", 0.002f},
               {"key -0.5x", -0.5f},
               {"key +.5", 0.5f},
               {"key 1e2", 100},
               {"key 1e", 1},
               {"key 0x1.8p1", 3},
               {"key -0X10", -16},
               {"key 0x", 0},
               {"key 0x-1", 0},
               {"key 0xg", 0},
               {"key 0x.g", 0},
               {"key 0xinf", 0},
               {"key 0x.8", 0.5f},
               {"key 0x1p128", 9},
               {"key -0X.8P129", 9},
               {"key 0x1p-200", 9},
               {"key 0x1p99999999999", 9},
               {"key 1e39", 9},
               {"key -1e999", 9},
               {"key 1e-60", 9},
               {"key 1e-41", 9},
               {"key 0e-99", 0},
               {"key nan", 9},
               {"key -NAN(1)", 9},
               {"key inf", 9},
               {"key -infinity", 9},
               {"key 0,5", 0},
               {"key .", 9},
               {"key", 9},
               {"key --1", 9},
               {"key +-1", 9},
               {"key 3.4e38", 3.4e38f},
               {"key 16777217.5", 16777218.0f}};
  for (const auto& row : cases) EXPECT_EQ(WithLine(row.line).GetFloat("key", 9), row.value) << row.line;
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

/// Throws settings files at a save. The first line of each key that the page sends is its to change; every
/// other line must stay where it is, byte for byte.
class SavedLinesTest : public testing::Test {
 protected:
  std::string RandomLine() {
    static const std::vector<std::string> kKeys{"vsync", "fpslimit", "exposure", "fog",
                                                ";",     "VSYNC",    "vsync=1",  "resolution"};
    std::string line;
    switch (random() % 4) {
      case 0:  // bytes
        for (auto n = random() % 40; n > 0; --n) line += static_cast<char>(random());
        std::erase(line, '\n');
        while (line.ends_with('\r')) line.pop_back();
        return line;
      case 1:
        return line;
      default:
        line =
            std::string(random() % 3, ' ') + std::string(random() % 2, '\t') + kKeys[random() % kKeys.size()];
        if (random() % 5 != 0)
          line += std::string(1 + random() % 2, random() % 2 ? ' ' : '\t') + std::to_string(random() % 9);
        return line + std::string(random() % 3, ' ');
    }
  }

  std::vector<std::string> RandomLines() {
    std::vector<std::string> lines(random() % 30);
    for (std::string& line : lines) line = RandomLine();
    return lines;
  }

  std::string Text(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) {
      text += line;
      text += random() % 2 ? "\r\n" : "\n";
    }
    const bool dropsLastEnd = !lines.empty() && !lines.back().empty() && random() % 2;
    if (dropsLastEnd) text.resize(text.find_last_not_of("\r\n") + 1);
    return text;
  }

  /// What a save of vsync 1, exposure 0.5 and 800 x 600 must leave, by a plain reading of the rules.
  static std::string Expected(std::vector<std::string> lines) {
    const std::pair<std::string, std::string> sent[] = {
        {"vsync", "1"}, {"exposure", "0.5"}, {"resolution", "800 600"}};
    for (const auto& [key, value] : sent) {
      std::size_t at = 0;
      for (; at < lines.size(); ++at) {
        std::string rest = lines[at];
        rest.erase(0, std::min(rest.find_first_not_of(" \t"), rest.size()));
        if (rest.substr(0, rest.find_first_of(" \t")) == key) break;
      }
      if (at == lines.size()) lines.emplace_back();
      lines[at] = key;
      lines[at] += ' ' + value;
    }
    std::string text;
    for (const std::string& line : lines) text += line + "\r\n";
    return text;
  }

  void Check(const std::vector<std::string>& lines) {
    WriteWhole(path, Text(lines));
    std::size_t position = 0;
    const MiniJson::Value values =
        MiniJson::Parse(R"({"exposure":0.5,"resWidth":800,"resHeight":600,"vsync":1})", position);
    const std::string expected = Expected(lines);
    ASSERT_TRUE(SaveOptions(path, values));
    ASSERT_EQ(ReadWhole(path), expected);
    ASSERT_TRUE(SaveOptions(path, values));
    ASSERT_EQ(ReadWhole(path), expected) << "a second save changes nothing";
  }

  std::mt19937 random{5};
  ScratchDirectory directory;
  fs::path path = directory / "ostu.ini";
};

TEST_F(SavedLinesTest, ForeignLinesKeepBytesAndPlace) {
  for (int round = 0; round < 150; ++round) Check(RandomLines());
}

TEST_F(SavedLinesTest, HugeLines) {
  std::string foreign;
  foreign.resize(10'000'000, 'x');
  Check({"vsync " + std::string(5'000'000, 'v'), foreign, "vsync 7"});
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

TEST_F(SavedLinesTest, ASaveTakesAwayWhatADeadOneLeft) {
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
