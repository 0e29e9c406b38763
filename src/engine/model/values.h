// Values that are constant or follow an animation function.
//
// Times are ticks of 1/100 s. Evaluation changes the functions' caches, nothing else.
#pragma once

#include "model/record_table.h"
#include "model/records.h"

#include <cstdint>

// The handle that a record holds as a float; 0 when it is no handle.
uint32_t handle_of_value(float value);

// The value of a function handle; 1.0 for a dangling or missing one.
float function_value(const table<animation_function>& functions, uint32_t handle, uint32_t time);

// The constant itself, or the function's value.
float value_at(const table<animation_function>& functions, float value, bool dynamic, uint32_t time);

inline float value_at(const table<animation_function>& functions, const animated_value& value, uint32_t time)
{
    return value_at(functions, value.value, value.dynamic != 0, time);
}
