#include "content_store.h"

#include <fstream>
#include <system_error>

#include "platform/files.h"
#include "platform/text.h"
#include "publish_error.h"

namespace patcher {
namespace {

namespace fs = std::filesystem;

constexpr char kWorkFolder[] = ".publish";
/// Enough of a digest to tell archives apart for ever.
constexpr std::size_t kArchiveDigits = 16;

void MakeFolder(const fs::path& folder) {
  std::error_code error;
  fs::create_directories(folder, error);
  if (error) throw PublishError("cannot make " + platform::Utf8FromPath(folder) + ": " + error.message());
}

}  // namespace

ContentStore::ContentStore(const fs::path& www) : root_(www / "patch") {}

std::string ContentStore::FileName(const std::string& digest) {
  return "files/" + digest.substr(0, 2) + "/" + digest;
}
std::string ContentStore::ArchiveName(std::int32_t since, const std::string& digest) {
  return "archives/v" + std::to_string(since) + "-" + digest.substr(0, kArchiveDigits) + ".zip";
}
std::string ContentStore::LauncherName(const std::string& digest) { return "launcher/" + digest + ".exe"; }

fs::path ContentStore::Place(std::string_view name) const { return root_ / platform::PathFromUtf8(name); }

bool ContentStore::Has(std::string_view name, std::uint64_t size) const {
  std::error_code error;
  const fs::path place = Place(name);
  return fs::is_regular_file(place, error) && fs::file_size(place, error) == size && !error;
}

void ContentStore::OpenForWriting() {
  RemoveWorkFolder();
  for (const char* folder : {kWorkFolder, "files", "archives", "launcher", "history"})
    MakeFolder(root_ / folder);
}

fs::path ContentStore::WorkFile(std::string_view key) const {
  return root_ / kWorkFolder / platform::PathFromUtf8(key);
}

void ContentStore::PutInPlace(const fs::path& workFile, const fs::path& place) const {
  MakeFolder(place.parent_path());
  const int error = platform::MoveReplacing(workFile, place, false);
  if (error != 0) {
    throw PublishError("cannot move a file to " + platform::Utf8FromPath(place) + ": " +
                       std::system_category().message(error));
  }
}

void ContentStore::WriteDocument(const fs::path& place, std::string_view text) const {
  const fs::path unfinished = WorkFile("document");
  std::ofstream out(unfinished, std::ios::binary | std::ios::trunc);
  out.write(text.data(), static_cast<std::streamsize>(text.size()));
  out.close();
  if (!out || platform::FlushToDisk(unfinished) != 0) {
    throw PublishError("cannot write " + platform::Utf8FromPath(unfinished));
  }
  PutInPlace(unfinished, place);
  platform::FlushToDisk(place.parent_path());
}

void ContentStore::FlushNames() const {
  std::error_code error;
  for (fs::directory_iterator entry(root_ / "files", error), end; !error && entry != end;
       entry.increment(error)) {
    platform::FlushToDisk(entry->path());
  }
  for (const char* folder : {"files", "archives", "launcher"}) platform::FlushToDisk(root_ / folder);
  platform::FlushToDisk(root_);
}

void ContentStore::RemoveWorkFolder() const noexcept {
  std::error_code ignored;
  fs::remove_all(root_ / kWorkFolder, ignored);
}

}  // namespace patcher
