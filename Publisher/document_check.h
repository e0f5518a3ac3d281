#pragma once

#include "findings.h"
#include "manifest_document.h"

namespace patcher::publisher {

/// Checks a manifest without its contents: launchers accept its paths and names, digests have the right form,
/// no path is listed twice, neither as a file nor in archives, and archives list only files of the manifest.
void CheckDocument(const Publication& publication, Findings& findings);

}  // namespace patcher::publisher
