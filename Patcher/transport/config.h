#pragma once

#include <cstdint>
#include <string>

#include "shared/site.h"

namespace patcher {

/// The launcher's own configuration. Filled on the main thread before any worker exists, then read-only.
struct PatchConfig {
  std::string baseUrl = kDefaultBaseUrl;  ///< scheme, host and optional port of the patch server
  std::int32_t connections = 4;           ///< parallel connections, 1 to 8

  /// The process-wide record.
  static PatchConfig& Current();

  /// Reads patcher.ini in ExeDir into the process-wide record, or creates the file with the defaults if there
  /// is none. A value that is not accepted, and a file that exists but cannot be read, leave the defaults; an
  /// existing file is never written to.
  static void Load();

  /// Applies the lines of a patcher.ini: "BaseUrl=" and "Connections=", the last accepted value counts; all
  /// others are ignored.
  void Apply(const std::string& text);
};

}  // namespace patcher
