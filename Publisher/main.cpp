#include <exception>
#include <string>

#include "go_live.h"
#include "platform/process.h"
#include "platform/standard_streams.h"
#include "prune.h"
#include "publish.h"
#include "publish_error.h"
#include "publish_options.h"
#include "signing.h"
#include "store_check.h"

namespace {

enum ExitCode { kDone = 0, kFailed = 1, kUsage = 2, kLaterStepFailed = 3 };

void ReportError(const std::string& text) { platform::WriteErrorLine("patch-publish: " + text); }

int Check(const patcher::publisher::Options& options) {
  patcher::publisher::CheckResult result = patcher::publisher::CheckPublication(options.www, options.quiet);
  if (!options.publicKey.empty()) {
    const std::string finding = patcher::publisher::SignatureFinding(options.www, options.publicKey);
    if (!finding.empty()) result.findings.push_back(finding);
  }
  for (const std::string& finding : result.findings) platform::WriteLine(finding);
  if (!options.quiet) {
    const std::size_t count = result.findings.size();
    platform::WriteLine(result.summary + "; " +
                        (count == 0 ? "everything is sound" : std::to_string(count) + " findings"));
  }
  return result.findings.empty() ? kDone : kFailed;
}

int Run(const patcher::publisher::Options& options) {
  using Task = patcher::publisher::Options::Task;
  switch (options.task) {
    case Task::kHelp:
      platform::WriteLine(patcher::publisher::HelpText());
      break;
    case Task::kCheck:
      return Check(options);
    case Task::kKeygen:
      platform::WriteLine(patcher::publisher::MakeKeyFile(options.keyFile));
      break;
    case Task::kGoLive:
      patcher::publisher::GoLive(options.goLive);
      break;
    case Task::kPrune:
      patcher::publisher::PruneFolder(options.www, options.keep, options.quiet);
      break;
    case Task::kPublish:
      patcher::publisher::Publish(options.publish);
      break;
  }
  return kDone;
}

}  // namespace

int main(int argc, char** argv) {
  platform::SurviveBrokenPipes();
  platform::UseBinaryStandardStreams();
  try {
    const patcher::publisher::Options options =
        patcher::publisher::ReadOptions(platform::CommandLineArguments(argc, argv));
    if (options.error.empty()) return Run(options);
    ReportError(options.error + "; see --help");
    return kUsage;
  } catch (const patcher::publisher::LaterStepError& failure) {
    ReportError(failure.what());
    return kLaterStepFailed;
  } catch (const std::exception& failure) {
    ReportError(failure.what());
  }
  return kFailed;
}
