#include "tools/preview/show_build.h"

source_place place_of_mark(const show_build& build, uint32_t section, uint32_t record, uint32_t part)
{
    source_place place;
    for (const source_mark& mark : build.marks)
        if (mark.section == section && mark.record == record && (mark.part == part || mark.part == 0))
            if (mark.part == part || place.line == 0)
                place = mark.place;
    return place;
}

std::string name_of_mark(const show_build& build, uint32_t section, uint32_t record, uint32_t part)
{
    for (const source_mark& mark : build.marks)
        if (mark.section == section && mark.record == record && mark.part == part)
            return mark.name;
    return "";
}

std::vector<uint8_t> encode_build(const show_build&)
{
    return {};
}
std::optional<show_build> decode_build(std::span<const uint8_t>)
{
    return {};
}
