#pragma once

#include <exception>
#include <string_view>

namespace patcher::DebugLog {

/// Appends one line to patcher_debug.txt in ExeDir: the message and CR LF, without time stamp and level. The
/// file is closed after each line and grows without limit. A message that cannot be written is lost. Any
/// thread; lines do not interleave.
void Write(std::string_view message);

/// Writes a line with "Exception in", the place that caught the exception, and its message. Raises nothing.
void WriteException(std::string_view place, const std::exception& failure) noexcept;

}  // namespace patcher::DebugLog
