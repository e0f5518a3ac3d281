#pragma once

#include <cstdint>
#include <string>

#include "shared/site.h"

namespace patcher {

/// The launcher's own configuration. The main thread sets it before any worker exists; read-only afterwards.
struct PatchConfig {
  std::string baseUrl = kDefaultBaseUrl;  ///< scheme, host and optional port of the patch server
  std::int32_t connections = 4;           ///< parallel connections, 1 to 8

  /// The configuration of this process.
  static PatchConfig& Current();

  /// Reads patcher.ini in ExeDir into Current(), or creates the file with the defaults if there is none. The
  /// defaults also apply for invalid values and if the file cannot be read. Never changes an existing file.
  static void Load();

  /// Applies the lines "BaseUrl=" and "Connections=" of a patcher.ini; the last valid value counts. All other
  /// lines are ignored.
  void Apply(const std::string& text);
};

}  // namespace patcher
