#include "publish_options.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>

#include "command_line.h"
#include "platform/http.h"
#include "shared/hex.h"

namespace patcher::publisher {
namespace {

constexpr char kHelp[] = R"(patch-publish - publishes a game client for the launcher

Usage: patch-publish --client DIR --out WWW --version N [options]
       patch-publish --out WWW --live N [options]
       patch-publish --out WWW --prune [--keep K]
       patch-publish --out WWW --status [--keep K]
       patch-publish --out WWW --list-upload SINCE
       patch-publish --check WWW [--signed-by PUBLICKEY]
       patch-publish --check https://HOST [--all]
       patch-publish keygen FILE
       patch-publish --help

Turns a client directory into the folder WWW/patch that any static web server
serves, or publishes the next version over it. The manifest, which is
WWW/patch/version.json, is replaced last and in one step: players see the old
version or the new one.

  --client DIR         the game exactly as players should get it
  --out WWW            root of the web server; WWW/patch is created if missing
  --version N          number of the version, above every published one, or the
                       word next: one above the highest
  --dry-run            write nothing; report what would change, what players
                       would download, and what is to be uploaded
  --hold               publish everything but the last step, for a rehearsal
  --live N             make the published version N live: one that was held, or
                       an earlier one to go back to
  --launcher FILE      also publish this launcher; without it the newest stays
  --launcher-build B   its build number, for a launcher for Linux; a launcher
                       for Windows contains it, and it must be B if given
  --allow-older-launcher
                       announce a launcher below one that has been published
  --exclude GLOB       leave out files and folders of this name; may be repeated
  --archive-size MB    content of one archive in units of 1,048,576 bytes,
                       1 to 2047; 64 if not given
  --prune              delete what no kept version uses, afterwards or by itself
  --keep K             versions to keep, the live one included; 3 if not given
  --list-upload SINCE  list what a server with version SINCE lacks (0: with
                       none), in the order in which it must arrive; a line
                       each: path, bytes, Content-Type and Cache-Control,
                       separated by tabs
  --status             report what is published, and what players download
  --check WWW          verify every file, archive and launcher in WWW/patch
  --signed-by PUBLICKEY
                       and that the manifest is signed by this key
  --check https://HOST request all files of a live server's manifest, and verify
                       the headers and a sample of the contents
  --all                verify all contents
  --sign FILE          sign the manifest with the key in FILE
  --unsigned           do not sign it although the one before was signed
  keygen FILE          create a key to sign with, write it to the new file FILE,
                       and print the public key, which launchers are built with
  --json               print the result, or the error, as one JSON object
  --quiet              print nothing but errors and findings
  -h, --help           print this text

A value may also follow its option after an equals sign: --version=next.

Exit codes:
  0  done, or done before; the check found nothing
  1  failed, and players get what they got before; or the check found something
  2  wrong usage
  3  published or live, but a later step failed: repeat the command
docs/publishing.md describes the rest, docs/serving.md the web server.)";

constexpr std::int32_t kAny = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kDefaultKeep = 3;
constexpr std::int32_t kMaxArchiveSize = 2047;

using Task = Options::Task;

/// The task's bit in OptionRule::tasks.
constexpr unsigned Bit(Task task) { return 1U << static_cast<unsigned>(task); }

constexpr unsigned kPublish = Bit(Task::kPublish);
constexpr unsigned kGoLive = Bit(Task::kGoLive);
constexpr unsigned kPrune = Bit(Task::kPrune);
constexpr unsigned kCheck = Bit(Task::kCheck);
constexpr unsigned kStatus = Bit(Task::kStatus);
constexpr unsigned kKeygen = Bit(Task::kKeygen);
constexpr unsigned kCheckServer = Bit(Task::kCheckServer);
constexpr unsigned kListUpload = Bit(Task::kListUpload);
constexpr unsigned kAll = ~0U;

const std::vector<OptionRule>& Rules() {
  using enum OptionRule::Kind;
  static const std::vector<OptionRule> kRules{
      {"--client", kValue, kPublish},
      {"--out", kValue, kPublish | kGoLive | kPrune | kStatus | kListUpload},
      {"--version", kValue, kPublish},
      {"--dry-run", kSwitch, kPublish},
      {"--hold", kSwitch, kPublish},
      {"--live", kValue, kGoLive},
      {"--launcher", kValue, kPublish},
      {"--launcher-build", kValue, kPublish},
      {"--allow-older-launcher", kSwitch, kPublish | kGoLive},
      {"--exclude", kList, kPublish},
      {"--archive-size", kValue, kPublish},
      {"--prune", kSwitch, kPublish | kGoLive | kPrune},
      {"--keep", kValue, kPublish | kGoLive | kPrune | kStatus},
      {"--status", kSwitch, kStatus},
      {"--list-upload", kValue, kListUpload},
      {"--check", kValue, kCheck | kCheckServer},
      {"--all", kSwitch, kCheckServer},
      {"--signed-by", kValue, kCheck},
      {"--sign", kValue, kPublish | kGoLive},
      {"--unsigned", kSwitch, kPublish | kGoLive},
      {"keygen", kValue, kKeygen},
      {"--json", kSwitch, kAll & ~kListUpload},
      {"--quiet", kSwitch, kAll},
      {"--help", kSwitch, kAll, "-h"},
  };
  return kRules;
}

/// `name` is the option that selects the task.
void Select(Task task, std::string_view name, CommandLine& line, Options& options) {
  options.task = task;
  line.AllowOnly(Bit(task), name);
}

/// How many versions pruning keeps, or would keep; 0 without pruning.
std::size_t ReadKeep(CommandLine& line) {
  const std::int32_t keep = line.Number("--keep", kAny).value_or(kDefaultKeep);
  if (line.Has("--prune") || line.Has("--status")) return static_cast<std::size_t>(keep);
  if (line.Has("--keep")) line.Fail("--keep needs --prune");
  return 0;
}

void ReadSigning(CommandLine& line, SigningRequest& request) {
  if (line.Has("--sign")) request.keyFile = line.Path("--sign");
  request.allowUnsigned = line.Has("--unsigned");
  if (line.Has("--sign") && line.Has("--unsigned")) line.Fail("--unsigned does not go together with --sign");
}

void ReadPublish(CommandLine& line, PublishRequest& request) {
  request.client = line.Path("--client");
  request.www = line.Path("--out");
  if (!line.Has("--version")) line.Fail("--version is missing");
  if (line.List("--version") != std::vector<std::string>{"next"}) {
    request.version = line.Number("--version", kAny);
  }
  request.dryRun = line.Has("--dry-run");
  if (request.dryRun && line.Has("--prune")) line.Fail("--prune does not go together with --dry-run");
  if (line.Has("--launcher")) {
    request.launcher = NewLauncher{line.Path("--launcher"), line.Number("--launcher-build", kAny)};
  } else if (line.Has("--launcher-build")) {
    line.Fail("--launcher-build needs --launcher");
  }
  request.allowOlderLauncher = line.Has("--allow-older-launcher");
  request.hold = line.Has("--hold");
  ReadSigning(line, request.signing);
  request.excluded = line.List("--exclude");
  if (const auto size = line.Number("--archive-size", kMaxArchiveSize)) {
    request.limits.content = std::uint64_t{static_cast<std::uint32_t>(*size)} << 20;
  }
  request.keep = ReadKeep(line);
  request.quiet = line.Has("--quiet");
}

void ReadGoLive(CommandLine& line, GoLiveRequest& request) {
  request.www = line.Path("--out");
  request.version = line.Number("--live", kAny).value_or(0);
  ReadSigning(line, request.signing);
  request.allowOlderLauncher = line.Has("--allow-older-launcher");
  request.keep = ReadKeep(line);
  request.quiet = line.Has("--quiet");
}

/// Reads --check with a folder or a server.
void ReadCheck(CommandLine& line, Options& options) {
  const std::vector<std::string> place = line.List("--check");
  const std::size_t scheme = place.empty() ? std::string::npos : place.front().find("://");
  if (scheme == std::string::npos) {
    Select(Task::kCheck, "--check of a folder", line, options);
    options.www = line.Path("--check");
    if (!line.Has("--signed-by")) return;
    options.publicKey = FromHex<sizeof(platform::PublicKey)>(line.List("--signed-by").front());
    if (!options.publicKey) line.Fail("--signed-by takes the 128 hexadecimal digits that keygen prints");
    return;
  }
  Select(Task::kCheckServer, "--check of a server", line, options);
  std::string url = place.front();
  if (url.ends_with('/')) url.pop_back();
  if (!platform::CrackUrl(url)) line.Fail("'" + place.front() + "' is not the address of a server");
  if (url.find_first_of("/?#", scheme + 3) != std::string::npos) {
    line.Fail(
        "--check takes scheme, host and port of a server: launchers ignore a path, and find patch at the "
        "root");
  }
  options.serverCheck = {url, line.Has("--all"), line.Has("--quiet")};
}

void ReadListUpload(CommandLine& line, Options& options) {
  Select(Task::kListUpload, "--list-upload", line, options);
  options.www = line.Path("--out");
  options.since = line.Number("--list-upload", kAny, 0).value_or(0);
}

}  // namespace

