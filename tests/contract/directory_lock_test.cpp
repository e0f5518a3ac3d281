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

TEST(DirectoryLockContract, OneHolderForEachDirectory) {
  const patcher::ScratchDirectory directory;
  const fs::path place = directory / "a";
  fs::create_directory(place);
  fs::create_directory(directory / "b");
  auto lock = std::make_unique<DirectoryLock>(place);
  EXPECT_TRUE(OthersCanTake(place)) << "the constructor takes nothing";
  ASSERT_TRUE(lock->TakeWithin(0ms));
  EXPECT_FALSE(OthersCanTake(place));
  EXPECT_FALSE(OthersCanTake(directory / "b" / ".." / "a"));
  EXPECT_TRUE(OthersCanTake(directory / "b"));
  std::thread waiting([&] { EXPECT_TRUE(DirectoryLock(place).TakeWithin(10min)); });
  std::this_thread::sleep_for(50ms);  // so that the thread has to wait
  lock.reset();
  waiting.join();
  EXPECT_TRUE(OthersCanTake(place));
  EXPECT_TRUE(OthersCanTake(directory / "missing"))
      << "a missing directory cannot be locked, and every launcher may go on";
}

}  // namespace
}  // namespace platform
