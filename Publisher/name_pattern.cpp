#include "name_pattern.h"

#include <algorithm>

#include "case_fold.h"
#include "platform/text.h"

namespace patcher::publisher {
namespace {

std::u16string Folded(std::string_view text) { return platform::Utf8ToWide(FoldCase(text)); }

}  // namespace

NamePattern::NamePattern(std::string_view text) {
  std::u16string rest = Folded(text);
  std::replace(rest.begin(), rest.end(), u'\\', u'/');
  if (rest.ends_with(u'/')) {
    onlyDirectories_ = true;
    rest.pop_back();
  }
  wholePath_ = rest.find(u'/') != std::u16string::npos;
  if (rest.starts_with(u'/')) rest.erase(0, 1);
  for (std::size_t at = 0; at < rest.size(); ++at) {
    if (rest.compare(at, 2, u"**") == 0) {
      tokens_.push_back({Kind::kAny, 0});
      ++at;
    } else if (rest[at] == u'*') {
      tokens_.push_back({Kind::kAnyInName, 0});
    } else {
      tokens_.push_back({rest[at] == u'?' ? Kind::kOne : Kind::kCharacter, rest[at]});
    }
  }
}

bool NamePattern::Matches(std::string_view path, bool isDirectory) const {
  if (onlyDirectories_ && !isDirectory) return false;
  if (!wholePath_) path.remove_prefix(path.rfind('/') + 1);
  // reached[i]: the first i tokens match the part of the path read so far.
  std::vector<char> reached(tokens_.size() + 1, 0);
  reached[0] = 1;
  const auto skipEmpty = [&] {
    for (std::size_t i = 0; i < tokens_.size(); ++i) {
      const bool mayBeEmpty = tokens_[i].kind == Kind::kAnyInName || tokens_[i].kind == Kind::kAny;
      if (reached[i] && mayBeEmpty) reached[i + 1] = 1;
    }
  };
  skipEmpty();
  for (const char16_t c : Folded(path)) {
    std::vector<char> next(tokens_.size() + 1, 0);
    for (std::size_t i = 0; i < tokens_.size(); ++i) {
      if (!reached[i]) continue;
      const Token& token = tokens_[i];
      if (token.kind == Kind::kAny || (token.kind == Kind::kAnyInName && c != u'/')) {
        next[i] = 1;
      } else if (token.kind == Kind::kOne ? c != u'/' : c == token.character) {
        next[i + 1] = 1;
      }
    }
    reached = std::move(next);
    skipEmpty();
  }
  return reached.back() != 0;
}

}  // namespace patcher::publisher
