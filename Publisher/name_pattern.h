#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace patcher::publisher {

/// A pattern for paths below a directory. "*" matches any number of characters except "/", "?" one character
/// except "/", "**" any number of any characters. A pattern without "/" matches the name of a file or folder
/// at any depth; one with "/" matches a path from the top; one that ends in "/" matches only folders. A
/// backslash counts as "/". Ignores case.
class NamePattern {
 public:
  explicit NamePattern(std::string_view text);

  [[nodiscard]] bool Matches(std::string_view path, bool isDirectory) const;

 private:
  enum class Kind { kCharacter, kOne, kAnyInName, kAny };
  struct Token {
    Kind kind;
    char16_t character;
  };

  std::vector<Token> tokens_;
  bool onlyDirectories_ = false;
  bool wholePath_ = false;
};

}  // namespace patcher::publisher
