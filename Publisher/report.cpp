#include "report.h"

#include <sstream>
#include <utility>

#include "platform/standard_streams.h"

namespace patcher::publisher {

using MiniJson::Value;

void Report::Line(std::string_view line) {
  if (form_ == Form::kLines) Print(line);
}

void Report::Print(std::string_view line) { isWritten_ = platform::WriteLine(line) && isWritten_; }

void Report::Add(std::string_view key, Value value) { members_.Set(key, std::move(value)); }

void Report::Add(std::string_view key, std::uint64_t number) { Add(key, JsonNumber(number)); }

void Report::Finish(bool done, const std::string& error) {
  if (form_ != Form::kJson) return;
  Value object = Value::MakeObject();
  object.Set("task", Value::MakeString(task_));
  object.Set("done", Value::MakeBool(done));
  if (!error.empty()) object.Set("error", Value::MakeString(error));
  for (const auto& [key, value] : members_.objectMembers) object.Set(key, value);
  std::ostringstream out;
  object.Write(out, 0);
  Print(out.str());
}

std::string Counted(std::uint64_t count, std::string_view noun) {
  return std::to_string(count) + " " + std::string(noun) + (count == 1 ? "" : "s");
}

Value JsonNumber(std::uint64_t number) { return Value::MakeNumber(static_cast<double>(number)); }

Value JsonAmount(std::size_t files, std::uint64_t bytes) {
  Value amount = Value::MakeObject();
  amount.Set("files", JsonNumber(files));
  amount.Set("bytes", JsonNumber(bytes));
  return amount;
}

}  // namespace patcher::publisher
