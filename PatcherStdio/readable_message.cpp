#include "readable_message.h"

#include <array>
#include <charconv>
#include <exception>
#include <locale>
#include <sstream>

#include "minijson/minijson.h"

namespace patcher {
namespace {

using MiniJson::Value;

std::string Text(const Value& message, const char* key) {
  const Value* member = message.Find(key);
  return member != nullptr ? member->AsString("") : "";
}

std::string Number(const Value& message, const char* key) {
  const Value* member = message.Find(key);
  // Formatted as a double: a size may be too large for every integer type.
  std::array<char, 32> text;
  const std::to_chars_result end =
      std::to_chars(text.data(), text.data() + text.size(), member != nullptr ? member->AsNumber(0) : 0.0,
                    std::chars_format::fixed, 0);
  return {text.data(), end.ptr};
}

bool Flag(const Value& message, const char* key) {
  const Value* member = message.Find(key);
  return member != nullptr && member->boolValue;
}

std::string Progress(const Value& message) {
  return Number(message, "percent") + "%  " + Number(message, "fileIndex") + "/" +
         Number(message, "fileCount") + "  " + Number(message, "downloadedBytes") + "/" +
         Number(message, "totalBytes") + " bytes  " + Text(message, "currentFile");
}

std::string Check(const Value& message) {
  if (message.Find("error") != nullptr) return "check failed: " + Text(message, "error");
  std::string line = "check: " + Number(message, "total") + " files, " + Number(message, "ok") +
                     " correct, " + Number(message, "missing") + " missing, " + Number(message, "corrupt") +
                     " damaged";
  if (const Value* samples = message.Find("samples")) {
    for (const Value& path : samples->arrayItems) line += "\n  " + path.AsString("");
  }
  return line;
}

/// One line for each item of the published document, with its date and title as published.
std::string News(const Value& message) {
  if (!Flag(message, "ok")) return "news unavailable";
  const std::string body = Text(message, "body");
  std::string line = "news: " + std::to_string(body.size()) + " bytes";
  try {
    std::size_t position = 0;
    const Value document = MiniJson::Parse(body, position);
    if (const Value* items = document.Find("items")) {
      for (const Value& item : items->arrayItems) {
        line += "\n  " + Text(item, "date") + "  " + Text(item, "title");
      }
    }
  } catch (const std::exception&) {
    line += ", not readable";
  }
  return line;
}

/// Six significant digits without trailing zeros, like in the settings file.
std::string Decimal(double number) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text << number;
  return text.str();
}

/// The render settings that differ from their defaults.
std::string ChangedTuning(const Value& message, const Value& values) {
  std::string line;
  const Value* tune = message.Find("tune");
  if (tune == nullptr) return line;
  for (const Value& row : tune->arrayItems) {
    const Value* value = values.Find(Text(row, "id"));
    const Value* usual = row.Find("def");
    if (value == nullptr || usual == nullptr || value->numberValue == usual->numberValue) continue;
    line +=
        ' ' + Text(row, "id") + '=' + Decimal(value->numberValue) + " (" + Decimal(usual->numberValue) + ')';
  }
  return line;
}

/// Lists the basic settings, then the render settings that differ from their defaults.
std::string Options(const Value& message) {
  std::string line = Flag(message, "iniExists") ? "settings of ostu.ini:" : "settings (no ostu.ini yet):";
  const Value* values = message.Find("values");
  if (values == nullptr) return line;
  const Value* tune = message.Find("tune");
  const std::size_t tuned = tune != nullptr ? tune->arrayItems.size() : 0;
  for (std::size_t i = 0; i + tuned < values->objectMembers.size(); ++i) {
    const auto& [id, value] = values->objectMembers[i];
    line += (i % 6 == 0 ? "\n  " : " ") + id + '=' + Decimal(value.numberValue);
  }
  const std::string changed = ChangedTuning(message, *values);
  return line + "\n  rendering:" + (changed.empty() ? " all at their defaults" : changed);
}

}  // namespace

std::string ReadableMessage(const std::string& json) {
  std::size_t position = 0;
  const Value message = MiniJson::Parse(json, position);
  const std::string type = Text(message, "type");
  if (type == "status") return Text(message, "text");
  if (type == "progress") return Progress(message);
  if (type == "versions") return "version " + Number(message, "current") + " of " + Number(message, "latest");
  if (type == "server") return Flag(message, "online") ? "server online" : "server offline";
  if (type == "ready") return Flag(message, "canPlay") ? "ready to play" : "cannot play";
  if (type == "news") return News(message);
  if (type == "check") return Check(message);
  if (type == "options") return Options(message);
  if (type == "optionsSaved") return Flag(message, "ok") ? "settings saved" : "settings could not be saved";
  return json;
}

}  // namespace patcher
