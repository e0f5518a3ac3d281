#pragma once

#include <string>
#include <string_view>

namespace patcher {

/// How every request of the launcher names its sender.
inline constexpr char kUserAgent[] = "TolmiraMMO-Patcher/1.0";

/// Bytes other than ASCII letters, digits and -_.~/ become a percent sign and two capital hexadecimal digits,
/// so that a name is never taken for a query and must not come encoded.
std::string PercentEncodePath(std::string_view path);

}  // namespace patcher
