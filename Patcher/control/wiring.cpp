#include "control/wiring.h"

#include "integrity/check.h"
#include "integrity/cleanup.h"
#include "launch/external_links.h"
#include "launch/game_launch.h"
#include "launch/news.h"
#include "options/options_exchange.h"
#include "update/archive_install.h"
#include "update/self_update.h"
#include "update/update_run.h"

namespace patcher {
namespace {

/// The stages of the update run. Never destroyed, since detached workers use them until the process ends.
const UpdateStages& Stages() {
  static const auto* stages = new UpdateStages{
      .selfUpdate = FetchNewLauncher,
      .installArchive = BundleWorker,
      .cleanUp = CleanUp,
      .clientExists = ClientExists,
  };
  return *stages;
}

}  // namespace

OperationTable LauncherOperations(const ShowError& showError) {
  OperationTable table;
  table.runUpdate = [](HostWindow& window) { RunUpdate(window, Stages()); };
  table.runCheckOperation = [](HostWindow& window, bool repair) {
    RunCheckOperation(window, repair, Stages());
  };
  table.fetchNews = FetchNews;
  table.launchClient = [showError] { LaunchClient(showError); };
  table.openExternalUrl = OpenExternalUrl;
  table.buildOptionsMessage = BuildOptionsMessage;
  table.saveOptions = SaveOptions;
  table.selfUpdateSwap = [showError] { SelfUpdateSwap(showError); };
  table.clientExists = ClientExists;
  return table;
}

}  // namespace patcher
