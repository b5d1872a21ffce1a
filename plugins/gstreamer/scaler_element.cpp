// The element of either side. Settings are taken before each frame, in the thread of the stream; the history goes with
// the continuity of the stream.
#include "scaler_element.h"

#include <gst/video/gstvideofilter.h>
#include <gst/video/gstvideometa.h>

#include <string>

#include "frame_shape.h"
#include "parent_class.h"
#include "settings.h"
#include "video_frame.h"

namespace vidproc::gstreamer {
namespace {

struct Scaler {
  GstVideoFilter parent;
  Processor* processor;  ///< owned
};

struct ScalerClass {
  GstVideoFilterClass parent;
  const Side* side;
};

template <typename Instance>
Scaler& ScalerOf(Instance* instance) {
  return *reinterpret_cast<Scaler*>(instance);
}
template <typename Instance>
Processor& ProcessorOf(Instance* instance) {
  return *ScalerOf(instance).processor;
}
template <typename Instance>
const Side& SideOf(Instance* instance) {
  return *G_TYPE_INSTANCE_GET_CLASS(instance, 0, ScalerClass)->side;
}

void SetProperty(GObject* object, guint id, const GValue* value, GParamSpec* /*property*/) {
  SetSetting(object, SideOf(object), ProcessorOf(object), id, value);
}

void GetProperty(GObject* object, guint id, GValue* value, GParamSpec* /*property*/) {
  GetSetting(SideOf(object), ProcessorOf(object), id, value);
}

void Finalize(GObject* object) {
  delete ScalerOf(object).processor;
  ParentClassOf<GObjectClass>(object)->finalize(object);
}

gboolean Start(GstBaseTransform* transform) {
  ProcessorOf(transform).Reset();
  return TRUE;
}

gboolean SinkEvent(GstBaseTransform* transform, GstEvent* event) {
  const GstEventType type = GST_EVENT_TYPE(event);
  if (type == GST_EVENT_FLUSH_STOP || type == GST_EVENT_STREAM_START) ProcessorOf(transform).Reset();
  return ParentClassOf<GstBaseTransformClass>(transform)->sink_event(transform, event);
}

GstCaps* TransformCaps(GstBaseTransform* /*transform*/, GstPadDirection /*direction*/, GstCaps* caps, GstCaps* filter) {
  GstCaps* const other = OtherSide(caps);
  if (filter == nullptr) return other;
  GstCaps* const both = gst_caps_intersect_full(filter, other, GST_CAPS_INTERSECT_FIRST);
  gst_caps_unref(other);
  return both;
}

GstCaps* FixateCaps(GstBaseTransform* /*transform*/, GstPadDirection /*direction*/, GstCaps* caps, GstCaps* choices) {
  return Choose(caps, choices);
}

/// Whether frames pass through decides on the buffers that the neighbours may lend each other: a change is negotiated.
void FollowPassing(GstVideoFilter* filter) {
  GstBaseTransform* const transform = GST_BASE_TRANSFORM_CAST(filter);
  const gboolean passes = ProcessorOf(filter).PassesThrough();
  if (gst_base_transform_is_passthrough(transform) == passes) return;
  gst_base_transform_set_passthrough(transform, passes);
  gst_base_transform_reconfigure_src(transform);
}

gboolean SetInfo(GstVideoFilter* filter, GstCaps* /*inCaps*/, GstVideoInfo* in, GstCaps* /*outCaps*/,
                 GstVideoInfo* out) {
  if (GST_VIDEO_INFO_IS_INTERLACED(in)) {
    GST_ELEMENT_ERROR(filter, STREAM, FORMAT, ("Interlaced frames are not supported."), ("put deinterlace before"));
    return FALSE;
  }
  Processor& processor = ProcessorOf(filter);
  if (!filter->negotiated || !gst_video_info_is_equal(&filter->in_info, in)) processor.Reset();
  const std::string refusal = processor.Configure(InfoOf(*in), InfoOf(*out));
  if (!refusal.empty()) {
    GST_ELEMENT_ERROR(filter, LIBRARY, SETTINGS, ("%s", refusal.c_str()), (nullptr));
    return FALSE;
  }
  FollowPassing(filter);
  return TRUE;
}

void TakeNewSettings(GstVideoFilter* filter) {
  Processor& processor = ProcessorOf(filter);
  if (!filter->negotiated || !processor.HasNewSettings()) return;
  const std::string refusal = processor.Configure(InfoOf(filter->in_info), InfoOf(filter->out_info));
  if (!refusal.empty()) {
    GST_ELEMENT_WARNING(filter, LIBRARY, SETTINGS, ("%s", refusal.c_str()), ("the former settings stay in use"));
  }
  FollowPassing(filter);
}

void BeforeTransform(GstBaseTransform* transform, GstBuffer* buffer) {
  const GstClockTime time =
      gst_segment_to_stream_time(&transform->segment, GST_FORMAT_TIME, GST_BUFFER_TIMESTAMP(buffer));
  if (GST_CLOCK_TIME_IS_VALID(time)) gst_object_sync_values(GST_OBJECT_CAST(transform), time);
  if (GST_BUFFER_IS_DISCONT(buffer)) ProcessorOf(transform).Reset();
  TakeNewSettings(GST_VIDEO_FILTER_CAST(transform));
}

GstFlowReturn TransformFrame(GstVideoFilter* filter, GstVideoFrame* in, GstVideoFrame* out) {
  const std::string refusal = ProcessorOf(filter).Process(InputOf(*in), OutputOf(*out));
  if (refusal.empty()) return GST_FLOW_OK;
  GST_ELEMENT_ERROR(filter, STREAM, FAILED, ("%s", refusal.c_str()), (nullptr));
  return GST_FLOW_ERROR;
}

/// What is said of places in the picture moves with it.
gboolean TransformMeta(GstBaseTransform* transform, GstBuffer* out, GstMeta* meta, GstBuffer* in) {
  const GstMetaInfo* const info = meta->info;
  GstVideoFilter* const filter = GST_VIDEO_FILTER_CAST(transform);
  if (!gst_meta_api_type_has_tag(info->api, g_quark_from_static_string(GST_META_TAG_VIDEO_SIZE_STR)) ||
      info->transform_func == nullptr) {
    return ParentClassOf<GstBaseTransformClass>(transform)->transform_meta(transform, out, meta, in);
  }
  GstVideoMetaTransform scaling = {&filter->in_info, &filter->out_info};
  info->transform_func(out, meta, in, gst_video_meta_transform_scale_get_quark(), &scaling);
  return FALSE;
}

void InitialiseClass(gpointer objectClass, gpointer data) {
  const Side& side = *static_cast<const Side*>(data);
  static_cast<ScalerClass*>(objectClass)->side = &side;

  auto* const object = static_cast<GObjectClass*>(objectClass);
  object->set_property = SetProperty;
  object->get_property = GetProperty;
  object->finalize = Finalize;
  InstallSettings(object, side);

  auto* const element = static_cast<GstElementClass*>(objectClass);
  gst_element_class_set_static_metadata(element, side.longName, "Filter/Converter/Video/Scaler", side.description,
                                        "the vidproc authors");
  GstCaps* const caps = FrameCaps(2, 1);
  gst_element_class_add_pad_template(element, gst_pad_template_new("sink", GST_PAD_SINK, GST_PAD_ALWAYS, caps));
  gst_element_class_add_pad_template(element, gst_pad_template_new("src", GST_PAD_SRC, GST_PAD_ALWAYS, caps));
  gst_caps_unref(caps);

  auto* const transform = static_cast<GstBaseTransformClass*>(objectClass);
  transform->passthrough_on_same_caps = FALSE;
  transform->start = Start;
  transform->sink_event = SinkEvent;
  transform->transform_caps = TransformCaps;
  transform->fixate_caps = FixateCaps;
  transform->before_transform = BeforeTransform;
  transform->transform_meta = TransformMeta;

  auto* const filter = static_cast<GstVideoFilterClass*>(objectClass);
  filter->set_info = SetInfo;
  filter->transform_frame = TransformFrame;
}

void InitialiseInstance(GTypeInstance* instance, gpointer objectClass) {
  ScalerOf(instance).processor = static_cast<ScalerClass*>(objectClass)->side->makeProcessor().release();
}

}  // namespace

GType ScalerType(const Side& side) {
  if (const GType known = g_type_from_name(side.typeName); known != 0) return known;
  GTypeInfo info = {};
  info.class_size = sizeof(ScalerClass);
  info.class_init = InitialiseClass;
  info.class_data = &side;
  info.instance_size = sizeof(Scaler);
  info.instance_init = InitialiseInstance;
  return g_type_register_static(GST_TYPE_VIDEO_FILTER, side.typeName, &info, GTypeFlags{});
}

}  // namespace vidproc::gstreamer
