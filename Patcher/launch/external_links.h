#pragma once

#include <string>
#include <string_view>

namespace patcher {

/// Whether `url`, which is untrusted, is an https link to the site or to a subdomain of it, with or without a
/// port: at most 2048 UTF-16 units, "https://" in lower case, no user name. The path, query and fragment may
/// be anything, but the following are refused:
///  - a host of anything but ASCII letters, digits, '-', '_' and '.', and a port of anything but digits:
///    browsers read a backslash as the end of the host, decode percent signs, and map look-alikes and
///    full-width signs, so that the host they go to would not be the one that was compared;
///  - a control character, quotation mark or backslash anywhere: some are dropped, cut the text short or
///    split a browser's command line, and no well-formed URL has any. (Nor has it a blank, but browsers get
///    the URL as one argument and encode it.)
bool IsSiteLink(std::u16string_view url);

/// Opens `url` unchanged in the player's browser if it is a site link; does nothing otherwise. Main thread.
void OpenExternalUrl(const std::u16string& url);

}  // namespace patcher
