#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace patcher {

/// A settings file is held in memory; no real one comes near this.
inline constexpr std::uint64_t kMaxSettingsSize = 16u << 20;

/// How long the main thread waits for a file that another program holds.
inline constexpr std::chrono::milliseconds kSettingsPatience{300};

/// The game's settings file, as lines. A line is: blanks (space or tab), a key, blanks, a value up to the end
/// of the line less trailing blanks; no sections, no comments, nothing decoded. Keys are compared byte for
/// byte, and the first line with a key counts. All other lines belong to the game and to the player: they
/// keep their bytes and their place. Numbers are read in the C locale's form whatever the process's locale
/// is. Lives for one use; main thread only.
struct SettingsFile {
  std::vector<std::string> lines;  ///< in file order, without their line ends
  bool loaded = false;             ///< the file could be read, even if it is empty
  bool unreadable = false;         ///< a file is there that could not be read

  /// Reads the file. Another program may hold it for a moment: a file that cannot be read is tried again
  /// until `patience` is over. Unreadable are also a link that leads nowhere, what is no regular file, and a
  /// file larger than kMaxSettingsSize. A directory is no file.
  void Load(const std::filesystem::path& path, std::chrono::milliseconds patience = kSettingsPatience);

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

  /// Makes the lines, each with CR LF after it, the content of the file. All or nothing: the text is written
  /// beside the file, brought to the disk and moved over it; a death in between leaves the old file, and
  /// perhaps a ".part" beside it, which a later save removes. Where no move is possible (another program has
  /// the file open, or this process may not give a new file to the old one's owner) the file is overwritten;
  /// if that dies or fails half way, the ".part" has the whole text. False, and the file stays as it is, if
  /// the new text did not get through or is larger than kMaxSettingsSize, if the file is read-only or a
  /// program that has it open refuses writing, or if it exists but was not loaded: its other lines would be
  /// lost. A symbolic link stays one; the file that it leads to is replaced. Linux: owner, group and mode
  /// stay.
  [[nodiscard]] bool Write(const std::filesystem::path& path) const;
};

}  // namespace patcher
