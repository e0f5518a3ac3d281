#include "readable_message.h"

#include <cstdint>
#include <exception>

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
  return std::to_string(static_cast<std::int64_t>(member != nullptr ? member->AsNumber(0) : 0));
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

/// The published document's items as far as it can be read; the page reads it in the same way.
std::string News(const Value& message) {
  if (!Flag(message, "ok")) return "no news to be had";
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
  return json;
}

}  // namespace patcher
