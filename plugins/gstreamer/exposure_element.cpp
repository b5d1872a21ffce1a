// Looks at frames that pass by, and posts a message where the camera's exposure drifts or settles.
#include "exposure_element.h"

#include <gst/video/gstvideofilter.h>

#include <vidproc/vidproc.hpp>

#include "parent_class.h"
#include "video_frame.h"

namespace vidproc::gstreamer {
namespace {

constexpr const char* kTypeName = "VidprocExposure";
constexpr int kSmallestSide = 16;

struct Watcher {
  GstVideoFilter parent;
  Exposure* exposure;  ///< owned
};

template <typename Instance>
Watcher& WatcherOf(Instance* instance) {
  return *reinterpret_cast<Watcher*>(instance);
}

void Finalize(GObject* object) {
  delete WatcherOf(object).exposure;
  ParentClassOf<GObjectClass>(object)->finalize(object);
}

gboolean Start(GstBaseTransform* transform) {
  WatcherOf(transform).exposure->Reset();
  return TRUE;
}

/// Lost frames do not matter here, as they do where pictures are averaged.
gboolean SinkEvent(GstBaseTransform* transform, GstEvent* event) {
  const GstEventType type = GST_EVENT_TYPE(event);
  if (type == GST_EVENT_FLUSH_STOP || type == GST_EVENT_STREAM_START) WatcherOf(transform).exposure->Reset();
  return ParentClassOf<GstBaseTransformClass>(transform)->sink_event(transform, event);
}

gboolean SetInfo(GstVideoFilter* filter, GstCaps* /*inCaps*/, GstVideoInfo* in, GstCaps* /*outCaps*/,
                 GstVideoInfo* /*out*/) {
  ExposureOptions options;
  options.input = InfoOf(*in);
  try {
    WatcherOf(filter).exposure->Configure(options);
  } catch (const Error& error) {
    GST_ELEMENT_ERROR(filter, STREAM, FORMAT, ("%s", error.what()), (nullptr));
    return FALSE;
  }
  return TRUE;
}

void PostEvent(GstVideoFilter* filter, const GstBuffer* buffer, const char* event) {
  const GstSegment* const segment = &GST_BASE_TRANSFORM_CAST(filter)->segment;
  const GstClockTime time = GST_BUFFER_TIMESTAMP(buffer);
  GstStructure* const structure =
      gst_structure_new("vidprocexposure", "event", G_TYPE_STRING, event, "timestamp", G_TYPE_UINT64, time,
                        "stream-time", G_TYPE_UINT64, gst_segment_to_stream_time(segment, GST_FORMAT_TIME, time),
                        "running-time", G_TYPE_UINT64, gst_segment_to_running_time(segment, GST_FORMAT_TIME, time),
                        "duration", G_TYPE_UINT64, GST_BUFFER_DURATION(buffer), nullptr);
  gst_element_post_message(GST_ELEMENT_CAST(filter), gst_message_new_element(GST_OBJECT_CAST(filter), structure));
}

GstFlowReturn LookAtFrame(GstVideoFilter* filter, GstVideoFrame* frame) {
  try {
    const vidproc_exposure_event event = WatcherOf(filter).exposure->Process(InputOf(*frame));
    if (event == VIDPROC_EXPOSURE_DRIFTED) PostEvent(filter, frame->buffer, "drifted");
    if (event == VIDPROC_EXPOSURE_SETTLED) PostEvent(filter, frame->buffer, "settled");
  } catch (const Error& error) {
    GST_ELEMENT_ERROR(filter, STREAM, FAILED, ("%s", error.what()), (nullptr));
    return GST_FLOW_ERROR;
  }
  return GST_FLOW_OK;
}

void InitialiseClass(gpointer objectClass, gpointer /*data*/) {
  static_cast<GObjectClass*>(objectClass)->finalize = Finalize;

  auto* const element = static_cast<GstElementClass*>(objectClass);
  gst_element_class_set_static_metadata(
      element, "Exposure watcher", "Filter/Analyzer/Video",
      "Posts a message vidprocexposure, with its event drifted or settled, where a camera's exposure changes",
      "the vidproc authors");
  GstCaps* const caps = FrameCaps(kSmallestSide, kSmallestSide);
  gst_element_class_add_pad_template(element, gst_pad_template_new("sink", GST_PAD_SINK, GST_PAD_ALWAYS, caps));
  gst_element_class_add_pad_template(element, gst_pad_template_new("src", GST_PAD_SRC, GST_PAD_ALWAYS, caps));
  gst_caps_unref(caps);

  auto* const transform = static_cast<GstBaseTransformClass*>(objectClass);
  transform->start = Start;
  transform->sink_event = SinkEvent;

  auto* const filter = static_cast<GstVideoFilterClass*>(objectClass);
  filter->set_info = SetInfo;
  filter->transform_frame_ip = LookAtFrame;
}

void InitialiseInstance(GTypeInstance* instance, gpointer /*objectClass*/) {
  WatcherOf(instance).exposure = new Exposure;
  gst_base_transform_set_passthrough(GST_BASE_TRANSFORM_CAST(instance), TRUE);
}

}  // namespace

GType ExposureType() {
  if (const GType known = g_type_from_name(kTypeName); known != 0) return known;
  GTypeInfo info = {};
  info.class_size = sizeof(GstVideoFilterClass);
  info.class_init = InitialiseClass;
  info.instance_size = sizeof(Watcher);
  info.instance_init = InitialiseInstance;
  return g_type_register_static(GST_TYPE_VIDEO_FILTER, kTypeName, &info, GTypeFlags{});
}

}  // namespace vidproc::gstreamer
