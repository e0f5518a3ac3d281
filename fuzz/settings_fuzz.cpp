// Input: an ostu.ini; then, after a line "---", the values that the page saves.
#include <algorithm>

#include "_Common/dx11_tune_keys.h"
#include "fuzz.h"
#include "options/option_table.h"
#include "options/options_exchange.h"
#include "options/settings_file.h"
#include "platform/text.h"
#include "support/scratch_directory.h"

namespace {

/// Null for a text that cannot be parsed.
MiniJson::Value Parsed(std::string_view text) {
  try {
    std::size_t position = 0;
    return MiniJson::Parse(text, position);
  } catch (const std::exception&) {
    return {};
  }
}

/// The lines of keys that are not the launcher's.
std::vector<std::string> ForeignLines(const std::filesystem::path& path) {
  patcher::SettingsFile file;
  file.Load(path);
  std::erase_if(file.lines, [](const std::string& line) {
    const std::size_t begin = std::min(line.find_first_not_of(" \t"), line.size());
    const std::string key = line.substr(begin, line.find_first_of(" \t", begin) - begin);
    const auto isKey = [&key](const auto& name) { return key == name; };
    return key == "resolution" ||
           std::ranges::any_of(patcher::GameOptions::kDefs, isKey, &patcher::OptionDef::iniKey) ||
           std::ranges::any_of(patcher::DX11TuneKeys, isKey, &patcher::TuneDef::key);
  });
  return file.lines;
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
  const std::vector<std::string> before = ForeignLines(path);
  Require(SaveOptions(path, values), "a save succeeds");
  Require(ForeignLines(path) == before, "foreign lines stay");
  const std::string saved = ReadWhole(path);
  Require(SaveOptions(path, values) && ReadWhole(path) == saved, "a second save changes nothing");
}
