#include "launcher_store.h"

#include "client_names.h"
#include "file_hasher.h"
#include "launcher_file.h"
#include "platform/text.h"
#include "publish_error.h"

namespace patcher::publisher {

namespace fs = std::filesystem;

AnnouncedLauncher StoreLauncher(const fs::path& file, std::int32_t build, const ContentStore& store,
                                Progress& progress) {
  const fs::path copy = store.WorkFile("launcher");
  FileHasher hasher(progress);
  const FileContent content = hasher.Copy(file, copy);
  // Checks the copy, which is published: the file may have changed since its number was read.
  static_cast<void>(LauncherBuild(copy, build));
  AnnouncedLauncher launcher{build, ContentStore::LauncherName(content.digest), content.digest};
  store.PutInPlace(copy, store.Place(launcher.name));
  return launcher;
}

AnnouncedLauncher VerifyLauncher(const AnnouncedLauncher& launcher, const ContentStore& store,
                                 Progress& progress) {
  if (launcher.name.empty()) return launcher;
  FileHasher hasher(progress);
  std::string problem;
  try {
    const std::string digest = hasher.Read(store.Place(launcher.name)).digest;
    const std::string expected = ExpectedDigest(launcher);
    if (expected.empty() || digest == expected) {
      store.MakeReadable(launcher.name);
      const auto own = OwnLauncherBuild(store.Place(launcher.name));
      if (own && *own != launcher.build) {
        progress.Notice("the published launcher is build " + std::to_string(*own) + " and announced as " +
                        std::to_string(launcher.build) +
                        ": publish it again with --launcher and --allow-older-launcher");
      }
      return {launcher.build, launcher.name, digest};
    }
    problem = launcher.name + " has another digest";
  } catch (const PublishError& error) {
    problem = error.what();
  }
  throw PublishError("the published launcher, build " + std::to_string(launcher.build) +
                     ", is damaged; publish it again with --launcher: " + problem);
}

std::string ExpectedDigest(const AnnouncedLauncher& launcher) {
  if (!launcher.sha256.empty()) return launcher.sha256;
  const std::string name = platform::Utf8FromPath(platform::PathFromUtf8(launcher.name).stem());
  return IsDigest(name) ? name : std::string();
}

}  // namespace patcher::publisher
