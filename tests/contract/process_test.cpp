#include "platform/process.h"

#include <cstdlib>
#include <sstream>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "platform/standard_streams.h"
#include "platform/text.h"
#include "support/scratch_directory.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

/// A copy of the program that these tests start.
fs::path CopyChild(const fs::path& folder) {
  fs::create_directories(folder);
  const fs::path own = OwnExecutablePath();
  fs::path program = folder / ("child" + own.extension().string());
  fs::copy_file(own.parent_path() / ("contract_child" + own.extension().string()), program);
  return program;
}

TEST(ProcessContract, StartedProgramGetsPathArgumentsAndDirectory) {
  const patcher::ScratchDirectory directory;
  const fs::path folder = directory / "a b" / PathFromUtf8("d\xC3\xA9j\xC3\xA0");
  const fs::path program = CopyChild(folder);
  ASSERT_EQ(StartProgram(program, {"report", "quantel"}, folder), 0);
  std::string text;
  for (; !text.ends_with("\n\n"); text = patcher::ReadWhole(folder / "report")) std::this_thread::yield();
  std::istringstream report(text);
  std::string line;
  for (const fs::path& expected : {program, folder}) {
    EXPECT_TRUE(std::getline(report, line) && fs::equivalent(PathFromUtf8(line), expected)) << line;
  }
  EXPECT_TRUE(std::getline(report, line, '\0') && line == "quantel\n\n") << line;
}

TEST(ProcessContract, AFileThatIsNotAProgramHasItsOwnError) {
  const patcher::ScratchDirectory directory;
  const fs::path text = directory / "text.exe";
  patcher::WriteWhole(text, "echo this is no program\n" + std::string(1000, ' '));
  fs::permissions(text, fs::perms::owner_exec, fs::perm_options::add);
  EXPECT_EQ(StartProgram(text, {"x"}, text.parent_path()), kErrorBadExeFormat);

  for (const int error : {StartProgram(directory / "missing.exe", {}, text.parent_path()),
                          StartProgram(OwnExecutablePath(), {}, directory / "nowhere")}) {
    EXPECT_TRUE(error != 0 && error != kErrorBadExeFormat) << error;
  }
}

TEST(StandardStreamsContract, LinesAreBytesAndSurviveTheEnd) {
  const patcher::ScratchDirectory directory;
  const fs::path program = CopyChild(directory / "").filename();
  const std::string longLine(1000000, 'x');
  // 26 ends a text on Windows, and CR LF comes in as a line feed, unless the streams are binary.
  patcher::WriteWhole(directory / "in",
                      "one\ntwo\r\n\n\xC3\xA9\x1A\r\r\n" + longLine + "\nthe last has no end");

  const fs::path before = fs::current_path();
  fs::current_path(directory / "");
  const std::string command = (fs::path(".") / program).make_preferred().string();
  const int status = std::system((command + " --streams <in >out 2>err").c_str());
  fs::current_path(before);
  EXPECT_TRUE(status == 7 || status == 7 << 8) << status;

  EXPECT_EQ(patcher::ReadWhole(directory / "out"),
            "[one]\n[two]\n[]\n[\xC3\xA9\x1A\r]\n[" + longLine + "]\n[the last has no end]\n");
  EXPECT_EQ(patcher::ReadWhole(directory / "err"), "end\n");
}

}  // namespace
}  // namespace platform
