#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "exclusions.h"

namespace patcher::publisher {

/// One file of the client directory.
struct ClientFile {
  std::string path;  ///< path in the manifest
  std::filesystem::path place;
  std::uint64_t size = 0;
  std::filesystem::file_time_type changed;
};

/// An entry that is not published. If it is a directory, neither is its content.
struct SkippedEntry {
  std::string path;
  std::string reason;
};

struct ClientScan {
  std::vector<ClientFile> files;      ///< sorted by the bytes of `path`
  std::vector<SkippedEntry> skipped;  ///< sorted by `path`
  std::vector<std::string> refused;   ///< a sentence for each entry that must not be published
};

/// Lists a client directory. Raises PublishError if it is missing or one of its directories cannot be listed.
[[nodiscard]] ClientScan ScanClient(const std::filesystem::path& client, Exclusions& exclusions);

/// The path of the first file in which two scans of a directory differ; empty if they are equal.
[[nodiscard]] std::string FirstDifference(const ClientScan& before, const ClientScan& after);

}  // namespace patcher::publisher
