#pragma once

#include <string>

namespace patcher {

/// One message for the page as a line (or a few) for people. A kind that has no such form stays as it is.
std::string ReadableMessage(const std::string& json);

}  // namespace patcher
