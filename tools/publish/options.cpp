#include "options.h"

#include <charconv>
#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <set>

#include "platform/text.h"

namespace patcher {
namespace {

constexpr char kHelp[] = R"(patch-publish - publishes a game client for the launcher

Usage: patch-publish --client DIR --out WWW --version N [options]
       patch-publish --check WWW [--quiet]
       patch-publish --help

Turns a client directory into the folder WWW/patch that any static web server
serves, or publishes the next version over it. The manifest WWW/patch/version.json
is replaced last and in one step: players see the old version or the new one.

  --client DIR         the game as a player is to have it
  --out WWW            root of the web server; WWW/patch is made if it is missing
  --version N          number of the version, above every published one
  --launcher FILE      also publish this launcher; without it the published one stays
  --launcher-build B   its build number, as FILE --print-version prints it
  --archive-size MB    content of one archive in units of 1,048,576 bytes,
                       1 to 2047; 64 if not given
  --prune              afterwards delete what no kept version uses
  --keep K             versions to keep, the new one included; 3 if not given
  --check WWW          prove every file, archive and launcher of what is published
  --quiet              say nothing but errors and findings
  --help               print this text

Exit codes: 0 done, or the check found nothing; 1 failed, or the check found
something; 2 wrong usage. docs/publishing.md tells the rest.)";

constexpr std::size_t kDefaultKeep = 3;
constexpr std::int32_t kMaxArchiveSize = 2047;

const std::set<std::string, std::less<>> kSwitches{"--prune", "--quiet", "--help"};
const std::set<std::string, std::less<>> kValues{
    "--client",         "--out",          "--version", "--launcher",
    "--launcher-build", "--archive-size", "--keep",    "--check"};

/// A command line taken apart: option to value, empty for a switch.
class CommandLine {
 public:
  explicit CommandLine(const std::vector<std::string>& arguments) {
    for (std::size_t i = 0; i < arguments.size() && error_.empty(); ++i) {
      const std::string& name = arguments[i];
      if (kSwitches.count(name) != 0) {
        Take(name, "");
      } else if (kValues.count(name) == 0) {
        error_ = "unknown argument '" + name + "'";
      } else if (i + 1 == arguments.size() || arguments[i + 1].empty()) {
        error_ = name + " needs a value";
      } else {
        Take(name, arguments[++i]);
      }
    }
  }

  bool Has(std::string_view name) const { return values_.find(name) != values_.end(); }

  std::filesystem::path Path(std::string_view name) {
    const auto found = values_.find(name);
    if (found == values_.end()) {
      Fail(std::string(name) + " is missing");
      return {};
    }
    return platform::PathFromUtf8(found->second);
  }

  std::int32_t Number(std::string_view name, std::int32_t highest, std::int32_t absent) {
    const auto found = values_.find(name);
    if (found == values_.end()) return absent;
    const std::string& text = found->second;
    std::int32_t number = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (failure != std::errc() || end != text.data() + text.size() || number < 1 || number > highest) {
      Fail(std::string(name) + " takes a number from 1 to " + std::to_string(highest) + ", not '" + text +
           "'");
    }
    return number;
  }

  /// Remembers the first thing that is wrong.
  void Fail(const std::string& error) {
    if (error_.empty()) error_ = error;
  }

  /// Options other than these make no sense together with them.
  void AllowOnly(const std::set<std::string, std::less<>>& names) {
    for (const auto& [name, value] : values_) {
      if (names.count(name) == 0) Fail(name + " does not go together with --check");
    }
  }

  const std::string& Error() const { return error_; }

 private:
  void Take(const std::string& name, const std::string& value) {
    if (!values_.emplace(name, value).second) error_ = name + " is given twice";
  }

  std::map<std::string, std::string, std::less<>> values_;
  std::string error_;
};

void ReadPublish(CommandLine& line, PublishRequest& request) {
  constexpr std::int32_t kAny = std::numeric_limits<std::int32_t>::max();
  request.client = line.Path("--client");
  request.www = line.Path("--out");
  if (!line.Has("--version")) line.Fail("--version is missing");
  request.version = line.Number("--version", kAny, 0);
  if (line.Has("--launcher") != line.Has("--launcher-build")) {
    line.Fail("--launcher and --launcher-build go together");
  } else if (line.Has("--launcher")) {
    request.launcher = NewLauncher{line.Path("--launcher"), line.Number("--launcher-build", kAny, 0)};
  }
  const std::int32_t size = line.Number("--archive-size", kMaxArchiveSize, 0);
  if (size > 0) request.limits.content = std::uint64_t{static_cast<std::uint32_t>(size)} << 20;
  if (line.Has("--keep") && !line.Has("--prune")) line.Fail("--keep needs --prune");
  const std::int32_t keep = line.Number("--keep", kAny, kDefaultKeep);
  if (line.Has("--prune")) request.keep = static_cast<std::size_t>(keep);
}

}  // namespace

Options ReadOptions(const std::vector<std::string>& arguments) {
  CommandLine line(arguments);
  Options options;
  options.request.quiet = line.Has("--quiet");
  if (line.Has("--help")) {
    options.task = Options::Task::kHelp;
  } else if (line.Has("--check")) {
    options.task = Options::Task::kCheck;
    line.AllowOnly({"--check", "--quiet"});
    options.checked = line.Path("--check");
  } else {
    ReadPublish(line, options.request);
  }
  options.error = line.Error();
  return options;
}

std::string_view HelpText() { return kHelp; }

}  // namespace patcher
