#pragma once

#include <filesystem>

#include "shared/show_error.h"

namespace patcher {

/// The game client in the install directory.
std::filesystem::path ClientPath();

/// Whether ClientPath exists. Returns false if the query fails. Any thread.
bool ClientExists();

/// Starts the client with its fixed token in the install directory, or shows the reason for a failure. Main
/// thread.
void LaunchClient(const ShowError& showError);

}  // namespace patcher
