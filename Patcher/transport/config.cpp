#include "transport/config.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string_view>

#include "shared/own_files.h"
#include "shared/program.h"
#include "shared/whole_file.h"

namespace patcher {
namespace {

/// Like atoi, but a number that is too large gives a value outside of every valid range instead of undefined
/// behaviour.
std::int32_t LeadingInteger(std::string_view text) {
  std::size_t at = text.find_first_not_of(" \t\n\v\f\r");
  if (at == std::string_view::npos) return 0;
  bool negative = text[at] == '-';
  if (negative || text[at] == '+') ++at;
  std::int32_t value = 0;
  for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at) {
    if (value < 1'000'000) value = value * 10 + (text[at] - '0');
  }
  return negative ? -value : value;
}

void ApplyLine(PatchConfig& config, std::string_view line) {
  std::size_t equals = line.find('=');
  if (equals == std::string_view::npos) return;
  std::string_view key = line.substr(0, equals);
  std::string_view value = line.substr(equals + 1);
  value = value.substr(0, value.find_last_not_of("\r\n ") + 1);
  if (value.empty()) return;
  if (key == "BaseUrl") {
    config.baseUrl = value;
  } else if (key == "Connections") {
    std::int32_t number = LeadingInteger(value);
    if (number >= 1 && number <= 8) config.connections = number;
  }
}

void WriteDefaults(const std::filesystem::path& file, const PatchConfig& config) {
  // Written atomically: a truncated base URL would be used at every later start.
  static_cast<void>(ReplaceWholeFile(
      file, "BaseUrl=" + config.baseUrl + "\r\nConnections=" + std::to_string(config.connections) + "\r\n"));
}

}  // namespace

PatchConfig& PatchConfig::Current() {
  static auto* config = new PatchConfig;
  return *config;
}

void PatchConfig::Apply(const std::string& text) {
  std::string_view rest = text;
  while (!rest.empty()) {
    std::size_t end = rest.find('\n');
    ApplyLine(*this, rest.substr(0, end));
    rest = end == std::string_view::npos ? std::string_view{} : rest.substr(end + 1);
  }
}

void PatchConfig::Load() {
  const std::filesystem::path file = ExeDir() / kConfigFile;
  std::ifstream in(file, std::ios::binary);
  if (in) {
    // Not with an iterator, which would raise if the file is a directory or the disk fails.
    std::ostringstream text;
    text << in.rdbuf();
    Current().Apply(text.str());
    return;
  }
  std::error_code error;
  if (std::filesystem::symlink_status(file, error).type() == std::filesystem::file_type::not_found) {
    WriteDefaults(file, Current());
  }
}

}  // namespace patcher
