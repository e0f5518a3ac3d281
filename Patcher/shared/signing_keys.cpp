#include "shared/signing_keys.h"

#include <string_view>

#include "shared/hex.h"

namespace patcher {
namespace {

constexpr std::string_view kKeys[] = {PATCHER_SIGNING_KEY, PATCHER_SPARE_SIGNING_KEY};

constexpr bool IsNoneOrKey(std::string_view hex) {
  return hex.empty() || FromHex<sizeof(platform::PublicKey)>(hex).has_value();
}
static_assert(IsNoneOrKey(kKeys[0]), "PATCHER_SIGNING_KEY takes the 128 digits that keygen prints");
static_assert(IsNoneOrKey(kKeys[1]), "PATCHER_SPARE_SIGNING_KEY takes the 128 digits that keygen prints");

}  // namespace

const std::vector<platform::PublicKey>& LauncherKeys() {
  // Never destroyed, because a detached worker may still use it while the process ends.
  static const auto* keys = [] {
    auto* read = new std::vector<platform::PublicKey>;
    for (const std::string_view hex : kKeys) {
      if (const auto key = FromHex<sizeof(platform::PublicKey)>(hex)) read->push_back(*key);
    }
    return read;
  }();
  return *keys;
}

}  // namespace patcher
