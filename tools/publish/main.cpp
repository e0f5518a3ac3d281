#include <exception>
#include <string>

#include "check.h"
#include "go_live.h"
#include "options.h"
#include "platform/process.h"
#include "platform/standard_streams.h"
#include "prune.h"
#include "publish.h"
#include "publish_error.h"

namespace {

enum ExitCode { kDone = 0, kFailed = 1, kUsage = 2, kLaterStepFailed = 3 };

void ReportError(const std::string& text) { platform::WriteErrorLine("patch-publish: " + text); }

int Check(const patcher::Options& options) {
  const patcher::CheckResult result = patcher::CheckPublication(options.www, options.quiet);
  for (const std::string& finding : result.findings) platform::WriteLine(finding);
  if (!options.quiet) {
    const std::size_t count = result.findings.size();
    platform::WriteLine(result.summary + "; " +
                        (count == 0 ? "everything is sound" : std::to_string(count) + " findings"));
  }
  return result.findings.empty() ? kDone : kFailed;
}

int Run(const patcher::Options& options) {
  using Task = patcher::Options::Task;
  switch (options.task) {
    case Task::kHelp:
      platform::WriteLine(patcher::HelpText());
      break;
    case Task::kCheck:
      return Check(options);
    case Task::kGoLive:
      patcher::GoLive(options.goLive);
      break;
    case Task::kPrune:
      patcher::PruneFolder(options.www, options.keep, options.quiet);
      break;
    case Task::kPublish:
      patcher::Publish(options.publish);
      break;
  }
  return kDone;
}

}  // namespace

int main(int argc, char** argv) {
  platform::SurviveBrokenPipes();
  platform::UseBinaryStandardStreams();
  try {
    const patcher::Options options = patcher::ReadOptions(platform::CommandLineArguments(argc, argv));
    if (options.error.empty()) return Run(options);
    ReportError(options.error + "; see --help");
    return kUsage;
  } catch (const patcher::LaterStepError& failure) {
    ReportError(failure.what());
    return kLaterStepFailed;
  } catch (const std::exception& failure) {
    ReportError(failure.what());
  }
  return kFailed;
}
