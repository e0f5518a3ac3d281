// Extracts complete archives like the archive stage. Usage: extract_archive THREADS DIRECTORY ARCHIVE...

#include <cstdio>
#include <cstdlib>
#include <string>

#include "shared/parallel_run.h"
#include "shared/program.h"
#include "update/archive_extraction.h"

int main(int argc, char** argv) {
  if (argc < 4) return 2;
  const int threads = std::atoi(argv[1]);
  patcher::SetExePath(std::filesystem::path(argv[2]) / "launcher");
  patcher::ExtractingThreads extracting(threads);
  const auto extract = [&](std::size_t index, unsigned) {
    std::string failure;
    if (patcher::ExtractArchive(
            argv[3 + index], [](std::string_view) { return true; }, extracting, failure))
      return true;
    std::fprintf(stderr, "%s: %s\n", argv[3 + index], failure.c_str());
    return false;
  };
  return patcher::ParallelRun(static_cast<std::size_t>(argc - 3), threads, extract) ? 0 : 1;
}
