// Keyword arguments as the library's options, by the names that the library lists.
#pragma once

#include <pybind11/pybind11.h>

#include <string>

#include "frames.h"

namespace vidproc::python {

/// One side of the encoder: how its settings and presets are listed.
template <typename Options>
struct Side;

template <>
struct Side<PreOptions> {
  static const vidproc_option* OptionAt(std::int32_t number) { return vidproc_pre_option(number); }
};
template <>
struct Side<PostOptions> {
  static const vidproc_option* OptionAt(std::int32_t number) { return vidproc_post_option(number); }
};

/// A value from Python; raises TypeError where it is no Value.
/// @param wanted  what it has to be, for the error
template <typename Value>
Value ValueAs(const std::string& name, const pybind11::handle& value, const std::string& wanted) {
  try {
    return value.cast<Value>();
  } catch (const pybind11::cast_error&) {
    throw pybind11::type_error(name + " is " + std::string(pybind11::repr(value)) + ", wanted " + wanted);
  }
}

/// A setting's value from Python: the name of a choice, or a number. Raises TypeError and ValueError.
std::int32_t NumberOf(const vidproc_option& option, const pybind11::handle& value);
/// The same the other way.
pybind11::object ValueOf(const vidproc_option& option, std::int32_t number);
/// A line of documentation: name, range, default, text.
std::string DocumentationOf(const vidproc_option& option);

/// Where a setting lies in an options struct.
template <typename Options>
std::int32_t& FieldOf(Options& options, const vidproc_option& option) {
  return *reinterpret_cast<std::int32_t*>(reinterpret_cast<char*>(&options) + option.offset);
}

template <typename Options>
const vidproc_option* OptionNamed(const std::string& name) {
  for (std::int32_t number = 0; const vidproc_option* const option = Side<Options>::OptionAt(number); ++number) {
    if (name == option->name) return option;
  }
  return nullptr;
}

/// Takes a keyword of the output's format, size or siting. @return false for any other name
inline bool TakeOutput(FrameInfo& output, const std::string& name, const pybind11::handle& value) {
  if (name == "output_format") {
    output.format = FormatNamed(ValueAs<std::string>(name, value, "a str"));
  } else if (name == "output_width") {
    output.width = ValueAs<std::int32_t>(name, value, "an int of 32 bits");
  } else if (name == "output_height") {
    output.height = ValueAs<std::int32_t>(name, value, "an int of 32 bits");
  } else if (name == "output_siting") {
    output.siting = SitingNamed(ValueAs<std::string>(name, value, "a str"));
  } else {
    return false;
  }
  return true;
}

/// Changes options by keywords: first `preset`, then all others.
template <typename Options>
Options Changed(Options options, const pybind11::kwargs& keywords) {
  if (keywords.contains("preset") && !keywords["preset"].is_none()) {
    const std::string name = pybind11::str(keywords["preset"]);
    Options preset(name.c_str());
    preset.input = options.input;
    preset.output = options.output;
    options = preset;
  }
  for (const auto& [key, value] : keywords) {
    const std::string name = pybind11::str(key);
    if (name == "preset" || TakeOutput(options.output, name, value)) continue;
    const vidproc_option* const option = OptionNamed<Options>(name);
    if (option == nullptr) throw pybind11::type_error("there is no keyword '" + name + "'");
    FieldOf(options, *option) = NumberOf(*option, value);
  }
  return options;
}

}  // namespace vidproc::python
