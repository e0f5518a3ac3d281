#pragma once

#include <string>
#include <string_view>

namespace patcher::publisher {

/// Whether a text is well-formed UTF-8: no overlong forms, no surrogates, nothing above U+10FFFF.
bool IsUtf8(std::string_view text);

/// Unicode's simple case folding: two texts that a file system that ignores case may take for one become
/// equal. Only for comparing; the text must be UTF-8.
std::string FoldCase(std::string_view text);

}  // namespace patcher::publisher
