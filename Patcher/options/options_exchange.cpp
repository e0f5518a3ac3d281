#include "options/options_exchange.h"

#include <algorithm>
#include <limits>
#include <string_view>

#include "_Common/dx11_tune_keys.h"
#include "options/option_table.h"
#include "options/render_tuning.h"
#include "options/resolutions.h"
#include "options/settings_file.h"
#include "platform/display.h"

namespace patcher {
namespace {

using platform::ScreenSize;

constexpr char kResolutionKey[] = "resolution";
constexpr char kUnreadableMember[] = "iniUnread";

// The smallest and largest sizes that the game accepts.
constexpr ScreenSize kSmallest{640, 480};
constexpr ScreenSize kLargest{16384, 16384};

ScreenSize CurrentSize(const SettingsFile& file) {
  ScreenSize size;
  const bool usable =
      file.GetIntPair(kResolutionKey, size.width, size.height) && size.width >= 1 && size.height >= 1;
  return usable ? size : platform::PrimaryScreenSize();
}

/// The texts in the tables need no escaping.
std::string Quoted(std::string_view text) { return '"' + std::string(text) + '"'; }

std::string Member(std::string_view name, std::string_view value) {
  return Quoted(name) + ':' + std::string(value);
}

/// `item` returns the text of one element.
template <typename List, typename Item>
std::string Joined(const List& list, Item item) {
  std::string text;
  for (const auto& element : list) {
    if (!text.empty()) text += ',';
    text += item(element);
  }
  return text;
}

std::string SizePair(const ScreenSize& size) {
  return '[' + std::to_string(size.width) + ',' + std::to_string(size.height) + ']';
}

std::string TuneRow(const TuneDef& row) {
  return '{' + Member("id", Quoted(row.key)) + ',' + Member("label", Quoted(row.label)) + ',' +
         Member("hint", row.hint != nullptr ? Quoted(row.hint) : "null") + ',' +
         Member("def", TuneFormat(row.def)) + ',' + Member("min", TuneFormat(row.min)) + ',' +
         Member("max", TuneFormat(row.max)) + ',' + Member("step", TuneFormat(row.step)) + ',' +
         Member("kind", std::to_string(static_cast<std::int32_t>(row.kind))) + ',' +
         Member("group", std::to_string(row.group)) + '}';
}

std::string Values(const SettingsFile& file, const ScreenSize& size) {
  const auto option = [&](const OptionDef& row) {
    return Member(row.id, std::to_string(OptionToPage(row, file.GetInt(row.iniKey, row.def))));
  };
  const auto tune = [&](const TuneDef& row) { return Member(row.key, TuneFormat(TuneRead(file, row))); };
  return (file.unreadable ? Member(kUnreadableMember, "1") + ',' : "") +
         Member("resWidth", std::to_string(size.width)) + ',' +
         Member("resHeight", std::to_string(size.height)) + ',' + Joined(GameOptions::kDefs, option) + ',' +
         Joined(DX11TuneKeys, tune);
}

/// A number from the page as a float. A number that is too large for a float is outside of every row's bounds
/// anyway.
float Narrowed(double number) {
  constexpr double kMax = std::numeric_limits<float>::max();
  return static_cast<float>(std::clamp(number, -kMax, kMax));
}

bool SizeIsAccepted(const ScreenSize& size) {
  return size.width >= kSmallest.width && size.width <= kLargest.width && size.height >= kSmallest.height &&
         size.height <= kLargest.height;
}

void SetResolution(SettingsFile& file, const MiniJson::Value& values) {
  const MiniJson::Value* width = values.Find("resWidth");
  const MiniJson::Value* height = values.Find("resHeight");
  if (width == nullptr || height == nullptr) return;
  const ScreenSize size{TruncateToInt(width->AsNumber(0)), TruncateToInt(height->AsNumber(0))};
  if (!SizeIsAccepted(size)) return;
  file.Set(kResolutionKey, std::to_string(size.width) + ' ' + std::to_string(size.height));
}

}  // namespace

OptionsMessage BuildOptionsMessage(const std::filesystem::path& path) {
  SettingsFile file;
  file.Load(path);
  const ScreenSize size = CurrentSize(file);
  const std::string text =
      '{' + Member("type", "\"options\"") + ',' + Member("iniExists", file.loaded ? "true" : "false") + ',' +
      Member("resolutions", '[' + Joined(ListResolutions(size.width, size.height), SizePair) + ']') + ',' +
      Member("tuneGroups", '[' + Joined(DX11TuneGroups, Quoted) + ']') + ',' +
      Member("tune", '[' + Joined(DX11TuneKeys, TuneRow) + ']') + ',' +
      Member("values", '{' + Values(file, size) + '}') + '}';
  return {{text.begin(), text.end()}, file.unreadable};
}

bool AreDefaultsForUnreadableFile(const MiniJson::Value& values) {
  return values.Find(kUnreadableMember) != nullptr;
}

bool SaveOptions(const std::filesystem::path& path, const MiniJson::Value& values) {
  SettingsFile file;
  file.Load(path);
  for (const OptionDef& row : GameOptions::kDefs) {
    const MiniJson::Value* value = values.Find(row.id);
    if (value == nullptr) continue;
    file.Set(row.iniKey, std::to_string(OptionFromPage(row, value->AsNumber(row.def))));
  }
  for (const TuneDef& row : DX11TuneKeys) {
    const MiniJson::Value* value = values.Find(row.key);
    if (value == nullptr) continue;
    file.Set(row.key, TuneFormat(TuneClamp(row, Narrowed(value->AsNumber(row.def)))));
  }
  SetResolution(file, values);
  return file.Write(path);
}

}  // namespace patcher
