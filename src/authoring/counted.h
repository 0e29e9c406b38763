// How many there are, as messages say it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// "1 frame", "12 frames"; `many` is the word for all but one where an "s" does not make it: "2 meshes".
std::string counted(uint64_t number, std::string_view one, std::string_view many = {});
