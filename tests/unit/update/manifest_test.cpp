#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "minijson/minijson.h"
#include "platform/file_names.h"
#include "update/archive_choice.h"
#include "update/manifest_paths.h"
#include "update/patch_manifest.h"

namespace patcher {
namespace {

PatchManifest Parsed(std::string_view text) {
  PatchManifest manifest;
  std::string error;
  EXPECT_TRUE(ParsePatchManifest(text, manifest, error)) << error;
  return manifest;
}

TEST(PatchManifestTest, ReadsLeniently) {
  const PatchManifest manifest =
      Parsed(R"({"version":12.9,"patcherVersion":"x","patcherUrl":3,"patcherSha256":"","extra":[],
    "bundles":[{"name":"a","size":1,"sha256":"s","files":["p",4]},{"name":"","sha256":"s"},{"name":"b"},7],
    "files":[{"path":"p","size":"12","sha256":"d"},{"path":"p","size":-5,"url":"u"},{"size":18446744073709551615},{"size":2.9},3]}
    garbage)");
  EXPECT_EQ(manifest.version, 12);
  EXPECT_EQ(manifest.patcherVersion, 0);
  EXPECT_EQ(manifest.patcherUrl + manifest.patcherSha256, "");
  ASSERT_EQ(manifest.bundles.size(), 1u);
  EXPECT_EQ(manifest.bundles[0].files, (std::vector<std::string>{"p", ""}));
  ASSERT_EQ(manifest.files.size(), 5u);
  const std::uint64_t sizes[] = {0, 0, UINT64_MAX, 2, 0};
  for (std::size_t i = 0; i < 5; ++i) EXPECT_EQ(manifest.files[i].size, sizes[i]) << i;
  EXPECT_EQ(manifest.files[1].url, "u");
  for (const char* text : {"{}", "[]", "5", R"({"files":5,"files":[{}]})"}) {
    EXPECT_TRUE(Parsed(text).files.empty()) << text;
  }
  EXPECT_EQ(Parsed(R"({"files":[{"path":3,"path":"a","size":[{"size":1}],"size":2}]})").files[0].size, 0u);
}

TEST(ArchiveChoiceTest, ArchivesAreChosenOnlyIfSmallerThanTheWantedFiles) {
  const PatchBundle first{"1", 60, "", {"a", "b"}};
  const PatchBundle other{"2", 5, "", {"c"}};
  const PatchBundle last{"3", 40, "", {"b", "d"}};
  const std::vector<const PatchBundle*> all{&first, &other, &last};
  const auto choice = [&](const std::set<std::string, std::less<>>& wanted, std::uint64_t bytes) {
    const ArchiveChoice chosen = ChooseArchives(all, wanted, bytes);
    std::string names = chosen.isCheaper ? "cheaper " : "dearer ";
    for (const PatchBundle* archive : chosen.archives) names += archive->name;
    return names + " " + std::to_string(chosen.bytes);
  };
  EXPECT_EQ(choice({"b", "in no archive"}, 101), "cheaper 13 100");
  EXPECT_EQ(choice({"b"}, 100), "dearer 13 100");
  EXPECT_EQ(choice({"in no archive"}, 1), "dearer  0");
}

TEST(PatchManifestTest, RefusedDocumentsGetAReason) {
  const auto zeros = [](std::size_t count) {
    std::string text = "[0";
    for (std::size_t i = 1; i < count; ++i) text += ",0";
    return text + "]";
  };
  const auto longName = [](std::size_t size) {
    return "{\"patcherUrl\":\"" + std::string(size, 'x') + "\"}";
  };
  const std::pair<std::string, const char*> cases[] = {
      {"", "unexpected end of input"},
      {"{\"version\":1e999}", "stod argument out of range"},
      {zeros(MiniJson::kMaxValues - 1), ""},
      {zeros(MiniJson::kMaxValues), "too many values"},
      {longName(kMaxManifestText), ""},
      {longName(kMaxManifestText + 1), "string too long"},
      {std::string(kMaxManifestSize - 1, ' ') + "5", ""},
      {std::string(kMaxManifestSize, ' ') + "5", "text too large"}};
  for (const auto& [text, reason] : cases) {
    PatchManifest manifest;
    std::string error;
    EXPECT_EQ(ParsePatchManifest(text, manifest, error), *reason == '\0') << text.size();
    EXPECT_EQ(error, reason) << text.size();
  }
}

TEST(ManifestPathsTest, RefusesTwoPathsOfOneFile) {
  const bool windows = platform::FileIdentity("a") == platform::FileIdentity("A");
  using Pairs = std::vector<std::pair<const char*, const char*>>;
  const Pairs never{
      {"../x", "y"},    {"a/x.part", "a/x"},       {"a/x.old", "a/x"},           {"./Data.part", "Data"},
      {"a//x", "a/x"},  {"x.part.part", "x.part"}, {"patch_manifest.json", "x"}, {"patch_sequence.txt", "x"},
      {"capture", "x"}, {"x..part", "x."},         {"./patcher.ini.part", "x"}};
  const Pairs always{{"a/x", "a/x"},   {"a/x.part", "x"}, {"a/x.part.old", "a/x"}, {"a/patcher.ini", "x.ini"},
                     {"ab/x", "a/bx"}, {"a x", "ax"}};
  const Pairs onLinux{{"DATA.PART", "Data"}, {"Data", "data"},     {"a\\x", "a/x"}, {"x. ", "x"},
                      {"d\xE9", "d\xC9"},    {"PATCHER.ini", "x"}, {"xx:y", "x"},   {"a/nul", "x"}};
  const std::pair<bool, const Pairs&> cases[] = {{false, never}, {true, always}, {!windows, onLinux}};
  for (const auto& [expected, pairs] : cases) {
    for (const auto& [one, other] : pairs) {
      PatchManifest manifest;
      for (int i = 0; i < 100; ++i) manifest.files.push_back({"f" + std::to_string(i), 0, "", ""});
      manifest.files[20].path = one;
      manifest.files[70].path = other;
      EXPECT_EQ(PathsAreUsable(manifest), expected) << one << " and " << other;
      std::swap(manifest.files[20].path, manifest.files[70].path);
      EXPECT_EQ(PathsAreUsable(manifest), expected) << other << " and " << one;
    }
  }
}

TEST(ManifestPathsTest, AcceptsOnlyPathsInsideTheInstallDirectory) {
  for (const char* path :
       {"/etc/x", "\\x", "C:x", "c:/x", "..", "a/../b", "a\\..\\b", "a/..", ".. /x", "a/...", "a/. ./b"}) {
    EXPECT_FALSE(StaysInside(path)) << path;
  }
  EXPECT_FALSE(StaysInside(std::string_view("a\0b", 3)));
  for (const char* path : {"", "a", "a/b c/d.dat", "a..b", ".hidden", "a/.", "a/ b/c.", "\xC3\xA9"}) {
    EXPECT_TRUE(StaysInside(path)) << path;
  }
}

}  // namespace
}  // namespace patcher
