#pragma once

#include <filesystem>

namespace patcher {

enum class ProgramFile {
  kNone,   ///< no program for Windows or Linux by its first bytes, a script for example
  kWhole,  ///< everything that its headers name is in the file
  kCut,    ///< bytes are missing, or the headers make no sense
};

/// Examines a program by its own headers. Windows (PE/COFF): headers, sections, certificates, symbols with
/// their names. Linux (ELF, little-endian, 32 or 64 bits, "Tool Interface Standard Executable and Linking
/// Format"): both tables, segments, sections. Bytes after all of these cannot be missed.
[[nodiscard]] ProgramFile ExamineProgram(const std::filesystem::path& file);

}  // namespace patcher
