#pragma once

#include <filesystem>
#include <string>
#include <string_view>

/// The seam: everything that the launcher needs from the operating system. Each header is one capability,
/// implemented in windows/ and in linux/. All functions may be called on any thread unless a header says
/// otherwise.
namespace platform {

/// UTF-8 to UTF-16. Invalid bytes become U+FFFD (the number of these for one broken sequence differs between
/// the systems).
std::u16string Utf8ToWide(std::string_view text);

/// UTF-16 to UTF-8. A lone surrogate becomes U+FFFD.
std::string WideToUtf8(std::u16string_view text);

/// The only conversion between byte strings of documents and paths: the system's code page for file names on
/// Windows (not necessarily UTF-8), the bytes themselves on Linux.
std::filesystem::path PathFromBytes(std::string_view bytes);
std::string BytesFromPath(const std::filesystem::path& path);

/// For libraries and command lines that use UTF-8 on every system.
std::filesystem::path PathFromUtf8(std::string_view text);
std::string Utf8FromPath(const std::filesystem::path& path);

/// For the window, message boxes and command lines of other programs.
std::u16string WideFromPath(const std::filesystem::path& path);

}  // namespace platform
