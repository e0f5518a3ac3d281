#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "minijson/minijson.h"

namespace patcher::publisher {

/// Prints the result of a task to standard output: for people as lines at once, or for scripts as one JSON
/// object at the end. One thread.
class Report {
 public:
  enum class Form { kLines, kJson, kNothing };

  /// `task` is the name of the task in the JSON object.
  Report(Form form, std::string task) : form_(form), task_(std::move(task)) {}

  /// Prints text for people. One or several lines, without the last line feed.
  void Line(std::string_view line);
  /// The same, even in the other forms.
  void Print(std::string_view line);
  /// Adds a member to the JSON object for scripts.
  void Add(std::string_view key, MiniJson::Value value);
  void Add(std::string_view key, std::uint64_t number);

  /// Ends the report. `done`: the task did its main work. `error` is empty if there was no error.
  void Finish(bool done, const std::string& error);

  /// Whether all text could be written to standard output.
  [[nodiscard]] bool IsWritten() const { return isWritten_; }

 private:
  const Form form_;
  const std::string task_;
  bool isWritten_ = true;
  MiniJson::Value members_ = MiniJson::Value::MakeObject();
};

/// "1 file", "2 files".
[[nodiscard]] std::string Counted(std::uint64_t count, std::string_view noun);

[[nodiscard]] MiniJson::Value JsonNumber(std::uint64_t number);

/// {"files": 2, "bytes": 345}
[[nodiscard]] MiniJson::Value JsonAmount(std::size_t files, std::uint64_t bytes);

}  // namespace patcher::publisher
