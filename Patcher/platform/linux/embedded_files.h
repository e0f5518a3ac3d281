#pragma once

#include <cstddef>

namespace platform {

/// A file that the build has put into the program.
struct EmbeddedFile {
  int number = 0;
  const std::byte* begin = nullptr;
  const std::byte* end = nullptr;
};

/// Ends with an entry without bytes. A program that carries no files has no such table.
[[gnu::weak]] extern const EmbeddedFile kEmbeddedFiles[];

}  // namespace platform
