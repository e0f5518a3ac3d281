#pragma once

#include <string>
#include <string_view>

namespace patcher::publisher {

/// Whether a text is well-formed UTF-8: no overlong forms, no surrogates, nothing above U+10FFFF.
[[nodiscard]] bool IsUtf8(std::string_view text);

/// Unicode's simple case folding, for comparisons. Two names that a case-insensitive file system treats as
/// one become equal. The text must be UTF-8.
[[nodiscard]] std::string FoldCase(std::string_view text);

}  // namespace patcher::publisher
