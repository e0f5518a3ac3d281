#include "control/task_progress.h"

#include "control/protocol/ui_event.h"

namespace patcher {

using platform::TaskProgress;

std::optional<TaskProgress> TaskProgressAfter(const UiEvent& event) {
  switch (static_cast<UiEventKind>(event.number)) {
    case UiEventKind::UiProgress:
      return TaskProgress{TaskProgress::State::kNormal,
                          reinterpret_cast<const ProgressReport*>(event.lParam)->percent};
    case UiEventKind::UiReady:
      // A full bar: at 0 percent, a failed run would show no bar at all.
      return event.wParam == 1 ? TaskProgress{} : TaskProgress{TaskProgress::State::kError, 100};
    case UiEventKind::UiStatus:
    case UiEventKind::UiSelfUpdate:
    case UiEventKind::UiVersions:
    case UiEventKind::UiServer:
    case UiEventKind::UiNarrowJson:
    case UiEventKind::UiWideJson:
      break;
  }
  return std::nullopt;
}

}  // namespace patcher