Options ReadOptions(const std::vector<std::string>& arguments) {
  CommandLine line(Rules(), arguments);
  Options options;
  options.quiet = line.Has("--quiet");
  // Not from `line`, which stops at an error: a script needs the error as JSON too.
  options.json = std::find(arguments.begin(), arguments.end(), "--json") != arguments.end();
  if (line.Has("--help")) {
    options.task = Task::kHelp;
  } else if (line.Has("--check")) {
    ReadCheck(line, options);
  } else if (line.Has("--list-upload")) {
    ReadListUpload(line, options);
  } else if (line.Has("keygen")) {
    Select(Task::kKeygen, "keygen", line, options);
    options.keyFile = line.Path("keygen");
  } else if (line.Has("--status")) {
    Select(Task::kStatus, "--status", line, options);
    options.www = line.Path("--out");
    options.keep = ReadKeep(line);
  } else if (line.Has("--live")) {
    Select(Task::kGoLive, "--live", line, options);
    ReadGoLive(line, options.goLive);
  } else if (line.Has("--prune") && !line.Has("--client") && !line.Has("--version")) {
    Select(Task::kPrune, "--prune without --client", line, options);
    options.www = line.Path("--out");
    options.keep = ReadKeep(line);
  } else {
    ReadPublish(line, options.publish);
    Select(Task::kPublish, "publishing", line, options);
  }
  options.error = line.Error();
  return options;
}

std::string_view HelpText() { return kHelp; }

}  // namespace patcher::publisher
