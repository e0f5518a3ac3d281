#include "platform/standard_streams.h"

#include <cstdlib>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "platform/process.h"
#include "support/scratch_directory.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

TEST(StandardStreamsContract, LinesPassAsBytes) {
  const patcher::ScratchDirectory directory;
  const fs::path own = OwnExecutablePath();
  const std::string program = "child" + own.extension().string();
  fs::copy_file(own.parent_path() / ("contract_child" + own.extension().string()), directory / program);
  const std::string longLine(1000000, 'x');
  // 26 ends a text on Windows, and CR LF comes in as a line feed, unless the streams are binary.
  patcher::WriteWhole(directory / "in",
                      "one\ntwo\r\n\n\xC3\xA9\x1A\r\r\n" + longLine + "\nthe last has no end");

  const fs::path before = fs::current_path();
  fs::current_path(directory / "");
  const std::string command = (fs::path(".") / program).make_preferred().string();
  EXPECT_EQ(std::system((command + " --streams <in >out 2>err").c_str()), 0);
  fs::current_path(before);

  EXPECT_EQ(patcher::ReadWhole(directory / "out"),
            "[one]\n[two]\n[]\n[\xC3\xA9\x1A\r]\n[" + longLine + "]\n[the last has no end]\n");
  EXPECT_EQ(patcher::ReadWhole(directory / "err"), "end\n");
}

}  // namespace
}  // namespace platform
