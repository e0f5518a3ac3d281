#include "shared/retry_while_held.h"

#include <fstream>

#include <gtest/gtest.h>

#include "platform/files.h"
#include "support/scratch_directory.h"

namespace patcher {
namespace {

TEST(RetryWhileHeldTest, WaitsForTheHolderAndForNothingElse) {
  const ScratchDirectory directory;
  WriteWhole(directory / "file", "content");
  std::ifstream holder(directory / "file");  // on Windows the file cannot be moved now
  int attempts = 0;
  EXPECT_EQ(RetryWhileHeld([&] {
              const int error = platform::MoveReplacing(directory / "file", directory / "moved", false);
              if (++attempts == 2) holder.close();
              return error;
            }),
            0);
  EXPECT_EQ(ReadWhole(directory / "moved"), "content");
  attempts = 0;
  EXPECT_NE(RetryWhileHeld([&] {
              ++attempts;
              return platform::MoveReplacing(directory / "missing", directory / "moved", false);
            }),
            0);
  EXPECT_EQ(attempts, 1);
}

}  // namespace
}  // namespace patcher
