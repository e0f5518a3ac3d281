#include <algorithm>
#include <map>
#include <random>

#include <gtest/gtest.h>
#include <miniz.h>

#include "support/scratch_directory.h"
#include "update/archive_directory.h"
#include "update/archive_extraction.h"

namespace patcher {
namespace {

using Entries = std::vector<std::pair<std::string, std::string>>;

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
std::string Extract(const std::filesystem::path& archive, int threads = 3) {
  ExtractingThreads extracting(threads);
  std::string failure;
  const auto everything = [](std::string_view) { return true; };
  std::string outcome = ExtractArchive(archive, everything, extracting, failure) ? "ok" : failure;
  for (int left = threads; left > 0; --left) EXPECT_TRUE(extracting.TryJoin()) << "a thread has not left";
  EXPECT_FALSE(extracting.TryJoin());
  return outcome;
}

TEST(ArchiveTest, DamagedEntriesAreNamed) {
  ScratchDirectory directory;
  const std::string good = MakeArchive({{"a", std::string(5000, 'x')}, {"b", "content of b"}});
  const std::size_t last = good.rfind("PK\x01\x02");
  const std::size_t end = good.find("PK\x05\x06");
  const auto changed = [&](std::size_t at, char byte) {
    std::string bytes = good;
    bytes[at] = static_cast<char>(bytes[at] ^ byte);
    return bytes;
  };
  // Some writers pad the extra field in the directory. That is not damage.
  std::string padded = good;
  for (const std::size_t at : {last + 30, end + 12}) padded[at] = static_cast<char>(padded[at] + 3);
  padded.insert(end, 3, '\0');
  const std::pair<std::string, std::string> cases[] = {
      {good, "ok"},
      {padded, "ok"},
      {"", "archive illisible"},
      {"<html>no archive</html>", "archive illisible"},
      {good.substr(0, good.size() - 1), "archive illisible"},
      {good.substr(0, last + 20), "archive illisible"},
      {changed(last + 16, 1), "b"},                  // CRC
      {changed(last + 27, 1), "archive illisible"},  // 16 MiB out of a few bytes
      {changed(last + 42, 127), "b"},                // where its data begin
  };
  WriteWhole(directory / "mine", "the player's");
  std::error_code noLinks;  // the library does not create links on Windows
  std::filesystem::create_symlink("mine", directory / "b", noLinks);
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    WriteWhole(directory / "t.zip", cases[i].first);
    EXPECT_EQ(Extract(directory / "t.zip"), cases[i].second) << "case " << i;
  }
  EXPECT_EQ(ReadWhole(directory / "mine"), "the player's") << "a link is replaced, not followed";
  WriteWhole(ExePath(), "this launcher");
  WriteWhole(directory / "t.zip", MakeArchive({{"Patcher", "x"}}));
  EXPECT_EQ(Extract(directory / "t.zip"), "Patcher");
  EXPECT_EQ(ReadWhole(ExePath()), "this launcher");
}

/// With a false CRC for every entry whose name contains `part`.
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
  Entries many{{"long", slow}, {"short", slow.substr(0, 1 << 20)}};
  for (int i = 0; i < 200; ++i) many.emplace_back(std::to_string(i / 5) + "/d/" + std::to_string(i), "x");
  Entries repeated;
  for (const char* name : {"0", "1", "2", "3", "4"}) {
    repeated.insert(repeated.end(), {{name, slow.substr(0, 1 << 17)}, {"d", "content"}, {name, "later"}});
  }
  const Entries early{{"a/1", slow.substr(0, 1000000)}, {"a/x", slow}, {"b/x", "y"}, {"b/2", "2"}};
  using Sizes = std::map<std::string, std::uint64_t>;
  const struct {
    std::string archive, outcome;
    std::size_t leastFiles, mostFiles;
    Sizes sizes;
  } cases[] = {
      {MakeArchive(many), "ok", 202, 202, {{"long", slow.size()}, {"39/d/199", 1}}},
      {MakeArchive(repeated), "ok", 6, 6, {{"0", 5}, {"2", 5}, {"4", 5}}},
      // Each thread ends with its first failure.
      {Broken(MakeArchive(many), ""), "long", 1, 4, {{"long", slow.size()}}},
      // Entries before a failed one are tried, even if a later one fails first.
      {Broken(MakeArchive(early), "x"), "a/x", 1, 3, {{"a/1", 1000000}}},
  };
  for (const auto& c : cases) {
    for (const int threads : {1, 4}) {
      ScratchDirectory directory;
      WriteWhole(directory / "t.zip", c.archive);
      EXPECT_EQ(Extract(directory / "t.zip", threads), c.outcome);
      std::filesystem::remove(directory / "t.zip");
      Sizes found;
      for (const auto& entry : std::filesystem::recursive_directory_iterator(ExeDir())) {
        const std::string name = entry.path().lexically_relative(ExeDir()).generic_string();
        if (entry.is_regular_file()) found[name] = entry.file_size();
      }
      EXPECT_TRUE(found.size() >= c.leastFiles && found.size() <= c.mostFiles) << found.size();
      for (const auto& [name, size] : c.sizes) EXPECT_EQ(found[name], size) << name << ", " << threads;
    }
  }
}

}  // namespace
}  // namespace patcher
