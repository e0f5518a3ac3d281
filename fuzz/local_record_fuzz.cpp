// Input: a patch_manifest.json. Then paths are added to it.
#include <algorithm>

#include "fuzz.h"
#include "support/scratch_directory.h"
#include "update/local_manifest.h"
#include "update/local_record.h"

void patcher::Fuzz(std::string_view input) {
  static const ScratchDirectory directory;
  const std::filesystem::path file = directory / "record";
  WriteWhole(file, std::string(input));
  LocalRecord record(file);
  record.Load();
  for (const char* path : {"b", "a", "", "d/c", "b"}) {
    record.Enter(path, std::string(input.size() % 3, 'd'));
    record.SaveProgress();
    const LocalState saved = LoadLocalManifest(file, nullptr);
    const LocalState& state = record.State();
    Require(std::includes(state.begin(), state.end(), saved.begin(), saved.end()),
            "the file has only entries of the state");
  }
  Require(record.Save() && ReadWhole(file) == RecordText(record.State(), record.Version()),
          "a save writes the complete state");
}
