#include "platform/digest.h"

#include <stdexcept>
#include <utility>

#include <openssl/evp.h>

namespace platform {
namespace {

EVP_MD* Algorithm(void* handle) { return static_cast<EVP_MD*>(handle); }
EVP_MD_CTX* Context(void* handle) { return static_cast<EVP_MD_CTX*>(handle); }

}  // namespace

DigestProvider::DigestProvider() : handle_(EVP_MD_fetch(nullptr, "SHA256", nullptr)) {
  // The message is the same on every system.
  if (handle_ == nullptr) throw std::runtime_error("BCryptOpenAlgorithmProvider failed");
  digestLength_ = static_cast<std::uint32_t>(EVP_MD_get_size(Algorithm(handle_)));
}

DigestProvider::~DigestProvider() { EVP_MD_free(Algorithm(handle_)); }

DigestHash::DigestHash(const DigestProvider& provider, std::span<std::uint8_t>) : handle_(EVP_MD_CTX_new()) {
  if (handle_ != nullptr) EVP_DigestInit_ex2(Context(handle_), Algorithm(provider.handle_), nullptr);
}

DigestHash::DigestHash(DigestHash&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}

DigestHash::~DigestHash() { Release(); }

void DigestHash::Release() { EVP_MD_CTX_free(Context(std::exchange(handle_, nullptr))); }

void DigestHash::Update(const void* data, std::size_t size) {
  EVP_DigestUpdate(Context(handle_), data, size);
}

void DigestHash::Finish(std::span<std::uint8_t> digest) {
  EVP_DigestFinal_ex(Context(handle_), digest.data(), nullptr);
  Release();
}

}  // namespace platform
