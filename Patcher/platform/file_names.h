#pragma once

#include <string>
#include <string_view>

namespace platform {

// What this system makes of a path in a document: bytes as PathFromBytes takes them, relative, without "..".
// Only the text decides: nothing is looked up on the disk.

/// The file that the path means, for comparing: two paths mean one file if their identities are equal.
/// Linux: the path without empty and "." components. Windows: also with one kind of separator, without case,
/// and without the dots and blanks that the system drops from the end. UTF-8 on Windows, bytes on Linux.
std::string FileIdentity(std::string_view path);

/// Whether the path can mean a file of its own. Windows: not if it holds a colon (another stream of a file)
/// or ends in the name of a device ("nul", "com1.txt"). Linux: always.
bool NamesAFile(std::string_view path);

}  // namespace platform
