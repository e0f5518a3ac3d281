#include <windows.h>

#include "platform/resources.h"

namespace platform {

std::span<const std::byte> EmbeddedResource(int number) {
  const HRSRC resource = FindResourceW(nullptr, MAKEINTRESOURCEW(number), RT_RCDATA);
  if (resource == nullptr) return {};
  const DWORD size = SizeofResource(nullptr, resource);
  const HGLOBAL loaded = LoadResource(nullptr, resource);
  if (size == 0 || loaded == nullptr) return {};
  const auto* bytes = static_cast<const std::byte*>(LockResource(loaded));
  if (bytes == nullptr) return {};
  return {bytes, size};
}

}  // namespace platform
