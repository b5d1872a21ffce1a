// The module vidproc._vidproc; vidproc/__init__.pyi has its types.
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <array>
#include <initializer_list>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "frames.h"
#include "settings.h"

namespace py = pybind11;
using namespace py::literals;

namespace vidproc::python {
namespace {

/// A stream that is closed at the end of a `with`. Calls of several threads wait for one another, without the
/// interpreter's lock.
template <typename Stream>
class Guarded {
 public:
  template <typename Call>
  auto Run(const Call& call) {
    const py::gil_scoped_release release;
    const std::lock_guard lock(mutex);
    if (stream == nullptr) throw std::runtime_error("the stream is closed");
    return call(*stream);
  }
  void Close() {
    const py::gil_scoped_release release;
    const std::lock_guard lock(mutex);
    stream.reset();
  }

 private:
  std::mutex mutex;
  std::unique_ptr<Stream> stream = std::make_unique<Stream>();
};

FrameInfo InfoOf(const std::string& format, std::int32_t width, std::int32_t height, const std::string& siting) {
  return {FormatNamed(format), width, height, SitingNamed(siting)};
}

/// Pre with PreOptions, or Post with PostOptions.
template <typename Stream, typename Options>
class Processor {
 public:
  Processor(const std::string& format, std::int32_t width, std::int32_t height, const std::string& siting,
            const py::kwargs& keywords) {
    options.input = options.output = InfoOf(format, width, height, siting);
    Configure(keywords);
  }

  void Configure(const py::kwargs& keywords) {
    const Options changed = Changed(InUse(), keywords);
    stream.Run([&](Stream& s) {
      s.Configure(changed);
      options = changed;
    });
  }

  py::object Process(const py::object& frame, const py::object& output) {
    const Options used = InUse();
    py::object target =
        output.is_none() ? py::array_t<std::uint8_t>(static_cast<py::ssize_t>(FrameBytes(used.output))) : output;
    const BorrowedFrame from(frame, used.input, "frame", BorrowedFrame::Access::kRead);
    const BorrowedFrame to(target, used.output, "output", BorrowedFrame::Access::kWrite);
    stream.Run([&](Stream& s) { s.Process(from.AsInput(), to.AsOutput()); });
    return target;
  }

  void Reset() {
    stream.Run([](Stream& s) { s.Reset(); });
  }
  void Close() { stream.Close(); }
  bool PassesThrough() {
    return stream.Run([](Stream& s) { return s.PassesThrough(); });
  }
  double Noise() {
    return stream.Run([](Stream& s) { return s.Noise() / 100.0; });
  }

  py::dict Settings() {
    Options used = InUse();
    py::dict settings;
    for (std::int32_t number = 0; const vidproc_option* const option = Side<Options>::OptionAt(number); ++number) {
      settings[option->name] = ValueOf(*option, FieldOf(used, *option));
    }
    return settings;
  }

 private:
  /// Another thread may be changing them.
  Options InUse() {
    return stream.Run([&](Stream&) { return options; });
  }

  Options options;
  Guarded<Stream> stream;
};

class Watcher {
 public:
  Watcher(const std::string& format, std::int32_t width, std::int32_t height) {
    options.input = InfoOf(format, width, height, "left");
    stream.Run([&](Exposure& e) { e.Configure(options); });
  }

  py::object Process(const py::object& frame) {
    const BorrowedFrame from(frame, options.input, "frame", BorrowedFrame::Access::kRead);
    const vidproc_exposure_event event = stream.Run([&](Exposure& e) { return e.Process(from.AsInput()); });
    if (event == VIDPROC_EXPOSURE_NONE) return py::none();
    return py::str(event == VIDPROC_EXPOSURE_DRIFTED ? "drifted" : "settled");
  }

  void Reset() {
    stream.Run([](Exposure& e) { e.Reset(); });
  }
  void Close() { stream.Close(); }

