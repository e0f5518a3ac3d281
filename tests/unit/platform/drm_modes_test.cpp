#include "platform/linux/drm_modes.h"

#include <gtest/gtest.h>

#include "support/scratch_directory.h"

namespace platform {
namespace {

TEST(DrmModesTest, ConnectedDisplaysInOrderOfTheirNames) {
  patcher::ScratchDirectory root;
  const auto connector = [&](const std::string& name, const std::string& status, const std::string& modes) {
    std::filesystem::create_directory(root / name);
    patcher::WriteWhole(root / (name + "/status"), status);
    patcher::WriteWhole(root / (name + "/modes"), modes);
  };
  connector("card0-HDMI-A-1", "connected\n", "1920x1080\n1920x1080i\n1280x1024\nnonsense\n");
  connector("card0-DP-1", "disconnected\n", "3840x2160\n");
  connector("card0-eDP-1", "connected\n", "2560x1600");
  connector("card0", "", "");
  std::vector<std::pair<int, int>> found;
  for (const ScreenSize& mode : ReadDrmModes(root / "")) found.emplace_back(mode.width, mode.height);
  EXPECT_EQ(found,
            (std::vector<std::pair<int, int>>{{1920, 1080}, {1920, 1080}, {1280, 1024}, {2560, 1600}}));
  EXPECT_TRUE(ReadDrmModes(root / "absent").empty());
}

}  // namespace
}  // namespace platform
