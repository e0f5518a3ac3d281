#include <windows.h>

#include "platform/digest.h"

#include <stdexcept>
#include <utility>

#include <bcrypt.h>

namespace platform {
namespace {

std::uint32_t Property(BCRYPT_ALG_HANDLE algorithm, const wchar_t* name) {
  ULONG value = 0;
  ULONG size = 0;
  BCryptGetProperty(algorithm, name, reinterpret_cast<PUCHAR>(&value), sizeof value, &size, 0);
  return value;
}

}  // namespace

DigestProvider::DigestProvider() {
  if (BCryptOpenAlgorithmProvider(&handle_, L"SHA256", nullptr, 0) != 0) {
    throw std::runtime_error("BCryptOpenAlgorithmProvider failed");
  }
  objectLength_ = Property(handle_, L"ObjectLength");
  digestLength_ = Property(handle_, L"HashDigestLength");
}

DigestProvider::~DigestProvider() {
  if (handle_ != nullptr) BCryptCloseAlgorithmProvider(handle_, 0);
}

DigestHash::DigestHash(const DigestProvider& provider, std::span<std::uint8_t> workingMemory) {
  BCryptCreateHash(provider.handle_, &handle_, workingMemory.data(), static_cast<ULONG>(workingMemory.size()),
                   nullptr, 0, 0);
}

DigestHash::DigestHash(DigestHash&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}

DigestHash::~DigestHash() { Release(); }

void DigestHash::Release() {
  if (handle_ != nullptr) BCryptDestroyHash(std::exchange(handle_, nullptr));
}

void DigestHash::Update(const void* data, std::size_t size) {
  BCryptHashData(handle_, static_cast<PUCHAR>(const_cast<void*>(data)), static_cast<ULONG>(size), 0);
}

void DigestHash::Finish(std::span<std::uint8_t> digest) {
  BCryptFinishHash(handle_, digest.data(), static_cast<ULONG>(digest.size()), 0);
  Release();
}

}  // namespace platform
