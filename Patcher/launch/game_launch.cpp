#include "launch/game_launch.h"

#include <system_error>

#include "platform/process.h"
#include "shared/program.h"

namespace patcher {
namespace {

/// The argument that the client expects from its launcher.
constexpr char kClientToken[] = "quantel";

}  // namespace

std::filesystem::path ClientPath() { return ExeDir() / "Tolmira.exe"; }

bool ClientExists() {
  std::error_code error;
  return std::filesystem::exists(ClientPath(), error);
}

void LaunchClient(const ShowError& showError) {
  const int error = platform::StartProgram(ClientPath(), {kClientToken}, ExeDir());
  if (error == 0) return;
  showError(error == platform::kErrorBadExeFormat ? u"Tolmira necessite Windows 64 bits."
                                                  : u"Impossible de lancer le client",
            BuildWindowTitle());
}

}  // namespace patcher
