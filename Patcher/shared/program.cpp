#include "shared/program.h"

#include <system_error>

#include "platform/text.h"

namespace patcher {
namespace {

struct ProgramPaths {
  std::filesystem::path executable;
  std::filesystem::path directory;
};

ProgramPaths& Paths() {
  // Never destroyed, because detached workers may still read it while the process ends.
  static auto* paths = new ProgramPaths;
  return *paths;
}

}  // namespace

const std::filesystem::path& ExePath() { return Paths().executable; }

const std::filesystem::path& ExeDir() { return Paths().directory; }

std::filesystem::path InstalledPlace(std::string_view path) {
  return ExeDir() / platform::PathFromBytes(path);
}

bool IsOwnName(const std::filesystem::path& file) {
  std::error_code error;
  if (!std::filesystem::equivalent(ExePath(), file, error) || error) return false;
  return file == ExePath() || std::filesystem::hard_link_count(file, error) < 2;
}

void SetExePath(const std::filesystem::path& executable) { Paths() = {executable, executable.parent_path()}; }

std::u16string BuildWindowTitle() {
  return platform::Utf8ToWide("TolmiraMMO Patcher v" + std::to_string(launcherBuild));
}

}  // namespace patcher
