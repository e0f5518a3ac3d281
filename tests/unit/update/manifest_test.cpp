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
  const PatchManifest manifest = Parsed(R"({"version":12.9,"patcherVersion":"x","patcherUrl":3,"extra":[],
    "bundles":[{"name":"a","size":1,"sha256":"s","files":["p",4]},{"name":"","sha256":"s"},{"name":"b"},7],
    "files":[{"path":"p","size":"12","sha256":"d"},{"path":"p","size":-5,"url":"u"},{"size":1e300},{"size":2.9},3]}
    garbage)");
  EXPECT_EQ(manifest.version, 12);
  EXPECT_EQ(manifest.patcherVersion, 0);
  EXPECT_EQ(manifest.patcherUrl, "");
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

TEST(PatchManifestTest, OnlyAMissingOrEmptyLauncherDigestIsNone) {
  const std::pair<const char*, bool> cases[] = {
      {"{}", true},
      {R"({"patcherSha256":""})", true},
      {R"({"patcherSha256":"ab"})", false},
      {R"({"patcherSha256":null})", false},
      {R"({"patcherSha256":5})", false},
  };
  for (const auto& [text, none] : cases) EXPECT_EQ(Parsed(text).patcherSha256.empty(), none) << text;
}

TEST(ArchiveChoiceTest, UsefulArchivesAreTakenOnlyIfTheyAreCheaperThanAllWantedFiles) {
  const PatchBundle first{"1", 60, "", {"a", "b"}};
  const PatchBundle other{"2", 5, "", {"c"}};
  const PatchBundle last{"3", 40, "", {"b", "d"}};
  const std::vector<const PatchBundle*> all{&first, &other, &last};
  const auto choice = [&](std::set<std::string, std::less<>> wanted, std::uint64_t bytes) {
    const ArchiveChoice chosen = ChooseArchives(all, wanted, bytes);
    std::string names = chosen.isCheaper ? "cheaper " : "dearer ";
    for (const PatchBundle* archive : chosen.archives) names += archive->name;
    return names + " " + std::to_string(chosen.bytes);
  };
  EXPECT_EQ(choice({"b", "in no archive"}, 101), "cheaper 13 100");
  EXPECT_EQ(choice({"b"}, 100), "dearer 13 100");
  EXPECT_EQ(choice({"in no archive"}, 1), "dearer  0");
}

TEST(PatchManifestTest, DocumentsHaveLimits) {
  const auto zeros = [](std::size_t count) {
    std::string text = "[0";
    for (std::size_t i = 1; i < count; ++i) text += ",0";
    return text + "]";
  };
  const auto longName = [](std::size_t size) {
    return "{\"patcherUrl\":\"" + std::string(size, 'x') + "\"}";
  };
  const std::pair<std::string, const char*> cases[] = {
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

TEST(PatchManifestTest, WhatDoesNotParseSaysWhy) {
  PatchManifest manifest;
  std::string error;
  EXPECT_FALSE(ParsePatchManifest("", manifest, error));
  EXPECT_EQ(error, "unexpected end of input");
  EXPECT_FALSE(ParsePatchManifest("<!doctype html>", manifest, error));
  EXPECT_FALSE(ParsePatchManifest("{\"version\":1e999}", manifest, error));
  EXPECT_EQ(error, "stod argument out of range");
}

TEST(ManifestPathsTest, NoTwoPathsOfOneFile) {
  enum Answer { kNever, kOnLinux, kAlways };
  const struct {
    const char* one;
    const char* other;
    Answer usable;
  } cases[] = {
      {"../x", "y", kNever},
      {"a/x.part", "a/x", kNever},
      {"a/x.old", "a/x", kNever},
      {"./Data.part", "Data", kNever},
      {"a//x", "a/x", kNever},
      {"a/./x", "a/x", kNever},
      {"x/", "x", kNever},
      {"x.part.part", "x.part", kNever},
      {"patch_manifest.json", "x", kNever},
      {"./patcher.ini.part", "x", kNever},
      {"a/x", "a/x", kAlways},
      {"a/x.part", "x", kAlways},
      {"a/x.part.old", "a/x", kAlways},
      {"a/patcher.ini", "x.ini", kAlways},
      {"ab/x", "a/bx", kAlways},
      {"a x", "ax", kAlways},
      {"DATA.PART", "Data", kOnLinux},
      {"Data", "data", kOnLinux},
      {"a\\x", "a/x", kOnLinux},
      {"x. ", "x", kOnLinux},
      {"x..part", "x.", kNever},
      {"d\xE9", "d\xC9", kOnLinux},
      {"PATCHER.ini", "x", kOnLinux},
      {"xx:y", "x", kOnLinux},
      {"a/nul", "x", kOnLinux},
  };
  const bool windows = platform::FileIdentity("a") == platform::FileIdentity("A");
  for (const auto& c : cases) {
    PatchManifest manifest;
    for (int i = 0; i < 100; ++i) manifest.files.push_back({"f" + std::to_string(i), 0, "", ""});
    manifest.files[20].path = c.one;
    manifest.files[70].path = c.other;
    const bool expected = c.usable == kAlways || (c.usable == kOnLinux && !windows);
    EXPECT_EQ(PathsAreUsable(manifest), expected) << c.one << " and " << c.other;
    std::swap(manifest.files[20].path, manifest.files[70].path);
    EXPECT_EQ(PathsAreUsable(manifest), expected) << c.other << " and " << c.one;
  }
}

TEST(ManifestPathsTest, OnlyPlacesBelowTheInstallDirectory) {
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
