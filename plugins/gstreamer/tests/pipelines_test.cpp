// The elements among others: what is negotiated, and whole pipelines as gst-launch-1.0 runs them.
#include <gst/gst.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>

namespace {

/// Frames and the last caps that arrive at each fakesink of a pipeline, by the sink's name.
struct Arrived {
  int frames = 0;
  std::string caps;
};
using Results = std::map<std::string, Arrived>;

void Count(GstElement* sink, GstBuffer* /*buffer*/, GstPad* pad, gpointer results) {
  Arrived& arrived = (*static_cast<Results*>(results))[GST_OBJECT_NAME(sink)];
  ++arrived.frames;
  GstCaps* const caps = gst_pad_get_current_caps(pad);
  gchar* const text = gst_caps_to_string(caps);
  arrived.caps = text;
  g_free(text);
  gst_caps_unref(caps);
}

void CountAt(const GValue* sink, gpointer results) {
  GstElement* const element = GST_ELEMENT(g_value_get_object(sink));
  if (g_object_class_find_property(G_OBJECT_GET_CLASS(element), "signal-handoffs") == nullptr) return;
  g_object_set(element, "signal-handoffs", TRUE, nullptr);
  g_signal_connect(element, "handoff", G_CALLBACK(Count), results);
}

/// Runs a pipeline to its end; an error fails the test. Empty and skipped where an element is not installed.
Results RunPipeline(const std::string& line) {
  GError* error = nullptr;
  GstElement* const pipeline = gst_parse_launch_full(line.c_str(), nullptr, GST_PARSE_FLAG_FATAL_ERRORS, &error);
  EXPECT_NE(pipeline, nullptr) << line << ": " << error->message;
  if (pipeline == nullptr) return {};
  Results results;
  GstIterator* const sinks = gst_bin_iterate_sinks(GST_BIN(pipeline));
  gst_iterator_foreach(sinks, CountAt, &results);
  gst_iterator_free(sinks);
  gst_element_set_state(pipeline, GST_STATE_PLAYING);
  GstBus* const bus = gst_element_get_bus(pipeline);
  GstMessage* const message = gst_bus_timed_pop_filtered(
      bus, 60 * GST_SECOND, static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR));
  EXPECT_NE(message, nullptr) << line << ": no end";
  if (message != nullptr && GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR) {
    gst_message_parse_error(message, &error, nullptr);
    ADD_FAILURE() << line << ": " << error->message;
    g_error_free(error);
  }
  if (message != nullptr) gst_message_unref(message);
  gst_object_unref(bus);
  gst_element_set_state(pipeline, GST_STATE_NULL);
  gst_object_unref(pipeline);
  return results;
}

TEST(Negotiation, KeepsTheShapeOfThePictureAndItsColours) {
  const struct {
    const char *before, *after, *expected;
  } cases[] = {
      {"format=UYVY,width=1280,height=720", "width=640", "format=UYVY,width=640,height=360,pixel-aspect-ratio=1/1"},
      {"format=NV12,width=1280,height=720", "height=480", "format=NV12,width=853,height=480,pixel-aspect-ratio=1/1"},
      {"width=720,height=576,pixel-aspect-ratio=16/15", "pixel-aspect-ratio=1/1", "width=768,height=576"},
      {"width=720,height=576,pixel-aspect-ratio=16/15", "width=360", "height=288,pixel-aspect-ratio=16/15"},
      {"width=1280,height=720", "width=640,height=480", "pixel-aspect-ratio=4/3"},
      {"width=1280,height=720", "width=(int)[16,640],height=(int)[16,640]", "width=640,height=360"},
      {"width=640,height=360", "width=(int)[800,1000]", "width=800,height=450"},
      {"format=YUY2,width=320,height=240", "format=(string){I420,YUY2}", "format=YUY2,width=320,height=240"},
      {"format=YUY2,width=320,height=240", "format=I420", "format=I420,width=320,height=240"},
      // 576 rows or fewer would otherwise be taken for BT.601.
      {"width=1280,height=720", "width=640", "colorimetry=bt709,chroma-site=mpeg2"},
      {"width=640,height=480,colorimetry=bt709,chroma-site=jpeg", "width=1280", "colorimetry=bt709,chroma-site=jpeg"},
      {"width=640,height=480,colorimetry=bt601,chroma-site=jpeg", "chroma-site=mpeg2", "chroma-site=mpeg2"},
  };
  for (const auto& one : cases) {
    const std::string line = std::string("videotestsrc num-buffers=1 ! video/x-raw,") + one.before +
                             " ! vidprocpre ! video/x-raw," + one.after + " ! fakesink name=sink";
    const Results results = RunPipeline(line);
    ASSERT_EQ(results.size(), 1u) << line;
    GstCaps* const caps = gst_caps_from_string(results.at("sink").caps.c_str());
    GstCaps* const expected = gst_caps_from_string((std::string("video/x-raw,") + one.expected).c_str());
    EXPECT_TRUE(gst_caps_is_subset(caps, expected)) << line << ": " << results.at("sink").caps;
    gst_caps_unref(caps);
    gst_caps_unref(expected);
  }
}

