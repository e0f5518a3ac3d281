#pragma once

#include <optional>

#include "control/protocol/host_window.h"
#include "platform/window.h"

namespace patcher {

/// What the task bar shows after this event; nothing if the event does not change it. The percentage while a
/// run or check reports progress; an error if it ends and the game cannot be started; otherwise no progress.
std::optional<platform::TaskProgress> TaskProgressAfter(const UiEvent& event);

}  // namespace patcher
