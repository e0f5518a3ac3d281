#include <exception>
#include <string>
#include <utility>

#include "folder_check.h"
#include "go_live.h"
#include "platform/process.h"
#include "platform/standard_streams.h"
#include "prune.h"
#include "publish.h"
#include "publish_error.h"
#include "publish_options.h"
#include "report.h"
#include "signing.h"
#include "status.h"
#include "upload_list.h"

namespace {

using patcher::publisher::Options;
using patcher::publisher::Report;
using Task = Options::Task;

enum ExitCode { kDone = 0, kFailed = 1, kUsage = 2, kLaterStepFailed = 3 };

const char* NameOf(const Options& options) {
  switch (options.task) {
    case Task::kHelp:
      return "help";
    case Task::kCheck:
    case Task::kCheckServer:
      return "check";
    case Task::kListUpload:
      return "list-upload";
    case Task::kStatus:
      return "status";
    case Task::kGoLive:
      return "live";
    case Task::kPrune:
      return "prune";
    case Task::kKeygen:
      return "keygen";
    case Task::kPublish:
      break;
  }
  return options.publish.dryRun ? "dry-run" : "publish";
}

int ReportCheck(const patcher::publisher::CheckResult& result, const Options& options, Report& report) {
  MiniJson::Value list = MiniJson::Value::MakeArray();
  for (const std::string& finding : result.findings) {
    if (!options.json) report.Print(finding);
    list.arrayItems.push_back(MiniJson::Value::MakeString(finding));
  }
  const std::size_t count = result.findings.size();
  report.Add("summary", MiniJson::Value::MakeString(result.summary));
  report.Add("findings", std::move(list));
  report.Line(result.summary + "; " +
              (count == 0 ? "no findings" : patcher::publisher::Counted(count, "finding")));
  return count == 0 ? kDone : kFailed;
}

int Check(const Options& options, Report& report) {
  patcher::publisher::CheckResult result = patcher::publisher::CheckPublication(options.www, options.quiet);
  if (options.publicKey) {
    const std::string finding = patcher::publisher::SignatureFinding(options.www, *options.publicKey);
    if (!finding.empty()) result.findings.push_back(finding);
  }
  return ReportCheck(result, options, report);
}

/// Prints the public key even with --quiet.
void MakeKey(const Options& options, Report& report) {
  const std::string publicKey = patcher::publisher::MakeKeyFile(options.keyFile);
  if (!options.json) report.Print(publicKey);
  report.Add("publicKey", MiniJson::Value::MakeString(publicKey));
}

int Run(const Options& options, Report& report) {
  switch (options.task) {
    case Task::kHelp:
      report.Print(patcher::publisher::HelpText());
      break;
    case Task::kCheck:
      return Check(options, report);
    case Task::kCheckServer:
      return ReportCheck(patcher::publisher::CheckServer(options.serverCheck), options, report);
    case Task::kListUpload:
      for (const std::string& line : patcher::publisher::UploadList(options.www, options.since)) {
        report.Print(line);
      }
      break;
    case Task::kKeygen:
      MakeKey(options, report);
      break;
    case Task::kStatus:
      patcher::publisher::ReportStatus(options.www, options.keep, options.quiet, report);
      break;
    case Task::kGoLive:
      patcher::publisher::GoLive(options.goLive, report);
      break;
    case Task::kPrune:
      patcher::publisher::PruneFolder(options.www, options.keep, options.quiet, report);
      break;
    case Task::kPublish:
      patcher::publisher::Publish(options.publish, report);
      break;
  }
  return kDone;
}

int Fail(const std::string& error, ExitCode code, Report& report) {
  platform::WriteErrorLine("patch-publish: " + error);
  report.Finish(code == kLaterStepFailed, error);
  return code;
}

bool ChangesPlayers(const Options& options) {
  return options.task == Task::kGoLive || (options.task == Task::kPublish && !options.publish.dryRun);
}

Report::Form FormOf(const Options& options) {
  if (options.json) return options.task == Task::kHelp ? Report::Form::kNothing : Report::Form::kJson;
  return options.quiet ? Report::Form::kNothing : Report::Form::kLines;
}

int RunReporting(const Options& options) {
  Report report(FormOf(options), NameOf(options));
  if (!options.error.empty()) return Fail(options.error + "; see --help", kUsage, report);
  try {
    const int code = Run(options, report);
    report.Finish(true, "");
    if (report.IsWritten()) return code;
    platform::WriteErrorLine("patch-publish: cannot write the result to standard output");
    return ChangesPlayers(options) ? kLaterStepFailed : kFailed;
  } catch (const patcher::publisher::LaterStepError& failure) {
    return Fail(failure.what(), kLaterStepFailed, report);
  } catch (const std::exception& failure) {
    return Fail(failure.what(), kFailed, report);
  }
}

}  // namespace

int main(int argc, char** argv) {
  platform::SurviveBrokenPipes();
  platform::UseBinaryStandardStreams();
  try {
    return RunReporting(patcher::publisher::ReadOptions(platform::CommandLineArguments(argc, argv)));
  } catch (const std::exception& failure) {
    platform::WriteErrorLine(std::string("patch-publish: ") + failure.what());
  }
  return kFailed;
}
