#pragma once

#include <filesystem>
#include <string_view>

namespace platform {

enum class ExclusiveWrite {
  kPossible,  ///< the file can be replaced
  kRefused,   ///< it is in use, or may not be written, or is a directory
  kUnknown,   ///< the test itself failed, for example because there is no file
};

/// Whether `file` could be opened for writing while no other program has it open. Windows: a sharing
/// violation or a denied access is a refusal. Linux: there are no sharing violations, so only permissions and
/// directories refuse; a running program counts as kUnknown, since it can be replaced by a move.
[[nodiscard]] ExclusiveWrite ProbeExclusiveWrite(const std::filesystem::path& file);

/// Whether an existing file can be opened for writing while others have it open. Windows: not if it is
/// read-only or if another program has it open without sharing writing. Linux: permissions decide.
[[nodiscard]] bool CanBeWritten(const std::filesystem::path& file);

/// Moves a file (or, within a volume, a directory) over `target`, replacing a file there. With
/// `copyAcrossVolumes` a file is copied and deleted where the two lie on different volumes; otherwise that
/// fails. Returns 0, or the system's error number.
[[nodiscard]] int MoveReplacing(const std::filesystem::path& source, const std::filesystem::path& target,
                                bool copyAcrossVolumes);

/// Whether an error number of MoveReplacing can mean that a program holds one of the files for a moment.
/// Windows: access denied and sharing violations, which may also be permanent. Linux: never.
[[nodiscard]] bool IsHeldForAMoment(int error);
/// As MoveReplacing with `copyAcrossVolumes`, and the new entry is on the disk itself when it returns 0.
[[nodiscard]] int MoveDurably(const std::filesystem::path& source, const std::filesystem::path& target);

/// Gives a file that another one is about to replace the name `newName` in the same directory, replacing a
/// file of that name; on the disk itself when it returns 0, else the system's error number. Linux: `file`
/// keeps its old name as well if the file system has hard links, so that it is never without a file. Windows:
/// it is moved.
[[nodiscard]] int MoveAside(const std::filesystem::path& file, const std::filesystem::path& newName);

/// Copies a file over `target`, replacing what a file there held. Returns 0, or the system's error number.
/// The standard library's copy replaces nothing on Windows: it takes any two files for the same one.
[[nodiscard]] int CopyOver(const std::filesystem::path& source, const std::filesystem::path& target);

/// Gives `to` the owner, the group and the mode of `from`. Both exist. Does nothing on Windows, where the
/// rights to a file come from its directory. Returns 0, or the system's error number, for example because
/// only root may give a file to another user.
[[nodiscard]] int TakeOverOwner(const std::filesystem::path& from, const std::filesystem::path& to);

enum class Overwriting {
  kDone,       ///< the new content is on the disk
  kUntouched,  ///< the old content is still there
  kTorn,       ///< parts of both
};

/// Makes `content` the content of an existing file that cannot be replaced by a move: it stays the same file,
/// with its owner, and others may have it open as long as they share writing. Room for a longer content is
/// taken first, so that a full disk leaves the old one. After a death in between the file may be torn: the
/// caller keeps the content somewhere else until this has returned.
[[nodiscard]] Overwriting OverwriteInPlace(const std::filesystem::path& file, std::string_view content);

/// Creates a file that nobody but its owner may read (Windows: its directory decides) and brings it to the
/// disk. Returns 0, or the system's error number: that something has this name already, for example, which is
/// left as it is. No unfinished file stays.
int CreatePrivateFile(const std::filesystem::path& file, std::string_view content);

/// Brings a file's content to the disk itself. Returns 0, or the system's error number.
[[nodiscard]] int FlushToDisk(const std::filesystem::path& file);

/// Brings the entries of a directory to the disk: what was created, moved or removed in it. Returns 0, or the
/// system's error number (some file systems have no such call).
[[nodiscard]] int FlushDirectory(const std::filesystem::path& directory);

/// The file that an opening of `file` reaches: at the end of its symbolic links, if it is one. `file` itself
/// if it is none, or leads nowhere.
std::filesystem::path ResolveLinks(const std::filesystem::path& file);

}  // namespace platform
