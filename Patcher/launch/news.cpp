#include "launch/news.h"

#include <exception>
#include <string>

#include "control/protocol/page_messages.h"
#include "control/protocol/ui_event.h"
#include "transport/config.h"
#include "transport/http_session.h"

namespace patcher {
namespace {

constexpr char kNewsPath[] = "/api/news.json";
constexpr std::size_t kMaxNewsBytes = 262144;

/// The document, or an empty text if it is not available or too large.
std::string GetDocument() {
  HttpSession session;
  std::string error;
  std::string body;
  if (!session.Connect(PatchConfig::Current().baseUrl, error)) return {};
  if (!session.GetToString(kNewsPath, body, kMaxNewsBytes + 1) || body.size() > kMaxNewsBytes) return {};
  return body;
}

std::u16string BuildAnswer() {
  try {
    const std::string document = GetDocument();
    if (!document.empty()) return BuildNewsMessage(document);
  } catch (const std::exception&) {
    // The page shows all failures in the same way.
  }
  return BuildNewsFailedMessage();
}

}  // namespace

void FetchNews(HostWindow& window) { PostWideJson(window, BuildAnswer()); }

}  // namespace patcher
