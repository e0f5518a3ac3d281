#pragma once

#include <string>

namespace patcher {

/// Converts a message for the page to one or more readable lines. Returns messages of unknown types
/// unchanged.
std::string ReadableMessage(const std::string& json);

}  // namespace patcher
