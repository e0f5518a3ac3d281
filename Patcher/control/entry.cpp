#include <string>

#include "control/main_window.h"
#include "control/wiring.h"
#include "platform/error_box.h"
#include "platform/process.h"
#include "platform/standard_streams.h"
#include "platform/window.h"
#include "shared/program.h"
#include "transport/config.h"

namespace {

constexpr int kExitNoWindow = 1;

int NoWindow() {
  platform::ShowErrorBox(u"Impossible d'ouvrir la fenetre du patcher.", patcher::BuildWindowTitle());
  return kExitNoWindow;
}

int RunLauncher(int argc, char** argv) {
  if (!platform::PrepareWindowSystem(argc, argv)) return NoWindow();
  patcher::SetExePath(platform::OwnExecutablePath());
  patcher::PatchConfig::Load();
  // Never destroyed, since workers may outlive the message loop.
  auto* window = new patcher::MainWindow(patcher::LauncherOperations(platform::ShowErrorBox));
  if (!window->Create()) return NoWindow();
  const int code = window->Run();
  platform::FinishWindowSystem();
  return code;
}

}  // namespace

int main(int argc, char** argv) {
  platform::SurviveBrokenPipes();
  if (platform::CommandLineText(argc, argv).find("--print-version") != std::string::npos) {
    platform::UseConsoleOfParent();
    platform::UseBinaryStandardStreams();
    platform::WriteLine(std::to_string(patcher::launcherBuild));
    return 0;
  }
  // Ends at once, even if workers are still running: every step on disk survives that.
  platform::EndProcess(RunLauncher(argc, argv));
}
