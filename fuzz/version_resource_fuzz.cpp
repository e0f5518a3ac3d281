// Input: a program from which the build number is read.
#include "fuzz.h"
#include "version_resource.h"

void patcher::Fuzz(std::string_view input) {
  const auto version =
      publisher::ReadProgramVersion({reinterpret_cast<const std::uint8_t*>(input.data()), input.size()});
  Require(!version || input.size() > 100, "only a program has a version");
  Require(!version || version->internalName.find('\0') == std::string::npos, "a name has no zero byte");
}
