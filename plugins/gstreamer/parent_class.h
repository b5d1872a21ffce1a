// What an element calls where its own class adds to the inherited one.
#pragma once

#include <gst/gst.h>

namespace vidproc::gstreamer {

/// The class above the element's own, as the Class that has the inherited function.
template <typename Class, typename Instance>
Class* ParentClassOf(Instance* instance) {
  return static_cast<Class*>(g_type_class_peek_parent(G_TYPE_INSTANCE_GET_CLASS(instance, 0, GTypeClass)));
}

}  // namespace vidproc::gstreamer
