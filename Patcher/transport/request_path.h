#pragma once

#include <string>
#include <string_view>

namespace patcher {

/// User agent of all the launcher's requests.
inline constexpr char kUserAgent[] = "TolmiraMMO-Patcher/1.0";

/// Replaces all bytes except ASCII letters, digits and -_.~/ with a percent sign and two upper-case
/// hexadecimal digits. `path` must not be encoded already.
std::string PercentEncodePath(std::string_view path);

}  // namespace patcher
