#pragma once

#include "control/protocol/host_window.h"

namespace patcher {

/// Fetches the site's news and posts one `news` message with the whole document as text. The document is not
/// parsed. If it cannot be fetched, is empty or is larger than 262,144 bytes, the message reports a failure.
/// Runs on its own worker with its own session, in parallel to other operations and to other fetches. Raises
/// nothing.
void FetchNews(HostWindow& window);

}  // namespace patcher
