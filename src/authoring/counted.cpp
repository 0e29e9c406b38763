#include "authoring/counted.h"

std::string counted(uint64_t number, std::string_view one, std::string_view many)
{
    std::string text = std::to_string(number) + " ";
    text += number == 1 || many.empty() ? one : many;
    return number == 1 || !many.empty() ? text : text + "s";
}
