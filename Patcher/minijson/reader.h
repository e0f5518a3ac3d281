#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "minijson/minijson.h"

namespace MiniJson {

/// Reads a text value by value without storing the values, for documents whose tree would need too much
/// memory. Parse uses it, so both accept the same texts and raise the same errors.
///
/// Begin starts a value. The next calls depend on its kind. Null, Bool and Number: none. String: one
/// ReadString. Array: NextItem until it returns false; read one complete value after each true. Object:
/// NextMember in the same way, with one ReadKey before each value. Skip reads the rest of any value that
/// Begin has started.
class Reader {
 public:
  /// The text must outlive the reader.
  Reader(std::string_view text, std::size_t position) : text_(text), at_(position) {}

  /// Position of the reader in the text. After a complete value this is the byte after it.
  std::size_t Position() const { return at_; }

  /// Starts the next value and returns its kind.
  Kind Begin();
  /// The value, if Begin has just returned Bool.
  bool BoolValue() const { return bool_; }
  /// The value, if Begin has just returned Number.
  double NumberValue() const { return number_; }
  /// Sets `out` to the text of the string.
  void ReadString(std::string& out);
  /// Whether the array has one more item.
  bool NextItem();
  /// Whether the object has one more member.
  bool NextMember();
  /// Sets `key` to the member's key.
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
  std::size_t values_ = 0;  // started so far
  int depth_ = 0;           // of open arrays and objects
  bool fresh_ = false;      // no item or member of the innermost one has been requested yet
  bool bool_ = false;
  double number_ = 0;
};

}  // namespace MiniJson
