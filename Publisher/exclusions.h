#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "name_pattern.h"

namespace patcher::publisher {

/// A file in the client directory with one pattern in each line; "#" starts a comment.
inline constexpr char kIgnoreFile[] = ".publishignore";

/// Decides which entries are not published: those that belong to an installation, those that belong in no
/// client, and those that match the publisher's patterns. If a folder is excluded, so is its content.
class Exclusions {
 public:
  /// Also reads the patterns of the client's ignore file. Raises PublishError if it cannot be read.
  Exclusions(const std::filesystem::path& client, const std::vector<std::string>& patterns);

  /// Why the entry is not published, for a notice; empty if it is published. `path` is relative to the
  /// client.
  [[nodiscard]] std::string Reason(std::string_view path, bool isDirectory);

  /// The patterns that have not matched in a call of Reason so far.
  [[nodiscard]] std::vector<std::string> Unused() const;

 private:
  struct Rule {
    std::string name;
    NamePattern pattern;
    bool used = false;
  };

  void ReadIgnoreFile(const std::filesystem::path& file);

  std::vector<Rule> rules_;
};

}  // namespace patcher::publisher
