// Values that are constant or follow an animation function.
//
// Times are ticks of 1/100 s. Evaluation changes the functions' caches, nothing else.
#pragma once

#include "model/record_table.h"
#include "model/records.h"

#include <cstdint>

// The handle that a record holds as a float; 0 when it is no handle.
inline uint32_t handle_of_value(float value)
{
    const bool is_one = value >= 1.0f && value < 2147483648.0f; // never a number that is none
    return is_one ? static_cast<uint32_t>(static_cast<int32_t>(value)) : 0;
}

// The value of a function handle; 1.0 for a dangling or missing one.
inline float function_value(const table<animation_function>& functions, uint32_t handle, uint32_t time)
{
    animation_function* function = table_get(functions, handle);
    return function == nullptr ? 1.0f : evaluate_function(*function, time);
}

// The constant itself, or the function's value.
inline float value_at(const table<animation_function>& functions, float value, bool dynamic, uint32_t time)
{
    return dynamic ? function_value(functions, handle_of_value(value), time) : value;
}

inline float value_at(const table<animation_function>& functions, const animated_value& value, uint32_t time)
{
    return value_at(functions, value.value, value.dynamic != 0, time);
}
