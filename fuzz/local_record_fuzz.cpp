// Input: a patch_manifest.json; then, after a line "---", one line for each change: a path to enter, or a
// path to forget after a minus sign. An empty line saves progress.
#include <algorithm>

#include "fuzz.h"
#include "support/scratch_directory.h"
#include "update/local_manifest.h"
#include "update/local_record.h"

namespace {

using patcher::LocalRecord;

constexpr std::string_view kSeparator = "\n---\n";

void SaveProgress(LocalRecord& record, const std::filesystem::path& file) {
  record.SaveProgress();
  const patcher::LocalState saved = patcher::LoadLocalManifest(file, nullptr);
  const patcher::LocalState& state = record.State();
  patcher::Require(std::includes(state.begin(), state.end(), saved.begin(), saved.end()),
                   "what the file says is so");
}

void Change(LocalRecord& record, std::string_view line) {
  if (line.starts_with('-')) {
    record.Forget(line.substr(1));
  } else {
    record.Enter(std::string(line), std::string(line.size() % 3, 'd'));
    patcher::Require(record.State().contains(line), "what was entered is there");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const patcher::ScratchDirectory directory;
  const std::string_view text = patcher::AsText(data, size);
  const std::size_t split = text.find(kSeparator);
  patcher::WriteWhole(directory / "record", std::string(text.substr(0, split)));
  LocalRecord record(directory / "record");
  record.Load();
  std::string_view changes = split == text.npos ? std::string_view() : text.substr(split + kSeparator.size());
  while (!changes.empty()) {
    const std::size_t end = changes.find('\n');
    const std::string_view line = changes.substr(0, end);
    if (line.empty()) {
      SaveProgress(record, directory / "record");
    } else {
      Change(record, line);
    }
    changes = end == changes.npos ? std::string_view() : changes.substr(end + 1);
  }
  patcher::Require(record.Save(), "the record is written");
  patcher::Require(
      patcher::ReadWhole(directory / "record") == patcher::RecordText(record.State(), record.Version()),
      "a save writes the whole state");
  return 0;
}
