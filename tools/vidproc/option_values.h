// Values of options: read strictly, and refused with what is allowed.
#pragma once

#include <CLI/CLI.hpp>
#include <algorithm>
#include <concepts>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "picture.h"

namespace vidproc::tool {

/// A whole number and nothing else.
std::optional<std::int64_t> ParseNumber(const std::string& text);

/// Whole numbers with a separator between them; nothing where one of them is none.
std::optional<std::vector<std::int64_t>> ParseNumbers(const std::string& text, char separator);

/// Numbers between colons, each in its range; those that are not given keep their values. False for anything else.
bool TakeList(const std::string& text, const std::vector<std::pair<std::int32_t*, std::pair<int, int>>>& places);

/// An option whose text `take` reads; false makes the error "NAME: "TEXT" is not ALLOWED".
CLI::Option* AddValue(CLI::App& command, const std::string& name, const std::string& type, const std::string& allowed,
                      const std::string& help, std::function<bool(const std::string&)> take);

template <std::integral Number>
CLI::Option* AddNumber(CLI::App& command, const std::string& name, Number& value, std::int64_t low, std::int64_t high,
                       const std::string& help) {
  const std::string allowed = "a whole number from " + std::to_string(low) + " to " + std::to_string(high);
  return AddValue(command, name, "N", allowed, help, [&value, low, high](const std::string& text) {
    const std::optional<std::int64_t> number = ParseNumber(text);
    if (!number || *number < low || *number > high) return false;
    value = static_cast<Number>(*number);
    return true;
  });
}

/// One of some words.
template <typename Value>
CLI::Option* AddChoice(CLI::App& command, const std::string& name, const std::string& type, Value& value,
                       const std::vector<std::pair<std::string, Value>>& choices, const std::string& help) {
  std::string allowed;
  for (const auto& [word, meaning] : choices) allowed += (allowed.empty() ? "" : ", ") + word;
  return AddValue(
      command, name, type, "one of " + allowed, help + ": " + allowed, [&value, choices](const std::string& text) {
        for (const auto& [word, meaning] : choices) {
          if (text == word) value = meaning;
        }
        return std::any_of(choices.begin(), choices.end(), [&](const auto& one) { return one.first == text; });
      });
}

/// The name of a file to read or write; an empty one is most likely a shell variable that is not set.
CLI::Option* AddPath(CLI::App& command, const std::string& name, const std::string& type, std::string& path,
                     const std::string& help);

/// WxH with both sides given.
CLI::Option* AddSize(CLI::App& command, const std::string& name, Size& size, const std::string& help);

}  // namespace vidproc::tool
