#include "command_line.h"

#include <algorithm>
#include <charconv>

#include "platform/text.h"

namespace patcher::publisher {

CommandLine::CommandLine(const std::vector<OptionRule>& rules, const std::vector<std::string>& arguments)
    : rules_(rules) {
  for (std::size_t i = 0; i < arguments.size() && error_.empty(); ++i) {
    const std::string& name = arguments[i];
    const OptionRule* rule = FindRule(name);
    if (rule == nullptr) {
      Fail("unknown argument '" + name + "'");
    } else if (rule->kind == OptionRule::Kind::kSwitch) {
      Take(*rule, "");
    } else if (i + 1 == arguments.size() || arguments[i + 1].empty()) {
      Fail(name + " needs a value");
    } else {
      Take(*rule, arguments[++i]);
    }
  }
}

std::filesystem::path CommandLine::Path(std::string_view name) {
  const auto found = values_.find(name);
  if (found == values_.end()) {
    Fail(std::string(name) + " is missing");
    return {};
  }
  return platform::PathFromUtf8(found->second.front());
}

std::optional<std::int32_t> CommandLine::Number(std::string_view name, std::int32_t highest) {
  const auto found = values_.find(name);
  if (found == values_.end()) return std::nullopt;
  const std::string& text = found->second.front();
  std::int32_t number = 0;
  const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (failure != std::errc() || end != text.data() + text.size() || number < 1 || number > highest) {
    Fail(std::string(name) + " takes a number from 1 to " + std::to_string(highest) + ", not '" + text + "'");
  }
  return number;
}

std::vector<std::string> CommandLine::List(std::string_view name) const {
  const auto found = values_.find(name);
  return found != values_.end() ? found->second : std::vector<std::string>();
}

void CommandLine::AllowOnly(unsigned task, std::string_view name) {
  for (const auto& [given, values] : values_) {
    if ((FindRule(given)->tasks & task) == 0) {
      Fail(std::string(given) + " does not go together with " + std::string(name));
    }
  }
}

void CommandLine::Fail(const std::string& error) {
  if (error_.empty()) error_ = error;
}

const OptionRule* CommandLine::FindRule(std::string_view name) const {
  const auto rule =
      std::find_if(rules_.begin(), rules_.end(), [name](const OptionRule& r) { return r.name == name; });
  return rule != rules_.end() ? &*rule : nullptr;
}

void CommandLine::Take(const OptionRule& rule, const std::string& value) {
  std::vector<std::string>& values = values_[rule.name];
  if (!values.empty() && rule.kind != OptionRule::Kind::kList) {
    Fail(std::string(rule.name) + " is given twice");
  }
  values.push_back(value);
}

}  // namespace patcher::publisher
