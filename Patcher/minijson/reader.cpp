#include "minijson/reader.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace MiniJson {
namespace {

constexpr std::size_t kMaxExactDigits = 15;  ///< a double holds every integer with this many digits

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool IsSpace(char c) { return c == ' ' || c == '\n' || c == '\r' || c == '\t'; }

bool IsNumberByte(char c) { return IsDigit(c) || c == '.' || c == 'e' || c == 'E' || c == '-' || c == '+'; }

/// Whether the word contains this byte.
bool HasByte(std::size_t word, char byte) {
  constexpr std::size_t kOnes = ~std::size_t{0} / 255;  // 1 in every byte
  const std::size_t zeroWhereEqual = word ^ (kOnes * static_cast<unsigned char>(byte));
  return ((zeroWhereEqual - kOnes) & ~zeroWhereEqual & (kOnes << 7)) != 0;
}

/// Like strtod in the classic locale: converts the longest valid prefix.
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

}  // namespace

Kind Reader::Begin() {
  SkipSpace();
  if (AtEnd()) throw ParseError("unexpected end of input");
  if (++values_ > kMaxValues) throw ParseError("too many values");
  switch (text_[at_]) {
    case '"':
      return Kind::String;
    case '{':
      return Enter(Kind::Object);
    case '[':
      return Enter(Kind::Array);
    default:
      return ReadLiteralOrNumber();
  }
}

Kind Reader::Enter(Kind kind) {
  if (depth_ >= kMaxDepth) throw ParseError("nesting too deep");
  ++depth_;
  ++at_;
  fresh_ = true;
  return kind;
}

bool Reader::Leave() {
  --depth_;
  ++at_;
  fresh_ = false;
  return false;
}

void Reader::SkipSpace() {
  std::size_t at = at_;
  while (at < text_.size() && IsSpace(text_[at])) ++at;
  at_ = at;
}

bool Reader::TakeWord(std::string_view word) {
  if (text_.substr(at_, word.size()) != word) return false;
  at_ += word.size();
  return true;
}

Kind Reader::ReadLiteralOrNumber() {
  const bool yes = TakeWord("true");
  if (yes || TakeWord("false")) {
    bool_ = yes;
    return Kind::Bool;
  }
  if (TakeWord("null")) return Kind::Null;
  ReadNumber();
  return Kind::Number;
}

void Reader::ReadNumber() {
  const std::size_t begin = at_;
  if (At('-') || At('+')) ++at_;
  const std::size_t digits = at_;
  double integer = 0;
  while (at_ < text_.size() && IsDigit(text_[at_])) integer = integer * 10 + (text_[at_++] - '0');
  const std::size_t count = at_ - digits;
  const bool plain = count > 0 && count <= kMaxExactDigits && (AtEnd() || !IsNumberByte(text_[at_]));
  while (at_ < text_.size() && IsNumberByte(text_[at_])) ++at_;
  if (at_ == begin) throw ParseError("unexpected character");
  if (plain) {
    number_ = text_[begin] == '-' ? -integer : integer;
  } else {
    number_ = ToDouble(text_.substr(begin, at_ - begin));
  }
}

void Reader::ReadString(std::string& out) { ScanString(&out); }

/// Only skips the string if `out` is null.
void Reader::ScanString(std::string* out) {
  if (!At('"')) throw ParseError("expected string");
  ++at_;
  const std::size_t run = PlainRun();
  if (out != nullptr) out->assign(text_.data() + at_, run);
  at_ += run;
  if (!At('"')) ScanEscapes(out);
  ++at_;
}

/// Scans from the first escape of a string to its closing quote.
void Reader::ScanEscapes(std::string* out) {
  while (!At('"')) {
    if (AtEnd()) throw ParseError("unterminated string");
    const char byte = ReadEscape();
    const std::size_t run = PlainRun();
    if (out != nullptr) (*out += byte).append(text_.data() + at_, run);
    at_ += run;
  }
  // The string's capacity may be up to twice its size.
  if (out != nullptr) out->shrink_to_fit();
}

/// Number of bytes before the next quote or backslash, or before the end.
std::size_t Reader::PlainRun() const {
  const char* begin = text_.data() + at_;
  const char* end = text_.data() + text_.size();
  const char* p = begin;
  // Most strings are long and without escapes: check one word at a time.
  for (std::size_t word = 0; static_cast<std::size_t>(end - p) >= sizeof word; p += sizeof word) {
    std::memcpy(&word, p, sizeof word);
    if (HasByte(word, '"') || HasByte(word, '\\')) break;
  }
  while (p != end && *p != '"' && *p != '\\') ++p;
  return static_cast<std::size_t>(p - begin);
}

/// Returns the byte that the escape encodes.
char Reader::ReadEscape() {
  if (at_ + 1 >= text_.size()) {
    ++at_;
    return '\\';
  }
  const char c = text_[at_ + 1];
  at_ += 2;
  switch (c) {
    case 'n':
      return '\n';
    case 'r':
      return '\r';
    case 't':
      return '\t';
    case 'u':
      // The escape may be cut off at the end of the text.
      at_ = std::min(at_ + 4, text_.size());
      return '?';
    default:
      return c;
  }
}

bool Reader::NextItem() {
  SkipSpace();
  if (fresh_) {
    if (At(']')) return Leave();
    fresh_ = false;
    return true;
  }
  if (At(',')) {
    ++at_;
    return true;
  }
  if (!At(']')) throw ParseError("expected ',' or ']'");
  return Leave();
}

bool Reader::NextMember() {
  SkipSpace();
  if (At('}')) return Leave();
  if (!fresh_) {
    if (!At(',')) throw ParseError("expected ',' or '}'");
    ++at_;
    SkipSpace();
  }
  fresh_ = false;
  return true;
}

void Reader::ReadKey(std::string& key) { ScanKey(&key); }

void Reader::ScanKey(std::string* key) {
  ScanString(key);
  SkipSpace();
  if (!At(':')) throw ParseError("expected ':'");
  ++at_;
}

void Reader::Skip(Kind kind) {
  switch (kind) {
    case Kind::String:
      ScanString(nullptr);
      return;
    case Kind::Array:
      while (NextItem()) Skip(Begin());
      return;
    case Kind::Object:
      while (NextMember()) {
        ScanKey(nullptr);
        Skip(Begin());
      }
      return;
    case Kind::Null:
    case Kind::Bool:
    case Kind::Number:
      return;
  }
}

}  // namespace MiniJson
