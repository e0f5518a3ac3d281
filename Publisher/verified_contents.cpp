#include "verified_contents.h"

#include "publish_error.h"

namespace patcher::publisher {

bool VerifiedContents::IsSound(const std::string& name, std::uint64_t size, const std::string& digest,
                               FileHasher& hasher) {
  if (!store_.Has(name, size)) return false;
  {
    const platform::MutexLock guard(lock_);
    if (sound_.count(name) != 0) return true;
  }
  try {
    if (hasher.Read(store_.Place(name)).digest != digest) return false;
  } catch (const PublishError&) {
    return false;
  }
  store_.MakeReadable(name);
  MarkSound(name);
  return true;
}

void VerifiedContents::MarkSound(const std::string& name) {
  const platform::MutexLock guard(lock_);
  sound_.insert(name);
}

}  // namespace patcher::publisher
