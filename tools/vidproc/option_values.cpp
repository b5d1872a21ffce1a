// Values of options; see option_values.h.
#include "option_values.h"

#include <charconv>
#include <system_error>
#include <utility>

namespace vidproc::tool {

std::optional<std::int64_t> ParseNumber(const std::string& text) {
  std::int64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

std::optional<std::vector<std::int64_t>> ParseNumbers(const std::string& text, char separator) {
  std::vector<std::int64_t> numbers;
  std::size_t begin = 0;
  while (true) {
    const std::size_t end = text.find(separator, begin);
    const std::optional<std::int64_t> number = ParseNumber(text.substr(begin, end - begin));
    if (!number) return std::nullopt;
    numbers.push_back(*number);
    if (end == std::string::npos) return numbers;
    begin = end + 1;
  }
}

bool TakeList(const std::string& text, const std::vector<std::pair<std::int32_t*, std::pair<int, int>>>& places) {
  const auto numbers = ParseNumbers(text, ':');
  if (!numbers || numbers->size() > places.size()) return false;
  for (std::size_t i = 0; i < numbers->size(); ++i) {
    const auto& [place, range] = places[i];
    if ((*numbers)[i] < range.first || (*numbers)[i] > range.second) return false;
    *place = static_cast<std::int32_t>((*numbers)[i]);
  }
  return true;
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

CLI::Option* AddPath(CLI::App& command, const std::string& name, const std::string& type, std::string& path,
                     const std::string& help) {
  return AddValue(command, name, type, "the name of a file: it is empty", help, [&path](const std::string& text) {
    path = text;
    return !text.empty();
  });
}

CLI::Option* AddSize(CLI::App& command, const std::string& name, Size& size, const std::string& help) {
  return AddValue(command, name, "WxH", "WxH with a width of 2 to 16384 and a height of 1 to 16384", help,
                  [&size](const std::string& text) {
                    const auto sides = ParseNumbers(text, 'x');
                    if (!sides || sides->size() != 2) return false;
                    const std::int64_t width = (*sides)[0], height = (*sides)[1];
                    if (width < 2 || width > 16384 || height < 1 || height > 16384) return false;
                    size = {static_cast<int>(width), static_cast<int>(height)};
                    return true;
                  });
}

}  // namespace vidproc::tool
