#include "content_check.h"

#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

#include "all_cores.h"
#include "launcher_file.h"
#include "launcher_store.h"
#include "platform/hex_digits.h"
#include "platform/text.h"
#include "publish_error.h"
#include "update/manifest_paths.h"

namespace patcher::publisher {
namespace {

namespace fs = std::filesystem;

/// The digest, or its first digits, in a name of the store; empty if the name has none.
std::string DigestInName(const std::string& name) {
  const std::size_t end = std::min(name.find('.'), name.size());
  const std::size_t begin = name.find_last_of("/-", end) + 1;
  std::string digits = name.substr(begin, end - begin);
  // The folder's name is the first digits.
  if (name.starts_with("f/") && begin > 3) digits.insert(0, name, 2, begin - 3);
  const bool isDigest =
      digits.size() >= 16 && digits.find_first_not_of(platform::kLowerHexDigits) == std::string::npos;
  return isDigest ? digits : std::string();
}

}  // namespace

void ContentCheck::Expect(Expected expected) {
  // CheckDocument reports names that leave the store. Such files are not read.
  if (expected.name.empty() || !StaysInside(expected.name)) return;
  const auto [place, added] = places_.emplace(expected.name, contents_.size());
  if (added) {
    contents_.push_back(std::move(expected));
    return;
  }
  const Expected& first = contents_[place->second];
  if (first.size != expected.size || first.digest != expected.digest) {
    findings_.Add(expected.subject, expected.name + " cannot be the content of " + first.subject + " too");
  }
}

void ContentCheck::Add(const Publication& publication, const std::string& whose) {
  for (const PatchFile& file : publication.manifest.files) {
    Expect({file.url, whose + "file " + file.path, file.size, file.sha256});
  }
  for (const PublishedArchive& archive : publication.archives) {
    const PatchBundle& bundle = archive.bundle;
    Expect({bundle.name, whose + "archive " + bundle.name, bundle.size, bundle.sha256});
  }
  AddLauncher(publication, whose);
}

void ContentCheck::AddLauncher(const Publication& publication, const std::string& whose) {
  const AnnouncedLauncher launcher = LauncherOf(publication);
  const std::string subject = whose + "launcher";
  if (launcher.name.empty()) {
    if (launcher.build != 0) findings_.Add(subject, "it has a build number and no name");
    return;
  }
  Expect({launcher.name, subject, std::nullopt, ExpectedDigest(launcher)});
  try {
    const auto own = OwnLauncherBuild(store_.Place(launcher.name));
    if (own && *own != launcher.build) {
      findings_.Add(subject, "it is build " + std::to_string(*own) + ", the manifest says " +
                                 std::to_string(launcher.build));
    }
  } catch (const PublishError&) {
    // Run reports a file that cannot be read.
  }
}

void ContentCheck::AddOtherContents() {
  for (const char* folder : ContentStore::kContentFolders) {
    std::error_code error;
    if (!fs::exists(store_.Root() / folder, error) && !error) continue;
    for (fs::recursive_directory_iterator entry(store_.Root() / folder, error), end; !error && entry != end;
         entry.increment(error)) {
      if (!entry->is_regular_file(error)) continue;
      const std::u8string generic = entry->path().lexically_relative(store_.Root()).generic_u8string();
      const std::string name(generic.begin(), generic.end());
      const std::string digest = DigestInName(name);
      if (!digest.empty() && places_.count(name) == 0) Expect({name, "unused", std::nullopt, digest});
    }
    if (error) throw FileError("cannot list", store_.Root() / folder, error);
  }
}

std::string ContentCheck::Problem(const Expected& expected, FileHasher& hasher) const {
  std::error_code error;
  const fs::path place = store_.Place(expected.name);
  if (!fs::is_regular_file(place, error)) return expected.name + " is missing";
  try {
    const FileContent content = hasher.Read(place);
    if (expected.size && content.size != *expected.size) {
      return expected.name + " has " + std::to_string(content.size) + " bytes instead of " +
             std::to_string(*expected.size);
    }
    return content.digest.starts_with(expected.digest) ? "" : expected.name + " has another digest";
  } catch (const PublishError& failure) {
    return failure.what();
  }
}

void ContentCheck::Run() {
  std::vector<std::uint64_t> sizes;
  for (const Expected& expected : contents_) {
    std::error_code error;
    const std::uint64_t size = fs::file_size(store_.Place(expected.name), error);
    sizes.push_back(error ? 0 : size);
  }
  RunOnAllCores("checking contents", sizes, progress_, [&](std::size_t index, FileHasher& hasher) {
    Expected& expected = contents_[index];
    const std::string problem = Problem(expected, hasher);
    expected.sound = problem.empty();
    if (!expected.sound) findings_.Add(expected.subject, problem);
  });
}

bool ContentCheck::IsSound(const std::string& name) const {
  const auto place = places_.find(name);
  return place != places_.end() && contents_[place->second].sound;
}

}  // namespace patcher::publisher
