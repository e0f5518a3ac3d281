#include "content_proof.h"

#include "publish_error.h"

namespace patcher::publisher {

bool ContentProof::IsSound(const std::string& name, std::uint64_t size, const std::string& digest,
                           FileHasher& hasher) {
  if (!store_.Has(name, size)) return false;
  {
    std::lock_guard guard(lock_);
    if (sound_.count(name) != 0) return true;
  }
  try {
    if (hasher.Read(store_.Place(name)).digest != digest) return false;
  } catch (const PublishError&) {
    return false;
  }
  store_.MakeReadable(name);
  Written(name);
  return true;
}

void ContentProof::Written(const std::string& name) {
  std::lock_guard guard(lock_);
  sound_.insert(name);
}

}  // namespace patcher::publisher
