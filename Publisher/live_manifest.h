#pragma once

#include <functional>
#include <optional>
#include <string>

#include "content_store.h"
#include "history.h"
#include "manifest_document.h"
#include "progress_line.h"

namespace patcher::publisher {

/// Reads the manifest that players get; nothing if there is none. Raises PublishError if it is damaged.
[[nodiscard]] std::optional<Publication> ReadManifest(const ContentStore& store);

/// Reads the manifest that players get; nothing if no version is live. If it is missing but the history has
/// versions that were live, returns the latest of them, and writes it as the manifest again if all its
/// contents exist. Raises PublishError if the manifest is damaged, or if it is missing and the history is
/// damaged too.
[[nodiscard]] std::optional<Publication> ReadLive(const ContentStore& store, const History& history,
                                                  Progress& progress);

/// The same, but never writes.
[[nodiscard]] std::optional<Publication> FindLive(const ContentStore& store, const History& history);

/// Flushes the names of all contents, then replaces the live manifest in one step. Raises PublishError if
/// that failed and the previous manifest is still live. Raises LaterStepError if the new manifest is live,
/// but a power cut may still undo that, or it has no copy in the history.
void PutLive(const ContentStore& store, const Publication& next);

/// Runs a step after a publication. Replaces any exception by a LaterStepError with a text that begins with
/// `done`.
void DoLaterStep(const std::string& done, const std::function<void()>& step);

}  // namespace patcher::publisher
