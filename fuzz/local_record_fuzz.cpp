// Input: a patch_manifest.json, to which paths are then added.
#include <algorithm>

#include "fuzz.h"
#include "support/scratch_directory.h"
#include "update/local_manifest.h"
#include "update/local_record.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const patcher::ScratchDirectory directory;
  const std::filesystem::path file = directory / "record";
  patcher::WriteWhole(file, std::string(patcher::AsText(data, size)));
  patcher::LocalRecord record(file);
  record.Load();
  for (const char* path : {"b", "a", "", "d/c", "b"}) {
    record.Enter(path, std::string(size % 3, 'd'));
    record.SaveProgress();
    const patcher::LocalState saved = patcher::LoadLocalManifest(file, nullptr);
    const patcher::LocalState& state = record.State();
    patcher::Require(std::includes(state.begin(), state.end(), saved.begin(), saved.end()),
                     "what the file says is so");
  }
  record.Forget("a");
  patcher::Require(record.Save(), "the record is written");
  patcher::Require(patcher::ReadWhole(file) == patcher::RecordText(record.State(), record.Version()),
                   "a save writes the whole state");
  return 0;
}
