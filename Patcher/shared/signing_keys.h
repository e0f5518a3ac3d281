#pragma once

#include <vector>

#include "platform/signature.h"

namespace patcher {

/// The public keys of which one must have signed what the server says is the game: those of the cache
/// variables PATCHER_SIGNING_KEY and PATCHER_SPARE_SIGNING_KEY. None: this launcher takes what comes.
const std::vector<platform::PublicKey>& LauncherKeys();

}  // namespace patcher
