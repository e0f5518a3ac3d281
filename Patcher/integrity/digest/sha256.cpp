#include "integrity/digest/sha256.h"

#include "shared/hex.h"

namespace patcher {
namespace {

constexpr std::size_t kBlockSize = 1048576;  // bytes

}  // namespace

platform::DigestHash Sha256::BeginHash() {
  hashObjects_.emplace_back(algorithm_.ObjectLength());
  return platform::DigestHash(algorithm_, hashObjects_.back());
}

std::string Sha256::FinishHex(platform::DigestHash& hash) {
  std::vector<std::uint8_t> digest(algorithm_.DigestLength());
  hash.Finish(digest);
  if (!hashObjects_.empty()) hashObjects_.pop_back();
  return ToHex(digest);
}

std::string Sha256::HashFile(const std::filesystem::path& file) {
  platform::FileReader reader(file);
  bool complete = false;
  return HashFile(reader, complete);
}

std::string Sha256::HashFile(platform::FileReader& file, bool& complete) {
  if (block_ == nullptr) block_ = std::make_unique_for_overwrite<char[]>(kBlockSize);
  platform::DigestHash hash = BeginHash();
  complete = file.Size().has_value();
  for (std::size_t count = kBlockSize; complete && count == kBlockSize;) {
    complete = file.Read(block_.get(), kBlockSize, count);
    if (count > 0) hash.Update(block_.get(), count);
  }
  return FinishHex(hash);
}

}  // namespace patcher
