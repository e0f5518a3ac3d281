#include "update/unflushed_files.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <utility>

#include "platform/batch_flush.h"
#include "platform/text.h"
#include "shared/program.h"

namespace patcher {
namespace {

std::filesystem::path PlaceOf(const InstalledFile& file) {
  return ExeDir() / platform::PathFromBytes(file.path);
}

bool StartFlush(const InstalledFile& file) { return platform::StartFlush(PlaceOf(file)) == 0; }

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
  auto ready = std::partition(batch.begin(), batch.end(), [](const Entry& entry) { return !entry.started; });
  std::vector<std::filesystem::path> places;
  places.reserve(batch.size());
  for (auto entry = ready; entry != batch.end(); ++entry) places.push_back(PlaceOf(entry->file));
  if (platform::FinishFlush(places) != 0) ready = batch.end();

  std::vector<InstalledFile> files;
  files.reserve(static_cast<std::size_t>(batch.end() - ready));
  for (auto entry = ready; entry != batch.end(); ++entry) files.push_back(std::move(entry->file));
  const platform::MutexLock guard(lock_);
  entries_.insert(entries_.end(), std::make_move_iterator(batch.begin()), std::make_move_iterator(ready));
  return files;
}

}  // namespace patcher
