// ArchivePacker in builds without libdeflate.
#include "archive_packer.h"

namespace patcher::publisher {

struct ArchivePacker::State {};

ArchivePacker::ArchivePacker() = default;
ArchivePacker::~ArchivePacker() = default;

std::optional<ArchivePacker::Entry> ArchivePacker::Pack(const std::filesystem::path&, std::uint64_t) {
  return std::nullopt;
}

}  // namespace patcher::publisher
