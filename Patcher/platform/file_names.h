#pragma once

#include <string>
#include <string_view>

namespace platform {

// How this system interprets a path in a document: bytes as PathFromBytes takes them, relative, without "..".
// The result depends only on the text; these functions do not access the disk.

/// A normalized form of the path for comparisons: two paths name the same file if their identities are equal.
/// Linux: the path in bytes, without empty and "." components. Windows: the path in UTF-8, also with one kind
/// of separator, in upper case, and without the trailing dots and blanks that the system drops.
std::string FileIdentity(std::string_view path);

/// Whether the path can name a regular file. Windows: no if it contains a colon (a stream of another file) or
/// ends in the name of a device ("nul", "com1.txt"). Linux: always.
bool NamesAFile(std::string_view path);

}  // namespace platform
