#include "update/local_record.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "support/scratch_directory.h"
#include "update/unflushed_files.h"

namespace patcher {
namespace {

TEST(LocalManifestTest, ReadsWhatWasWrittenAndNothingFromBadText) {
  ScratchDirectory directory;
  const LocalState state{{"a \"b\"\\c", "d1"}, {"\xC3\xA9/\n", "d2"}, {"z", ""}};
  const std::pair<std::string, LocalState> cases[] = {
      {RecordText(state, -3), state},
      {RecordText({}, -3), {}},
      {"", {}},
      {"{\"version\":5,\"files\":[{\"path\":\"a\"", {}},
      {"[]", {}},
      {"{\"files\":[{\"path\":\"a\",\"size\":1,\"sha256\":\"x\"},{\"path\":\"a\",\"sha256\":\"y\"}]}",
       {{"a", "y"}}}};
  for (const auto& [text, read] : cases) {
    WriteWhole(directory / "m", text);
    std::int32_t version = 0;
    EXPECT_EQ(LoadLocalManifest(directory / "m", &version), read) << text;
    EXPECT_EQ(version == -3, text.find("-3") != std::string::npos) << text;
  }
}

TEST(LocalManifestTest, AParsedManifestIsUsedForItsOwnFileOnly) {
  ScratchDirectory directory;
  PatchManifest parsed;
  parsed.version = 4;
  parsed.files = {{"a", 1, "x", ""}, {"a", 1, "y", ""}, {"b", 1, "z", ""}};
  const std::string text = R"({"version":4,"files":[]})";
  WriteWhole(directory / "m", text);
  LocalRecord record(directory / "m");
  record.Load({text, &parsed});
  EXPECT_TRUE(record.IsDocument());
  EXPECT_FALSE(record.WasUnreadable());
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

TEST(LocalRecordTest, ProgressIsCorrectAndASaveIsComplete) {
  ScratchDirectory directory;
  for (const bool inOrder : {true, false}) {
    std::filesystem::remove(directory / "m");
    LocalRecord record(directory / "m");
    record.Load();
    for (int step = 0; step < 200; ++step) {
      record.Enter("p" + std::to_string(1000 + (inOrder ? step : step * 7 % 90)),
                   std::string(static_cast<std::size_t>(step % 70), 'd'));
      if (step % 40 == 20) record.Forget("p" + std::to_string(1000 + step / 2));
      if (step == 150) WriteWhole(directory / "m", "damaged");
      record.SaveProgress();
      const LocalState saved = LoadLocalManifest(directory / "m", nullptr);
      const LocalState& state = record.State();
      ASSERT_GE(saved.size() + 50, state.size()) << "it lags by a few entries at most";
      ASSERT_TRUE(std::includes(state.begin(), state.end(), saved.begin(), saved.end())) << step;
    }
    ASSERT_TRUE(record.Save());
    EXPECT_EQ(ReadWhole(directory / "m"), RecordText(record.State(), 0));
    std::filesystem::create_directories(directory / "m.part" / "in the way");
    record.Forget(record.State().begin()->first);
    EXPECT_FALSE(record.Save());
    EXPECT_TRUE(std::filesystem::exists(directory / "m"));
    EXPECT_TRUE(record.SaveOrRemove());
    EXPECT_FALSE(std::filesystem::exists(directory / "m"));
    std::filesystem::remove_all(directory / "m.part");
  }
}

TEST(UnflushedFilesTest, AMissingDirectoryKeepsBackOnlyItsOwnFiles) {
  ScratchDirectory directory;
  WriteWhole(directory / "a", "1");
  UnflushedFiles files;
  files.Add({"gone/x", "d"});
  files.Add({"a", "d"});
  const std::vector<InstalledFile> flushed = files.Flush();
  ASSERT_EQ(flushed.size(), 1u);
  EXPECT_EQ(flushed[0].path, "a");
  EXPECT_FALSE(files.IsEmpty());
}

}  // namespace
}  // namespace patcher
