// Values of options: read strictly, and refused with what is allowed.
#pragma once

#include <CLI/CLI.hpp>
#include <charconv>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "picture.h"

namespace vidproc::tool {

/// A whole number of the range and nothing else; false leaves the value as it is.
template <std::integral Number>
bool TakeNumber(std::string_view text, std::int64_t low, std::int64_t high, Number& value) {
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || number < low || number > high) return false;
  value = static_cast<Number>(number);
  return true;
}

/// The same for a number with or without a fraction.
bool TakeNumber(std::string_view text, double low, double high, double& value);

struct NumberPlace {
  std::int32_t& value;
  int low;
  int high;
};

/// Numbers with separators between them, `least` or more; places for which there is none keep their values.
bool TakeNumbers(std::string_view text, char separator, std::size_t least, const std::vector<NumberPlace>& places);

/// An option whose text `take` reads; false makes the error "NAME: "TEXT" is not ALLOWED".
CLI::Option* AddValue(CLI::App& command, const std::string& name, const std::string& type, const std::string& allowed,
                      const std::string& help, std::function<bool(const std::string&)> take);

template <std::integral Number>
void AddNumber(CLI::App& command, const std::string& name, Number& value, std::int64_t low, std::int64_t high,
               const std::string& help) {
  const std::string allowed = "a whole number from " + std::to_string(low) + " to " + std::to_string(high);
  AddValue(command, name, "N", allowed, help,
           [&value, low, high](const std::string& text) { return TakeNumber(text, low, high, value); });
}

/// One of some words, handed to `take`.
void AddWord(CLI::App& command, const std::string& name, const std::string& type, const std::vector<std::string>& words,
             const std::string& help, std::function<void(const std::string& word)> take);

/// One of some words that stand for values.
template <typename Value>
void AddChoice(CLI::App& command, const std::string& name, const std::string& type, Value& value,
               const std::vector<std::pair<std::string, Value>>& choices, const std::string& help) {
  std::vector<std::string> words;
  words.reserve(choices.size());
  for (const auto& choice : choices) words.push_back(choice.first);
  AddWord(command, name, type, words, help, [&value, choices](const std::string& text) {
    for (const auto& [word, meaning] : choices) {
      if (word == text) value = meaning;
    }
  });
}

/// The name of a file to read or write; an empty one is most likely a shell variable that is not set.
void AddPath(CLI::App& command, const std::string& name, const std::string& type, std::string& path,
             const std::string& help);

/// WxH with both sides given.
CLI::Option* AddSize(CLI::App& command, const std::string& name, Size& size, const std::string& help);
/// WxH, Wx or xH; a side that is left open stays 0.
void AddOpenSize(CLI::App& command, const std::string& name, Size& size, const std::string& help);

}  // namespace vidproc::tool
