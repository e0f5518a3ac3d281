#include <windows.h>

#include "platform/text.h"

#include "platform/windows/native_text.h"

namespace platform {
namespace {

/// The system's code page for narrow file names.
UINT FileNameCodePage() { return AreFileApisANSI() ? CP_ACP : CP_OEMCP; }

std::wstring ToWide(UINT codePage, std::string_view text) {
  const int size = static_cast<int>(text.size());
  std::wstring wide(static_cast<std::size_t>(MultiByteToWideChar(codePage, 0, text.data(), size, nullptr, 0)),
                    L'\0');
  MultiByteToWideChar(codePage, 0, text.data(), size, wide.data(), static_cast<int>(wide.size()));
  return wide;
}

std::string ToNarrow(UINT codePage, std::wstring_view text) {
  const int size = static_cast<int>(text.size());
  const int needed = WideCharToMultiByte(codePage, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
  std::string narrow(static_cast<std::size_t>(needed), '\0');
  WideCharToMultiByte(codePage, 0, text.data(), size, narrow.data(), needed, nullptr, nullptr);
  return narrow;
}

}  // namespace

std::u16string Utf8ToWide(std::string_view text) { return FromNative(ToWide(CP_UTF8, text)); }

std::string WideToUtf8(std::u16string_view text) { return ToNarrow(CP_UTF8, ToNative(text)); }

std::filesystem::path PathFromBytes(std::string_view bytes) { return ToWide(FileNameCodePage(), bytes); }

std::string BytesFromPath(const std::filesystem::path& path) {
  return ToNarrow(FileNameCodePage(), path.native());
}

std::filesystem::path PathFromUtf8(std::string_view text) { return ToWide(CP_UTF8, text); }

std::string Utf8FromPath(const std::filesystem::path& path) { return ToNarrow(CP_UTF8, path.native()); }

std::u16string WideFromPath(const std::filesystem::path& path) { return FromNative(path.native()); }

}  // namespace platform
