#include <sstream>

#include "fuzz.h"
#include "minijson/minijson.h"

namespace {

std::string Written(const MiniJson::Value& value) {
  std::ostringstream out;
  value.Write(out, 0);
  return out.str();
}

std::string WrittenAgain(const std::string& text) {
  std::size_t position = 0;
  const MiniJson::Value value = MiniJson::Parse(text, position);
  patcher::Require(position == text.size(), "written text is read to its end");
  return Written(value);
}

}  // namespace

void patcher::Fuzz(std::string_view input) {
  std::size_t position = 0;
  MiniJson::Value value;
  try {
    value = MiniJson::Parse(input, position);
  } catch (const std::exception&) {
    return;
  }
  Require(position <= input.size(), "the parser stays inside its text");
  // The first reading of written text may still lose control characters and digits after the sixth.
  const std::string settled = WrittenAgain(Written(value));
  Require(WrittenAgain(settled) == settled, "written text is stable");
}
