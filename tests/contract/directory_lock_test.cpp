#include "platform/directory_lock.h"

#include <memory>
#include <thread>

#include <gtest/gtest.h>

#include "support/scratch_directory.h"

namespace platform {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

/// Whether another thread, which a lock treats as another process, could take the lock.
bool OthersCanTake(const fs::path& directory) {
  bool taken = false;
  std::thread([&] {
    DirectoryLock lock(directory);
    taken = lock.TakeWithin(0ms);
  }).join();
  return taken;
}

TEST(DirectoryLockContract, OneHolderADirectoryHoweverItIsSpelled) {
  const patcher::ScratchDirectory directory;
  fs::create_directory(directory / "a");
  fs::create_directory(directory / "b");
  {
    DirectoryLock lock(directory / "a");
    EXPECT_TRUE(OthersCanTake(directory / "a")) << "nothing is taken by making it";
    ASSERT_TRUE(lock.TakeWithin(0ms));
    EXPECT_FALSE(OthersCanTake(directory / "a"));
    EXPECT_FALSE(OthersCanTake(directory / "b" / ".." / "a"));
    EXPECT_TRUE(OthersCanTake(directory / "b"));
  }
  EXPECT_TRUE(OthersCanTake(directory / "a"));
  EXPECT_TRUE(OthersCanTake(directory / "missing"))
      << "a directory that is missing cannot be locked and locks out no other launcher";
}

TEST(DirectoryLockContract, AWaitEndsWithTheLockOrWithItsTime) {
  const patcher::ScratchDirectory directory;
  const fs::path place = directory / "a";
  fs::create_directory(place);
  auto first = std::make_unique<DirectoryLock>(place);
  ASSERT_TRUE(first->TakeWithin(0ms));
  std::thread([&] { EXPECT_FALSE(DirectoryLock(place).TakeWithin(150ms)); }).join();
  std::thread waiting([&] {
    DirectoryLock second(place);
    EXPECT_TRUE(second.TakeWithin(10min));
    EXPECT_FALSE(OthersCanTake(place));
  });
  first.reset();
  waiting.join();
  EXPECT_TRUE(OthersCanTake(place));
}

}  // namespace
}  // namespace platform
