#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace patcher {

/// Size limit, because the file is read into memory. Real files are much smaller.
inline constexpr std::uint64_t kMaxSettingsSize = 16u << 20;

/// How long the main thread waits for a file that another program has open.
inline constexpr std::chrono::milliseconds kSettingsTimeout{300};

/// The game's settings file as a list of lines. A line consists of blanks (space or tab), a key, blanks, and
/// a value up to the end of the line without trailing blanks. There are no sections, comments or escapes.
/// Keys are compared byte for byte; the first line with a key counts. All other lines belong to the game and
/// to the player: their bytes and their order do not change. Numbers have the format of the C locale. Created
/// for each use; main thread only.
struct SettingsFile {
  std::vector<std::string> lines;  ///< in file order, without their line ends
  bool loaded = false;             ///< the file could be read, even if it is empty
  bool unreadable = false;         ///< the file exists but could not be read

  /// Reads the file. Retries a failed read for up to `timeout`, because another program may have the file
  /// open for a moment. Also sets `unreadable` for a broken link, for an entry that is not a regular file,
  /// and for a file larger than kMaxSettingsSize. A directory counts as no file.
  void Load(const std::filesystem::path& path, std::chrono::milliseconds timeout = kSettingsTimeout);

  /// The value of a key; empty if the key is missing.
  std::string GetString(std::string_view key) const;
  /// The leading decimal integer of the value (strtol); `fallback` if there is none or it does not fit.
  std::int32_t GetInt(std::string_view key, std::int32_t fallback) const;
  /// The leading number of the value (strtof); `fallback` if there is none, or if it is out of range,
  /// infinite or NaN.
  float GetFloat(std::string_view key, float fallback) const;
  /// Reads two decimal integers separated by white space. Returns false and leaves the outputs unchanged
  /// otherwise.
  bool GetIntPair(std::string_view key, std::int32_t& first, std::int32_t& second) const;

  /// Changes the first line with this key to "KEY VALUE", or appends such a line.
  void Set(std::string_view key, std::string_view value);

  /// Replaces the content of the file with the lines, each followed by CR LF. The text is written to a
  /// ".part" file in the same directory, flushed and moved over the file. If the process dies during this,
  /// the old file stays, perhaps with a ".part" file, which a later save removes. If no move is possible
  /// (another program has the file open, or this process cannot give a new file the old owner), the file is
  /// overwritten in place; if that is interrupted or fails, the ".part" file has the complete text. Returns
  /// false and leaves the file unchanged if the text cannot be written or is larger than kMaxSettingsSize, if
  /// the file is read-only or another program denies write access, or if the file exists but was not loaded,
  /// because its other lines would be lost. If the file is a symbolic link, its target is replaced. Linux:
  /// owner, group and mode do not change.
  [[nodiscard]] bool Write(const std::filesystem::path& path) const;
};

}  // namespace patcher
