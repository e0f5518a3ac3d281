#pragma once

#include "control/protocol/host_window.h"

namespace patcher {

/// Fetches the news that the site publishes and posts one `news` message with the whole document as text. The
/// document is not looked into; one that cannot be had, is empty or is larger than 262,144 bytes gives the
/// message of the failed form. Runs on a worker of its own, beside any other operation, with a session of its
/// own; any number may run at once. Raises nothing.
void FetchNews(HostWindow& window);

}  // namespace patcher
