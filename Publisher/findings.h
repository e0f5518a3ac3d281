#pragma once

#include <algorithm>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace patcher::publisher {

/// What a check has found, a sentence each. Any thread.
class Findings {
 public:
  void Add(const std::string& subject, const std::string& what) { Add(subject + ": " + what); }
  void Add(std::string finding) {
    std::lock_guard guard(lock_);
    findings_.push_back(std::move(finding));
  }

  /// Call when all has been added.
  std::vector<std::string> Sorted() const {
    std::vector<std::string> findings = findings_;
    std::sort(findings.begin(), findings.end());
    return findings;
  }

 private:
  std::mutex lock_;  ///< guards findings_
  std::vector<std::string> findings_;
};

}  // namespace patcher::publisher
