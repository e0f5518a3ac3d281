// Input: a program whose build number is to be read.
#include "fuzz.h"
#include "version_resource.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto version = patcher::publisher::ReadProgramVersion({data, size});
  patcher::Require(!version || size > 100, "a version comes from a program");
  patcher::Require(!version || version->internalName.find('\0') == std::string::npos, "a name is text");
  return 0;
}
