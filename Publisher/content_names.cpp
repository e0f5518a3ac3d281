#include "content_names.h"

#include "content_store.h"

namespace patcher::publisher {

void ContentNames::Add(const Publication& publication) {
  const platform::MutexLock guard(lock_);
  for (const PatchFile& file : publication.manifest.files) owners_.emplace(file.url, file.sha256);
}

std::string ContentNames::NameOf(const std::string& digest) {
  std::string name = ContentStore::FileName(digest);
  const platform::MutexLock guard(lock_);
  const auto owner = owners_.emplace(name, digest).first;
  return owner->second == digest ? name : ContentStore::LongFileName(digest);
}

}  // namespace patcher::publisher
