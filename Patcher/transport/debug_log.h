#pragma once

#include <exception>
#include <string_view>

namespace patcher::DebugLog {

/// Appends one line to patcher_debug.txt in ExeDir: the message and CR LF, no time stamp, no level. The file
/// is closed between lines and grows without limit. A message that cannot be written is lost. Any thread;
/// lines never interleave.
void Write(std::string_view message);

/// A line that says where an exception ended and what it says: "Exception in" and both. Raises nothing.
void WriteException(std::string_view place, const std::exception& failure) noexcept;

}  // namespace patcher::DebugLog
