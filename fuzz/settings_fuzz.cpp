// Input: an ostu.ini, a line "---", and the values that the page saves.
#include <algorithm>

#include "fuzz.h"
#include "options/options_exchange.h"
#include "platform/text.h"
#include "support/scratch_directory.h"

namespace {

/// Null if the text cannot be parsed.
MiniJson::Value Parsed(std::string_view text) {
  try {
    std::size_t position = 0;
    return MiniJson::Parse(text, position);
  } catch (const std::exception&) {
    return {};
  }
}

}  // namespace

void patcher::Fuzz(std::string_view input) {
  static const ScratchDirectory directory;
  const std::filesystem::path path = directory / "ostu.ini";
  constexpr std::string_view kSeparator = "\n---\n";
  const std::size_t split = std::min(input.find(kSeparator), input.size());
  WriteWhole(path, std::string(input.substr(0, split)));
  const MiniJson::Value values = Parsed(input.substr(std::min(split + kSeparator.size(), input.size())));

  const MiniJson::Value message = Parsed(platform::WideToUtf8(BuildOptionsMessage(path).text));
  for (const auto& [name, value] : message.Find("values")->objectMembers) {
    Require(value.kind == MiniJson::Kind::Number, "every value is a number");
  }
  Require(SaveOptions(path, values), "a save succeeds");
  const std::string saved = ReadWhole(path);
  Require(SaveOptions(path, values) && ReadWhole(path) == saved, "a second save changes nothing");
}
