#include "control/recovery_limit.h"

#include <gtest/gtest.h>

namespace patcher {
namespace {

TEST(RecoveryLimit, ThreeTimesInAnyTenMinutes) {
  using std::chrono::seconds;
  const struct {
    seconds at;
    bool expected;
  } kCases[] = {{seconds(0), true},    {seconds(1), true},   {seconds(300), true},  {seconds(300), false},
                {seconds(599), false}, {seconds(600), true}, {seconds(600), false}, {seconds(601), true},
                {seconds(899), false}, {seconds(900), true}, {seconds(90000), true}};
  RecoveryLimit limit;
  for (const auto& [at, expected] : kCases) {
    EXPECT_EQ(limit.Take(RecoveryLimit::TimePoint(at)), expected) << at.count();
  }
}

}  // namespace
}  // namespace patcher
