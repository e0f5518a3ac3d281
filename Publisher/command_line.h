#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace patcher::publisher {

/// An option that a command line may have.
struct OptionRule {
  enum class Kind { kSwitch, kValue, kList };  ///< a list may be given several times
  std::string_view name;
  Kind kind;
  unsigned tasks;  ///< a bit for each task that it goes together with
  std::string_view shortName = {};
};

/// A command line taken apart by rules: "--option value" or "--option=value". Remembers the first thing that
/// is wrong with it.
class CommandLine {
 public:
  /// `rules` outlives the object.
  CommandLine(const std::vector<OptionRule>& rules, const std::vector<std::string>& arguments);

  bool Has(std::string_view name) const { return values_.find(name) != values_.end(); }

  /// Fails if the option is missing.
  std::filesystem::path Path(std::string_view name);
  /// From `lowest` to `highest`; nothing if the option is missing.
  std::optional<std::int32_t> Number(std::string_view name, std::int32_t highest, std::int32_t lowest = 1);
  std::vector<std::string> List(std::string_view name) const;

  /// Options that do not go together with the task fail; `name` is the option that asks for it.
  void AllowOnly(unsigned task, std::string_view name);
  void Fail(const std::string& error);
  const std::string& Error() const { return error_; }

 private:
  const OptionRule* FindRule(std::string_view name) const;
  void FailUnknown(const std::string& argument);
  void Take(const OptionRule& rule, const std::string& value);

  const std::vector<OptionRule>& rules_;
  std::map<std::string_view, std::vector<std::string>> values_;
  std::string error_;
};

}  // namespace patcher::publisher
