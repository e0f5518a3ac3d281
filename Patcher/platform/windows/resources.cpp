#include <windows.h>

#include "platform/resources.h"

namespace platform {

std::span<const std::byte> EmbeddedResource(int number) {
  const HRSRC found = FindResourceW(nullptr, MAKEINTRESOURCEW(number), RT_RCDATA);
  if (found == nullptr) return {};
  const DWORD size = SizeofResource(nullptr, found);
  const HGLOBAL loaded = LoadResource(nullptr, found);
  if (size == 0 || loaded == nullptr) return {};
  const auto* bytes = static_cast<const std::byte*>(LockResource(loaded));
  if (bytes == nullptr) return {};
  return {bytes, size};
}

}  // namespace platform
