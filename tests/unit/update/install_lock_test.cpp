#include "update/install_lock.h"

#include <gtest/gtest.h>

#include "control/dispatch.h"
#include "support/recording_host.h"
#include "support/scratch_directory.h"
#include "update/update_run.h"

namespace patcher {
namespace {

TEST(InstallLockTest, ARunThatDoesNotGetTheDirectoryEndsLikeAnOfflineOne) {
  const ScratchDirectory game;
  WriteWhole(game / "left.old", "");
  platform::DirectoryLock other(ExeDir());
  ASSERT_TRUE(other.TakeWithin(std::chrono::milliseconds(0)));
  UpdateStages stages;
  stages.clientExists = [] { return true; };
  stages.lockPatience = std::chrono::milliseconds(1);
  RecordingHost host;
  host.StartThread([&] { RunUpdate(host, stages); });
  host.JoinWorkers();
  Dispatcher dispatcher(host, {});
  for (const UiEvent& event : host.TakeEvents()) dispatcher.HandleUiEvent(event);
  const std::u16string status = u"{\"type\":\"status\",\"text\":\"Une autre instance du lanceur ";
  EXPECT_EQ(host.sent, (std::vector<std::u16string>{status + u"met le jeu a jour, attente...\"}",
                                                    status + u"occupe toujours le dossier du jeu.\"}",
                                                    u"{\"type\":\"ready\",\"canPlay\":true}"}));
  EXPECT_TRUE(std::filesystem::exists(game / "left.old")) << "nothing is swept";
}

}  // namespace
}  // namespace patcher
