#pragma once

#include <atomic>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

namespace patcher {

/// Counts the threads that extract, over all archives that are being extracted. Any thread.
class ExtractingThreads {
 public:
  explicit ExtractingThreads(int limit) : limit_(limit) {}

  /// For the one thread that every archive has, whatever the limit.
  void Join() { ++count_; }
  /// For a further thread. False if the limit is reached.
  [[nodiscard]] bool TryJoin();
  void Leave() { --count_; }

  /// Whether a further thread should leave, since another archive has begun.
  bool AreTooMany() const { return count_ > limit_; }

 private:
  const int limit_;
  std::atomic<int> count_{0};
};

/// Extracts the wanted entries of a ZIP archive to their places below the install directory, on the caller's
/// thread and on as many more as `threads` lets join. Directories, nameless entries and names that could
/// leave the install directory are skipped. Every entry before a failed one is tried, and none after it is
/// begun any more. Of two entries with the same name the later one stays. Two names of one file
/// must not both be wanted. `wanted` is called on the caller's thread.
/// False if the archive cannot be read ("archive illisible") or an entry cannot be extracted (the name of the
/// first one in the archive's order); files may then be half-written in their places.
[[nodiscard]] bool ExtractArchive(const std::filesystem::path& archive,
                                  const std::function<bool(std::string_view path)>& wanted,
                                  ExtractingThreads& threads, std::string& failure);

}  // namespace patcher
