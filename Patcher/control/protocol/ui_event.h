#pragma once

#include <cstdint>
#include <string>

#include "control/protocol/host_window.h"

namespace patcher {

/// The kinds of UiEvent: WM_APP + 1 to WM_APP + 8.
enum class UiEventKind : std::uint32_t {
  UiStatus = 0x8001,      ///< lParam: std::string, UTF-8
  UiProgress = 0x8002,    ///< lParam: ProgressReport
  UiReady = 0x8003,       ///< wParam 1: the client can be played
  UiSelfUpdate = 0x8004,  ///< replace the launcher and end
  UiVersions = 0x8005,    ///< wParam: current version, lParam: latest version
  UiServer = 0x8006,      ///< wParam 1: the patch server answered
  UiNarrowJson = 0x8007,  ///< lParam: std::string, a finished message in UTF-8
  UiWideJson = 0x8008,    ///< lParam: std::u16string, a finished message
};

/// What the progress bar shows.
struct ProgressReport {
  std::int32_t percent = 0;  ///< 0 to 100
  std::uint64_t downloadedBytes = 0;
  std::uint64_t totalBytes = 0;
  std::uint64_t speedBps = 0;  ///< bytes per second; 0 if unknown
  std::string currentFile;     ///< UTF-8; may be empty
  std::int32_t fileIndex = 0;  ///< files done
  std::int32_t fileCount = 0;
};

// Any thread; none of these functions waits or reports a failure.

void PostStatus(HostWindow& window, const std::string& text);
void PostProgress(HostWindow& window, const ProgressReport& report);
void PostReady(HostWindow& window, bool canPlay);
void PostSelfUpdate(HostWindow& window);
void PostVersions(HostWindow& window, std::int32_t current, std::int32_t latest);
void PostServer(HostWindow& window, bool online);
void PostNarrowJson(HostWindow& window, const std::string& json);
void PostWideJson(HostWindow& window, const std::u16string& json);

/// Frees the payload of an event that will never be handled.
void ReleasePayload(const UiEvent& event);

}  // namespace patcher
