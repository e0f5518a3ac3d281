#pragma once

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// The JSON library of the launcher. Text is bytes: UTF-8 is copied without a check. Accepts some invalid
/// texts (see Parse). No shared state; a Value belongs to the thread that built it.
///
/// The programs only parse values and use WriteString to write documents, because a Value tree of a large
/// manifest needs several times the memory of its text. Value::Make..., Set and Write are there for
/// completeness: tests and benchmarks use them to build documents.
namespace MiniJson {

/// Invalid JSON. The message is one of the parser's fixed texts.
class ParseError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

enum class Kind : std::int32_t { Null = 0, Bool = 1, Number = 2, String = 3, Array = 4, Object = 5 };

/// One JSON value. Only the fields of its kind are meaningful.
struct Value {
  Kind kind = Kind::Null;
  bool boolValue = false;
  double numberValue = 0.0;  ///< all numbers are doubles: integers above 2^53 lose their low bits
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

  /// The first member with exactly this key; null if there is none or if the value is not an object.
  const Value* Find(std::string_view key) const;
  /// Replaces the first member with this key, or appends one.
  void Set(std::string_view key, Value value);
  /// The text of a String, else `fallback`.
  std::string AsString(std::string_view fallback) const;
  /// The number of a Number, else `fallback`.
  double AsNumber(double fallback) const;

  /// Writes the value with two blanks of indentation per level and without a final line feed.
  void Write(std::ostream& out, int depth) const;
};

// Defined after the class, because the lists of Value members need the complete type.
inline Value::Value() = default;
inline Value::Value(const Value& other) = default;
inline Value::Value(Value&& other) noexcept = default;
inline Value& Value::operator=(const Value& other) = default;
inline Value& Value::operator=(Value&& other) noexcept = default;
inline Value::~Value() = default;

/// Deepest nesting of arrays and objects that Parse accepts; one level more raises "nesting too deep".
inline constexpr int kMaxDepth = 256;

/// Largest number of values (items, members and their containers) in a text; one more raises "too many
/// values". A file in a manifest has five values, and one more in its archive's list, so the limit is about
/// 250,000 files.
inline constexpr std::size_t kMaxValues = 1'500'000;

/// Reads the value at `position` and moves `position` to its end; the text after it is ignored. Raises
/// ParseError; std::invalid_argument "invalid stod argument" for a number without digits; std::out_of_range
/// "stod argument out of range" for a number outside a double's range.
Value Parse(std::string_view text, std::size_t& position);

/// Writes a quoted, escaped string. Bytes above 127 are written unchanged.
void WriteString(std::ostream& out, std::string_view text);

}  // namespace MiniJson
