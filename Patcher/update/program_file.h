#pragma once

#include <filesystem>

namespace patcher {

enum class ProgramFile {
  kNone,        ///< not a program for Windows or Linux by its first bytes; may be a script
  kComplete,    ///< every part that its headers name is in the file
  kIncomplete,  ///< bytes are missing, or the headers are invalid
};

/// Checks whether a program is complete by its own headers. Windows (PE/COFF): headers, sections,
/// certificates, symbols and their names. Linux (ELF, little-endian, 32 or 64 bits, "Tool Interface Standard
/// Executable and Linking Format"): both tables, segments, sections. Cannot detect that bytes after these
/// parts are missing.
[[nodiscard]] ProgramFile ExamineProgram(const std::filesystem::path& file);

/// Whether two files have the same format by their first bytes: PE, ELF or neither.
[[nodiscard]] bool HaveSameFormat(const std::filesystem::path& a, const std::filesystem::path& b);

}  // namespace patcher
