#include "platform/display.h"

#include <algorithm>
#include <fstream>
#include <string>

#include "platform/linux/drm_modes.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

constexpr char kConnectors[] = "/sys/class/drm";

bool IsConnected(const fs::path& connector) {
  std::ifstream file(connector / "status");
  std::string status;
  return std::getline(file, status) && status == "connected";
}

}  // namespace

std::vector<ScreenSize> ReadDrmModes(const fs::path& root) {
  std::vector<fs::path> connectors;
  std::error_code error;
  for (fs::directory_iterator entry(root, error), end; !error && entry != end; entry.increment(error)) {
    if (IsConnected(entry->path())) connectors.push_back(entry->path());
  }
  std::sort(connectors.begin(), connectors.end());
  std::vector<ScreenSize> modes;
  for (const fs::path& connector : connectors) {
    std::ifstream file(connector / "modes");
    ScreenSize mode;
    char separator = 0;
    std::string rest;  // "i" for interlaced modes
    while (file >> mode.width >> separator >> mode.height) {
      modes.push_back(mode);
      std::getline(file, rest);
    }
  }
  return modes;
}

ScreenSize LargestDisplayMode() {
  ScreenSize largest;
  for (const ScreenSize& mode : ReadDrmModes(kConnectors)) {
    largest.width = std::max(largest.width, mode.width);
    largest.height = std::max(largest.height, mode.height);
  }
  return largest.width > 0 ? largest : kUsualScreen;
}

ScreenSize PrimaryScreenSize() {
  const std::vector<ScreenSize> modes = ReadDrmModes(kConnectors);
  return modes.empty() ? kUsualScreen : modes.front();
}

}  // namespace platform
