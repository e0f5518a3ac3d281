#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "go_live.h"
#include "platform/signature.h"
#include "publish.h"
#include "server_check.h"

namespace patcher::publisher {

/// The parsed command line.
struct Options {
  enum class Task { kPublish, kGoLive, kPrune, kStatus, kCheck, kCheckServer, kListUpload, kKeygen, kHelp };
  Task task = Task::kPublish;
  PublishRequest publish;          ///< of kPublish
  GoLiveRequest goLive;            ///< of kGoLive
  ServerCheckRequest serverCheck;  ///< of kCheckServer
  std::filesystem::path www;       ///< of kPrune, kStatus, kCheck and kListUpload: the web server's root
  std::int32_t since = 0;          ///< of kListUpload
  std::size_t keep = 0;            ///< of kPrune and kStatus
  std::optional<platform::PublicKey> publicKey;  ///< of kCheck: key of the expected signature
  std::filesystem::path keyFile;                 ///< of kKeygen: the new file
  bool quiet = false;
  bool json = false;
  std::string error;  ///< why the command line is wrong; empty if it is correct
};

[[nodiscard]] Options ReadOptions(const std::vector<std::string>& arguments);

/// The text of --help.
[[nodiscard]] std::string_view HelpText();

}  // namespace patcher::publisher
