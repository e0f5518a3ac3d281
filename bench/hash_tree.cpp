// What a verification does for each file, without its messages: existence, size, digest, on the pool.
// Usage: hash_tree MANIFEST DIRECTORY WORKERS

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "integrity/sha256.h"
#include "platform/text.h"
#include "update/download_pool.h"
#include "update/patch_manifest.h"

namespace {

bool IsCorrect(const std::filesystem::path& place, const patcher::PatchFile& file) {
  std::error_code error;
  if (!std::filesystem::exists(place, error) || error) return false;
  patcher::Sha256 sha256;
  if (std::filesystem::file_size(place, error) != file.size || error) return false;
  return sha256.HashFile(place) == file.sha256;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  std::ifstream in(argv[1], std::ios::binary);
  const std::string text(std::istreambuf_iterator<char>(in), {});
  patcher::PatchManifest manifest;
  std::string error;
  if (!patcher::ParsePatchManifest(text, manifest, error)) return 1;
  const std::filesystem::path directory = argv[2];
  std::atomic<std::size_t> correct{0};
  patcher::ParallelRun(manifest.files.size(), std::atoi(argv[3]), [&](std::size_t index, unsigned) {
    const patcher::PatchFile& file = manifest.files[index];
    if (IsCorrect(directory / platform::PathFromBytes(file.path), file)) ++correct;
    return true;
  });
  std::printf("%zu of %zu files are correct\n", correct.load(), manifest.files.size());
  return correct == manifest.files.size() ? 0 : 1;
}
