#include "settings.h"

#include <gst/gst.h>

#include <algorithm>
#include <string>
#include <vector>

namespace vidproc::gstreamer {
namespace {

// Ids of properties. An option's is kFirstOption plus its number in the library's list.
constexpr guint kPreset = 1;
constexpr guint kFirstOption = 2;

constexpr auto kSettable = static_cast<GParamFlags>(G_PARAM_READWRITE | GST_PARAM_MUTABLE_PLAYING);
constexpr auto kControllable = static_cast<GParamFlags>(kSettable | GST_PARAM_CONTROLLABLE);

/// "denoise_edge" as "Denoise edge".
std::string Title(std::string name) {
  std::replace(name.begin(), name.end(), '_', ' ');
  name[0] = g_ascii_toupper(name[0]);
  return name;
}

/// "denoise_edge" as "VidprocDenoiseEdge".
std::string TypeName(const std::string& name) {
  std::string result = "Vidproc_" + name;
  for (std::size_t bar = 0; (bar = result.find('_')) != std::string::npos;) {
    result.erase(bar, 1);
    result[bar] = g_ascii_toupper(result[bar]);
  }
  return result;
}

struct Choice {
  std::int32_t value;
  std::string name;
};

/// Both sides share the types of the options that they share.
GType EnumType(const std::string& name, const std::vector<Choice>& choices) {
  if (const GType known = g_type_from_name(name.c_str()); known != 0) return known;
  auto* const values = g_new0(GEnumValue, choices.size() + 1);  // kept by the type for ever
  std::transform(choices.begin(), choices.end(), values, [](const Choice& choice) {
    const char* const text = g_intern_string(choice.name.c_str());
    return GEnumValue{choice.value, text, text};
  });
  return g_enum_register_static(g_intern_string(name.c_str()), values);
}

std::vector<Choice> ChoicesOf(const vidproc_option& option) {
  std::vector<Choice> choices;
  if (option.choices != nullptr) {
    for (std::int32_t value = 0; value <= option.high; ++value) choices.push_back({value, option.choices[value]});
  } else if (option.low == option.high) {
    for (const std::int32_t value : {option.also, option.low}) choices.push_back({value, std::to_string(value)});
  }
  return choices;
}

GParamSpec* MakeProperty(const vidproc_option& option, std::int32_t standard) {
  const std::string title = Title(option.name), text = Title(option.text);
  if (const auto choices = ChoicesOf(option); !choices.empty()) {
    return g_param_spec_enum(option.name, title.c_str(), text.c_str(), EnumType(TypeName(option.name), choices),
                             standard, kControllable);
  }
  if (option.low == 0 && option.high == 1) {
    return g_param_spec_boolean(option.name, title.c_str(), text.c_str(), standard != 0, kControllable);
  }
  return g_param_spec_int(option.name, title.c_str(), text.c_str(), std::min(option.low, option.also), option.high,
                          standard, kControllable);
}

std::int32_t NumberIn(const GValue* value) {
  if (G_VALUE_HOLDS_ENUM(value)) return g_value_get_enum(value);
  return G_VALUE_HOLDS_BOOLEAN(value) ? g_value_get_boolean(value) : g_value_get_int(value);
}

void PutNumber(GValue* value, std::int32_t number) {
  if (G_VALUE_HOLDS_ENUM(value)) {
    g_value_set_enum(value, number);
  } else if (G_VALUE_HOLDS_BOOLEAN(value)) {
    g_value_set_boolean(value, number != 0);
  } else {
    g_value_set_int(value, number);
  }
}

}  // namespace

void InstallSettings(GObjectClass* objectClass, const Side& side) {
  std::vector<Choice> presets;
  for (std::int32_t number = 0; side.presetAt(number) != nullptr; ++number) {
    presets.push_back({number, side.presetAt(number)});
  }
  g_object_class_install_property(
      objectClass, kPreset,
      g_param_spec_enum("preset", "Preset", "What to start from; choosing it changes all other settings",
                        EnumType(std::string(side.typeName) + "Preset", presets), 0, kSettable));
  const std::unique_ptr<Processor> standard = side.makeProcessor();
  guint id = kFirstOption;
  for (std::int32_t number = 0; const vidproc_option* const option = side.optionAt(number); ++number) {
    g_object_class_install_property(objectClass, id++, MakeProperty(*option, standard->Get(*option)));
  }
  if (!side.measuresNoise) return;
  g_object_class_install_property(
      objectClass, id,
      g_param_spec_double("noise", "Noise", "Standard deviation of the input's noise, in luma levels, by denoise-auto",
                          0, 255, 0, G_PARAM_READABLE));
}

void SetSetting(GObject* object, const Side& side, Processor& processor, guint id, const GValue* value) {
  if (id != kPreset)
    return processor.Set(*side.optionAt(static_cast<std::int32_t>(id - kFirstOption)), NumberIn(value));
  processor.UsePreset(NumberIn(value));
  for (std::int32_t number = 0; const vidproc_option* const option = side.optionAt(number); ++number) {
    g_object_notify(object, option->name);
  }
}

void GetSetting(const Side& side, Processor& processor, guint id, GValue* value) {
  if (id == kPreset) return PutNumber(value, processor.Preset());
  const vidproc_option* const option = side.optionAt(static_cast<std::int32_t>(id - kFirstOption));
  if (option != nullptr) return PutNumber(value, processor.Get(*option));
  g_value_set_double(value, processor.Noise());
}

}  // namespace vidproc::gstreamer
