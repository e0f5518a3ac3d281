// Input: a file that may be a program.
#include "fuzz.h"
#include "support/scratch_directory.h"
#include "update/program_file.h"

void patcher::Fuzz(std::string_view input) {
  static const ScratchDirectory directory;
  const auto judge = [](const std::string& bytes) {
    WriteWhole(directory / "file", bytes);
    return ExamineProgram(directory / "file");
  };
  if (judge(std::string(input)) != ProgramFile::kComplete) return;
  Require(judge(std::string(input) + "x") == ProgramFile::kComplete, "more bytes leave a program complete");
}
