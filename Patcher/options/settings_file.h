#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace patcher {

/// The game's settings file, as lines. A line is: blanks (space or tab), a key, blanks, a value up to the end
/// of the line less trailing blanks; no sections, no comments, nothing decoded. Keys are compared byte for
/// byte, and the first line with a key counts. All other lines belong to the game and to the player: they
/// keep their bytes and their place. Numbers are read in the C locale's form whatever the process's locale
/// is. Lives for one use; main thread only.
struct SettingsFile {
  std::vector<std::string> lines;  ///< in file order, without their line ends
  bool loaded = false;             ///< the file could be read, even if it is empty

  /// Reads the file. Something that is no regular file, or is larger than kMaxSettingsSize, counts as one
  /// that cannot be read.
  void Load(const std::filesystem::path& path);

  /// The value of a key; empty if there is none.
  std::string GetString(std::string_view key) const;
  /// Leading decimal integer of the value (strtol); the default if there is none or it does not fit.
  std::int32_t GetInt(std::string_view key, std::int32_t fallback) const;
  /// Leading number of the value (strtof); the default if there is none, if it is out of range, infinite or
  /// no number.
  float GetFloat(std::string_view key, float fallback) const;
  /// Two decimal integers with white space between them. False leaves the outputs unchanged.
  bool GetIntPair(std::string_view key, std::int32_t& first, std::int32_t& second) const;

  /// Makes the first line with that key "KEY VALUE", or appends such a line.
  void Set(std::string_view key, std::string_view value);

  /// Puts the lines in the place of the file, each with CR LF behind it. All or nothing: the text is written
  /// beside the file, brought to the disk and moved over it; a death in between leaves the old file, and
  /// perhaps a ".part" beside it, which a later save takes away. False, and the old file stands, if the new
  /// text did not get through, if the file is read-only or in use, or if it exists but was not loaded: its
  /// other lines would be lost. A symbolic link stays one; the file that it leads to is replaced.
  bool Write(const std::filesystem::path& path) const;
};

/// A settings file is held in memory; no real one comes near this.
inline constexpr std::uint64_t kMaxSettingsSize = 16u << 20;

}  // namespace patcher
