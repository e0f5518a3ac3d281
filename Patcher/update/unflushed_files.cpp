#include "update/unflushed_files.h"

#include <cstddef>
#include <filesystem>
#include <utility>

#include "platform/batch_flush.h"
#include "shared/program.h"

namespace patcher {
namespace {

bool StartFlush(const InstalledFile& file) { return platform::StartFlush(InstalledPlace(file.path)) == 0; }

}  // namespace

void UnflushedFiles::Add(InstalledFile file) {
  const bool started = StartFlush(file);
  const platform::MutexLock guard(lock_);
  entries_.push_back({std::move(file), started});
}

std::vector<InstalledFile> UnflushedFiles::Flush() {
  const platform::MutexLock flushing(flushLock_);
  return FlushBatch();
}

std::vector<InstalledFile> UnflushedFiles::TryFlush() {
  if (!flushLock_.TryLock()) return {};
  const platform::MutexLock flushing(flushLock_, std::adopt_lock);
  return FlushBatch();
}

bool UnflushedFiles::IsEmpty() {
  const platform::MutexLock guard(lock_);
  return entries_.empty();
}

std::vector<InstalledFile> UnflushedFiles::FlushBatch() {
  std::vector<Entry> batch;
  {
    const platform::MutexLock guard(lock_);
    batch.swap(entries_);
  }
  // Tries again, since another program may have held a file when it was added.
  for (Entry& entry : batch) entry.started = entry.started || StartFlush(entry.file);
  std::vector<std::filesystem::path> places;
  places.reserve(batch.size());
  for (const Entry& entry : batch) places.push_back(InstalledPlace(entry.file.path));
  const std::vector<bool> flushed = platform::FinishFlush(places);

  std::vector<InstalledFile> files;
  files.reserve(batch.size());
  const platform::MutexLock guard(lock_);
  for (std::size_t i = 0; i < batch.size(); ++i) {
    if (batch[i].started && flushed[i]) {
      files.push_back(std::move(batch[i].file));
    } else {
      entries_.push_back(std::move(batch[i]));
    }
  }
  return files;
}

}  // namespace patcher
