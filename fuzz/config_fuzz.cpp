// Input: a patcher.ini.
#include "fuzz.h"
#include "platform/http.h"
#include "transport/config.h"

void patcher::Fuzz(std::string_view input) {
  PatchConfig config;
  config.Apply(std::string(input));
  Require(config.connections >= 1 && config.connections <= 8, "the connections are in range");
  Require(!config.baseUrl.empty() && config.baseUrl.find('\n') == std::string::npos,
          "the base URL is a line");
  const auto server = platform::CrackUrl(config.baseUrl);
  Require(!server || !server->host.empty(), "a server has a name");
}
