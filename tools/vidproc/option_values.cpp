// Values of options; see option_values.h.
#include "option_values.h"

#include <algorithm>

namespace vidproc::tool {
namespace {

constexpr int kNarrowest = 2, kLargest = 16384;
constexpr const char* kSides = " with a width of 2 to 16384 and a height of 1 to 16384";

bool TakeSize(std::string_view text, Size& size) {
  return TakeNumbers(text, 'x', 2, {{size.width, kNarrowest, kLargest}, {size.height, 1, kLargest}});
}

}  // namespace

bool TakeNumber(std::string_view text, double low, double high, double& value) {
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool isInside = number >= low && number <= high;  // which "nan" is not
  if (error != std::errc() || end != text.data() + text.size() || !isInside) return false;
  value = number;
  return true;
}

bool TakeNumbers(std::string_view text, char separator, std::size_t least, const std::vector<NumberPlace>& places) {
  std::size_t taken = 0;
  for (const auto& [value, low, high] : places) {
    const std::size_t end = text.find(separator);
    if (!TakeNumber(text.substr(0, end), low, high, value)) return false;
    ++taken;
    if (end == std::string_view::npos) return taken >= least;
    text.remove_prefix(end + 1);
  }
  return false;
}

CLI::Option* AddValue(CLI::App& command, const std::string& name, const std::string& type, const std::string& allowed,
                      const std::string& help, std::function<bool(const std::string&)> take) {
  const std::size_t begin = name.find("--");
  const std::string shown = name.substr(begin, name.find(',', begin) - begin);
  return command
      .add_option_function<std::string>(
          name,
          [shown, allowed, take = std::move(take)](const std::string& text) {
            if (!take(text)) throw CLI::ValidationError(shown, "\"" + text + "\" is not " + allowed);
          },
          help)
      ->type_name(type);
}

void AddWord(CLI::App& command, const std::string& name, const std::string& type, const std::vector<std::string>& words,
             const std::string& help, std::function<void(const std::string& word)> take) {
  const std::string list = CLI::detail::join(words, ", ");
  AddValue(command, name, type, "one of " + list, help + ": " + list,
           [words, take = std::move(take)](const std::string& text) {
             const bool isKnown = std::find(words.begin(), words.end(), text) != words.end();
             if (isKnown) take(text);
             return isKnown;
           });
}

void AddPath(CLI::App& command, const std::string& name, const std::string& type, std::string& path,
             const std::string& help) {
  AddValue(command, name, type, "the name of a file: it is empty", help, [&path](const std::string& text) {
    path = text;
    return !text.empty();
  });
}

CLI::Option* AddSize(CLI::App& command, const std::string& name, Size& size, const std::string& help) {
  return AddValue(command, name, "WxH", std::string("WxH") + kSides, help,
                  [&size](const std::string& text) { return TakeSize(text, size); });
}

void AddOpenSize(CLI::App& command, const std::string& name, Size& size, const std::string& help) {
  AddValue(command, name, "WxH", std::string("WxH, Wx or xH") + kSides, help, [&size](const std::string& text) {
    if (text.starts_with('x')) return TakeNumber(text.substr(1), 1, kLargest, size.height);
    if (text.ends_with('x')) return TakeNumber(text.substr(0, text.size() - 1), kNarrowest, kLargest, size.width);
    return TakeSize(text, size);
  });
}

}  // namespace vidproc::tool
