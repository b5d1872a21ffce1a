// The elements frame by frame: their bytes are those of the library with the same settings and the same history.
#include <gst/controller/gstdirectcontrolbinding.h>
#include <gst/controller/gstinterpolationcontrolsource.h>
#include <gst/video/gstvideometa.h>
#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <string>

#include "frames.h"

namespace {

using namespace vidproc_gstreamer_tests;

const Format& kI420 = kFormats[0];

/// A harness around what a line of gst-launch describes.
class Harness {
 public:
  Harness(const std::string& line, const Shape& in, const Shape& out, const char* more = "")
      : in(in), out(out), harness(gst_harness_new_parse(line.c_str())), bus(gst_bus_new()) {
    GstElement* const made = gst_harness_find_element(harness, line.substr(0, line.find(' ')).c_str());
    element.reset(made);
    gst_element_set_bus(made, bus.get());
    gst_harness_set_caps_str(harness, in.Caps(more).c_str(), out.Caps(more).c_str());
  }
  ~Harness() {
    gst_element_set_bus(element.get(), nullptr);
    gst_harness_teardown(harness);
  }

  GstFlowReturn Push(unsigned number, Layout layout = Layout::kTight, GstBufferFlags flags = GstBufferFlags{}) {
    GstBuffer* const buffer = MakeBuffer(in, Noise(in, number), layout, number);
    GST_BUFFER_FLAG_SET(buffer, flags);
    return gst_harness_push(harness, buffer);
  }
  Bytes Show(unsigned number, Layout layout = Layout::kTight, GstBufferFlags flags = GstBufferFlags{}) {
    EXPECT_EQ(Push(number, layout, flags), GST_FLOW_OK) << Message(GST_MESSAGE_ERROR);
    return TakeBytes(out, gst_harness_try_pull(harness));
  }
  /// The text of the next message of that type; empty where there is none.
  std::string Message(GstMessageType type) {
    GstMessage* const message = gst_bus_pop_filtered(bus.get(), type);
    if (message == nullptr) return "";
    GError* error = nullptr;
    type == GST_MESSAGE_ERROR ? gst_message_parse_error(message, &error, nullptr)
                              : gst_message_parse_warning(message, &error, nullptr);
    std::string text = error->message;
    g_error_free(error);
    gst_message_unref(message);
    return text;
  }

  struct Unref {
    void operator()(gpointer object) const { gst_object_unref(object); }
  };
  Shape in, out;
  GstHarness* harness;
  std::unique_ptr<GstElement, Unref> element;
  std::unique_ptr<GstBus, Unref> bus;
};

/// The library's own stream of the same frames.
template <typename Stream, typename Options>
class Library {
 public:
  Library(const Options& settings, const Shape& in, const Shape& out) : options(settings), in(in), out(out) {
    Configure();
  }
  void Configure() {
    options.input = in.Info();
    options.output = out.Info();
    stream.Configure(options);
  }
  Bytes Show(unsigned number) {
    Bytes bytes(vidproc::FrameBytes(out.Info()));
    stream.Process(vidproc::InputOver(in.Info(), Noise(in, number)), vidproc::OutputOver(out.Info(), bytes));
    return bytes;
  }

