#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "minijson/minijson.h"

namespace MiniJson {

/// Reads a text value by value and keeps none of them: for documents whose tree would need much memory. Parse
/// is built on it, so both accept the same texts and raise the same errors.
///
/// Begin starts a value. What follows depends on its kind: nothing after Null, Bool and Number; one
/// ReadString after String; NextItem until it returns false after Array, with a whole value after each true;
/// NextMember in the same way after Object, with one ReadKey before each value. Skip reads the rest of a
/// begun value of any kind.
class Reader {
 public:
  /// The text outlives the reader.
  Reader(std::string_view text, std::size_t position) : text_(text), at_(position) {}

  /// Where the reader is in the text: after a whole value, the byte after it.
  std::size_t Position() const { return at_; }

  /// Starts the next value and returns its kind.
  Kind Begin();
  /// The value, if Begin has just returned Bool.
  bool BoolValue() const { return bool_; }
  /// The value, if Begin has just returned Number.
  double NumberValue() const { return number_; }
  /// Replaces `out` by the text of the string.
  void ReadString(std::string& out);
  /// Whether the array has one more item.
  bool NextItem();
  /// Whether the object has one more member.
  bool NextMember();
  /// Replaces `key` by the member's key.
  void ReadKey(std::string& key);
  void Skip(Kind kind);

 private:
  bool AtEnd() const { return at_ >= text_.size(); }
  bool At(char c) const { return at_ < text_.size() && text_[at_] == c; }
  void SkipSpace();
  bool TakeWord(std::string_view word);
  Kind Enter(Kind kind);
  bool Leave();
  Kind ReadLiteralOrNumber();
  void ReadNumber();
  void ScanString(std::string* out);
  void ScanEscapes(std::string* out);
  void ScanKey(std::string* key);
  std::size_t PlainRun() const;
  char ReadEscape();

  std::string_view text_;
  std::size_t at_;
  std::size_t values_ = 0;  // begun so far
  int depth_ = 0;           // of open arrays and objects
  bool fresh_ = false;      // the innermost of them has not been asked for its first item or member
  bool bool_ = false;
  double number_ = 0;
};

}  // namespace MiniJson
