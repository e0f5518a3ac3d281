// Runs only the verification pass (VerifyFiles) on a directory, without a server and a page. Usage:
// verify_tree MANIFEST DIRECTORY WORKERS

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "control/protocol/ui_event.h"
#include "integrity/verify_files.h"
#include "platform/text.h"
#include "shared/program.h"
#include "transport/config.h"

namespace {

/// Ignores all events.
class NoWindow final : public patcher::HostWindow {
 public:
  void PostEvent(const patcher::UiEvent& event) noexcept override { patcher::ReleasePayload(event); }
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  std::string text(std::filesystem::file_size(argv[1]), '\0');
  std::ifstream(argv[1], std::ios::binary).read(text.data(), static_cast<std::streamsize>(text.size()));
  patcher::PatchManifest manifest;
  std::string error;
  if (!patcher::ParsePatchManifest(text, manifest, error)) return 1;
  patcher::SetExePath(std::filesystem::path(argv[2]) / "launcher");
  patcher::PatchConfig::Current().connections = std::atoi(argv[3]);
  NoWindow window;
  patcher::CheckResult result;
  patcher::VerifyFiles(window, manifest, result);
  std::printf("%d of %d files are correct\n", result.ok, result.total);
  return result.ok == result.total ? 0 : 1;
}
