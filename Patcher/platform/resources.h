#pragma once

#include <cstddef>
#include <span>

namespace platform {

/// The bytes of a resource carried inside the running program, valid for the life of the process; empty if
/// there is none of that number. Any thread.
std::span<const std::byte> EmbeddedResource(int number);

}  // namespace platform
