// SPDX-License-Identifier: GPL-2.0-or-later
// The library's settings as a source's: preset and strength first, then every other that the library lists. What nobody
// has set follows the preset.
#pragma once

#include <obs.h>

#include <vidproc/vidproc.hpp>

namespace vidproc::obs {

/// Makes the values of the settings' preset their defaults.
void SetDefaults(obs_data_t* settings);

/// What the settings say; nothing is checked but the preset's name, in whose place the first one is taken.
PreOptions OptionsOf(obs_data_t* settings);

/// The dialog. Choosing another preset there takes back all other settings.
/// @param source  whose dialog it is; null for one of nobody's
obs_properties_t* MakeProperties(obs_source_t* source);

}  // namespace vidproc::obs
