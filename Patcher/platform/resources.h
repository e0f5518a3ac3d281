#pragma once

#include <cstddef>
#include <span>

namespace platform {

/// The bytes of the resource with this number in the running program, valid for the life of the process;
/// empty if there is no such resource. Any thread.
std::span<const std::byte> EmbeddedResource(int number);

}  // namespace platform
