#include "integrity/sha256.h"

#include <fstream>
#include <memory>

namespace patcher {
namespace {

constexpr std::streamsize kReadBlock = 1048576;

}  // namespace

platform::DigestHash Sha256::BeginHash() {
  hashObjects_.emplace_back(algorithm_.ObjectLength());
  return platform::DigestHash(algorithm_, hashObjects_.back());
}

std::string Sha256::FinishHex(platform::DigestHash& hash) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::vector<std::uint8_t> digest(algorithm_.DigestLength());
  hash.Finish(digest);
  if (!hashObjects_.empty()) hashObjects_.pop_back();
  std::string hex;
  hex.reserve(2 * digest.size());
  for (std::uint8_t byte : digest) {
    hex += kDigits[byte >> 4];
    hex += kDigits[byte & 15];
  }
  return hex;
}

std::string Sha256::HashFile(const std::filesystem::path& file) {
  platform::DigestHash hash = BeginHash();
  std::ifstream in;
  // The block below is the buffer; a second one inside the stream would only cost copies.
  in.rdbuf()->pubsetbuf(nullptr, 0);
  in.open(file, std::ios::binary);
  // Not zeroed: only pages that a read fills are ever touched, which matters for many small files.
  auto block = std::make_unique_for_overwrite<char[]>(kReadBlock);
  while (in) {
    in.read(block.get(), kReadBlock);
    if (in.gcount() > 0) hash.Update(block.get(), static_cast<std::size_t>(in.gcount()));
  }
  return FinishHex(hash);
}

}  // namespace patcher