bool IsInstalled(const char* element) {
  GstElementFactory* const factory = gst_element_factory_find(element);
  if (factory == nullptr) return false;
  gst_object_unref(factory);
  return true;
}

TEST(Pipelines, RunToTheirEnd) {
  for (const char* element : {"x264enc", "avdec_h264", "matroskamux"}) {
    if (!IsInstalled(element)) GTEST_SKIP() << element << " is not installed";
  }
  const std::string source =
      "videotestsrc pattern=snow num-buffers=20 ! video/x-raw,format=I420,width=320,height=180,framerate=30/1";
  const std::string clip = (std::filesystem::temp_directory_path() / "vidproc-XXXXXX").string();
  std::string path = clip;
  const int descriptor = mkstemp(path.data());
  ASSERT_GE(descriptor, 0);
  close(descriptor);
  const std::string call =
      " ! vidprocpre ! video/x-raw,width=160 ! x264enc tune=zerolatency ! avdec_h264 ! vidprocpost ! "
      "video/x-raw,width=320 "
      "! fakesink name=sink";
  RunPipeline(source + " ! x264enc ! matroskamux ! filesink location=" + path);
  const struct {
    std::string line;
    std::map<std::string, int> frames;
  } cases[] = {
      {source + call, {{"sink", 20}}},
      {"filesrc location=" + path + " ! matroskademux ! avdec_h264" + call, {{"sink", 20}}},
      // A live source whose size changes in mid-stream.
      {"concat name=c ! vidprocpre ! video/x-raw,width=160,height=90 ! vidprocexposure ! fakesink name=sink "
       "videotestsrc is-live=true num-buffers=9 ! video/x-raw,width=320,height=180,framerate=90/1 ! c. "
       "videotestsrc is-live=true num-buffers=8 ! video/x-raw,width=640,height=480,framerate=90/1 ! c.",
       {{"sink", 17}}},
      {"concat name=c ! vidprocpre ! fakesink name=sink "
       "videotestsrc num-buffers=9 ! video/x-raw,format=UYVY,width=320,height=180 ! c. "
       "videotestsrc num-buffers=8 ! video/x-raw,format=NV12,width=33,height=17 ! c.",
       {{"sink", 17}}},
      {source + " ! tee name=t t. ! queue ! vidprocpre preset=low-light ! video/x-raw,width=160 ! fakesink name=small "
                "t. ! queue ! vidprocpost deblock-level=40 ! fakesink name=large",
       {{"small", 20}, {"large", 20}}},
  };
  for (const auto& one : cases) {
    const Results results = RunPipeline(one.line);
    for (const auto& [sink, frames] : one.frames) {
      ASSERT_TRUE(results.contains(sink)) << one.line;
      EXPECT_EQ(results.at(sink).frames, frames) << one.line;
    }
  }
  std::filesystem::remove(path);
}

}  // namespace
