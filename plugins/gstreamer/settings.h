// Settings of a processor as properties: the preset first, then one for each that the library lists.
#pragma once

#include <glib-object.h>

#include "processor.h"

namespace vidproc::gstreamer {

/// Installs them; the class's set_property and get_property are SetSetting and GetSetting for a Processor.
void InstallSettings(GObjectClass* objectClass, const Side& side);

/// The object's own property `id` is the processor's. Choosing a preset changes all others.
void SetSetting(GObject* object, const Side& side, Processor& processor, guint id, const GValue* value);
void GetSetting(const Side& side, Processor& processor, guint id, GValue* value);

}  // namespace vidproc::gstreamer
