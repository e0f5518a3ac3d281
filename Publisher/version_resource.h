#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace patcher::publisher {

/// The version and name in a Windows program.
struct ProgramVersion {
  std::array<std::uint16_t, 4> numbers{};  ///< of the file, as in 1.26.0.0
  std::string internalName;                ///< empty if there is none; '?' for characters that are not ASCII
};

/// Reads the version resource (RT_VERSION, the first language) of a complete PE file, 32 or 64 bits. Accepts
/// any bytes. Returns nothing if they are not a PE file, if a section is cut, or if there is no such
/// resource. Formats: Microsoft's "PE Format", and VS_VERSIONINFO of the Windows SDK.
[[nodiscard]] std::optional<ProgramVersion> ReadProgramVersion(std::span<const std::uint8_t> program);

}  // namespace patcher::publisher
