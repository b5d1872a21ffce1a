// SPDX-License-Identifier: GPL-2.0-or-later
#include "settings.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <limits>
#include <string>

namespace vidproc::obs {
namespace {

constexpr const char* kPreset = "preset";
constexpr const char* kStrength = "denoise_auto";

/// Calls visit(option) for every setting that the library lists.
template <typename Visit>
void VisitOptions(const Visit& visit) {
  for (std::int32_t number = 0; const vidproc_option* const option = vidproc_pre_option(number); ++number) {
    visit(*option);
  }
}

bool IsSwitch(const vidproc_option& option) { return option.choices == nullptr && option.low == 0 && option.high == 1; }

std::int32_t FieldOf(const PreOptions& options, const vidproc_option& option) {
  std::int32_t value = 0;
  std::memcpy(&value, reinterpret_cast<const char*>(&options) + option.offset, sizeof(value));
  return value;
}

std::int32_t ValueOf(obs_data_t* settings, const vidproc_option& option) {
  if (IsSwitch(option)) return obs_data_get_bool(settings, option.name);
  using Limits = std::numeric_limits<std::int32_t>;
  const long long value = obs_data_get_int(settings, option.name);
  return static_cast<std::int32_t>(std::clamp<long long>(value, Limits::min(), Limits::max()));
}

PreOptions PresetOf(obs_data_t* settings) {
  const char* const name = obs_data_get_string(settings, kPreset);
  try {
    return PreOptions(name);
  } catch (const Error& error) {
    blog(LOG_WARNING, "[vidproc] %s; %s is used", error.what(), vidproc_pre_preset(0));
    return PreOptions(vidproc_pre_preset(0));
  }
}

/// "denoise_edge" as "Denoise edge".
std::string Title(std::string text) {
  std::replace(text.begin(), text.end(), '_', ' ');
  text[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[0])));
  return text;
}

obs_property_t* AddList(obs_properties_t* properties, const vidproc_option& option, const char* title) {
  obs_property_t* const list =
      obs_properties_add_list(properties, option.name, title, OBS_COMBO_TYPE_LIST, OBS_COMBO_FORMAT_INT);
  if (option.choices == nullptr) {
    for (const std::int32_t value : {option.also, option.low}) {
      obs_property_list_add_int(list, std::to_string(value).c_str(), value);
    }
    return list;
  }
  for (std::int32_t value = 0; value <= option.high; ++value) {
    obs_property_list_add_int(list, Title(option.choices[value]).c_str(), value);
  }
  return list;
}

obs_property_t* AddProperty(obs_properties_t* properties, const vidproc_option& option, const char* title) {
  if (IsSwitch(option)) return obs_properties_add_bool(properties, option.name, title);
  if (option.choices != nullptr || option.low == option.high) return AddList(properties, option, title);
  return obs_properties_add_int_slider(properties, option.name, title, std::min(option.low, option.also), option.high,
                                       1);
}

void AddSetting(obs_properties_t* properties, const vidproc_option& option, const char* title) {
  obs_property_set_long_description(AddProperty(properties, option, title), Title(option.text).c_str());
}

/// A dialog goes through the callbacks when it opens, too, which must change nothing.
struct Dialog {
  obs_source_t* source;
  std::string preset;  ///< chosen last
};

bool TakePreset(void* dialog, obs_properties_t* /*properties*/, obs_property_t* /*list*/, obs_data_t* settings) {
  auto& [source, preset] = *static_cast<Dialog*>(dialog);
  const char* const chosen = obs_data_get_string(settings, kPreset);
  if (preset == chosen) return false;
  preset = chosen;
  VisitOptions([=](const vidproc_option& option) { obs_data_unset_user_value(settings, option.name); });
  SetDefaults(settings);
  if (source != nullptr) obs_source_update(source, nullptr);
  return true;
}

void AddPresets(obs_properties_t* properties, Dialog* dialog) {
  obs_property_t* const list =
      obs_properties_add_list(properties, kPreset, "Preset", OBS_COMBO_TYPE_LIST, OBS_COMBO_FORMAT_STRING);
  for (std::int32_t number = 0; const char* const preset = vidproc_pre_preset(number); ++number) {
    obs_property_list_add_string(list, Title(preset).c_str(), preset);
  }
  obs_property_set_long_description(list, "What to start from; choosing it takes back all other settings");
  obs_property_set_modified_callback2(list, TakePreset, dialog);
}

}  // namespace

void SetDefaults(obs_data_t* settings) {
  obs_data_set_default_string(settings, kPreset, vidproc_pre_preset(0));
  VisitOptions([=, preset = PresetOf(settings)](const vidproc_option& option) {
    const std::int32_t value = FieldOf(preset, option);
    if (IsSwitch(option)) {
      obs_data_set_default_bool(settings, option.name, value != 0);
    } else {
      obs_data_set_default_int(settings, option.name, value);
    }
  });
}

// Reads only, because the dialog's thread may be at the same settings: defaults may be those of another preset.
PreOptions OptionsOf(obs_data_t* settings) {
  PreOptions options = PresetOf(settings);
  VisitOptions([&](const vidproc_option& option) {
    if (!obs_data_has_user_value(settings, option.name)) return;
    const std::int32_t value = ValueOf(settings, option);
    std::memcpy(reinterpret_cast<char*>(&options) + option.offset, &value, sizeof(value));
  });
  return options;
}

obs_properties_t* MakeProperties(obs_source_t* source) {
  obs_properties_t* const properties = obs_properties_create();
  auto* const dialog = new Dialog{source, vidproc_pre_preset(0)};
  obs_properties_set_param(properties, dialog, [](void* param) { delete static_cast<Dialog*>(param); });
  if (source != nullptr) {
    obs_data_t* const settings = obs_source_get_settings(source);
    SetDefaults(settings);
    dialog->preset = obs_data_get_string(settings, kPreset);
    obs_data_release(settings);
  }
  AddPresets(properties, dialog);
  obs_properties_t* const single = obs_properties_create();
  VisitOptions([=](const vidproc_option& option) {
    if (std::strcmp(option.name, kStrength) == 0) {
      AddSetting(properties, option, "Strength");
    } else {
      AddSetting(single, option, Title(option.name).c_str());
    }
  });
  obs_property_int_set_suffix(obs_properties_get(properties, kStrength), " %");
  obs_properties_add_group(properties, "single_settings", "Single settings", OBS_GROUP_NORMAL, single);
  return properties;
}

}  // namespace vidproc::obs
