#pragma once

#include <array>
#include <cstdint>

namespace patcher {

/// One basic option of the game. `def`, `min` and `max` are values of the file.
struct OptionDef {
  const char* id;      ///< name in the page's messages
  const char* iniKey;  ///< key in the settings file
  std::int32_t def;    ///< value if the file has none
  std::int32_t min;
  std::int32_t max;
  bool inverted;  ///< the file has the opposite of the page's value
};

namespace GameOptions {

/// In the order of the values in the page's messages and of the lines that a first save appends to the file.
inline constexpr std::array<OptionDef, 18> kDefs{{
    {"fullscreen", "fullscreen", 1, 0, 1, false},
    {"fpsLimit", "fpslimit", 0, 0, 1000, false},
    {"vsync", "vsync", 0, 0, 1, false},
    {"texture", "texture", 1, 0, 2, false},
    {"detail", "detail", 1, 0, 2, false},
    {"distant", "distant", 1, 0, 2, false},
    {"shadow", "shadow", 2, 0, 2, false},
    {"weather", "WEATHEREFFECT", 1, 0, 1, false},
    {"night", "NIGHT", 1, 0, 1, false},
    {"spellSfx", "SFXRenderOff", 0, 0, 1, true},
    {"itemSfx", "SFXItemRenderOff", 0, 0, 1, true},
    {"damage", "DamageRender", 0, 0, 1, false},
    {"nameSelf", "PRenderName", 1, 0, 1, false},
    {"nameOthers", "OPRenderName", 1, 0, 1, false},
    {"nameMonsters", "NRenderName", 1, 0, 1, false},
    {"cameraLock", "CameraLock", 1, 0, 1, false},
    {"freeZoom", "ZOOMLIMIT", 1, 0, 1, true},
    {"windowAlpha", "WindowAlpha", 255, 0, 255, false},
}};

}  // namespace GameOptions

/// A number from the page, truncated toward zero; the lowest integer if it does not fit.
std::int32_t TruncateToInt(double number);

/// Converts a value of the file to the page's: within the option's bounds, inverted if `inverted` is set.
std::int32_t OptionToPage(const OptionDef& option, std::int32_t fileValue);

/// Converts a value of the page to the file's.
std::int32_t OptionFromPage(const OptionDef& option, double pageValue);

}  // namespace patcher
