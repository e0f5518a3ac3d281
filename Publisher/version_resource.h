#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace patcher::publisher {

/// What a Windows program says about itself.
struct ProgramVersion {
  std::array<std::uint16_t, 4> numbers{};  ///< of the file, as in 1.26.0.0
  std::string internalName;                ///< empty if there is none; other characters than ASCII are '?'
};

/// Reads the version resource (RT_VERSION, the first language) of a whole PE file, 32 or 64 bits. Nothing if
/// the bytes are no such file, if one of its sections is cut, or if it has no such resource. Any bytes will
/// do. Format: "Microsoft Portable Executable and Common Object File Format Specification", and
/// VS_VERSIONINFO of the Windows SDK.
std::optional<ProgramVersion> ReadProgramVersion(std::span<const std::uint8_t> program);

}  // namespace patcher::publisher
