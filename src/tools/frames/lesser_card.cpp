#include "tools/frames/lesser_card.h"

#include "tools/frames/option_values.h"

#include <algorithm>

constexpr std::string_view units_name = "units=";

namespace {

struct card_switch {
    std::string_view name;
    bool lesser_card::* flag;
};

} // namespace

constexpr card_switch card_switches[]
    = {{"no-vbo", &lesser_card::no_vbo}, {"no-pbo", &lesser_card::no_pbo}, {"no-npot", &lesser_card::no_npot},
        {"no-compression", &lesser_card::no_compression}, {"no-combine4", &lesser_card::no_combine4},
        {"no-combine3", &lesser_card::no_combine3}};

static bool read_word(std::string_view word, lesser_card& card)
{
    if (word.starts_with(units_name))
        return read_number(word.substr(units_name.size()), 4, card.units) && card.units > 0;
    for (const card_switch& s : card_switches) {
        if (s.name == word) {
            card.*s.flag = true;
            return true;
        }
    }
    return false;
}

bool read_lesser_card(std::string_view text, lesser_card& card)
{
    for (const std::string_view word : split_list(text))
        if (!read_word(word, card))
            return false;
    return true;
}

std::string lesser_card_text(const lesser_card& card)
{
    std::string text;
    const auto add = [&text](std::string_view word) { text.append(text.empty() ? "" : ",").append(word); };
    for (const card_switch& s : card_switches)
        if (card.*s.flag)
            add(s.name);
    if (card.units != 0)
        add(std::string(units_name) + std::to_string(card.units));
    return text;
}

driver_offer offer_of_card(driver_offer offer, const lesser_card& card)
{
    offer.vertex_buffer_object &= !card.no_vbo;
    offer.pixel_buffer_object &= !card.no_pbo;
    offer.texture_npot &= !card.no_npot;
    offer.texture_compression &= !card.no_compression;
    offer.nv_combine4 &= !card.no_combine4;
    offer.ati_combine3 &= !card.no_combine3;
    if (card.units != 0)
        offer.texture_units = std::min(offer.texture_units, static_cast<int32_t>(card.units));
    return offer;
}
