#include "model/values.h"

#include "content/numbers.h"

uint32_t handle_of_value(float value)
{
    const int32_t handle = truncate_to_int(value);
    return handle > 0 ? static_cast<uint32_t>(handle) : 0;
}

float function_value(const table<animation_function>& functions, uint32_t handle, uint32_t time)
{
    animation_function* function = table_get(functions, handle);
    return function == nullptr ? 1.0f : evaluate_function(*function, time);
}

float value_at(const table<animation_function>& functions, float value, bool dynamic, uint32_t time)
{
    return dynamic ? function_value(functions, handle_of_value(value), time) : value;
}
