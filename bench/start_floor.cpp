// The least work of a start without changes: parses the manifest once and tests whether each file exists.
// Usage: start_floor MANIFEST DIRECTORY

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "update/patch_manifest.h"

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  std::string text(std::filesystem::file_size(argv[1]), '\0');
  std::ifstream(argv[1], std::ios::binary).read(text.data(), static_cast<std::streamsize>(text.size()));
  patcher::PatchManifest manifest;
  std::string error;
  if (!patcher::ParsePatchManifest(text, manifest, error)) return 1;
  const std::filesystem::path directory = argv[2];
  std::size_t present = 0;
  for (const patcher::PatchFile& file : manifest.files) {
    std::error_code ignored;
    if (std::filesystem::exists(directory / file.path, ignored)) ++present;
  }
  std::printf("%zu of %zu files exist\n", present, manifest.files.size());
  return present == manifest.files.size() ? 0 : 1;
}
