#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace patcher::publisher {

/// One possible option of a command line.
struct OptionRule {
  enum class Kind { kSwitch, kValue, kList };  ///< kList may be given several times
  std::string_view name;
  Kind kind;
  unsigned tasks;  ///< a bit for each task that allows it
  std::string_view shortName = {};
};

/// Parses a command line by rules: "--option value" or "--option=value". Keeps the first error.
class CommandLine {
 public:
  /// `rules` must outlive the object.
  CommandLine(const std::vector<OptionRule>& rules, const std::vector<std::string>& arguments);

  [[nodiscard]] bool Has(std::string_view name) const { return values_.find(name) != values_.end(); }

  /// Fails if the option is missing.
  [[nodiscard]] std::filesystem::path Path(std::string_view name);
  /// Nothing if the option is missing. Fails if the number is not from `lowest` to `highest`.
  [[nodiscard]] std::optional<std::int32_t> Number(std::string_view name, std::int32_t highest,
                                                   std::int32_t lowest = 1);
  [[nodiscard]] std::vector<std::string> List(std::string_view name) const;

  /// Fails if there are options that the task does not allow. `name` is the option that selects the task.
  void AllowOnly(unsigned task, std::string_view name);
  void Fail(const std::string& error);
  [[nodiscard]] const std::string& Error() const { return error_; }

 private:
  [[nodiscard]] const OptionRule* FindRule(std::string_view name) const;
  void FailUnknown(const std::string& argument);
  void Take(const OptionRule& rule, const std::string& value);

  const std::vector<OptionRule>& rules_;
  std::map<std::string_view, std::vector<std::string>> values_;
  std::string error_;
};

}  // namespace patcher::publisher
