#include <algorithm>

#include "minijson/minijson.h"
#include "minijson/reader.h"

namespace MiniJson {
namespace {

/// Largest number of members to reserve before the first is read. Limits the waste after one large object
/// among small ones.
constexpr std::size_t kMaxReserved = 16;

void Build(Reader& reader, Value& value);

void BuildArray(Reader& reader, std::vector<Value>& items) {
  while (reader.NextItem()) {
    // Items of an array are usually alike, so reserve as many members as the previous item has.
    const std::size_t members = items.empty() ? 0 : items.back().objectMembers.size();
    Value& item = items.emplace_back();
    item.objectMembers.reserve(std::min(members, kMaxReserved));
    Build(reader, item);
  }
}

void Build(Reader& reader, Value& value) {
  value.kind = reader.Begin();
  switch (value.kind) {
    case Kind::Null:
      return;
    case Kind::Bool:
      value.boolValue = reader.BoolValue();
      return;
    case Kind::Number:
      value.numberValue = reader.NumberValue();
      return;
    case Kind::String:
      reader.ReadString(value.stringValue);
      return;
    case Kind::Array:
      BuildArray(reader, value.arrayItems);
      return;
    case Kind::Object:
      while (reader.NextMember()) {
        auto& member = value.objectMembers.emplace_back();
        reader.ReadKey(member.first);
        Build(reader, member.second);
      }
  }
}

}  // namespace

Value Parse(std::string_view text, std::size_t& position) {
  Reader reader(text, position);
  Value value;
  Build(reader, value);
  position = reader.Position();
  return value;
}

}  // namespace MiniJson
