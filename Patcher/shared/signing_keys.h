#pragma once

#include <vector>

#include "platform/signature.h"

namespace patcher {

/// The public keys from the cache variables PATCHER_SIGNING_KEY and PATCHER_SPARE_SIGNING_KEY. One of them
/// must have signed the manifest. If there are none, this launcher does not check signatures.
const std::vector<platform::PublicKey>& LauncherKeys();

}  // namespace patcher
