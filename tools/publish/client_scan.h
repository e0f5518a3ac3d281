#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace patcher {

/// One file of the client directory.
struct ClientFile {
  std::string path;  ///< as the manifest will name it
  std::filesystem::path place;
  std::uint64_t size = 0;
  std::filesystem::file_time_type changed;
};

struct ClientScan {
  std::vector<ClientFile> files;     ///< sorted by the bytes of `path`
  std::vector<std::string> skipped;  ///< paths that belong to an installation and not to the game
  std::vector<std::string> refused;  ///< a sentence for each entry that must not be published
};

/// Lists a client directory. Raises PublishError if it is missing or a part of it cannot be listed.
ClientScan ScanClient(const std::filesystem::path& client);

/// Path of the first file that two scans of a directory tell differently; empty if there is none.
std::string FirstDifference(const ClientScan& before, const ClientScan& after);

}  // namespace patcher
