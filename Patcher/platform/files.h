#pragma once

#include <filesystem>

namespace platform {

enum class ExclusiveWrite {
  kPossible,  ///< the file can be replaced
  kRefused,   ///< somebody uses it, or it may not be written, or a directory stands there
  kUnknown,   ///< the question itself failed, for example because nothing is there
};

/// Whether `file` could be opened for writing with nobody else having it open. Windows: a sharing violation
/// or a denied access is a refusal. Linux: there are no sharing violations, so only permissions and
/// directories refuse; a running program counts as kUnknown, since it can be replaced by a move.
ExclusiveWrite ProbeExclusiveWrite(const std::filesystem::path& file);

/// Moves a file (or, within a volume, a directory) over `target`, replacing a file that stands there. With
/// `copyAcrossVolumes` a file is copied and deleted where the two lie on different volumes; otherwise that
/// fails. Returns 0, or the system's error number.
int MoveReplacing(const std::filesystem::path& source, const std::filesystem::path& target,
                  bool copyAcrossVolumes);

/// Copies a file over `target`, replacing what a file there held. Returns 0, or the system's error number.
/// The standard library's copy replaces nothing on Windows: it takes any two files for the same one.
int CopyOver(const std::filesystem::path& source, const std::filesystem::path& target);

/// Brings a file's content to the disk itself. Returns 0, or the system's error number.
int FlushToDisk(const std::filesystem::path& file);

/// Brings the entries of a directory to the disk: what was created, moved or removed in it. Returns 0, or the
/// system's error number (some file systems have no such call).
int FlushDirectory(const std::filesystem::path& directory);

/// The file that an opening of `file` reaches: at the end of its symbolic links, if it is one. `file` itself
/// if it is none, or leads nowhere.
std::filesystem::path ResolveLinks(const std::filesystem::path& file);

}  // namespace platform
