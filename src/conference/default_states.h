/// The hash map of a layout's default control values, behind one name for whichever of the two well-kept
/// robin-hood maps is installed.
#pragma once

#include "quenlis.h"

#if __has_include(<robin_hood.h>)
#include <robin_hood.h>
using default_state_map = robin_hood::unordered_flat_map<qnl_audio_control, int>;
#else
#include <tsl/robin_map.h>
using default_state_map = tsl::robin_map<qnl_audio_control, int>;
#endif
