// Input: a ZIP archive; all of its entries are wanted.
#include <filesystem>

#include "fuzz.h"
#include "support/scratch_directory.h"
#include "update/archive_extraction.h"

namespace fs = std::filesystem;

void patcher::Fuzz(std::string_view input) {
  static const ScratchDirectory directory;
  const fs::path install = directory / "install";
  fs::create_directory(install);
  SetExePath(install / "Patcher");
  WriteWhole(install / "_bundle0.part", std::string(input));
  ExtractingThreads threads(2);
  std::string failure;
  const auto everything = [](std::string_view) { return true; };
  const bool extracted = ExtractArchive(install / "_bundle0.part", everything, threads, failure);
  Require(extracted || !failure.empty(), "a failure has a reason");
  for (const auto& entry : fs::directory_iterator(directory / "")) {
    Require(entry.path() == install, "nothing is written outside the install directory");
  }
  std::uint64_t bytes = 0;
  for (const auto& entry : fs::recursive_directory_iterator(install)) {
    if (entry.is_regular_file()) bytes += entry.file_size();
  }
  // An entry in the archive's directory has at least 46 bytes; deflate unpacks one byte to at most 1033.
  Require(bytes <= input.size() + (input.size() / 46) * input.size() * 1033, "the unpacked size is limited");
  fs::remove_all(install);
}
