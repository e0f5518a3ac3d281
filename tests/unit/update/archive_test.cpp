#include <random>
#include <set>

#include <gtest/gtest.h>
#include <miniz.h>

#include "platform/text.h"
#include "support/scratch_directory.h"
#include "update/archive_directory.h"
#include "update/bundle_install.h"

namespace patcher {
namespace {

using Entries = std::vector<std::pair<std::string, std::string>>;

/// Bytes of an archive. Names may be anything of the length of what the writer accepts.
std::string MakeArchive(const Entries& entries) {
  mz_zip_archive zip;
  mz_zip_zero_struct(&zip);
  mz_zip_writer_init_heap(&zip, 0, 0);
  for (const auto& [name, data] : entries) {
    EXPECT_TRUE(mz_zip_writer_add_mem(&zip, name.c_str(), data.data(), data.size(), MZ_BEST_SPEED)) << name;
  }
  void* bytes = nullptr;
  std::size_t size = 0;
  mz_zip_writer_finalize_heap_archive(&zip, &bytes, &size);
  std::string archive(static_cast<char*>(bytes), size);
  mz_free(bytes);
  mz_zip_writer_end(&zip);
  return archive;
}

void Replace(std::string& text, const std::string& from, const std::string& to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
}

TEST(ArchiveTest, ExtractsWantedEntriesOnly) {
  ScratchDirectory directory;
  std::string bytes = MakeArchive({{"data/a b.txt", std::string(100000, 'a')},
                                   {"dir/", ""},
                                   {"unwanted", "u"},
                                   {"QQQescape", "1"},
                                   {"Zabsolute", "2"},
                                   {"XXdrive", "3"},
                                   {std::string(2000, 'n'), "4"},
                                   {"last", "5"}});
  Replace(bytes, "QQQescape", "../escape");
  Replace(bytes, "Zabsolute", "/absolute");
  Replace(bytes, "XXdrive", "C:drive");
  WriteWhole(directory / "t.zip", bytes);
  WriteWhole(directory / "mine", "the player's");
  std::error_code noLinks;  // the library makes none on Windows
  std::filesystem::create_symlink("mine", directory / "last", noLinks);
  std::string failure;
  EXPECT_TRUE(ExtractArchive(
      directory / "t.zip", [](std::string_view path) { return path != "unwanted" && path.size() < 255; },
      failure));
  EXPECT_EQ(ReadWhole(directory / "data/a b.txt"), std::string(100000, 'a'));
  EXPECT_EQ(ReadWhole(directory / "last"), "5");
  EXPECT_EQ(ReadWhole(directory / "mine"), "the player's");
  std::set<std::string> found;
  for (const auto& entry : std::filesystem::directory_iterator(ExeDir())) {
    found.insert(platform::BytesFromPath(entry.path().filename()).substr(0, 8));
  }
  EXPECT_EQ(found, (std::set<std::string>{"data", "last", "mine", "t.zip"}));
  EXPECT_FALSE(std::filesystem::exists(ExeDir().parent_path() / "escape"));
}

/// The archive of one entry, as a writer makes it that pads the entry's extra field in the directory.
std::string WithPaddedExtraField(std::string archive) {
  const std::size_t entry = archive.find("PK\x01\x02");
  const std::size_t end = archive.find("PK\x05\x06");
  const auto grow = [&archive](std::size_t at) { archive[at] = static_cast<char>(archive[at] + 3); };
  grow(entry + 30);
  grow(end + 12);
  return archive.insert(end, 3, '\0');
}

TEST(ArchiveTest, APaddedExtraFieldIsNoDamage) {
  ScratchDirectory directory;
  WriteWhole(directory / "t.zip", WithPaddedExtraField(MakeArchive({{"a", "content"}})));
  std::string failure;
  EXPECT_TRUE(ExtractArchive(
      directory / "t.zip", [](std::string_view) { return true; }, failure));
  EXPECT_EQ(ReadWhole(directory / "a"), "content");
}

TEST(ArchiveTest, DamageIsAFailureWithAName) {
  ScratchDirectory directory;
  const std::string good = MakeArchive({{"a", std::string(5000, 'x') + "marker"}, {"b", "content of b"}});
  const auto extract = [&](const std::string& bytes) {
    WriteWhole(directory / "t.zip", bytes);
    std::string failure;
    return ExtractArchive(
               directory / "t.zip", [](std::string_view) { return true; }, failure)
               ? "ok"
               : failure;
  };
  EXPECT_EQ(extract(good), "ok");
  EXPECT_EQ(extract(""), "archive illisible");
  EXPECT_EQ(extract("<html>no archive</html>"), "archive illisible");
  EXPECT_EQ(extract(good.substr(0, good.size() - 1)), "archive illisible");
  std::string badCrc = good;
  badCrc[badCrc.rfind("PK\x01\x02") + 16] ^= 1;  // the second entry's CRC
  EXPECT_EQ(extract(badCrc), "b");
  std::string impossibleSize = good;
  impossibleSize[impossibleSize.rfind("PK\x01\x02") + 27] = 1;  // 16 MiB out of a few bytes
  EXPECT_EQ(extract(impossibleSize), "archive illisible");
}

TEST(ArchiveTest, RandomDamageNeverCrashesNorLeavesTheDirectory) {
  ScratchDirectory directory;
  std::filesystem::create_directory(directory / "in");
  SetExePath(directory / "in/Patcher");
  const std::string good = MakeArchive({{"a", std::string(300, 'x')}, {"d/b", "content"}, {"c", ""}});
  std::mt19937 random(11);
  for (int round = 0; round < 3000; ++round) {
    std::string bytes = good;
    for (auto n = 1 + random() % 6; n > 0; --n) bytes[random() % bytes.size()] = static_cast<char>(random());
    if (random() % 4 == 0) bytes.resize(random() % bytes.size());
    WriteWhole(directory / "t.zip", bytes);
    std::string failure;
    ExtractArchive(
        directory / "t.zip", [](std::string_view name) { return name.size() < 20; }, failure);
  }
  std::size_t outside = 0;
  for (const auto& entry : std::filesystem::directory_iterator(directory / "")) {
    outside += entry.path().filename() != "in" && entry.path().filename() != "t.zip";
  }
  EXPECT_EQ(outside, 0u);
}

}  // namespace
}  // namespace patcher
