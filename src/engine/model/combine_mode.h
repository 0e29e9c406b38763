// The combine modes of texture units, as documents number them.
#pragma once

#include "model/records.h"

#include <cstdint>

// A unit's combine mode (0 = unit 1): the number as the document writes it, brought
// into the unit's own list. Numbers that the list lacks are read in the one long
// list of eleven names (catalogue combine_functions); what is in neither acts as 0.
uint8_t combine_mode_of_unit(uint32_t unit, int32_t number);

// Whether that number is in the unit's own list, or means one of it in the long one.
bool is_combine_mode(uint32_t unit, int32_t number);
