#include "control/task_progress.h"

#include <gtest/gtest.h>

#include "control/ui_event.h"

namespace patcher {
namespace {

using platform::TaskProgress;
using State = TaskProgress::State;

TEST(TaskProgress, APercentageThenNothingOrAnError) {
  ProgressReport report;
  report.percent = 37;
  const auto number = [](UiEventKind kind) { return static_cast<std::uint32_t>(kind); };
  EXPECT_EQ(TaskProgressAfter({number(UiEventKind::UiProgress), 0, reinterpret_cast<std::intptr_t>(&report)}),
            (TaskProgress{State::kNormal, 37}));
  EXPECT_EQ(TaskProgressAfter({number(UiEventKind::UiReady), 1}), TaskProgress{});
  EXPECT_EQ(TaskProgressAfter({number(UiEventKind::UiReady), 0}), (TaskProgress{State::kError, 100}));
  EXPECT_EQ(TaskProgressAfter({number(UiEventKind::UiServer), 0}), std::nullopt);
}

}  // namespace
}  // namespace patcher
