#include "model/document.h"

// The one long list of eleven names, in which documents may count too:
// 0 "Multiply color and add previous", 1..6 what combines with the previous unit,
// 7..10 what unit 1 does.
uint8_t combine_mode_of_unit(uint32_t unit, int32_t number)
{
    switch (unit) {
    case 0: // "Multiply color", "Ignore alpha, multiply color", "Replace", "Add color"
        if (number >= 0 && number <= 3)
            return static_cast<uint8_t>(number);
        return number >= 7 && number <= 10 ? static_cast<uint8_t>(number - 7) : 0;
    case 1: // "Add previous" .. "Add previous without alpha"
        if (number >= 0 && number <= 5)
            return static_cast<uint8_t>(number);
        return number == 6 ? 5 : 0;
    case 2: // "Multiply color and add previous", then unit 2's list shifted by one: the long list's own start
        return number >= 0 && number <= 6 ? static_cast<uint8_t>(number) : 0;
    }
    return 0;
}
