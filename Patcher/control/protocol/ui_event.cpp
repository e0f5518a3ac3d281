#include "control/protocol/ui_event.h"

#include <algorithm>
#include <memory>

namespace patcher {
namespace {

template <typename Payload>
void PostWithPayload(HostWindow& window, UiEventKind kind, const Payload& payload) {
  // The receiver owns and frees the copy.
  auto copy = std::make_unique<Payload>(payload);
  window.PostEvent({static_cast<std::uint32_t>(kind), 0, reinterpret_cast<std::intptr_t>(copy.release())});
}

void PostPlain(HostWindow& window, UiEventKind kind, std::uintptr_t wParam = 0, std::intptr_t lParam = 0) {
  window.PostEvent({static_cast<std::uint32_t>(kind), wParam, lParam});
}

}  // namespace

void PostStatus(HostWindow& window, const std::string& text) {
  // An address or a name from outside may contain control characters. The page would reject the message.
  std::string line = text;
  std::replace_if(
      line.begin(), line.end(), [](char c) { return static_cast<unsigned char>(c) < 32 && c != '\n'; }, ' ');
  PostWithPayload(window, UiEventKind::UiStatus, line);
}

void PostProgress(HostWindow& window, const ProgressReport& report) {
  PostWithPayload(window, UiEventKind::UiProgress, report);
}

void PostReady(HostWindow& window, bool canPlay) { PostPlain(window, UiEventKind::UiReady, canPlay ? 1 : 0); }

void PostSelfUpdate(HostWindow& window) { PostPlain(window, UiEventKind::UiSelfUpdate); }

void PostVersions(HostWindow& window, std::int32_t current, std::int32_t latest) {
  PostPlain(window, UiEventKind::UiVersions, static_cast<std::uint32_t>(current), latest);
}

void PostServer(HostWindow& window, bool online) { PostPlain(window, UiEventKind::UiServer, online ? 1 : 0); }

void PostNarrowJson(HostWindow& window, const std::string& json) {
  PostWithPayload(window, UiEventKind::UiNarrowJson, json);
}

void PostWideJson(HostWindow& window, const std::u16string& json) {
  PostWithPayload(window, UiEventKind::UiWideJson, json);
}

void ReleasePayload(const UiEvent& event) {
  switch (static_cast<UiEventKind>(event.number)) {
    case UiEventKind::UiStatus:
    case UiEventKind::UiNarrowJson:
      delete reinterpret_cast<std::string*>(event.lParam);
      break;
    case UiEventKind::UiProgress:
      delete reinterpret_cast<ProgressReport*>(event.lParam);
      break;
    case UiEventKind::UiWideJson:
      delete reinterpret_cast<std::u16string*>(event.lParam);
      break;
    case UiEventKind::UiReady:
    case UiEventKind::UiSelfUpdate:
    case UiEventKind::UiVersions:
    case UiEventKind::UiServer:
      break;
  }
}

}  // namespace patcher
