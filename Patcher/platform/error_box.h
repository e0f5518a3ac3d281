#pragma once

#include <string>

namespace platform {

/// An error box with one button and no owner; blocks until it is closed. Main thread.
void ShowErrorBox(const std::u16string& text, const std::u16string& title);

}  // namespace platform
