#pragma once

#include <optional>

#include "control/protocol/host_window.h"
#include "platform/window.h"

namespace patcher {

/// What the task bar shows from this event on, if that changes: the percentage of a run or check while it
/// reports one, an error after one that leaves no game to play, nothing after any other.
std::optional<platform::TaskProgress> TaskProgressAfter(const UiEvent& event);

}  // namespace patcher
