#include <windows.h>

#include "platform/file_names.h"

#include <algorithm>

#include "platform/text.h"
#include "platform/windows/native_text.h"

namespace platform {
namespace {

/// Any absolute directory, so that the result does not depend on the current directory.
constexpr std::wstring_view kRoot = L"C:\\";

/// The full path that the system uses to open the file. The path of a device does not begin with kRoot.
std::wstring Completed(std::string_view path) {
  const std::wstring absolutePath = std::wstring(kRoot) + PathFromBytes(path).native();
  std::wstring full(GetFullPathNameW(absolutePath.c_str(), 0, nullptr, nullptr), L'\0');
  const auto room = static_cast<DWORD>(full.size());
  full.resize(GetFullPathNameW(absolutePath.c_str(), room, full.data(), nullptr));
  return full.empty() ? absolutePath : full;
}

/// Replaces single characters only, as the file system's table does.
void MakeUpperCase(std::wstring& text) {
  const auto size = static_cast<int>(text.size());
  std::wstring upper(text.size(), L'\0');
  if (LCMapStringEx(LOCALE_NAME_INVARIANT, LCMAP_UPPERCASE, text.data(), size, upper.data(), size, nullptr,
                    nullptr, 0) == size) {
    text = upper;
  }
}

}  // namespace

std::string FileIdentity(std::string_view path) {
  std::wstring name = Completed(path);
  if (name.starts_with(kRoot)) name.erase(0, kRoot.size());
  while (name.ends_with(L'\\')) name.pop_back();
  std::replace(name.begin(), name.end(), L'\\', L'/');
  MakeUpperCase(name);
  return WideToUtf8(FromNative(name));
}

bool NamesAFile(std::string_view path) {
  if (path.find(':') != std::string_view::npos) return false;
  const std::string_view name = path.substr(path.find_last_of("/\\") + 1);
  // Longer names need no further check: no device has one, and most files do.
  constexpr std::size_t kLongestDevice = std::string_view("CONOUT$").size();
  std::string_view stem = name.substr(0, name.find('.'));
  stem = stem.substr(0, stem.find_last_not_of(' ') + 1);
  return stem.empty() || stem.size() > kLongestDevice || Completed(name).starts_with(kRoot);
}

}  // namespace platform
