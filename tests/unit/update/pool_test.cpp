#include <atomic>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "platform/file_names.h"
#include "shared/parallel_run.h"
#include "shared/retry_while_held.h"
#include "support/recording_host.h"
#include "support/scratch_directory.h"
#include "transport/run_pool.h"
#include "update/progress_tracker.h"

namespace patcher {
namespace {

TEST(ParallelRunTest, WorkersAndItems) {
  const std::tuple<std::size_t, int, unsigned> cases[] = {{3, 8, 3}, {5, 0, 1}, {5, -2, 1}, {100, 4, 4}};
  for (const auto& [items, threads, workers] : cases) {
    std::vector<std::atomic<int>> runs(items);
    std::atomic<bool> inRange = true;
    const unsigned most = workers;
    EXPECT_TRUE(ParallelRun(items, threads, [&](std::size_t index, unsigned worker) {
      ++runs[index];
      if (worker >= most) inRange = false;
      return true;
    }));
    for (const auto& count : runs) EXPECT_EQ(count, 1);
    EXPECT_TRUE(inRange);
  }
  EXPECT_TRUE(ParallelRun(0, 4, [](std::size_t, unsigned) { return false; }));
}

TEST(ParallelRunTest, AFailureStopsTheQueue) {
  for (const bool raises : {false, true}) {
    std::atomic<std::size_t> begun{0};
    EXPECT_FALSE(ParallelRun(10000, 2, [&](std::size_t index, unsigned) {
      ++begun;
      if (index >= 3 && raises) throw 5;
      return index < 3;
    }));
    // Each of the two workers ends with its first failure.
    EXPECT_GE(begun, 4u);
    EXPECT_LE(begun, 5u);
  }
}

TEST(RunPoolTest, AnExceptionLeavesALogLine) {
  const ScratchDirectory game;
  EXPECT_FALSE(RunPool(1, [](std::size_t, unsigned) -> bool { throw std::bad_alloc(); }));
  EXPECT_EQ(ReadWhole(game / "patcher_debug.txt"), "Exception in a pool : std::bad_alloc\r\n");
}

TEST(RetryWhileHeldTest, OnlyAHeldFileIsTriedAgain) {
  constexpr int kHeld = 32;  // on Windows; elsewhere no error means this
  const bool windows = platform::FileIdentity("a") == platform::FileIdentity("A");
  int calls = 0;
  const int error = RetryWhileHeld([&] { return ++calls < 3 ? kHeld : 7; });
  EXPECT_EQ(std::pair(calls, error), windows ? std::pair(3, 7) : std::pair(1, kHeld));
}

TEST(ProgressTrackerTest, ForcedEventsCountAndRollBack) {
  RecordingHost host;
  ProgressTracker tracker(host, 200, 2);
  tracker.SetCurrentFile("a");
  tracker.AddBytes(150);
  tracker.RollBack(100);
  EXPECT_EQ(tracker.ItemDone(), 1);
  tracker.AddBytes(400);
  EXPECT_EQ(tracker.ItemDone(), 2);
  const std::vector<UiEvent> events = host.TakeEvents();
  ASSERT_GE(events.size(), 2u);
  const auto& last = *reinterpret_cast<ProgressReport*>(events.back().lParam);
  EXPECT_EQ(last.percent, 100);
  EXPECT_EQ(last.downloadedBytes, 450u);
  EXPECT_EQ(last.fileIndex, 2);
  EXPECT_EQ(last.currentFile, "a");
  for (const UiEvent& event : events) ReleasePayload(event);
  EXPECT_EQ(PercentDone(0, 0), 100);
  EXPECT_EQ(PercentDone(199, 200), 99);
  EXPECT_EQ(PercentDone(UINT64_MAX / 2, UINT64_MAX), 50);
  EXPECT_EQ(PercentDone(7, 3), 100);
}

}  // namespace
}  // namespace patcher
