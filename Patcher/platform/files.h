#pragma once

#include <filesystem>
#include <string_view>

namespace platform {

enum class ExclusiveWrite {
  kPossible,  ///< the file can be replaced
  kRefused,   ///< it is in use, may not be written, or is a directory
  kUnknown,   ///< the test failed, for example because there is no such file
};

/// Whether `file` can be opened for writing without sharing it. Windows: a sharing violation or denied access
/// gives kRefused. Linux has no sharing violations: only permissions and directories give kRefused. A running
/// program gives kUnknown there, because a move can replace it.
[[nodiscard]] ExclusiveWrite ProbeExclusiveWrite(const std::filesystem::path& file);

/// Whether an existing file can be opened for writing while other programs have it open. Windows: not if it
/// is read-only, or if another program has it open without sharing write access. Linux: depends on
/// permissions.
[[nodiscard]] bool CanBeWritten(const std::filesystem::path& file);

/// Moves a file (or, within a volume, a directory) over `target`, replacing a file there. If the two are on
/// different volumes, the move fails, unless `copyAcrossVolumes` is set: then the file is copied and the
/// source is deleted. Returns 0, or the system's error number.
[[nodiscard]] int MoveReplacing(const std::filesystem::path& source, const std::filesystem::path& target,
                                bool copyAcrossVolumes);

/// Whether this error number of MoveReplacing can mean that another program has one of the files open for a
/// moment. Windows: access denied and sharing violations, which can also be permanent. Linux: never.
[[nodiscard]] bool IsHeldForAMoment(int error);

/// Like MoveReplacing with `copyAcrossVolumes`, but flushes the new directory entry to the disk before it
/// returns 0.
[[nodiscard]] int MoveDurably(const std::filesystem::path& source, const std::filesystem::path& target);

/// Call this before a new file is written to this place. Removes a link, whose target must not be written to.
/// Linux: also removes a file, since programs may run it or have it mapped, and it may have other names.
void RemoveBeforeWriting(const std::filesystem::path& place);

/// Gives `file`, which is about to be replaced, the name `newName` in the same directory, replacing a file of
/// that name, and flushes the directory. Returns 0, or the system's error number. Linux: `file` also keeps
/// its old name if the file system has hard links, so that a file of that name exists at all times. Windows:
/// the file is moved.
[[nodiscard]] int MoveAside(const std::filesystem::path& file, const std::filesystem::path& newName);

/// Copies a file to `target`, replacing the content of a file there. Returns 0, or the system's error number.
/// The standard library's copy does not work on Windows: it considers any two files the same file.
[[nodiscard]] int CopyOver(const std::filesystem::path& source, const std::filesystem::path& target);

/// Gives `to` the owner, the group and the mode of `from`. Both must exist. Does nothing on Windows, where a
/// file inherits its rights from its directory. Returns 0, or the system's error number, for example because
/// only root may give a file to another user.
[[nodiscard]] int TakeOverOwner(const std::filesystem::path& from, const std::filesystem::path& to);

enum class Overwriting {
  kDone,       ///< the new content is on the disk
  kUntouched,  ///< the old content is still there
  kTorn,       ///< a mix of both
};

/// Writes `content` into an existing file that a move cannot replace. The file keeps its identity and owner,
/// and other programs may have it open if they share write access. Space for longer content is allocated
/// first, so that a full disk leaves the old content. If the process dies during the call, the file may be
/// torn: the caller keeps a copy of the content until this returns.
[[nodiscard]] Overwriting OverwriteInPlace(const std::filesystem::path& file, std::string_view content);

/// Creates a file, or replaces the content of a file there, and flushes it. Returns 0, or the system's error
/// number; a file that was written in part is removed.
[[nodiscard]] int WriteWholeFile(const std::filesystem::path& file, std::string_view content);

/// Creates a file that only its owner may read (Windows: it inherits its directory's rights) and flushes it.
/// Returns 0, or the system's error number, for example if an entry of this name exists; that entry is not
/// changed. A failed call leaves no file.
int CreatePrivateFile(const std::filesystem::path& file, std::string_view content);

/// Flushes a file's content to the disk. Returns 0, or the system's error number.
[[nodiscard]] int FlushToDisk(const std::filesystem::path& file);

/// Flushes the entries of a directory to the disk: files that were created, moved or removed in it. Returns
/// 0, or the system's error number (some file systems have no such call).
[[nodiscard]] int FlushDirectory(const std::filesystem::path& directory);

/// The target of `file` if it is a symbolic link, after all further links. `file` itself if it is not a link
/// or its target does not exist.
std::filesystem::path ResolveLinks(const std::filesystem::path& file);

}  // namespace platform
