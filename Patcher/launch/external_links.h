#pragma once

#include <string>
#include <string_view>

namespace patcher {

/// Whether `url`, which is untrusted, is an https link to the site or to a subdomain of it, with or without a
/// port: at most 2048 UTF-16 units, "https://" in lower case, no user name. The path, query and fragment may
/// be anything, but the following are refused:
///  - a host with other characters than ASCII letters, digits, '-', '_' and '.', or a port with other
///    characters than digits: browsers treat a backslash as the end of the host, decode percent signs, and
///    map look-alikes and full-width characters, so they might open another host than the one that was
///    checked;
///  - a control character, quotation mark or backslash anywhere: these can be dropped, truncate the text or
///    split a browser's command line, and a well-formed URL contains none. (It contains no blank either, but
///    browsers receive the URL as one argument and encode blanks.)
bool IsSiteLink(std::u16string_view url);

/// Opens `url` unchanged in the player's browser if it is a site link; does nothing otherwise. Main thread.
void OpenExternalUrl(const std::u16string& url);

}  // namespace patcher
