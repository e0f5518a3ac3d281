#pragma once

#include <functional>
#include <optional>
#include <string>

#include "content_store.h"
#include "history.h"
#include "manifest_document.h"
#include "progress_line.h"

namespace patcher::publisher {

/// The manifest that players get; nothing if nothing is live. If it is missing although the history has
/// versions that were live, it was lost: the last of them is returned, and put back if all its contents are
/// there. Raises PublishError if the manifest is damaged, or if it was lost and the history is damaged too.
std::optional<Publication> ReadLive(const ContentStore& store, const History& history, Progress& progress);

/// The same without putting anything back.
std::optional<Publication> FindLive(const ContentStore& store, const History& history);

/// Makes a manifest the live one, in one step, when the names of its contents are on the disk. Raises
/// PublishError if that failed: then the former one is live. LaterStepError: it is live, but it may not
/// survive a power cut, or it has no copy in the history.
void PutLive(const ContentStore& store, const Publication& next);

/// Does what follows a publication; turns any exception into a LaterStepError that begins with `done`.
void DoLaterStep(const std::string& done, const std::function<void()>& step);

}  // namespace patcher::publisher
