#include "archive_check.h"

#include <cstdint>
#include <string_view>
#include <unordered_map>

#include "update/archive_directory.h"
#include "update/archive_reader.h"

namespace patcher::publisher {
namespace {

namespace fs = std::filesystem;

/// The digest of an entry's content; empty if it cannot be extracted.
std::string EntryDigest(ArchiveReader& archive, std::uint32_t entry, FileHasher& hasher) {
  platform::DigestHash hash = hasher.Digests().BeginHash();
  const bool extracted = archive.Read(entry, [&](const void* bytes, std::size_t size) {
    hash.Update(bytes, size);
    hasher.Count(size);
  });
  std::string digest = hasher.Digests().FinishHex(hash);
  return extracted ? digest : std::string();
}

}  // namespace

std::vector<std::string> ArchiveFindings(const fs::path& archive,
                                         const std::vector<const PatchFile*>& expected, FileHasher& hasher) {
  std::vector<std::string> unreadable = {"is not a readable ZIP archive"};
  if (!ArchiveDirectoryIsSound(archive)) return unreadable;
  ArchiveReader reader(archive);
  if (!reader.IsOpen()) return unreadable;
  std::vector<std::string> findings;
  std::unordered_map<std::string_view, const PatchFile*> missing;
  for (const PatchFile* file : expected) missing.emplace(file->path, file);
  for (std::uint32_t entry = 0; entry < reader.EntryCount(); ++entry) {
    const std::string name = reader.Name(entry);
    const auto file = missing.find(name);
    if (file == missing.end()) {
      findings.push_back("contains the entry " + name + ", which is not listed or is there twice");
      continue;
    }
    const std::string digest = EntryDigest(reader, entry, hasher);
    if (digest.empty()) {
      findings.push_back("contains the entry " + name + ", which cannot be extracted");
    } else if (digest != file->second->sha256) {
      findings.push_back("contains the entry " + name + " with another content");
    }
    missing.erase(file);
  }
  for (const PatchFile* file : expected) {
    if (missing.count(file->path) != 0) findings.push_back("does not contain the entry " + file->path);
  }
  return findings;
}

}  // namespace patcher::publisher
