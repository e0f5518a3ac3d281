#include "document_check.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "client_names.h"
#include "update/manifest_paths.h"

namespace patcher::publisher {
namespace {

void CheckFile(const PatchFile& file, Findings& findings) {
  const std::string subject = "file " + file.path;
  const std::string problem = NameProblem(file.path);
  if (!problem.empty()) findings.Add(subject, "its path " + problem);
  const std::size_t slash = file.path.find('/');
  if (BelongsToInstallation(file.path, false) ||
      (slash != std::string::npos && BelongsToInstallation(file.path.substr(0, slash), true))) {
    findings.Add(subject, "the name belongs to the launcher or the player");
  }
  if (!IsDigest(file.sha256)) findings.Add(subject, "its digest is not a lower-case SHA-256");
  if (file.url.empty() || !StaysInside(file.url)) findings.Add(subject, "it has no name below /patch/");
}

void CheckFiles(const std::vector<PatchFile>& files, Findings& findings) {
  std::vector<std::string_view> paths;
  for (const PatchFile& file : files) {
    CheckFile(file, findings);
    paths.push_back(file.path);
  }
  if (!std::is_sorted(paths.begin(), paths.end())) {
    findings.Add("the manifest's files are not sorted by path");
  }
  for (const std::string& clash : PathClashes(paths)) findings.Add("file " + clash);
}

void CheckArchives(const Publication& publication, Findings& findings) {
  std::unordered_set<std::string_view> files;
  for (const PatchFile& file : publication.manifest.files) files.insert(file.path);
  std::unordered_map<std::string_view, std::string_view> owners;
  for (const PublishedArchive& archive : publication.archives) {
    const PatchBundle& bundle = archive.bundle;
    const std::string subject = "archive " + bundle.name;
    if (!IsDigest(bundle.sha256)) findings.Add(subject, "its digest is not a lower-case SHA-256");
    if (!StaysInside(bundle.name)) findings.Add(subject, "it has no name below /patch/");
    for (const std::string& path : bundle.files) {
      const auto [owner, added] = owners.emplace(path, bundle.name);
      if (!added) {
        findings.Add(subject, "it lists " + path + ", which " + std::string(owner->second) + " lists too");
      }
      if (files.count(path) == 0) {
        findings.Add(subject, "it lists " + path + ", which is not in the manifest");
      }
      if (!MayBeInArchive(path)) findings.Add(subject, "launchers do not extract " + path);
    }
  }
}

}  // namespace

void CheckDocument(const Publication& publication, Findings& findings) {
  if (publication.manifest.version < 1) findings.Add("the manifest has no version");
  CheckFiles(publication.manifest.files, findings);
  CheckArchives(publication, findings);
}

}  // namespace patcher::publisher
