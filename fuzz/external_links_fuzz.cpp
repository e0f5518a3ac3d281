// Input: a URL in UTF-8. Then the input is read again as UTF-16.
#include "fuzz.h"
#include "launch/external_links.h"
#include "platform/text.h"
#include "shared/site.h"

void patcher::Fuzz(std::string_view input) {
  for (const std::u16string& url : {platform::Utf8ToWide(input), AsUtf16(input)}) {
    if (!IsSiteLink(url)) continue;
    Require(url.starts_with(u"https://") && url.size() <= 2048, "links are https and not too long");
    const std::string text = platform::WideToUtf8(url).substr(std::string_view("https://").size());
    // Like in browsers, the authority ends at the first of these.
    const std::string authority = text.substr(0, text.find_first_of("/\\?#"));
    std::string host = authority.substr(0, authority.find(':'));
    for (char& c : host) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
    Require(("." + host).ends_with(std::string(".") + kSiteHost), "only links to the site are opened");
    Require(authority.find('@') == std::string::npos, "links have no user name");
    for (const char16_t c : url) Require(c >= u' ' && c != u'"', "no character can split a command line");
  }
}
