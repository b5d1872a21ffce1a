// vidprocpre and vidprocpost.
#pragma once

#include <gst/gst.h>

#include "processor.h"

namespace vidproc::gstreamer {

/// The type of a side's element, registered once.
GType ScalerType(const Side& side);

}  // namespace vidproc::gstreamer
