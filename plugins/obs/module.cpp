// SPDX-License-Identifier: GPL-2.0-or-later
// The module: registers "vidproc", a filter of cameras' and other asynchronous sources' frames.
#include <obs-module.h>

#include <exception>
#include <memory>

#include "filter.h"
#include "settings.h"

OBS_DECLARE_MODULE()
OBS_MODULE_AUTHOR("the vidproc authors")

namespace {

using namespace vidproc::obs;

struct Instance {
  obs_source_t* source;
  Filter filter;
};

const char* Name(void* /*type*/) { return "vidproc"; }

void Update(void* instance, obs_data_t* settings) { static_cast<Instance*>(instance)->filter.Use(OptionsOf(settings)); }

void* Create(obs_data_t* settings, obs_source_t* source) {
  try {
    std::unique_ptr<Instance> instance(new Instance{source, {}});
    Update(instance.get(), settings);
    return instance.release();
  } catch (const std::exception& error) {
    blog(LOG_ERROR, "[vidproc] %s", error.what());
    return nullptr;
  }
}

void Destroy(void* instance) { delete static_cast<Instance*>(instance); }

obs_properties_t* Properties(void* instance) {
  return MakeProperties(instance == nullptr ? nullptr : static_cast<Instance*>(instance)->source);
}

obs_source_frame* FilterVideo(void* instance, obs_source_frame* frame) {
  static_cast<Instance*>(instance)->filter.Process(*frame);
  return frame;
}

}  // namespace

const char* obs_module_name() { return "vidproc"; }
const char* obs_module_description() { return "Pre-processing of a video call's frames"; }

bool obs_module_load() {
  obs_source_info info = {};
  info.id = "vidproc";
  info.type = OBS_SOURCE_TYPE_FILTER;
  info.output_flags = OBS_SOURCE_ASYNC_VIDEO;
  info.get_name = Name;
  info.create = Create;
  info.destroy = Destroy;
  info.update = Update;
  info.get_defaults = SetDefaults;
  info.get_properties = Properties;
  info.filter_video = FilterVideo;
  obs_register_source(&info);
  return true;
}
