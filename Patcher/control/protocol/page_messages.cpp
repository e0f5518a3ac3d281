#include "control/protocol/page_messages.h"

#include <algorithm>

#include "platform/hex_digits.h"
#include "platform/text.h"

namespace patcher {
namespace {

using platform::Utf8ToWide;

/// For numbers and the launcher's own words, which are ASCII.
std::u16string Ascii(std::string_view text) { return {text.begin(), text.end()}; }

template <typename Integer>
std::u16string Decimal(Integer value) {
  return Ascii(std::to_string(value));
}

std::u16string Boolean(bool value) { return value ? u"true" : u"false"; }

void AppendEscapedFully(std::u16string& out, char16_t unit) {
  switch (unit) {
    case u'"':
      out += u"\\\"";
      break;
    case u'\\':
      out += u"\\\\";
      break;
    case u'\n':
      out += u"\\n";
      break;
    case u'\r':
      out += u"\\r";
      break;
    case u'\t':
      out += u"\\t";
      break;
    case u'\b':
      out += u"\\b";
      break;
    case u'\f':
      out += u"\\f";
      break;
    default:
      if (unit < 32) {
        out += u"\\u00" + Ascii(platform::HexOf(static_cast<std::uint8_t>(unit)));
      } else {
        out += unit;
      }
  }
}

/// Escapes a path for `samples`. The page reads a backslash as a slash.
std::string EscapeSample(std::string_view path) {
  std::string out;
  for (char c : path) {
    if (c == '\\') {
      out += "\\/";
    } else if (c == '"') {
      out += "\\\"";
    } else {
      out += c;
    }
  }
  return out;
}

}  // namespace

std::u16string EscapeLight(std::string_view text) {
  std::u16string out;
  for (char16_t unit : Utf8ToWide(text)) {
    if (unit == u'"' || unit == u'\\' || unit == u'\n') {
      AppendEscapedFully(out, unit);
    } else {
      out += unit;
    }
  }
  return out;
}

std::u16string EscapeFull(std::string_view text) {
  std::u16string out;
  for (char16_t unit : Utf8ToWide(text)) AppendEscapedFully(out, unit);
  return out;
}

std::u16string BuildStatusMessage(std::string_view text) {
  return u"{\"type\":\"status\",\"text\":\"" + EscapeLight(text) + u"\"}";
}

std::u16string BuildProgressMessage(const ProgressReport& report) {
  std::string file = report.currentFile;
  std::replace(file.begin(), file.end(), '\\', '/');
  return u"{\"type\":\"progress\",\"percent\":" + Decimal(report.percent) + u",\"downloadedBytes\":" +
         Decimal(report.downloadedBytes) + u",\"totalBytes\":" + Decimal(report.totalBytes) +
         u",\"speedBps\":" + Decimal(report.speedBps) + u",\"currentFile\":\"" + EscapeLight(file) +
         u"\",\"fileIndex\":" + Decimal(report.fileIndex) + u",\"fileCount\":" + Decimal(report.fileCount) +
         u"}";
}

std::u16string BuildVersionsMessage(std::int32_t current, std::int32_t latest) {
  return u"{\"type\":\"versions\",\"current\":" + Decimal(current) + u",\"latest\":" + Decimal(latest) + u"}";
}

std::u16string BuildReadyMessage(bool canPlay) {
  return u"{\"type\":\"ready\",\"canPlay\":" + Boolean(canPlay) + u"}";
}

std::u16string BuildServerMessage(bool online) {
  return u"{\"type\":\"server\",\"online\":" + Boolean(online) + u"}";
}

std::u16string BuildWindowMessage(bool maximized) {
  return u"{\"type\":\"window\",\"maximized\":" + Boolean(maximized) + u"}";
}

std::u16string BuildOptionsSavedMessage(bool ok) {
  return u"{\"type\":\"optionsSaved\",\"ok\":" + Boolean(ok) + u"}";
}

std::u16string BuildNewsMessage(std::string_view body) {
  return u"{\"type\":\"news\",\"ok\":true,\"body\":\"" + EscapeFull(body) + u"\"}";
}

std::u16string BuildNewsFailedMessage() { return u"{\"type\":\"news\",\"ok\":false}"; }

std::string BuildCheckMessage(std::string_view mode, const CheckResult& result) {
  std::string text = "{\"type\":\"check\",\"mode\":\"" + std::string(mode) + "\",\"done\":true";
  text += ",\"total\":" + std::to_string(result.total) + ",\"ok\":" + std::to_string(result.ok);
  text += ",\"missing\":" + std::to_string(result.missing) + ",\"corrupt\":" + std::to_string(result.corrupt);
  text += ",\"bytes\":" + std::to_string(result.bytes) + ",\"samples\":[";
  const std::size_t count = std::min(result.samples.size(), kMaxCheckSamples);
  for (std::size_t i = 0; i < count; ++i) {
    if (i > 0) text += ',';
    text += '"' + EscapeSample(result.samples[i]) + '"';
  }
  return text + "]}";
}

std::string BuildCheckErrorMessage(std::string_view mode, std::string_view error) {
  return "{\"type\":\"check\",\"mode\":\"" + std::string(mode) + "\",\"done\":true,\"error\":\"" +
         std::string(error) + "\"}";
}

}  // namespace patcher
