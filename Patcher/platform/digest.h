#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace platform {

/// An open SHA-256 provider. Not shared between threads.
class DigestProvider {
 public:
  /// Raises std::runtime_error "BCryptOpenAlgorithmProvider failed" when the system has no SHA-256.
  DigestProvider();
  ~DigestProvider();
  DigestProvider(const DigestProvider&) = delete;
  DigestProvider& operator=(const DigestProvider&) = delete;

  /// Bytes of working memory that the caller gives to each DigestHash. 0 if the system allocates its own.
  std::uint32_t ObjectLength() const { return objectLength_; }
  /// Bytes of a finished digest: 32.
  std::uint32_t DigestLength() const { return digestLength_; }

 private:
  friend class DigestHash;
  void* handle_ = nullptr;
  std::uint32_t objectLength_ = 0;
  std::uint32_t digestLength_ = 0;
};

/// One running hash. Used by one thread. The provider and the working memory must outlive it.
class DigestHash {
 public:
  DigestHash(const DigestProvider& provider, std::span<std::uint8_t> workingMemory);
  ~DigestHash();
  DigestHash(DigestHash&& other) noexcept;
  DigestHash& operator=(DigestHash&&) = delete;

  void Update(const void* data, std::size_t size);

  /// Writes DigestLength() bytes and releases the hash. No method may be called after this.
  void Finish(std::span<std::uint8_t> digest);

 private:
  void Release();
  void* handle_ = nullptr;
};

}  // namespace platform
