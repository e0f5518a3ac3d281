#include "command_line.h"

#include <algorithm>
#include <charconv>
#include <numeric>
#include <utility>

#include "platform/text.h"

namespace patcher::publisher {

namespace {

/// The number of characters to insert, delete or replace to change one text into the other.
std::size_t EditDistance(std::string_view from, std::string_view to) {
  std::vector<std::size_t> row(to.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < from.size(); ++i) {
    std::size_t diagonal = std::exchange(row[0], i + 1);
    for (std::size_t j = 0; j < to.size(); ++j) {
      const std::size_t replacement = diagonal + (from[i] == to[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replacement, diagonal + 1, row[j] + 1});
    }
  }
  return row.back();
}

}  // namespace

CommandLine::CommandLine(const std::vector<OptionRule>& rules, const std::vector<std::string>& arguments)
    : rules_(rules) {
  for (std::size_t i = 0; i < arguments.size() && error_.empty(); ++i) {
    const std::string& argument = arguments[i];
    const std::size_t equals = argument.starts_with("--") ? argument.find('=') : std::string::npos;
    const std::string name = argument.substr(0, equals);
    const OptionRule* rule = FindRule(name);
    if (rule == nullptr) {
      FailUnknown(name);
    } else if (rule->kind == OptionRule::Kind::kSwitch) {
      if (equals != std::string::npos) Fail(name + " takes no value");
      Take(*rule, "");
    } else if (equals != std::string::npos) {
      Take(*rule, argument.substr(equals + 1));
    } else if (i + 1 == arguments.size()) {
      Fail(name + " needs a value");
    } else if (arguments[i + 1].starts_with('-') && FindRule(arguments[i + 1]) != nullptr) {
      Fail(name + " needs a value; " + arguments[i + 1] + " is an option");
    } else {
      Take(*rule, arguments[++i]);
    }
  }
}

std::filesystem::path CommandLine::Path(std::string_view name) {
  const auto entry = values_.find(name);
  if (entry == values_.end()) {
    Fail(std::string(name) + " is missing");
    return {};
  }
  return platform::PathFromUtf8(entry->second.front());
}

std::optional<std::int32_t> CommandLine::Number(std::string_view name, std::int32_t highest,
                                                std::int32_t lowest) {
  const auto entry = values_.find(name);
  if (entry == values_.end()) return std::nullopt;
  const std::string& text = entry->second.front();
  std::int32_t number = 0;
  const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (failure != std::errc() || end != text.data() + text.size() || number < lowest || number > highest) {
    Fail(std::string(name) + " takes a number from " + std::to_string(lowest) + " to " +
         std::to_string(highest) + ", not '" + text + "'");
  }
  return number;
}

std::vector<std::string> CommandLine::List(std::string_view name) const {
  const auto entry = values_.find(name);
  return entry != values_.end() ? entry->second : std::vector<std::string>();
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
  const auto rule = std::find_if(rules_.begin(), rules_.end(), [name](const OptionRule& r) {
    return r.name == name || r.shortName == name;
  });
  return rule != rules_.end() ? &*rule : nullptr;
}

void CommandLine::FailUnknown(const std::string& argument) {
  constexpr std::size_t kMaxTypingErrors = 2;
  std::string error = "unknown argument '" + argument + "'";
  const auto nearest = std::min_element(rules_.begin(), rules_.end(), [&](const auto& a, const auto& b) {
    return EditDistance(argument, a.name) < EditDistance(argument, b.name);
  });
  if (nearest != rules_.end() && EditDistance(argument, nearest->name) <= kMaxTypingErrors) {
    error += " (did you mean " + std::string(nearest->name) + "?)";
  }
  Fail(error);
}

void CommandLine::Take(const OptionRule& rule, const std::string& value) {
  std::vector<std::string>& values = values_[rule.name];
  if (!values.empty() && rule.kind != OptionRule::Kind::kList) {
    Fail(std::string(rule.name) + " is given twice");
  }
  if (value.empty() && rule.kind != OptionRule::Kind::kSwitch) {
    Fail(std::string(rule.name) + " needs a value");
  }
  values.push_back(value);
}

}  // namespace patcher::publisher
