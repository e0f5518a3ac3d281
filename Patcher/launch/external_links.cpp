#include "launch/external_links.h"

#include <algorithm>

#include "platform/process.h"
#include "shared/ascii.h"
#include "shared/site.h"

namespace patcher {
namespace {

constexpr std::u16string_view kScheme = u"https://";
constexpr std::size_t kMaxLength = 2048;

bool IsDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

bool IsHostCharacter(char16_t c) {
  return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || IsDigit(c) || c == u'-' || c == u'_' ||
         c == u'.';
}

bool IsForbiddenInUrl(char16_t c) { return c < u' ' || c == 0x7F || c == u'"' || c == u'\\'; }

/// `host` is in lower case.
bool BelongsToSite(std::u16string_view host) {
  static const std::u16string site(std::begin(kSiteHost), std::end(kSiteHost) - 1);
  if (host == site) return true;
  const std::u16string subdomain = u"." + site;
  return host.size() > subdomain.size() && host.ends_with(subdomain);
}

}  // namespace

bool IsSiteLink(std::u16string_view url) {
  if (!url.starts_with(kScheme) || url.size() > kMaxLength) return false;
  if (std::any_of(url.begin(), url.end(), IsForbiddenInUrl)) return false;
  const std::u16string_view afterScheme = url.substr(kScheme.size());
  const std::u16string_view authority = afterScheme.substr(0, afterScheme.find_first_of(u"/?#"));
  const std::size_t colon = authority.find(u':');
  std::u16string host(authority.substr(0, colon));
  if (!std::all_of(host.begin(), host.end(), IsHostCharacter)) return false;
  if (colon != std::u16string_view::npos) {
    const std::u16string_view port = authority.substr(colon + 1);
    if (!std::all_of(port.begin(), port.end(), IsDigit)) return false;
  }
  std::transform(host.begin(), host.end(), host.begin(), AsciiLower<char16_t>);
  return BelongsToSite(host);
}

void OpenExternalUrl(const std::u16string& url) {
  // No error message: the player sees that no browser opens.
  if (IsSiteLink(url)) static_cast<void>(platform::OpenInBrowser(url));
}

}  // namespace patcher