  Options options;
  Shape in, out;
  Stream stream;
};
using PreLibrary = Library<vidproc::Pre, vidproc::PreOptions>;
using PostLibrary = Library<vidproc::Post, vidproc::PostOptions>;

TEST(Elements, GiveTheBytesOfTheLibrary) {
  vidproc::PreOptions pre("webcam");
  pre.sharpening = 3, pre.filter = VIDPROC_FILTER_LANCZOS, pre.luma_offset = 9;
  vidproc::PostOptions post("none");
  post.dither_level = 4, post.dither_seed = 7, post.deblock_level = 60;
  const int sizes[][4] = {{64, 48, 64, 48}, {127, 61, 64, 33}, {33, 17, 98, 50}};
  std::size_t turn = 0;
  for (const Format& from : kFormats) {
    for (const Format& to : kFormats) {
      for (const Layout layout : {Layout::kTight, Layout::kPadded, Layout::kBottomUp}) {
        const auto& [width, height, outWidth, outHeight] = sizes[turn++ / 2 % std::size(sizes)];
        SCOPED_TRACE(std::string(from.caps) + " to " + to.caps + " from " + std::to_string(width) + ", layout " +
                     std::to_string(static_cast<int>(layout)));
        const Shape in{from, width, height}, out{to, outWidth, outHeight};
        Harness preElement("vidprocpre sharpening=3 filter=lanczos luma-offset=9", in, out);
        Harness postElement("vidprocpost preset=none dither-level=4 dither-seed=7 deblock-level=60", in, out);
        PreLibrary preLibrary(pre, in, out);
        PostLibrary postLibrary(post, in, out);
        for (unsigned number = 0; number < 2; ++number) {
          ASSERT_EQ(preElement.Show(number, layout), preLibrary.Show(number));
          ASSERT_EQ(postElement.Show(number, layout), postLibrary.Show(number));
        }
      }
    }
  }
}

void Flush(GstHarness* harness) {
  gst_harness_push_event(harness, gst_event_new_flush_start());
  gst_harness_push_event(harness, gst_event_new_flush_stop(TRUE));
  GstSegment segment;
  gst_segment_init(&segment, GST_FORMAT_TIME);
  gst_harness_push_event(harness, gst_event_new_segment(&segment));
}

TEST(Elements, ForgetThePastWhereTheStreamIsNotContinuous) {
  const Shape shape{kI420, 64, 48};
  vidproc::PreOptions options("none");
  options.temporal_strength = 120;
  const struct {
    const char* name;
    bool forgets;
    GstBufferFlags flags;
    void (*interrupt)(GstHarness*);
  } cases[] = {
      {"nothing", false, {}, [](GstHarness*) {}},
      {"discontinuity", true, GST_BUFFER_FLAG_DISCONT, [](GstHarness*) {}},
      {"flush", true, {}, Flush},
      {"new stream", true, {}, [](GstHarness* h) { gst_harness_push_event(h, gst_event_new_stream_start("next")); }},
      {"other caps", true, {}, [](GstHarness* h) {
         const Shape other{kI420, 64, 48};
         for (const char* rate : {",pixel-aspect-ratio=1/2", ""}) {
           gst_harness_push_event(h, gst_event_new_caps(gst_caps_from_string(other.Caps(rate).c_str())));
         }
       }}};
  for (const auto& one : cases) {
    Harness element("vidprocpre preset=none temporal-strength=120", shape, shape);
    PreLibrary library(options, shape, shape);
    for (unsigned number = 0; number < 5; ++number) ASSERT_EQ(element.Show(number), library.Show(number));
    one.interrupt(element.harness);
    if (one.forgets) library.stream.Reset();
    EXPECT_EQ(element.Show(5, Layout::kTight, one.flags), library.Show(5)) << one.name;
  }
}

TEST(Elements, RememberThePastWhereOnlyTheOutputChanges) {
  const Shape shape{kI420, 64, 48}, smaller{kI420, 32, 24};
  Harness element("vidprocpre preset=none temporal-strength=120", shape, shape);
  vidproc::PreOptions options("none");
  options.temporal_strength = 120;
  PreLibrary library(options, shape, shape);
  unsigned number = 0;
  for (const Shape& out : {shape, smaller, shape}) {
    element.out = library.out = out;
    gst_harness_set_sink_caps_str(element.harness, out.Caps().c_str());
    library.Configure();
    for (int frame = 0; frame < 3; ++frame, ++number) ASSERT_EQ(element.Show(number), library.Show(number));
  }
}

TEST(Elements, TakeSettingsWhileFramesFlow) {
  const Shape in{kI420, 64, 48}, out{kI420, 32, 24};
  Harness element("vidprocpre preset=none", in, out);
  PreLibrary library(vidproc::PreOptions("none"), in, out);
  unsigned number = 0;
  const auto expectEqual = [&] {
    library.Configure();
    EXPECT_EQ(element.Show(number), library.Show(number));
    ++number;
  };
  const auto get = [&](const char* name) {
    gint value = 0;
    g_object_get(element.element.get(), name, &value, nullptr);
    return value;
  };
  expectEqual();
  g_object_set(element.element.get(), "sharpening", 9, "taps", 16, "filter", VIDPROC_FILTER_AREA, nullptr);
  library.options.sharpening = 9, library.options.taps = 16, library.options.filter = VIDPROC_FILTER_AREA;
  expectEqual();
  g_object_set(element.element.get(), "preset", 0, nullptr);
  library.options = vidproc::PreOptions("webcam");
  EXPECT_EQ(get("sharpening"), 0);
  EXPECT_EQ(get("denoise-auto"), 100);
  for (int frame = 0; frame < 12; ++frame) expectEqual();
  gdouble noise = 0;
  g_object_get(element.element.get(), "noise", &noise, nullptr);
  EXPECT_EQ(noise, library.stream.Noise() / 100.0);
  EXPECT_GT(noise, 1);

  // Refused settings are told once, and the ones before stay in use.
  g_object_set(element.element.get(), "luma-gain", 127, "luma-offset", -200, nullptr);
  for (int frame = 0; frame < 2; ++frame) expectEqual();
  EXPECT_EQ(element.Message(GST_MESSAGE_WARNING),
            "not supported: luma_offset is -200, allowed -3 to 255 with luma_gain 127");
  EXPECT_EQ(element.Message(GST_MESSAGE_WARNING), "");
}

TEST(Elements, FollowAController) {
  const Shape shape{kI420, 64, 48};
  Harness element("vidprocpre preset=none", shape, shape);
  GstControlSource* const source = gst_interpolation_control_source_new();
  g_object_set(source, "mode", GST_INTERPOLATION_MODE_LINEAR, nullptr);
  auto* const timed = reinterpret_cast<GstTimedValueControlSource*>(source);
  gst_timed_value_control_source_set(timed, 0, 0);
  gst_timed_value_control_source_set(timed, GST_SECOND / 3, 10);
  gst_object_add_control_binding(
      GST_OBJECT(element.element.get()),
      gst_direct_control_binding_new_absolute(GST_OBJECT(element.element.get()), "luma-offset", source));
  gst_object_unref(source);
  PreLibrary library(vidproc::PreOptions("none"), shape, shape);
  for (unsigned number = 0; number < 10; number += 3) {
    const Bytes shown = element.Show(number);
    g_object_get(element.element.get(), "luma-offset", &library.options.luma_offset, nullptr);
    EXPECT_NEAR(library.options.luma_offset, number, 1);
    library.Configure();
    EXPECT_EQ(shown, library.Show(number));
  }
}

TEST(Elements, HandOnFramesThatNothingIsDoneTo) {
  const Shape shape{kFormats[2], 64, 48}, smaller{kFormats[2], 32, 24};
  const struct {
    const char* line;
    const Shape& out;
    bool passes;
  } cases[] = {{"vidprocpre preset=screen", shape, true},
               {"vidprocpost", shape, true},
               {"vidprocpre", shape, false},
               {"vidprocpost deblock-level=30", shape, false},
               {"vidprocpre preset=screen", smaller, false},
               {"vidprocpre preset=none taps=16", shape, true},
               {"vidprocpre preset=none sharpening=1", shape, false}};
  for (const auto& one : cases) {
    Harness element(one.line, shape, one.out);
    for (const bool passes : {one.passes, false, one.passes}) {
      // In between something is done, and undone again.
      const gint offset = passes == one.passes ? 0 : 1;
      g_object_set(element.element.get(), "luma-offset", offset, nullptr);
      GstBuffer* const in = MakeBuffer(shape, Noise(shape, 1), Layout::kPadded, 1);
      gst_buffer_ref(in);
      GstBuffer* const out = gst_harness_push_and_pull(element.harness, in);
      EXPECT_EQ(gst_buffer_peek_memory(out, 0) == gst_buffer_peek_memory(in, 0), passes) << one.line;
      gst_buffer_unref(out);
      gst_buffer_unref(in);
    }
  }
}

TEST(Elements, DropFramesThatAreLate) {
  const Shape shape{kI420, 64, 48};
  Harness element("vidprocpre", shape, shape);
  gst_harness_push_upstream_event(element.harness, gst_event_new_qos(GST_QOS_TYPE_UNDERFLOW, 2, 0, GST_SECOND / 2));
  EXPECT_EQ(element.Push(1), GST_FLOW_OK);
  EXPECT_EQ(gst_harness_buffers_in_queue(element.harness), 0u);
  EXPECT_NE(element.Show(30), Bytes());
}

TEST(Elements, MoveWhatIsSaidOfPlacesWithThePicture) {
  const Shape in{kI420, 64, 48}, out{kI420, 32, 12};
  Harness element("vidprocpost", in, out);
  GstBuffer* const buffer = MakeBuffer(in, Noise(in, 0), Layout::kTight, 0);
  gst_buffer_add_video_region_of_interest_meta(buffer, "face", 16, 8, 24, 20);
  GstBuffer* const result = gst_harness_push_and_pull(element.harness, buffer);
  const GstVideoRegionOfInterestMeta* const region = gst_buffer_get_video_region_of_interest_meta_id(result, 0);
  ASSERT_NE(region, nullptr);
  EXPECT_EQ((std::array{region->x, region->y, region->w, region->h}), (std::array{8u, 2u, 12u, 5u}));
  gst_buffer_unref(result);
}

TEST(Elements, RefuseWhatTheyCannotDo) {
  const Shape shape{kI420, 64, 48}, large{kI420, 16384, 2048};
  const struct {
    const char* line;
    const Shape& shape;
    const char* more;
    const char* text;
  } cases[] = {
      {"vidprocpre luma-gain=127 luma-offset=-200", shape, "",
       "not supported: luma_offset is -200, allowed -3 to 255 with luma_gain 127"},
      {"vidprocpost deblock-level=20", shape, "", "invalid argument: deblock_level is 20, allowed 0 or 21 to 255"},
      {"vidprocpre", shape, ",interlace-mode=interleaved", "Interlaced frames are not supported."},
      {"vidprocexposure", large, "",
       "not supported: input.width x input.height is 131072 blocks of 16 x 16, allowed up to 32896"},
  };
  for (const auto& one : cases) {
    Harness element(one.line, one.shape, one.shape, one.more);
    EXPECT_EQ(element.Message(GST_MESSAGE_ERROR), one.text) << one.line;
  }
}

TEST(Exposure, IsToldOnTheBusWithItsTime) {
  const Shape shape{kFormats[4], 64, 48};
  Harness element("vidprocexposure", shape, shape);
  vidproc::ExposureOptions options;
  options.input = shape.Info();
  vidproc::Exposure exposure(options);
  int told = 0;
  for (unsigned number = 0; number < 120; ++number) {
    const Bytes bytes(vidproc::FrameBytes(options.input), number < 50 ? 90 : 150);
    const vidproc_exposure_event event = exposure.Process(vidproc::InputOver(options.input, bytes));
    GstBuffer* const in = MakeBuffer(shape, bytes, Layout::kPadded, number);
    const GstClockTime time = GST_BUFFER_PTS(in);
    EXPECT_EQ(gst_harness_push(element.harness, in), GST_FLOW_OK);
    EXPECT_EQ(TakeBytes(shape, gst_harness_try_pull(element.harness)), bytes);
    GstMessage* const message = gst_bus_pop_filtered(element.bus.get(), GST_MESSAGE_ELEMENT);
    ASSERT_EQ(message != nullptr, event != VIDPROC_EXPOSURE_NONE) << number;
    if (message == nullptr) continue;
    ++told;
    const GstStructure* const structure = gst_message_get_structure(message);
    EXPECT_STREQ(gst_structure_get_string(structure, "event"),
                 event == VIDPROC_EXPOSURE_DRIFTED ? "drifted" : "settled");
    for (const char* field : {"timestamp", "stream-time", "running-time"}) {
      guint64 value = 0;
      EXPECT_TRUE(gst_structure_get_uint64(structure, field, &value));
      EXPECT_EQ(value, time) << field;
    }
    gst_message_unref(message);
  }
  EXPECT_GE(told, 2) << "it settles, and drifts";
}

}  // namespace
