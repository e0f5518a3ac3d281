#include <algorithm>
#include <charconv>

#include "minijson/minijson.h"

namespace MiniJson {
namespace {

constexpr std::size_t kMaxExactDigits = 15;  ///< a double holds every integer of so many digits

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool IsNumberByte(char c) { return IsDigit(c) || c == '.' || c == 'e' || c == 'E' || c == '-' || c == '+'; }

/// As strtod in the classic locale: the longest valid prefix counts.
double ToDouble(std::string_view token) {
  const bool plus = token.front() == '+';
  const char* first = token.data() + (plus ? 1 : 0);
  const char* last = token.data() + token.size();
  double number = 0;
  const bool twoSigns = plus && first != last && *first == '-';
  const std::from_chars_result result = std::from_chars(first, last, number);
  if (twoSigns || result.ec == std::errc::invalid_argument)
    throw std::invalid_argument("invalid stod argument");
  if (result.ec == std::errc::result_out_of_range) throw std::out_of_range("stod argument out of range");
  return number;
}

class Parser {
 public:
  Parser(std::string_view text, std::size_t position) : text_(text), at_(position) {}

  std::size_t Position() const { return at_; }

  void ParseValue(Value& value, int depth) {
    SkipSpace();
    if (AtEnd()) throw ParseError("unexpected end of input");
    switch (text_[at_]) {
      case '"':
        value.kind = Kind::String;
        ParseString(value.stringValue);
        return;
      case '{':
        ParseObject(value, Deeper(depth));
        return;
      case '[':
        ParseArray(value, Deeper(depth));
        return;
      default:
        if (!ParseLiteral(value)) ParseNumber(value);
    }
  }

 private:
  bool AtEnd() const { return at_ >= text_.size(); }
  bool At(char c) const { return at_ < text_.size() && text_[at_] == c; }

  static int Deeper(int depth) {
    if (depth >= kMaxDepth) throw ParseError("nesting too deep");
    return depth + 1;
  }

  void SkipSpace() {
    while (at_ < text_.size()) {
      const char c = text_[at_];
      if (c != ' ' && c != '\t' && c != '\n' && c != '\r') return;
      ++at_;
    }
  }

  bool TakeWord(std::string_view word) {
    if (text_.substr(at_, word.size()) != word) return false;
    at_ += word.size();
    return true;
  }

  bool ParseLiteral(Value& value) {
    if (TakeWord("true")) {
      value = Value::MakeBool(true);
    } else if (TakeWord("false")) {
      value = Value::MakeBool(false);
    } else if (!TakeWord("null")) {
      return false;
    }
    return true;
  }

  void ParseNumber(Value& value) {
    const std::size_t begin = at_;
    if (At('-') || At('+')) ++at_;
    const std::size_t digits = at_;
    double integer = 0;
    while (at_ < text_.size() && IsDigit(text_[at_])) integer = integer * 10 + (text_[at_++] - '0');
    const std::size_t count = at_ - digits;
    const bool plain = count > 0 && count <= kMaxExactDigits && (AtEnd() || !IsNumberByte(text_[at_]));
    while (at_ < text_.size() && IsNumberByte(text_[at_])) ++at_;
    if (at_ == begin) throw ParseError("unexpected character");
    value.kind = Kind::Number;
    if (plain) {
      value.numberValue = text_[begin] == '-' ? -integer : integer;
    } else {
      value.numberValue = ToDouble(text_.substr(begin, at_ - begin));
    }
  }

  void ParseString(std::string& out) {
    if (!At('"')) throw ParseError("expected string");
    ++at_;
    for (;;) {
      const std::size_t run = PlainRun();
      out.append(text_.data() + at_, run);
      at_ += run;
      if (AtEnd()) throw ParseError("unterminated string");
      if (text_[at_] == '"') {
        ++at_;
        return;
      }
      ParseEscape(out);
    }
  }

  /// Bytes up to the next quote, backslash or the end.
  std::size_t PlainRun() const {
    const char* begin = text_.data() + at_;
    const char* end = text_.data() + text_.size();
    const char* p = begin;
    while (p != end && *p != '"' && *p != '\\') ++p;
    return static_cast<std::size_t>(p - begin);
  }

  void ParseEscape(std::string& out) {
    if (at_ + 1 >= text_.size()) {
      out += '\\';
      ++at_;
      return;
    }
    const char c = text_[at_ + 1];
    at_ += 2;
    switch (c) {
      case 'n':
        out += '\n';
        break;
      case 'r':
        out += '\r';
        break;
      case 't':
        out += '\t';
        break;
      case 'u':
        out += '?';
        // The skip may reach behind the text.
        at_ = std::min(at_ + 4, text_.size());
        break;
      default:
        out += c;
    }
  }

  void ParseObject(Value& value, int depth) {
    value.kind = Kind::Object;
    ++at_;
    SkipSpace();
    if (At('}')) {
      ++at_;
      return;
    }
    for (;;) {
      SkipSpace();
      auto& member = value.objectMembers.emplace_back();
      ParseString(member.first);
      SkipSpace();
      if (!At(':')) throw ParseError("expected ':'");
      ++at_;
      ParseValue(member.second, depth);
      SkipSpace();
      if (At('}')) {
        ++at_;
        return;
      }
      if (!At(',')) throw ParseError("expected ',' or '}'");
      ++at_;
    }
  }

  void ParseArray(Value& value, int depth) {
    value.kind = Kind::Array;
    ++at_;
    SkipSpace();
    if (At(']')) {
      ++at_;
      return;
    }
    std::vector<Value>& items = value.arrayItems;
    for (;;) {
      // Neighbours are mostly alike: room for as many members as the one before spares every growth but the
      // first.
      const std::size_t members = items.empty() ? 0 : items.back().objectMembers.size();
      Value& item = items.emplace_back();
      item.objectMembers.reserve(members);
      ParseValue(item, depth);
      SkipSpace();
      if (!At(',')) break;
      ++at_;
    }
    if (!At(']')) throw ParseError("expected ',' or ']'");
    ++at_;
  }

  std::string_view text_;
  std::size_t at_;
};

}  // namespace

Value Parse(std::string_view text, std::size_t& position) {
  Parser parser(text, position);
  Value value;
  parser.ParseValue(value, 0);
  position = parser.Position();
  return value;
}

}  // namespace MiniJson
