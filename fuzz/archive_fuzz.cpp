// Input: a ZIP archive, of which everything is wanted.
#include <filesystem>

#include "fuzz.h"
#include "support/scratch_directory.h"
#include "update/archive_extraction.h"

namespace fs = std::filesystem;

namespace {

constexpr std::uint64_t kMaxExpansion = 1033;  ///< deflate's best, and what rounding adds
constexpr std::uint64_t kMinEntrySize = 46;    ///< of the archive's directory

std::uint64_t BytesBelow(const fs::path& directory) {
  std::uint64_t bytes = 0;
  for (const auto& entry : fs::recursive_directory_iterator(directory)) {
    if (entry.is_regular_file()) bytes += entry.file_size();
  }
  return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const patcher::ScratchDirectory directory;
  const fs::path install = directory / "install";
  fs::create_directory(install);
  patcher::SetExePath(install / "Patcher");
  patcher::WriteWhole(install / "_bundle0.part", std::string(patcher::AsText(data, size)));
  patcher::ExtractingThreads threads(2);
  std::string failure;
  const bool extracted = patcher::ExtractArchive(
      install / "_bundle0.part", [](std::string_view) { return true; }, threads, failure);
  patcher::Require(extracted || !failure.empty(), "a failure has a name");
  for (const auto& entry : fs::directory_iterator(directory / "")) {
    patcher::Require(entry.path() == install, "nothing is written outside");
  }
  patcher::Require(BytesBelow(install) <= size + (size / kMinEntrySize) * size * kMaxExpansion,
                   "what is unpacked has a bound");
  fs::remove_all(install);
  return 0;
}
