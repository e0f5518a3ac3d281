#pragma once

#include <functional>
#include <string>

namespace patcher {

/// Shows a text and blocks until the player has closed it. Main thread.
using ShowError = std::function<void(const std::u16string& text, const std::u16string& title)>;

}  // namespace patcher
