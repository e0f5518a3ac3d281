#pragma once

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "platform/mutex.h"

namespace patcher::publisher {

/// The findings of a check, one sentence each. Any thread.
class Findings {
 public:
  void Add(const std::string& subject, const std::string& what) { Add(subject + ": " + what); }
  void Add(std::string finding) {
    const platform::MutexLock guard(lock_);
    findings_.push_back(std::move(finding));
  }

  /// The findings so far, sorted.
  [[nodiscard]] std::vector<std::string> Sorted() const {
    const platform::MutexLock guard(lock_);
    std::vector<std::string> findings = findings_;
    std::sort(findings.begin(), findings.end());
    return findings;
  }

 private:
  mutable platform::Mutex lock_;
  std::vector<std::string> findings_ PATCHER_GUARDED_BY(lock_);
};

}  // namespace patcher::publisher
