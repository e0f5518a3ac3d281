#include <algorithm>
#include <map>
#include <random>
#include <set>

#include <gtest/gtest.h>
#include <miniz.h>

#include "platform/text.h"
#include "support/scratch_directory.h"
#include "update/archive_directory.h"
#include "update/archive_extraction.h"

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

/// "ok", or what failed.
std::string Extract(
    const std::filesystem::path& archive, int threads = 3,
    const std::function<bool(std::string_view path)>& wanted = [](std::string_view) { return true; }) {
  ExtractingThreads extracting(threads);
  std::string failure;
  const std::string outcome = ExtractArchive(archive, wanted, extracting, failure) ? "ok" : failure;
  for (int left = threads; left > 0; --left) EXPECT_TRUE(extracting.TryJoin()) << "a thread has not left";
  EXPECT_FALSE(extracting.TryJoin());
  return outcome;
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
  EXPECT_EQ(Extract(directory / "t.zip", 3,
                    [](std::string_view path) { return path != "unwanted" && path.size() < 255; }),
            "ok");
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
  EXPECT_EQ(Extract(directory / "t.zip"), "ok");
  EXPECT_EQ(ReadWhole(directory / "a"), "content");
}

TEST(ArchiveTest, DamageIsAFailureWithAName) {
  ScratchDirectory directory;
  const std::string good = MakeArchive({{"a", std::string(5000, 'x') + "marker"}, {"b", "content of b"}});
  const auto extract = [&](const std::string& bytes) {
    WriteWhole(directory / "t.zip", bytes);
    return Extract(directory / "t.zip");
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

/// With a false CRC for every entry in whose name `part` stands.
std::string Broken(std::string archive, const std::string& part) {
  for (std::size_t at = 0; (at = archive.find("PK\x01\x02", at)) != std::string::npos; ++at) {
    const std::string name = archive.substr(at + 46, static_cast<unsigned char>(archive[at + 28]));
    if (name.find(part) != std::string::npos) archive[at + 16] ^= 1;
  }
  return archive;
}

TEST(ArchiveTest, OutcomesDoNotDependOnThreads) {
  std::mt19937 random(12);
  std::string slow(4 << 20, ' ');  // takes longer than the start of a thread
  std::generate(slow.begin(), slow.end(), [&random] { return static_cast<char>('a' + random() % 16); });
  Entries longFirst{{"long", slow}, {"short", slow.substr(0, 1 << 20)}};
  for (int i = 0; i < 200; ++i) {
    longFirst.emplace_back(std::to_string(i / 5) + "/d/" + std::to_string(i), "content");
  }
  Entries shortFirst = longFirst;
  std::swap(shortFirst[0], shortFirst[1]);
  Entries repeated;
  for (int i = 0; i < 50; ++i) {
    const std::string name = std::to_string(i);
    repeated.insert(repeated.end(),
                    {{name, slow.substr(0, 1 << 17)}, {"d/" + name, "content"}, {name, "later"}});
  }
  const struct {
    std::string archive;
    std::string outcome;
    std::size_t mostFiles;
    std::map<std::string, std::uint64_t> sizes;
  } cases[] = {
      {MakeArchive(longFirst), "ok", 202, {{"long", slow.size()}, {"39/d/199", 7}}},
      {MakeArchive(repeated), "ok", 100, {{"0", 5}, {"10", 5}, {"20", 5}, {"30", 5}, {"40", 5}, {"49", 5}}},
      // Each thread ends with its first failure.
      {Broken(MakeArchive(longFirst), ""), "long", 4, {{"long", slow.size()}}},
      {Broken(MakeArchive(shortFirst), ""), "short", 4, {{"short", 1 << 20}}},
      {Broken(MakeArchive({{"a/x", "content"}, {"a/2", "content"}}), "x"), "a/x", 1, {}},
      // What lies in front of a failed entry is tried, even if the later one fails first.
      {Broken(
           MakeArchive({{"a/1", slow.substr(0, 1000000)}, {"a/x", slow}, {"b/x", "content"}, {"b/2", "2"}}),
           "x"),
       "a/x",
       3,
       {{"a/1", 1000000}}},
  };
  for (const auto& c : cases) {
    for (const int threads : {1, 4}) {
      ScratchDirectory directory;
      const auto archive = directory / "t.zip";
      WriteWhole(archive, c.archive);
      EXPECT_EQ(Extract(archive, threads), c.outcome);
      std::filesystem::remove(archive);
      std::map<std::string, std::uint64_t> sizes;
      for (const auto& entry : std::filesystem::recursive_directory_iterator(ExeDir())) {
        if (entry.is_regular_file()) {
          sizes[entry.path().lexically_relative(ExeDir()).generic_string()] = entry.file_size();
        }
      }
      EXPECT_LE(sizes.size(), c.mostFiles);
      EXPECT_TRUE(c.outcome != "ok" || sizes.size() == c.mostFiles) << sizes.size();
      for (const auto& [name, size] : c.sizes)
        EXPECT_EQ(sizes[name], size) << name << ", threads: " << threads;
    }
  }
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
    Extract(directory / "t.zip", 1 + round % 2, [](std::string_view name) { return name.size() < 20; });
  }
  std::size_t outside = 0;
  for (const auto& entry : std::filesystem::directory_iterator(directory / "")) {
    outside += entry.path().filename() != "in" && entry.path().filename() != "t.zip";
  }
  EXPECT_EQ(outside, 0u);
}

}  // namespace
}  // namespace patcher
