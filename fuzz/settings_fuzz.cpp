// Input: an ostu.ini; then, after a line "---", the values that the page saves.
#include <algorithm>
#include <vector>

#include "_Common/dx11_tune_keys.h"
#include "fuzz.h"
#include "options/option_table.h"
#include "options/options_exchange.h"
#include "options/settings_file.h"
#include "platform/text.h"
#include "support/scratch_directory.h"

namespace {

using patcher::Require;

constexpr std::string_view kSeparator = "\n---\n";

/// Null for a text that cannot be parsed.
MiniJson::Value Parsed(std::string_view text) {
  try {
    std::size_t position = 0;
    return MiniJson::Parse(text, position);
  } catch (const std::exception&) {
    return {};
  }
}

void CheckMessage(const std::filesystem::path& path) {
  const MiniJson::Value message = Parsed(platform::WideToUtf8(patcher::BuildOptionsMessage(path).text));
  const std::size_t values = 2 + patcher::GameOptions::kDefs.size() + patcher::DX11TuneKeys.size();
  Require(message.Find("values")->objectMembers.size() == values, "every value is there");
  for (const auto& [name, value] : message.Find("values")->objectMembers) {
    Require(value.kind == MiniJson::Kind::Number, "every value is a number");
  }
  for (const patcher::TuneDef& row : patcher::DX11TuneKeys) {
    const auto shown = static_cast<float>(message.Find("values")->Find(row.key)->numberValue);
    // Six digits may round a value past its bound by half a digit.
    Require(shown >= row.min - 1e-5f && shown <= row.max + 1e-2f, "values lie within their bounds");
  }
}

std::string_view Key(const std::string& line) {
  const std::size_t begin = std::min(line.find_first_not_of(" \t"), line.size());
  return std::string_view(line).substr(begin, line.find_first_of(" \t", begin) - begin);
}

bool IsOurs(std::string_view key) {
  const auto& options = patcher::GameOptions::kDefs;
  const auto& tuning = patcher::DX11TuneKeys;
  return key == "resolution" ||
         std::any_of(options.begin(), options.end(), [&](const auto& row) { return key == row.iniKey; }) ||
         std::any_of(tuning.begin(), tuning.end(), [&](const auto& row) { return key == row.key; });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const patcher::ScratchDirectory directory;
  const std::filesystem::path path = directory / "ostu.ini";
  const std::string_view text = patcher::AsText(data, size);
  const std::size_t split = text.find(kSeparator);
  patcher::WriteWhole(path, std::string(text.substr(0, split)));
  const MiniJson::Value values =
      split == text.npos ? MiniJson::Value() : Parsed(text.substr(split + kSeparator.size()));

  CheckMessage(path);
  patcher::SettingsFile before;
  before.Load(path);
  Require(patcher::SaveOptions(path, values), "a save succeeds");
  patcher::SettingsFile after;
  after.Load(path);
  Require(after.lines.size() >= before.lines.size(), "no line goes");
  for (std::size_t i = 0; i < before.lines.size(); ++i) {
    if (!IsOurs(Key(before.lines[i]))) Require(after.lines[i] == before.lines[i], "foreign lines stay");
  }
  const std::string saved = patcher::ReadWhole(path);
  Require(patcher::SaveOptions(path, values) && patcher::ReadWhole(path) == saved,
          "a second save changes nothing");
  return 0;
}
