#include "dry_run.h"

#include <array>
#include <cstdio>
#include <string>
#include <string_view>
#include <unordered_set>

#include "download_table.h"
#include "progress_line.h"
#include "version_changes.h"

namespace patcher::publisher {
namespace {

using MiniJson::Value;

constexpr std::size_t kLargestListed = 10;

/// What has to be uploaded to a server that has the current store.
struct Upload {
  Amount contents;
  Amount renamed;  ///< those that the store has under names of an earlier release
  std::size_t archives = 0;
  std::uint64_t archiveBytes = 0;  ///< estimated
  std::uint64_t launcherBytes = 0;
  std::uint64_t manifestBytes = 0;

  std::uint64_t Bytes() const { return contents.bytes + archiveBytes + launcherBytes + manifestBytes; }
};

Upload UploadOf(const DryRun& run, const ArchiveForecast& forecast) {
  Upload upload;
  upload.launcherBytes = run.newLauncherBytes;
  std::unordered_set<std::string_view> names;
  for (const PatchFile& file : run.next.manifest.files) {
    if (!names.insert(file.url).second || run.store.Has(file.url, file.size)) continue;
    upload.contents.Add(file.size);
    if (run.store.Has(ContentStore::OldFileName(file.sha256), file.size)) upload.renamed.Add(file.size);
  }
  upload.archives = forecast.toPack;
  upload.archiveBytes = forecast.bytesToPack;
  Publication publication = run.next;
  for (PublishedArchive& archive : publication.archives) {
    if (!archive.bundle.sha256.empty()) continue;
    archive.bundle.sha256.assign(64, '0');
    archive.bundle.name = ContentStore::ArchiveName(archive.since, archive.bundle.sha256);
  }
  upload.manifestBytes = ManifestText(publication).size();
  return upload;
}

std::string Line(const char* what, const Amount& amount) {
  std::array<char, 120> line{};
  std::snprintf(line.data(), line.size(), "\n  %-10s %8zu files %18llu  %s", what, amount.files,
                static_cast<unsigned long long>(amount.bytes), ReadableBytes(amount.bytes).c_str());
  return line.data();
}

std::string ChangesText(const VersionChanges& changes) {
  std::string text = "what changes:" + Line("added", changes.added) + Line("changed", changes.changed) +
                     Line("removed", changes.removed);
  if (changes.files.empty()) return text;
  text += "\nthe largest of these:";
  for (const auto& [file, isNew] : LargestChanges(changes, kLargestListed)) {
    std::array<char, 80> line{};
    std::snprintf(line.data(), line.size(), "\n  %-10s %18llu  ", isNew ? "added" : "changed",
                  static_cast<unsigned long long>(file->size));
    text += line.data() + file->path;
  }
  return text;
}

std::string UploadText(const Upload& upload, const ArchiveForecast& forecast) {
  std::string text =
      "to upload: " + Counted(upload.contents.files, "content") + ", " + ReadableBytes(upload.contents.bytes);
  if (upload.archives > 0) {
    text += "; " + Counted(upload.archives, "archive") + ", about " + ReadableBytes(upload.archiveBytes);
  }
  if (upload.launcherBytes > 0) text += "; launcher, " + ReadableBytes(upload.launcherBytes);
  text += "; manifest, " + ReadableBytes(upload.manifestBytes) + "; in all " +
          (upload.archives > 0 ? "about " : "") + ReadableBytes(upload.Bytes());
  if (upload.renamed.files > 0) {
    text += "\n  of the contents " + std::to_string(upload.renamed.files) + ", " +
            ReadableBytes(upload.renamed.bytes) +
            ", are in the store under longer names of an earlier release";
  }
  if (upload.archives == 0) return text;
  text += "\n  \"about\": archives are not packed in a dry run. ";
  if (!forecast.percent) return text + "They are counted as large as their content: an upper bound";
  std::array<char, 80> percent{};
  std::snprintf(percent.data(), percent.size(), "%.1f", *forecast.percent);
  return text + "They are estimated at " + percent.data() + " % of their content, like the published ones";
}

Value JsonLargest(const VersionChanges& changes) {
  Value list = Value::MakeArray();
  for (const auto& [file, isNew] : LargestChanges(changes, kLargestListed)) {
    Value value = Value::MakeObject();
    value.Set("path", Value::MakeString(file->path));
    value.Set("bytes", JsonNumber(file->size));
    value.Set("change", Value::MakeString(isNew ? "added" : "changed"));
    list.arrayItems.push_back(std::move(value));
  }
  return list;
}

Value JsonUpload(const Upload& upload, const ArchiveForecast& forecast) {
  Value value = Value::MakeObject();
  value.Set("contents", JsonAmount(upload.contents.files, upload.contents.bytes));
  value.Set("renamed", JsonAmount(upload.renamed.files, upload.renamed.bytes));
  value.Set("archives", JsonAmount(upload.archives, upload.archiveBytes));
  value.Set("launcherBytes", JsonNumber(upload.launcherBytes));
  value.Set("manifestBytes", JsonNumber(upload.manifestBytes));
  value.Set("bytes", JsonNumber(upload.Bytes()));
  value.Set("estimate", Value::MakeBool(upload.archives > 0));
  value.Set("upperBound", Value::MakeBool(upload.archives > 0 && !forecast.percent));
  return value;
}

}  // namespace

void ReportDryRun(DryRun run, Report& report) {
  const Publication& next = run.next;
  const ArchiveForecast forecast = ForecastArchives(next.manifest, run.previous, run.store, run.limits);
  run.next.archives = forecast.archives;
  const VersionChanges changes =
      CompareVersions(run.previous != nullptr ? &run.previous->manifest : nullptr, next.manifest);
  const std::vector<DownloadRow> rows = DownloadRows(run.store, run.history, next);
  const Upload upload = UploadOf(run, forecast);

  report.Line("dry run: nothing is written");
  report.Line(
      "version " + std::to_string(next.manifest.version) +
      (run.previous != nullptr ? " after version " + std::to_string(run.previous->manifest.version) : "") +
      ": " + Counted(next.manifest.files.size(), "file"));
  report.Line(ChangesText(changes));
  report.Line(UploadText(upload, forecast));
  report.Line(DownloadTable(rows));
  report.Add("changes", JsonChanges(changes));
  report.Add("largest", JsonLargest(changes));
  report.Add("upload", JsonUpload(upload, forecast));
  report.Add("downloads", JsonDownloads(rows));
}

}  // namespace patcher::publisher
