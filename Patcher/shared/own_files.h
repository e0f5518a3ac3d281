#pragma once

#include <algorithm>
#include <array>
#include <string_view>

#include "shared/ascii.h"

namespace patcher {

// Names in the install directory that belong to the launcher or to the player, not to the game.

inline constexpr std::string_view kRecordFile = "patch_manifest.json";
/// Exists only with a launcher that has keys, and only while the record is not the server's document: see
/// LocalRecord.
inline constexpr std::string_view kSequenceFile = "patch_sequence.txt";
/// The game's settings. The game and the launcher write it.
inline constexpr std::string_view kSettingsFile = "ostu.ini";
inline constexpr std::string_view kWebViewDirectory = "WebView2Data";
inline constexpr std::string_view kConfigFile = "patcher.ini";
inline constexpr std::string_view kLogFile = "patcher_debug.txt";
inline constexpr std::string_view kNewLauncherFile = "Patcher.new.exe";
inline constexpr std::string_view kOldLauncherFile = "Patcher.old.exe";

/// Files that the launcher writes, replaces and deletes at the top of the install directory.
inline constexpr std::array kLauncherWorkFiles{kRecordFile, kSequenceFile,    kConfigFile,
                                               kLogFile,    kNewLauncherFile, kOldLauncherFile};
/// Files that a player needs before the first start.
inline constexpr std::array<std::string_view, 2> kLauncherPrograms{"Patcher.exe", "WebView2Loader.dll"};
/// Other programs and files of the launcher. The game must not contain files of these names.
inline constexpr std::array<std::string_view, 3> kOtherFiles{"Patcher", "patcher-stdio", "patcher-stdio.exe"};

/// Settings and accounts.
inline constexpr std::array<std::string_view, 2> kPlayerFiles{kSettingsFile, "reginfo.dat"};
/// Directories with logs, captures, saved accounts and the player's settings in the game.
inline constexpr std::array<std::string_view, 6> kPlayerDirectories{
    "log", kWebViewDirectory, "capture", "useraccounts", "powerups", "farmdisplay"};

/// Whether the table contains the name. The case of ASCII letters does not count.
template <std::size_t Size>
bool HoldsName(const std::array<std::string_view, Size>& table, std::string_view name) {
  const auto same = [](char a, char b) { return AsciiLower(a) == AsciiLower(b); };
  return std::any_of(table.begin(), table.end(), [&](std::string_view entry) {
    return std::equal(entry.begin(), entry.end(), name.begin(), name.end(), same);
  });
}

}  // namespace patcher
