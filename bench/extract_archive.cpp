// Extracts a whole archive the way the archive stage does. Usage: extract_archive ARCHIVE DIRECTORY

#include <cstdio>

#include "shared/program.h"
#include "update/bundle_install.h"

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  patcher::SetExePath(std::filesystem::path(argv[2]) / "launcher");
  std::string failure;
  if (patcher::ExtractArchive(
          argv[1], [](std::string_view) { return true; }, failure))
    return 0;
  std::fprintf(stderr, "%s\n", failure.c_str());
  return 1;
}
