#include "serving_rules.h"

#include <charconv>
#include <cstdint>
#include <set>
#include <string>

namespace patcher::publisher {
namespace {

constexpr std::uint64_t kDay = 86400;  // seconds
constexpr std::string_view kMaxAge = "max-age=";

/// The directives of a header, in lower case and without blanks.
std::set<std::string> DirectivesOf(std::string_view header) {
  std::set<std::string> directives;
  std::string directive;
  for (const char c : header) {
    if (c == ',') {
      directives.insert(std::move(directive));
      directive.clear();
    } else if (c != ' ' && c != '\t') {
      directive += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
  }
  directives.insert(std::move(directive));
  return directives;
}

std::uint64_t MaxAgeOf(const std::set<std::string>& directives) {
  std::uint64_t age = 0;
  for (const std::string& directive : directives) {
    if (!directive.starts_with(kMaxAge)) continue;
    std::from_chars(directive.data() + kMaxAge.size(), directive.data() + directive.size(), age);
  }
  return age;
}

}  // namespace

bool ForbidsCaching(std::string_view cacheControl) {
  return DirectivesOf(cacheControl).count("no-store") != 0;
}

bool AllowsLongCaching(std::string_view cacheControl) {
  const std::set<std::string> directives = DirectivesOf(cacheControl);
  for (const char* forbidding : {"no-store", "no-cache", "private"}) {
    if (directives.count(forbidding) != 0) return false;
  }
  return directives.count("public") != 0 && directives.count("immutable") != 0 &&
         MaxAgeOf(directives) >= kDay;
}

}  // namespace patcher::publisher
