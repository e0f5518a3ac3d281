#include <exception>
#include <string>

#include "check.h"
#include "options.h"
#include "platform/process.h"
#include "platform/standard_streams.h"
#include "publish.h"

namespace {

enum ExitCode { kDone = 0, kFailed = 1, kUsage = 2 };

void TellError(const std::string& text) { platform::WriteErrorLine("patch-publish: " + text); }

int Check(const patcher::Options& options) {
  const patcher::CheckResult result = patcher::CheckPublication(options.checked, options.request.quiet);
  for (const std::string& finding : result.findings) platform::WriteLine(finding);
  if (!options.request.quiet) {
    const std::size_t count = result.findings.size();
    platform::WriteLine(result.summary + "; " +
                        (count == 0 ? "everything is sound" : std::to_string(count) + " findings"));
  }
  return result.findings.empty() ? kDone : kFailed;
}

}  // namespace

int main(int argc, char** argv) {
  platform::UseBinaryStandardStreams();
  try {
    const patcher::Options options = patcher::ReadOptions(platform::CommandLineArguments(argc, argv));
    if (!options.error.empty()) {
      TellError(options.error + "; see --help");
      return kUsage;
    }
    switch (options.task) {
      case patcher::Options::Task::kHelp:
        platform::WriteLine(patcher::HelpText());
        return kDone;
      case patcher::Options::Task::kCheck:
        return Check(options);
      case patcher::Options::Task::kPublish:
        patcher::Publish(options.request);
        return kDone;
    }
  } catch (const std::exception& failure) {
    TellError(failure.what());
  }
  return kFailed;
}
