#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/web_view.h"

namespace patcher {

/// An image of the page, embedded in the program under its resource number.
struct Asset {
  std::string_view name;
  int resource;
  std::string_view mediaType;
};

inline constexpr Asset AssetTable[] = {
    {"background.jpg", 200, "image/jpeg"}, {"logo.png", 201, "image/png"},
    {"panel.png", 202, "image/png"},       {"pill-play.png", 203, "image/png"},
    {"separator.png", 204, "image/png"},   {"nav-icon-sprite.png", 205, "image/png"},
    {"led-green.png", 206, "image/png"},   {"led-red.png", 207, "image/png"},
    {"led-amber.png", 208, "image/png"},
};

/// Resource number of the page's text, UTF-8.
inline constexpr int kPageResource = 100;
/// Resource number of the window's icon, a PNG.
inline constexpr int kIconResource = 300;

/// The page's darkest navy, shown around the page and before it has loaded.
inline constexpr platform::Colour kNavy{0x0d, 0x14, 0x26};

/// The row of the image at an address. Compares the text after the last slash, without query and fragment,
/// and with case. Null if there is none.
const Asset* FindAsset(std::string_view address);

/// The answer to a request under the asset origin; nothing if there is no such image.
std::optional<platform::ResourceAnswer> ServeAsset(std::string_view address);

/// The page's text.
std::u16string PageText();

/// Whether a web view uses this address for a document that it received as text, not from a network or file
/// address.
bool IsOwnAddress(std::string_view address);

}  // namespace patcher
