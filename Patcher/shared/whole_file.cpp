#include "shared/whole_file.h"

#include <system_error>

#include "platform/files.h"

namespace patcher {

namespace fs = std::filesystem;

int ReplaceWholeFile(const fs::path& file, std::string_view text) {
  fs::path part = file;
  part += ".part";
  std::error_code ignored;
  // Remove the entry first: it may be a link, whose target must not be overwritten.
  fs::remove(part, ignored);
  int error = platform::WriteWholeFile(part, text);
  if (error == 0) error = platform::MoveReplacing(part, file, false);
  if (error != 0) {
    fs::remove(part, ignored);
    return error;
  }
  // Some file systems cannot flush a directory. The move still reaches the disk before later changes.
  static_cast<void>(platform::FlushDirectory(file.parent_path()));
  return 0;
}

bool RemoveFile(const fs::path& file) {
  std::error_code error;
  if (!fs::remove(file, error) && error) {
    fs::permissions(file, fs::perms::owner_write, fs::perm_options::add, error);
    fs::remove(file, error);
  }
  // Some file systems cannot flush a directory.
  static_cast<void>(platform::FlushDirectory(file.parent_path()));
  const fs::file_type left = fs::symlink_status(file, error).type();
  return left == fs::file_type::not_found || left == fs::file_type::directory;
}

}  // namespace patcher
