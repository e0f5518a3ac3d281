// Input: a file that may be a program.
#include "fuzz.h"
#include "support/scratch_directory.h"
#include "update/program_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const patcher::ScratchDirectory directory;
  const std::string text(patcher::AsText(data, size));
  patcher::WriteWhole(directory / "file", text);
  const patcher::ProgramFile judged = patcher::ExamineProgram(directory / "file");
  patcher::WriteWhole(directory / "file", text + "x");
  if (judged == patcher::ProgramFile::kComplete) {
    patcher::Require(patcher::ExamineProgram(directory / "file") == judged,
                     "more bytes make no program less whole");
  }
  return 0;
}
