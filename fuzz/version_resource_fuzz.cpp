// Input: a program whose build number is to be read.
#include "fuzz.h"
#include "version_resource.h"

void patcher::Fuzz(std::string_view input) {
  const auto version =
      publisher::ReadProgramVersion({reinterpret_cast<const std::uint8_t*>(input.data()), input.size()});
  Require(!version || input.size() > 100, "a version comes from a program");
  Require(!version || version->internalName.find('\0') == std::string::npos, "a name is text");
}
