#pragma once

#include <cstddef>

namespace platform {

/// A file that the build has embedded in the program.
struct EmbeddedFile {
  int number = 0;
  const std::byte* begin = nullptr;
  const std::byte* end = nullptr;
};

/// The last entry has no bytes. A program without embedded files has no such table.
[[gnu::weak]] extern const EmbeddedFile kEmbeddedFiles[];

}  // namespace platform