 private:
  ExposureOptions options;
  Guarded<Exposure> stream;
};

/// Views of the planes of a frame in one array: (rows, bytes of a row) each.
py::tuple Planes(const py::array_t<std::uint8_t, py::array::c_style>& memory, const std::string& format,
                 std::int32_t width, std::int32_t height) {
  const BorrowedFrame frame(memory, InfoOf(format, width, height, "left"), "memory", BorrowedFrame::Access::kRead);
  const Input view = frame.AsInput();
  py::list planes;
  for (int p = 0; p < 3 && view.plane[p] != nullptr; ++p) {
    const py::ssize_t rowBytes = view.stride[p], rows = static_cast<py::ssize_t>(view.bytes[p]) / rowBytes;
    const std::array shape{rows, rowBytes}, strides{rowBytes, py::ssize_t{1}};
    planes.append(py::array_t<std::uint8_t>(shape, strides, view.plane[p], memory));
  }
  return planes;
}

/// What streams of every kind have.
template <typename Class>
py::class_<Class> Bind(py::module_& module, const char* name, const std::string& text) {
  return py::class_<Class>(module, name, text.c_str())
      .def("reset", &Class::Reset, "Forget all earlier frames, for cuts and jumps in the stream.")
      .def("close", &Class::Close, "Release the stream's memory; nothing else may follow. A with statement does it.")
      .def("__enter__", [](py::object self) { return self; })
      .def("__exit__", [](Class& self, const py::args&) { self.Close(); });
}

template <typename Class, typename Options>
py::class_<Class> BindProcessor(py::module_& module, const char* name, std::string text,
                                const char* (*presetAt)(std::int32_t)) {
  text +=
      "\n\nKeywords: output_format, output_width, output_height, output_siting (the input's where not given);\npreset:";
  for (std::int32_t number = 0; presetAt(number) != nullptr; ++number) text += std::string(" ") + presetAt(number);
  text += "; and settings, which change it:\n\n";
  for (std::int32_t number = 0; const vidproc_option* const option = Side<Options>::OptionAt(number); ++number) {
    text += DocumentationOf(*option);
  }
  return Bind<Class>(module, name, text)
      .def(py::init<const std::string&, std::int32_t, std::int32_t, const std::string&, const py::kwargs&>(),
           "format"_a, "width"_a, "height"_a, py::kw_only(), "siting"_a = "left")
      .def("process", &Class::Process, "frame"_a, "output"_a = py::none(),
           "Process the next frame into `output`, or into a new array; returns it.")
      .def("configure", &Class::Configure, "Change settings by keywords; after an error all is as it was.")
      .def_property_readonly("settings", &Class::Settings, "The settings in use, by name.")
      .def_property_readonly("passes_through", &Class::PassesThrough, "Whether frames come out as they go in.");
}

/// vidproc::Error as vidproc.Error, a ValueError with its status.
void BindErrors(py::module_& module) {
  py::dict statuses;
  for (const auto& [name, status] : std::initializer_list<std::pair<const char*, vidproc_status>>{
           {"INVALID_ARGUMENT", VIDPROC_ERROR_INVALID_ARGUMENT},
           {"UNSUPPORTED", VIDPROC_ERROR_UNSUPPORTED},
           {"OUT_OF_MEMORY", VIDPROC_ERROR_OUT_OF_MEMORY},
           {"NOT_CONFIGURED", VIDPROC_ERROR_NOT_CONFIGURED},
           {"FRAME_MISMATCH", VIDPROC_ERROR_FRAME_MISMATCH},
           {"BUFFER_TOO_SMALL", VIDPROC_ERROR_BUFFER_TOO_SMALL},
           {"OVERLAP", VIDPROC_ERROR_OVERLAP}}) {
    statuses[name] = status;
  }
  module.attr("Status") = py::module_::import("enum").attr("IntEnum")("Status", statuses, "module"_a = "vidproc");
  // Both live as long as the process, because the translator may outlive the module.
  static const py::handle kStatus = py::object(module.attr("Status")).release();
  static const py::handle kError = py::exception<Error>(module, "Error", PyExc_ValueError).release();
  py::register_exception_translator([](std::exception_ptr thrown) {
    try {
      std::rethrow_exception(std::move(thrown));
    } catch (const Error& refusal) {
      py::object raised = kError(refusal.what());
      raised.attr("status") = kStatus(refusal.Status());
      PyErr_SetObject(kError.ptr(), raised.ptr());
    }
  });
}

}  // namespace
}  // namespace vidproc::python

PYBIND11_MODULE(_vidproc, module) {
  using namespace vidproc;
  using namespace vidproc::python;
  using PreProcessor = Processor<Pre, PreOptions>;
  using PostProcessor = Processor<Post, PostOptions>;
  module.attr("__version__") = vidproc_version_string();
  BindErrors(module);
  BindProcessor<PreProcessor, PreOptions>(module, "Pre", "Camera frames on their way to an encoder.",
                                          vidproc_pre_preset)
      .def_property_readonly("noise", &PreProcessor::Noise, "The input's noise in luma levels, with denoise_auto.");
  BindProcessor<PostProcessor, PostOptions>(module, "Post", "Decoded frames on their way to the screen.",
                                            vidproc_post_preset);
  Bind<Watcher>(module, "Exposure", "Tells when the exposure of a camera drifts and settles.")
      .def(py::init<const std::string&, std::int32_t, std::int32_t>(), "format"_a, "width"_a, "height"_a)
      .def("process", &Watcher::Process, "frame"_a, "'drifted', 'settled', or None where nothing is new.");
  module.def(
      "frame_bytes",
      [](const std::string& format, std::int32_t width, std::int32_t height) {
        return FrameBytes(InfoOf(format, width, height, "left"));
      },
      "format"_a, "width"_a, "height"_a, "Bytes of a frame without padding.");
  module.def("planes", &Planes, "memory"_a.noconvert(), "format"_a, "width"_a, "height"_a,
             "Views of a frame's planes in an array of all its bytes: (rows, bytes of a row) each.");
  module.def(
      "level", [] { return vidproc_level(); }, "The instruction set in use, such as 'avx2'.");
}
