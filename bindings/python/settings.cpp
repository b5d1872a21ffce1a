#include "settings.h"

#include <cstring>

namespace py = pybind11;

namespace vidproc::python {

std::int32_t NumberOf(const vidproc_option& option, const py::handle& value) {
  if (!py::isinstance<py::str>(value) || option.choices == nullptr) {
    if (py::isinstance<py::int_>(value)) return ValueAs<std::int32_t>(option.name, value, "an int of 32 bits");
    throw py::type_error(std::string(option.name) + " is a " + Py_TYPE(value.ptr())->tp_name + ", wanted an int" +
                         (option.choices == nullptr ? "" : " or a name"));
  }
  const auto text = ValueAs<std::string>(option.name, value, "a name");
  std::string known;
  for (std::int32_t number = 0; number <= option.high; ++number) {
    if (text == option.choices[number]) return number;
    known += std::string(number == 0 ? "" : ", ") + option.choices[number];
  }
  throw py::value_error(std::string(option.name) + " is '" + text + "', allowed: " + known);
}

py::object ValueOf(const vidproc_option& option, std::int32_t number) {
  if (option.choices != nullptr) return py::str(option.choices[number]);
  return py::int_(number);
}

std::string DocumentationOf(const vidproc_option& option) {
  std::string range;
  if (option.choices != nullptr) {
    for (std::int32_t value = 0; value <= option.high; ++value) {
      range += std::string(value == 0 ? "" : ", ") + option.choices[value];
    }
  } else {
    if (option.also < option.low) range = std::to_string(option.also) + " or ";
    range += std::to_string(option.low);
    if (option.high > option.low) range += " to " + std::to_string(option.high);
  }
  const auto standard = py::str(ValueOf(option, option.default_value)).cast<std::string>();
  return std::string(option.name) + ": " + range + "; default " + standard + "\n    " + option.text + "\n";
}

}  // namespace vidproc::python
