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

/// Reads contents of a store, each once, and compares them with the sizes and digests in manifests and with
/// their names.
class ContentCheck {
 public:
  ContentCheck(const ContentStore& store, Progress& progress, Findings& findings)
      : store_(store), progress_(progress), findings_(findings) {}

  /// Adds the files, archives and launcher of a manifest. Its findings begin with `whose`.
  void Add(const Publication& publication, const std::string& whose);
  /// Adds all other files in the store with a digest in their name. Raises PublishError if the store cannot
  /// be listed.
  void AddOtherContents();

  /// Reads all added contents, on all cores.
  void Run();

  /// Call this after Run. Whether the content was added and has no problem.
  [[nodiscard]] bool IsSound(const std::string& name) const;

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
  /// The problem of a content; empty if there is none.
  [[nodiscard]] std::string Problem(const Expected& expected, FileHasher& hasher) const;

  const ContentStore& store_;
  Progress& progress_;
  Findings& findings_;
  std::vector<Expected> contents_;
  std::unordered_map<std::string, std::size_t> places_;  ///< indexes in contents_, by name
};

}  // namespace patcher::publisher
