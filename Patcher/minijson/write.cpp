#include <array>
#include <charconv>

#include "minijson/minijson.h"
#include "platform/hex_digits.h"

namespace MiniJson {
namespace {

constexpr double kTwoTo63 = 9223372036854775808.0;

std::string NumberText(double number) {
  std::array<char, 32> text;
  std::to_chars_result end{};
  const bool inRange = number >= -kTwoTo63 && number < kTwoTo63;
  if (inRange && static_cast<double>(static_cast<std::int64_t>(number)) == number) {
    end = std::to_chars(text.data(), text.data() + text.size(), static_cast<std::int64_t>(number));
  } else {
    end = std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::general, 6);
  }
  return {text.data(), end.ptr};
}

void WriteEscape(std::ostream& out, unsigned char byte) {
  switch (byte) {
    case '"':
      out << "\\\"";
      break;
    case '\\':
      out << "\\\\";
      break;
    case '\n':
      out << "\\n";
      break;
    case '\r':
      out << "\\r";
      break;
    case '\t':
      out << "\\t";
      break;
    default:
      out << "\\u00" << platform::HexOf(byte);
  }
}

bool NeedsEscape(unsigned char byte) { return byte < 32 || byte == '"' || byte == '\\'; }

}  // namespace

void WriteString(std::ostream& out, std::string_view text) {
  out << '"';
  std::size_t written = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    if (!NeedsEscape(byte)) continue;
    out << text.substr(written, at - written);
    WriteEscape(out, byte);
    written = at + 1;
  }
  out << text.substr(written) << '"';
}

void Value::Write(std::ostream& out, int depth) const {
  const std::string pad(static_cast<std::size_t>(depth) * 2, ' ');
  const std::string innerPad = pad + "  ";
  const char* separator = "";
  switch (kind) {
    case Kind::Null:
      out << "null";
      break;
    case Kind::Bool:
      out << (boolValue ? "true" : "false");
      break;
    case Kind::Number:
      out << NumberText(numberValue);
      break;
    case Kind::String:
      WriteString(out, stringValue);
      break;
    case Kind::Array:
      if (arrayItems.empty()) {
        out << "[]";
        break;
      }
      out << '[';
      for (const Value& item : arrayItems) {
        out << separator << '\n' << innerPad;
        item.Write(out, depth + 1);
        separator = ",";
      }
      out << '\n' << pad << ']';
      break;
    case Kind::Object:
      if (objectMembers.empty()) {
        out << "{}";
        break;
      }
      out << '{';
      for (const auto& [key, value] : objectMembers) {
        out << separator << '\n' << innerPad;
        WriteString(out, key);
        out << ": ";
        value.Write(out, depth + 1);
        separator = ",";
      }
      out << '\n' << pad << '}';
      break;
  }
}

}  // namespace MiniJson
