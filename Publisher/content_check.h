#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "content_store.h"
#include "file_hasher.h"
#include "findings.h"
#include "manifest_document.h"
#include "progress_line.h"

namespace patcher::publisher {

/// Reads contents of a store, each once, and compares them with what manifests and their names say.
class ContentCheck {
 public:
  ContentCheck(const ContentStore& store, Progress& progress, Findings& findings)
      : store_(store), progress_(progress), findings_(findings) {}

  /// Adds the files, archives and launcher of a manifest. `whose` begins its findings.
  void Add(const Publication& publication, const std::string& whose);
  /// Adds what else is in the store under a name that is made of a digest. Raises PublishError if the store
  /// cannot be listed.
  void AddTheRest();

  /// Reads all that was added, on all cores.
  void Run();

  /// After Run: whether the content was added and nothing is wrong with it.
  bool IsSound(const std::string& name) const;

 private:
  struct Expected {
    std::string name;
    std::string subject;
    std::optional<std::uint64_t> size;
    std::string digest;  ///< or its first digits
    bool sound = false;
  };

  void Expect(Expected expected);
  void AddLauncher(const Publication& publication, const std::string& whose);
  /// What is wrong; empty if nothing is.
  std::string Problem(const Expected& expected, FileHasher& hasher) const;

  const ContentStore& store_;
  Progress& progress_;
  Findings& findings_;
  std::vector<Expected> contents_;
  std::unordered_map<std::string, std::size_t> places_;  ///< by name: where in contents_
};

}  // namespace patcher::publisher
