#include "platform/resources.h"

#include "platform/linux/embedded_files.h"

namespace platform {

std::span<const std::byte> EmbeddedResource(int number) {
  if (kEmbeddedFiles == nullptr) return {};
  for (const EmbeddedFile* file = kEmbeddedFiles; file->begin != nullptr; ++file) {
    if (file->number == number) return {file->begin, file->end};
  }
  return {};
}

}  // namespace platform
