#pragma once

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// The JSON library of the launcher. Text is bytes: UTF-8 is copied unexamined. Lenient in known ways (see
/// Parse). No shared state; a Value belongs to the thread that built it.
///
/// The programs parse into values, and write their documents as text with WriteString alone, since a tree of
/// a large manifest would take several times its memory. Value::Make..., Set and Write are there for
/// completeness: tests and benchmarks build documents with them.
namespace MiniJson {

/// A text that is no JSON. The message is one of the fixed sentences of the parser.
class ParseError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

enum class Kind : std::int32_t { Null = 0, Bool = 1, Number = 2, String = 3, Array = 4, Object = 5 };

/// One JSON value. Every value has all fields; only those of its kind have a meaning.
struct Value {
  Kind kind = Kind::Null;
  bool boolValue = false;
  double numberValue = 0.0;  ///< every number is a double: integers above 2^53 lose their low bits
  std::string stringValue;
  std::vector<Value> arrayItems;                             ///< document order
  std::vector<std::pair<std::string, Value>> objectMembers;  ///< document order, duplicates kept

  Value();
  Value(const Value& other);
  Value(Value&& other) noexcept;
  Value& operator=(const Value& other);
  Value& operator=(Value&& other) noexcept;
  ~Value();

  static Value MakeBool(bool value);
  static Value MakeNumber(double value);
  static Value MakeString(std::string value);
  static Value MakeArray();
  static Value MakeObject();

  /// First member with exactly this key, or null; null on anything but an object.
  const Value* Find(std::string_view key) const;
  /// Replaces the first member with this key in place, or appends one.
  void Set(std::string_view key, Value value);
  /// The text of a String, else the default.
  std::string AsString(std::string_view fallback) const;
  /// The number of a Number, else the default.
  double AsNumber(double fallback) const;

  /// Writes the value, two blanks of indentation a level, no line feed at the end.
  void Write(std::ostream& out, int depth) const;
};

// Defaulted after the class: its own member lists need it complete.
inline Value::Value() = default;
inline Value::Value(const Value& other) = default;
inline Value::Value(Value&& other) noexcept = default;
inline Value& Value::operator=(const Value& other) = default;
inline Value& Value::operator=(Value&& other) noexcept = default;
inline Value::~Value() = default;

/// Deepest nesting of arrays and objects that Parse accepts; one level more raises "nesting too deep".
inline constexpr int kMaxDepth = 256;

/// Most values (items, members and their containers) that a text may hold; one more raises "too many values".
/// A file of a manifest has five: this leaves room for about 250,000 files and archives that list them all.
inline constexpr std::size_t kMaxValues = 1'500'000;

/// Reads the value that begins at `position` and leaves `position` after it; the text after it is not
/// looked at. Raises ParseError, or for a number without digits std::invalid_argument "invalid stod
/// argument", or for one out of a double's range std::out_of_range "stod argument out of range".
Value Parse(std::string_view text, std::size_t& position);

/// Writes a quoted, escaped string. Bytes from 128 up are written as they are.
void WriteString(std::ostream& out, std::string_view text);

}  // namespace MiniJson
