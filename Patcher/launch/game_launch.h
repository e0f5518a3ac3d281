#pragma once

#include <filesystem>

#include "shared/show_error.h"

namespace patcher {

/// The game client in the install directory.
std::filesystem::path ClientPath();

/// Whether there is anything at ClientPath; a failed query counts as no. Any thread.
bool ClientExists();

/// Starts the client with its fixed token, in the install directory, or shows why it cannot. Main thread.
void LaunchClient(const ShowError& showError);

}  // namespace patcher
