// Input: a patch_manifest.json; then, behind a line "---", one line for each change: a path to enter, or a
// path to forget behind a minus sign. An empty line saves.
#include "fuzz.h"
#include "support/scratch_directory.h"
#include "update/local_manifest.h"
#include "update/local_record.h"

namespace {

using patcher::LocalRecord;

constexpr std::string_view kSeparator = "\n---\n";

void SaveAndCompare(LocalRecord& record, const std::filesystem::path& plain) {
  record.Save();
  patcher::SaveLocalManifest(plain, record.State(), record.Version());
  patcher::Require(patcher::ReadWhole(record.Path()) == patcher::ReadWhole(plain),
                   "a save of what changed equals a save of everything");
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
      SaveAndCompare(record, directory / "plain");
    } else {
      Change(record, line);
    }
    changes = end == changes.npos ? std::string_view() : changes.substr(end + 1);
  }
  SaveAndCompare(record, directory / "plain");
  return 0;
}
