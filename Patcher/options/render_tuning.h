#pragma once

#include <string>

#include "_Common/dx11_tune_keys.h"
#include "options/settings_file.h"

namespace patcher {

/// The value, limited to the row's bounds.
float TuneClamp(const TuneDef& row, float value);

/// The row's value in the file, or its default, limited to its bounds.
float TuneRead(const SettingsFile& file, const TuneDef& row);

/// The text of a value, for the file and for the page: printf's %g with a decimal point in every locale.
std::string TuneFormat(float value);

}  // namespace patcher
