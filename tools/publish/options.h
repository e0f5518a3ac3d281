#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "publish.h"

namespace patcher {

/// What the command line asks for.
struct Options {
  enum class Task { kPublish, kCheck, kHelp };
  Task task = Task::kPublish;
  PublishRequest request;
  std::filesystem::path checked;  ///< the web server's folder of a check
  std::string error;              ///< not empty: the command line is wrong, and why
};

Options ReadOptions(const std::vector<std::string>& arguments);

/// The text of --help.
std::string_view HelpText();

}  // namespace patcher
