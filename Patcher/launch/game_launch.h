#pragma once

#include <filesystem>
#include <functional>
#include <string>

namespace patcher {

/// The game client in the install directory.
std::filesystem::path ClientPath();

/// Whether something stands at ClientPath; a failed query counts as no. Any thread.
bool ClientExists();

/// Shows a text and blocks until the player has closed it.
using ErrorBox = std::function<void(const std::u16string& text, const std::u16string& title)>;

/// Starts the client with its fixed token, in the install directory, or shows why it cannot. Main thread.
void LaunchClient(const ErrorBox& showErrorBox);

}  // namespace patcher
