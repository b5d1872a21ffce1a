// vidprocexposure.
#pragma once

#include <gst/gst.h>

namespace vidproc::gstreamer {

/// The type of the element, registered once.
GType ExposureType();

}  // namespace vidproc::gstreamer
