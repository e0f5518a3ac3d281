#include "options/settings_file.h"

#include <charconv>
#include <chrono>
#include <cmath>
#include <fstream>
#include <optional>
#include <random>
#include <system_error>
#include <thread>

#include "platform/files.h"
#include "platform/hex_digits.h"

namespace patcher {
namespace {

namespace fs = std::filesystem;

constexpr char kBlanks[] = " \t";
constexpr char kWhiteSpace[] = " \t\n\v\f\r";  // isspace in the classic locale

std::string_view Key(std::string_view line) {
  const std::size_t begin = line.find_first_not_of(kBlanks);
  if (begin == std::string_view::npos) return {};
  return line.substr(begin, line.find_first_of(kBlanks, begin) - begin);
}

/// The line's text after its key, without blanks before and after it.
std::string_view ValueAfter(std::string_view line, std::string_view key) {
  line.remove_prefix(static_cast<std::size_t>(key.data() + key.size() - line.data()));
  line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
  return line.substr(0, line.find_last_not_of(kBlanks) + 1);
}

/// Skips white space and a plus sign, which strtol accepts and from_chars does not. Returns false if no
/// number can follow.
bool SkipLead(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(kWhiteSpace), text.size()));
  if (!text.starts_with('+')) return true;
  text.remove_prefix(1);
  return !text.starts_with('-');
}

/// Reads a decimal integer and removes it from the front of `text`.
std::optional<std::int32_t> TakeInteger(std::string_view& text) {
  if (!SkipLead(text)) return std::nullopt;
  std::int32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc()) return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return number;
}

std::optional<float> TakeFloat(std::string_view text, std::chars_format format) {
  float number = 0;
  const std::errc error = std::from_chars(text.data(), text.data() + text.size(), number, format).ec;
  if (error != std::errc() || !std::isfinite(number) || std::fpclassify(number) == FP_SUBNORMAL)
    return std::nullopt;
  return number;
}

/// Whether a hexadecimal digit follows "0x", with or without a point between them.
bool BeginsHexadecimal(std::string_view text) {
  if (!text.starts_with("0x") && !text.starts_with("0X")) return false;
  text.remove_prefix(2);
  if (text.starts_with('.')) text.remove_prefix(1);
  return !text.empty() && platform::IsHexDigit(text.front());
}

/// Like strtof: "0x" starts a hexadecimal number if a digit follows; otherwise the number is 0.
std::optional<float> LeadingFloat(std::string_view text) {
  if (!SkipLead(text)) return std::nullopt;
  const bool negative = text.starts_with('-');
  const std::string_view digits = text.substr(negative ? 1 : 0);
  if (!BeginsHexadecimal(digits)) return TakeFloat(text, std::chars_format::general);
  const std::optional<float> number = TakeFloat(digits.substr(2), std::chars_format::hex);
  return number && negative ? -*number : number;
}

/// A temporary file in the same directory. Each call returns another name, so that two launchers never write
/// to the same file.
fs::path TemporaryFile(const fs::path& file) {
  fs::path part = file;
  part += "." + std::to_string(std::random_device()()) + ".part";
  return part;
}

bool IsTemporaryFile(const fs::path& part, const fs::path& file) {
  const fs::path number = part.stem().extension();
  return part.extension() == ".part" && part.stem().stem() == file.filename() && number.native().size() > 1 &&
         number.native().find_first_not_of(fs::path(".0123456789").native()) == fs::path::string_type::npos;
}

/// Removes temporary files of interrupted saves. No save takes an hour.
void RemoveLeftovers(const fs::path& file) {
  const fs::file_time_type hourAgo = fs::file_time_type::clock::now() - std::chrono::hours(1);
  std::error_code error;
  fs::directory_iterator entry(file.parent_path(), error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    std::error_code ignored;
    if (IsTemporaryFile(entry->path(), file) && entry->last_write_time(ignored) < hourAgo) {
      fs::remove(entry->path(), ignored);
    }
  }
}

enum class Reading { kDone, kNoFile, kRefused };

Reading ReadLines(const fs::path& file, std::vector<std::string>& lines) {
  std::error_code error;
  // A broken link counts as a file that cannot be read: the disk with its target may not be mounted.
  const bool nothingThere = fs::symlink_status(file, error).type() == fs::file_type::not_found;
  if (nothingThere || fs::is_directory(file, error)) return Reading::kNoFile;
  if (!fs::is_regular_file(file, error) || fs::file_size(file, error) > kMaxSettingsSize || error) {
    return Reading::kRefused;
  }
  std::ifstream in(file, std::ios::binary);
  std::string line;
  while (std::getline(in, line)) {
    line.erase(line.find_last_not_of("\r\n") + 1);
    lines.push_back(line);
  }
  const bool done = in.is_open() && in.eof() && !in.bad();
  if (!done) lines.clear();
  return done ? Reading::kDone : Reading::kRefused;
}

