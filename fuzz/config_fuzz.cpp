// Input: a patcher.ini.
#include "fuzz.h"
#include "platform/http.h"
#include "transport/config.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  patcher::PatchConfig config;
  config.Apply(std::string(patcher::AsText(data, size)));
  patcher::Require(config.connections >= 1 && config.connections <= 8, "the connections are in range");
  patcher::Require(!config.baseUrl.empty() && config.baseUrl.find('\n') == std::string::npos,
                   "the base URL is a line");
  if (const auto server = platform::CrackUrl(config.baseUrl)) {
    patcher::Require(!server->host.empty(), "a server has a name");
  }
  return 0;
}
