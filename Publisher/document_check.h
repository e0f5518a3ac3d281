#pragma once

#include "findings.h"
#include "manifest_document.h"

namespace patcher::publisher {

/// Checks what a manifest says, without the store: that launchers accept its paths and names, that digests
/// are digests, that no path is listed twice, neither as a file nor in archives, and that archives list files
/// of the manifest.
void CheckDocument(const Publication& publication, Findings& findings);

}  // namespace patcher::publisher
