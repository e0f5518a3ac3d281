#include "live_manifest.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <system_error>

#include "publish_error.h"

namespace patcher::publisher {
namespace {

bool HasAllContents(const ContentStore& store, const Publication& publication) {
  const PatchManifest& manifest = publication.manifest;
  return std::all_of(manifest.files.begin(), manifest.files.end(),
                     [&](const PatchFile& file) { return store.Has(file.url, file.size); }) &&
         std::all_of(publication.archives.begin(), publication.archives.end(),
                     [&](const PublishedArchive& archive) {
                       return store.Has(archive.bundle.name, archive.bundle.size);
                     });
}

}  // namespace

std::optional<Publication> ReadManifest(const ContentStore& store) {
  try {
    return ReadPublication(store.ManifestFile());
  } catch (const ManifestError& error) {
    throw PublishError(std::string(error.what()) + "; --live N replaces it by version N");
  }
}

std::optional<Publication> FindLive(const ContentStore& store, const History& history) {
  auto live = ReadManifest(store);
  if (live) return live;
  for (const PublishedVersion& version : history) {
    if (!version.problem.empty()) {
      throw PublishError("version.json is missing, and the history that could replace it is damaged: " +
                         version.problem + "; --live N makes version N live");
    }
  }
  const auto versions = ByTime(history);
  if (versions.empty()) return std::nullopt;
  return ReadCopy(store, versions.front()->version);
}

std::optional<Publication> ReadLive(const ContentStore& store, const History& history, Progress& progress) {
  auto live = FindLive(store, history);
  std::error_code error;
  if (!live || std::filesystem::exists(store.ManifestFile(), error) || error) return live;
  const std::string version = std::to_string(live->manifest.version);
  if (HasAllContents(store, *live)) {
    store.WriteDocument(store.ManifestFile(), live->text);
    store.FlushFolder(store.Root());
    progress.Notice("version.json was missing: version " + version + " is live again, from the history");
  } else {
    progress.Notice("version.json is missing, and so are contents of version " + version +
                    ", which was live");
  }
  return live;
}

void PutLive(const ContentStore& store, const Publication& next) {
  store.FlushNames();
  store.WriteDocument(store.ManifestFile(), next.text);
  DoLaterStep("version " + std::to_string(next.manifest.version) + " is live", [&] {
    store.FlushFolder(store.Root());
    KeepCopy(store, next);
  });
}

void DoLaterStep(const std::string& done, const std::function<void()>& step) {
  try {
    step();
  } catch (const LaterStepError&) {
    throw;
  } catch (const std::exception& failure) {
    throw LaterStepError(done + ", but a later step failed: " + failure.what() +
                         ". The same command again does the rest");
  }
}

}  // namespace patcher::publisher
