#include "minijson/minijson.h"

namespace MiniJson {
namespace {

Value OfKind(Kind kind) {
  Value value;
  value.kind = kind;
  return value;
}

}  // namespace

Value Value::MakeBool(bool boolean) {
  Value value = OfKind(Kind::Bool);
  value.boolValue = boolean;
  return value;
}

Value Value::MakeNumber(double number) {
  Value value = OfKind(Kind::Number);
  value.numberValue = number;
  return value;
}

Value Value::MakeString(std::string text) {
  Value value = OfKind(Kind::String);
  value.stringValue = std::move(text);
  return value;
}

Value Value::MakeArray() { return OfKind(Kind::Array); }

Value Value::MakeObject() { return OfKind(Kind::Object); }

const Value* Value::Find(std::string_view key) const {
  for (const auto& member : objectMembers) {
    if (member.first == key) return &member.second;
  }
  return nullptr;
}

void Value::Set(std::string_view key, Value value) {
  for (auto& member : objectMembers) {
    if (member.first == key) {
      member.second = std::move(value);
      return;
    }
  }
  objectMembers.emplace_back(key, std::move(value));
}

std::string Value::AsString(std::string_view fallback) const {
  return kind == Kind::String ? stringValue : std::string(fallback);
}

double Value::AsNumber(double fallback) const { return kind == Kind::Number ? numberValue : fallback; }

}  // namespace MiniJson
