// Input: a URL in UTF-8; then once more the input as UTF-16.
#include <algorithm>
#include <cstring>
#include <iterator>
#include <string>

#include "fuzz.h"
#include "launch/external_links.h"
#include "platform/text.h"
#include "shared/site.h"

namespace {

/// The host that a browser would go to, read more leniently than the launcher does: what follows the last
/// '@' of the authority, which ends at anything that any browser takes for its end.
std::string BrowsersHost(const std::u16string& url) {
  std::string text = platform::WideToUtf8(url);
  text.erase(0, std::string_view("https://").size());
  std::string host = text.substr(0, text.find_first_of("/\\?#"));
  host.erase(0, host.find_last_of('@') + 1);
  host.erase(std::min(host.find(':'), host.size()));
  std::transform(host.begin(), host.end(), host.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  return host;
}

void Check(const std::u16string& url) {
  if (!patcher::IsSiteLink(url)) return;
  const std::string site(std::begin(patcher::kSiteHost), std::end(patcher::kSiteHost) - 1);
  const std::string host = BrowsersHost(url);
  patcher::Require(url.starts_with(u"https://") && url.size() <= 2048,
                   "links are https and of a bearable length");
  patcher::Require(host == site || host.ends_with("." + site), "only links to the site leave");
  patcher::Require(std::none_of(url.begin(), url.end(), [](char16_t c) { return c < u' ' || c == u'"'; }),
                   "no command line is split");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Check(platform::Utf8ToWide(patcher::AsText(data, size)));
  std::u16string wide(size / 2, u'\0');
  if (!wide.empty()) std::memcpy(wide.data(), data, wide.size() * 2);
  Check(wide);
  return 0;
}
