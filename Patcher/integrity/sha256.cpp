#include "integrity/sha256.h"

#include <fstream>
#include <vector>

namespace patcher {
namespace {

constexpr std::streamsize kReadBlock = 1048576;

/// One for each thread that hashes, until it ends: a block of this size taken and returned for every file
/// would cost a small file more than its digest.
std::vector<char>& ReadBlock() {
  thread_local std::vector<char> block(kReadBlock);
  return block;
}

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
  // The block is the buffer; a second one inside the stream would only cost copies.
  in.rdbuf()->pubsetbuf(nullptr, 0);
  in.open(file, std::ios::binary);
  std::vector<char>& block = ReadBlock();
  while (in) {
    in.read(block.data(), kReadBlock);
    if (in.gcount() > 0) hash.Update(block.data(), static_cast<std::size_t>(in.gcount()));
  }
  return FinishHex(hash);
}

}  // namespace patcher
