#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace patcher::publisher {

/// A pattern for paths below a directory. "*" matches any characters but "/", also none; "?" one of them;
/// "**" any characters, also none. A pattern without "/" matches the name of a file or folder anywhere, one
/// with "/" a path from the top; one that ends in "/" only folders. A backslash counts as "/". Case does not
/// count.
class NamePattern {
 public:
  explicit NamePattern(std::string_view text);

  bool Matches(std::string_view path, bool isDirectory) const;

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
