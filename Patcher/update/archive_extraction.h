#pragma once

#include <atomic>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

namespace patcher {

/// Counts the extracting threads of all archives. Any thread.
class ExtractingThreads {
 public:
  explicit ExtractingThreads(int limit) : limit_(limit) {}

  /// For the first thread of an archive, which the limit does not apply to.
  void Join() { ++count_; }
  /// For an additional thread. False if the limit is reached.
  [[nodiscard]] bool TryJoin();
  void Leave() { --count_; }

  /// Whether an additional thread should leave, because another archive has started.
  bool AreTooMany() const { return count_ > limit_; }

 private:
  const int limit_;
  std::atomic<int> count_{0};
};

/// Extracts the wanted entries of a ZIP archive to their places below the install directory, on the caller's
/// thread and on as many additional threads as `threads` allows. Skips directories, entries without a name,
/// and names that could leave the install directory. Tries every entry before a failed one, and starts no
/// entry after it. Of two entries with the same name the later one wins. Two different names of one file must
/// not both be wanted. Calls `wanted` on the caller's thread. Returns false if the archive cannot be read
/// (`failure` is "archive illisible") or an entry cannot be extracted (`failure` is the name of the first one
/// in the archive's order). Then files may be half-written in their places.
[[nodiscard]] bool ExtractArchive(const std::filesystem::path& archive,
                                  const std::function<bool(std::string_view path)>& wanted,
                                  ExtractingThreads& threads, std::string& failure);

}  // namespace patcher
