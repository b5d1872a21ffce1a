// The plugin: its elements and what gst-inspect-1.0 says of it.
#include <gst/gst.h>

#include "exposure_element.h"
#include "scaler_element.h"

#define PACKAGE "vidproc"

namespace {

using namespace vidproc::gstreamer;

gboolean RegisterElements(GstPlugin* plugin) {
  return gst_element_register(plugin, kPreSide.element, GST_RANK_NONE, ScalerType(kPreSide)) &&
         gst_element_register(plugin, kPostSide.element, GST_RANK_NONE, ScalerType(kPostSide)) &&
         gst_element_register(plugin, "vidprocexposure", GST_RANK_NONE, ExposureType());
}

}  // namespace

GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, vidproc, "Pre- and post-processing of a video call's frames",
                  RegisterElements, VIDPROC_PLUGIN_VERSION, "BSD", "vidproc", "Unknown package origin")