std::string TextOf(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) {
    text += line;
    text += "\r\n";
  }
  return text;
}

bool WriteText(const fs::path& file, const std::string& text) {
  std::ofstream out(file, std::ios::binary);
  out << text;
  out.close();
  return !out.fail();
}

/// Whether the file may be changed. The check is necessary because a move also replaces files that cannot be
/// opened for writing.
bool MayBeChanged(const fs::path& file, bool loaded) {
  std::error_code error;
  const fs::file_status status = fs::symlink_status(file, error);
  if (status.type() == fs::file_type::not_found) return true;
  constexpr fs::perms kAnyWrite = fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;
  return loaded && (status.permissions() & kAnyWrite) != fs::perms::none && platform::CanBeWritten(file);
}

/// Replaces the content of `file`: writes the text to the new file `part` and moves it to `file`, or
/// overwrites `file` if it cannot be moved.
platform::Overwriting PutText(const std::string& text, const fs::path& part, const fs::path& file,
                              bool replaces) {
  if (!WriteText(part, text)) return platform::Overwriting::kUntouched;
  const bool movable = !replaces || platform::TakeOverOwner(file, part) == 0;
  if (platform::FlushToDisk(part) != 0) return platform::Overwriting::kUntouched;
  if (!movable || platform::MoveReplacing(part, file, false) != 0) {
    return platform::OverwriteInPlace(file, text);
  }
  // Some file systems cannot flush a directory.
  static_cast<void>(platform::FlushDirectory(file.parent_path()));
  return platform::Overwriting::kDone;
}

}  // namespace

void SettingsFile::Load(const fs::path& path, std::chrono::milliseconds timeout) {
  constexpr std::chrono::milliseconds kPause(20);
  const auto end = std::chrono::steady_clock::now() + timeout;
  lines.clear();
  Reading reading = ReadLines(path, lines);
  while (reading == Reading::kRefused && std::chrono::steady_clock::now() < end) {
    std::this_thread::sleep_for(kPause);
    reading = ReadLines(path, lines);
  }
  loaded = reading == Reading::kDone;
  unreadable = reading == Reading::kRefused;
}

std::string SettingsFile::GetString(std::string_view key) const {
  for (const std::string& line : lines) {
    const std::string_view found = Key(line);
    if (!found.empty() && found == key) return std::string(ValueAfter(line, found));
  }
  return {};
}

std::int32_t SettingsFile::GetInt(std::string_view key, std::int32_t fallback) const {
  const std::string value = GetString(key);
  std::string_view rest = value;
  return TakeInteger(rest).value_or(fallback);
}

float SettingsFile::GetFloat(std::string_view key, float fallback) const {
  return LeadingFloat(GetString(key)).value_or(fallback);
}

bool SettingsFile::GetIntPair(std::string_view key, std::int32_t& first, std::int32_t& second) const {
  const std::string value = GetString(key);
  std::string_view rest = value;
  const std::optional<std::int32_t> one = TakeInteger(rest);
  const std::optional<std::int32_t> two = one ? TakeInteger(rest) : std::nullopt;
  if (!two) return false;
  first = *one;
  second = *two;
  return true;
}

void SettingsFile::Set(std::string_view key, std::string_view value) {
  std::string text = std::string(key) + ' ' + std::string(value);
  for (std::string& line : lines) {
    const std::string_view found = Key(line);
    if (found.empty() || found != key) continue;
    line = std::move(text);
    return;
  }
  lines.push_back(std::move(text));
}

bool SettingsFile::Write(const fs::path& path) const {
  const fs::path file = platform::ResolveLinks(path);
  const std::string text = TextOf(lines);
  if (text.size() > kMaxSettingsSize || !MayBeChanged(file, loaded)) return false;
  const fs::path part = TemporaryFile(file);
  const platform::Overwriting outcome = PutText(text, part, file, loaded);
  std::error_code ignored;
  if (outcome != platform::Overwriting::kTorn) fs::remove(part, ignored);
  if (outcome == platform::Overwriting::kDone) RemoveLeftovers(file);
  return outcome == platform::Overwriting::kDone;
}

}  // namespace patcher
