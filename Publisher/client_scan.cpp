#include "client_scan.h"

#include <algorithm>
#include <system_error>

#include "client_names.h"
#include "platform/links.h"
#include "platform/text.h"
#include "publish_error.h"

namespace patcher::publisher {
namespace {

namespace fs = std::filesystem;

/// The path as text for a message, with invalid UTF-8 replaced.
std::string Printable(std::string_view path) { return platform::WideToUtf8(platform::Utf8ToWide(path)); }

class Scanner {
 public:
  explicit Scanner(Exclusions& exclusions) : exclusions_(exclusions) {}

  void ScanDirectory(const fs::path& directory, const std::string& prefix) {
    std::error_code error;
    for (fs::directory_iterator entry(directory, error), end; !error && entry != end;
         entry.increment(error)) {
      TakeEntry(*entry, prefix + platform::Utf8FromPath(entry->path().filename()));
    }
    if (error) throw FileError("cannot list", directory, error);
  }

  ClientScan Finish() {
    std::sort(scan_.files.begin(), scan_.files.end(),
              [](const ClientFile& a, const ClientFile& b) { return a.path < b.path; });
    std::sort(scan_.skipped.begin(), scan_.skipped.end(),
              [](const SkippedEntry& a, const SkippedEntry& b) { return a.path < b.path; });
    std::vector<std::string_view> paths;
    for (const ClientFile& file : scan_.files) paths.push_back(file.path);
    for (std::string& clash : PathClashes(paths)) scan_.refused.push_back(std::move(clash));
    std::sort(scan_.refused.begin(), scan_.refused.end());
    return std::move(scan_);
  }

 private:
  void TakeEntry(const fs::directory_entry& entry, const std::string& path) {
    std::error_code error;
    const fs::file_status status = entry.symlink_status(error);
    if (error) throw FileError("cannot read the status of", entry.path(), error);
    const bool isDirectory = fs::is_directory(status);
    std::string reason = exclusions_.Reason(path, isDirectory);
    if (!reason.empty()) {
      scan_.skipped.push_back({Printable(path), std::move(reason)});
      return;
    }
    if (platform::IsLink(entry.path())) return Refuse(path, "is a link, or cannot be examined");
    if (!isDirectory && !fs::is_regular_file(status))
      return Refuse(path, "is neither a file nor a directory");
    std::string problem = NameProblem(path);
    if (!problem.empty()) return Refuse(path, problem);
    if (isDirectory) return ScanDirectory(entry.path(), path + '/');
    ClientFile file{path, entry.path(), entry.file_size(error), {}};
    if (!error) file.changed = entry.last_write_time(error);
    if (error) throw FileError("cannot read the status of", entry.path(), error);
    scan_.files.push_back(std::move(file));
  }

  void Refuse(const std::string& path, const std::string& reason) {
    scan_.refused.push_back(Printable(path) + " " + reason);
  }

  Exclusions& exclusions_;
  ClientScan scan_;
};

}  // namespace

ClientScan ScanClient(const fs::path& client, Exclusions& exclusions) {
  Scanner scanner(exclusions);
  scanner.ScanDirectory(client, "");
  return scanner.Finish();
}

std::string FirstDifference(const ClientScan& before, const ClientScan& after) {
  const auto same = [](const ClientFile& a, const ClientFile& b) {
    return a.path == b.path && a.size == b.size && a.changed == b.changed;
  };
  const auto [a, b] =
      std::mismatch(before.files.begin(), before.files.end(), after.files.begin(), after.files.end(), same);
  if (a == before.files.end()) return b == after.files.end() ? std::string() : b->path;
  return b != after.files.end() && b->path < a->path ? b->path : a->path;
}

}  // namespace patcher::publisher
