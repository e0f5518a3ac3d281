#include "update/local_record.h"

#include <algorithm>
#include <random>
#include <sstream>

#include <gtest/gtest.h>

#include "minijson/minijson.h"
#include "support/scratch_directory.h"

namespace patcher {
namespace {

std::string ByMiniJson(const LocalState& state, std::int32_t version) {
  using MiniJson::Value;
  Value files = Value::MakeArray();
  for (const auto& [path, digest] : state) {
    Value item = Value::MakeObject();
    item.Set("path", Value::MakeString(path));
    item.Set("sha256", Value::MakeString(digest));
    files.arrayItems.push_back(std::move(item));
  }
  Value document = Value::MakeObject();
  document.Set("version", Value::MakeNumber(version));
  document.Set("files", std::move(files));
  std::ostringstream out;
  document.Write(out, 0);
  return out.str();
}

TEST(LocalManifestTest, ProgressFormSurvivesTheRoundTrip) {
  ScratchDirectory directory;
  const LocalState state{{"a \"b\"\\c", "d1"}, {"\xC3\xA9/\n", "d2"}, {"z", ""}};
  for (const LocalState& each : {LocalState{}, state}) {
    EXPECT_EQ(RecordText(each, -3), ByMiniJson(each, -3));
    WriteWhole(directory / "m", RecordText(each, -3));
    std::int32_t version = 0;
    EXPECT_EQ(LoadLocalManifest(directory / "m", &version), each);
    EXPECT_EQ(version, -3);
  }
}

TEST(LocalManifestTest, WhatDoesNotParseIsEmpty) {
  ScratchDirectory directory;
  for (const char* text : {"", "{\"version\":5,\"files\":[{\"path\":\"a\"", "[]", "{}"}) {
    WriteWhole(directory / "m", text);
    EXPECT_TRUE(LoadLocalManifest(directory / "m", nullptr).empty());
  }
  WriteWhole(directory / "m",
             R"({"version":9,"files":[{"path":"a","size":1,"sha256":"x"},{"path":"a","sha256":"y"}]})");
  EXPECT_EQ(LoadLocalManifest(directory / "m", nullptr), (LocalState{{"a", "y"}}));
}

TEST(LocalManifestTest, AParsedTextStandsForItsOwnFileOnly) {
  ScratchDirectory directory;
  PatchManifest parsed;
  parsed.version = 4;
  parsed.files = {{"a", 1, "x", ""}, {"a", 1, "y", ""}, {"b", 1, "z", ""}};
  const std::string text = R"({"version":4,"files":[]})";
  WriteWhole(directory / "m", text);
  LocalRecord record(directory / "m");
  record.Load({text, &parsed});
  EXPECT_TRUE(record.IsDocument());
  EXPECT_FALSE(record.IsUnread());
  EXPECT_EQ(record.Version(), 4);
  record.Forget("b");
  EXPECT_FALSE(record.IsDocument());
  EXPECT_EQ(record.State(), (LocalState{{"a", "y"}}));
  WriteWhole(directory / "m", text + " ");
  record.Load({text, &parsed});
  EXPECT_TRUE(record.State().empty());
  LocalRecord none(directory / "none");
  none.Load({"", &parsed});
  EXPECT_TRUE(none.State().empty());
}

TEST(LocalRecordTest, ProgressIsNeverWrongAndASaveIsWhole) {
  ScratchDirectory directory;
  std::mt19937 random(7);
  for (int round = 0; round < 6; ++round) {
    std::filesystem::remove(directory / "m");
    LocalRecord record(directory / "m");
    record.Load();
    for (int step = 0; step < 300; ++step) {
      const bool inOrder = round % 2 == 0 && random() % 8 != 0;
      const std::string path = "p" + std::to_string(inOrder ? 1000 + step : static_cast<int>(random() % 200));
      switch (random() % 40) {
        case 0:
          record.Forget(path);
          break;
        case 1:
          WriteWhole(directory / "m", "damaged");
          break;
        default:
          record.Enter(path, std::string(random() % 70, 'd'));
      }
      if (random() % 3 != 0) continue;
      record.SaveProgress();
      const LocalState saved = LoadLocalManifest(directory / "m", nullptr);
      // It may lag by a few entries, and names nothing that is not so.
      ASSERT_GE(saved.size() + 50, record.State().size());
      const LocalState& state = record.State();
      ASSERT_TRUE(std::includes(state.begin(), state.end(), saved.begin(), saved.end()))
          << round << "/" << step;
    }
    ASSERT_TRUE(record.Save());
    ASSERT_EQ(ReadWhole(directory / "m"), ByMiniJson(record.State(), 0)) << round;
  }
}

}  // namespace
}  // namespace patcher
