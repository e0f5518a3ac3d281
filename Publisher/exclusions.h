#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "name_pattern.h"

namespace patcher::publisher {

/// The file in a client directory that lists patterns, one a line; "#" begins a comment.
inline constexpr char kIgnoreFile[] = ".publishignore";

/// What stays out of a publication: what belongs to an installation, what belongs in no client at all, and
/// what the publisher's patterns name. A folder stays out with all that is in it.
class Exclusions {
 public:
  /// Adds the patterns of the client's ignore file. Raises PublishError if that cannot be read.
  Exclusions(const std::filesystem::path& client, const std::vector<std::string>& patterns);

  /// Why the entry stays out, for a notice; empty if it is to be published. `path` is relative to the client.
  std::string Reason(std::string_view path, bool isDirectory);

  /// Patterns for which Reason has found nothing so far.
  std::vector<std::string> Unused() const;

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
