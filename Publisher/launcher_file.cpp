#include "launcher_file.h"

#include <cerrno>
#include <fstream>
#include <string>
#include <system_error>
#include <vector>

#include "platform/text.h"
#include "publish_error.h"
#include "update/program_file.h"
#include "version_resource.h"

namespace patcher::publisher {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kMaxLauncherSize = std::uint64_t{256} << 20;
constexpr char kInternalName[] = "Patcher";

using Program = std::vector<std::uint8_t>;

Program ReadProgram(const fs::path& file) {
  std::error_code error;
  const std::uint64_t size = fs::file_size(file, error);
  if (error) throw FileError("cannot read the launcher", file, error);
  if (size > kMaxLauncherSize) throw PublishError("the launcher is larger than 256 MiB");
  Program program(static_cast<std::size_t>(size));
  errno = 0;
  std::ifstream in(file, std::ios::binary);
  in.read(reinterpret_cast<char*>(program.data()), static_cast<std::streamsize>(size));
  if (!in) throw FileError("cannot read the launcher", file, StreamReason());
  return program;
}

bool IsForLinux(const Program& program) {
  return program.size() > 4 && program[0] == 0x7F && program[1] == 'E' && program[2] == 'L' &&
         program[3] == 'F';
}

std::string Printed(const ProgramVersion& version) {
  std::string text;
  for (const std::uint16_t number : version.numbers) {
    text += (text.empty() ? "" : ".") + std::to_string(number);
  }
  return text;
}

std::int32_t BuildOfWindowsProgram(const Program& program) {
  const auto version = ReadProgramVersion(program);
  if (!version) throw PublishError("the launcher has no version resource");
  if (version->internalName != kInternalName) {
    throw PublishError("the launcher is another program: its internal name is '" + version->internalName +
                       "', not '" + kInternalName + "'");
  }
  const auto& numbers = version->numbers;
  if (numbers[0] != 1 || numbers[1] == 0 || numbers[2] != 0 || numbers[3] != 0) {
    throw PublishError("the launcher has the version " + Printed(*version) + ", which is not 1.BUILD.0.0");
  }
  return numbers[1];
}

}  // namespace

std::int32_t LauncherBuild(const fs::path& file, std::optional<std::int32_t> claimed) {
  const Program program = ReadProgram(file);
  if (ExamineProgram(file) != ProgramFile::kComplete) {
    throw PublishError("the launcher is not a complete program for Windows or Linux");
  }
  if (IsForLinux(program)) {
    if (claimed) return *claimed;
    throw PublishError(
        "a launcher for Linux does not contain its build number: pass it with --launcher-build");
  }
  const std::int32_t build = BuildOfWindowsProgram(program);
  if (claimed && *claimed != build) {
    throw PublishError("the launcher is build " + std::to_string(build) + ", not " +
                       std::to_string(*claimed));
  }
  return build;
}

std::optional<std::int32_t> OwnLauncherBuild(const fs::path& file) {
  const auto version = ReadProgramVersion(ReadProgram(file));
  if (!version || version->internalName != kInternalName) return std::nullopt;
  return version->numbers[1];
}

}  // namespace patcher::publisher
