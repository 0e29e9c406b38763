#include "contact_sheet.h"

#include "sheet_font.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

constexpr sheet_color background = {24, 26, 30};
constexpr sheet_color frame_color = {58, 62, 70}; // one pixel around every still
constexpr sheet_color title_color = {240, 240, 236};
constexpr sheet_color note_color = {150, 154, 162};
constexpr sheet_color time_color = {200, 202, 206};
constexpr uint32_t title_height = 36;        // the line of the large letters
constexpr uint32_t title_gap = 20;           // to the first still
constexpr uint32_t label_gap = 6;            // from a still to its time
constexpr uint32_t label_height = 20;        // the line of the small letters
constexpr uint32_t most_columns = 8;         // when they are chosen here
constexpr uint32_t largest_side = 1u << 16;  // pixels, of the sheet or any part of it
constexpr uint64_t largest_sheet = 1u << 28; // pixels in all

// About as many columns as rows once stills are wider than high, and the fewest holes
// in the last row.
static uint32_t choose_columns(uint32_t count)
{
    if (count <= 3)
        return std::max(count, 1u);
    const uint32_t middle = std::clamp(static_cast<uint32_t>(std::lround(std::sqrt(count))), 2u, most_columns);
    uint32_t best = middle;
    uint32_t best_holes = (middle - count % middle) % middle;
    for (uint32_t columns = middle + 1; columns <= std::min(middle + 2, most_columns); ++columns) {
        const uint32_t holes = (columns - count % columns) % columns;
        if (holes < best_holes) {
            best = columns;
            best_holes = holes;
        }
    }
    return best;
}

sheet_geometry plan_sheet(const sheet_layout& layout, uint32_t count, uint32_t width, uint32_t height)
{
    sheet_geometry g;
    if (count == 0 || width == 0 || height == 0)
        return g;
    const uint32_t gap = std::min(layout.gap, largest_side);
    const uint32_t margin = std::min(layout.margin, largest_side);
    g.columns = layout.columns != 0 ? std::min(layout.columns, count) : choose_columns(count);
    g.rows = (count + g.columns - 1) / g.columns;
    g.still_width = std::clamp(layout.still_width, 1u, largest_side);
    g.still_height = static_cast<uint32_t>(
        std::clamp<uint64_t>((uint64_t{g.still_width} * height + width / 2) / width, 1, largest_side));
    g.first_x = margin;
    g.first_y = margin + title_height + title_gap;
    g.step_x = g.still_width + gap;
    g.step_y = g.still_height + label_gap + label_height + gap;
    const uint64_t sheet_width = 2 * margin + uint64_t{g.columns} * g.step_x - gap;
    const uint64_t sheet_height = g.first_y + uint64_t{g.rows} * g.step_y - gap + margin;
    if (sheet_width > largest_side || sheet_height > largest_side)
        return {};
    g.width = static_cast<uint32_t>(sheet_width);
    g.height = static_cast<uint32_t>(sheet_height);
    return g;
}

static void fill_rectangle(picture& p, uint32_t x, uint32_t y, uint32_t width, uint32_t height, sheet_color color)
{
    paste_picture(p, make_picture(width, height, color.red, color.green, color.blue), x, y);
}

static void draw_heading(picture& sheet, const sheet_geometry& g, std::string_view title, std::string_view note)
{
    const uint32_t room = sheet.width - 2 * g.first_x;
    const uint32_t y = g.first_y - title_gap - title_height;
    const std::string shown_title = cut_text(large_sheet_font, title, room);
    draw_text(
        sheet, large_sheet_font, static_cast<int32_t>(g.first_x), static_cast<int32_t>(y), shown_title, title_color);
    const uint32_t used = shown_title.empty() ? 0 : text_width(large_sheet_font, shown_title) + title_gap;
    if (used >= room)
        return;
    // On the base line of the title, ending at the right border.
    const std::string shown_note = cut_text(small_sheet_font, note, room - used);
    const uint32_t note_x = g.first_x + room - text_width(small_sheet_font, shown_note);
    const int32_t note_y = static_cast<int32_t>(y) + font_ascent(large_sheet_font) - font_ascent(small_sheet_font);
    draw_text(sheet, small_sheet_font, static_cast<int32_t>(note_x), note_y, shown_note, note_color);
}

// A still of another aspect stands in the middle of its place.
static void draw_still(picture& sheet, const sheet_geometry& g, uint32_t x, uint32_t y, const sheet_still& still)
{
    fill_rectangle(sheet, x - 1, y - 1, g.still_width + 2, g.still_height + 2, frame_color);
    fill_rectangle(sheet, x, y, g.still_width, g.still_height, {0, 0, 0});
    uint32_t width = g.still_width;
    uint32_t height = g.still_height;
    fit_inside(still.image, width, height);
    const picture small = scale_picture(still.image, width, height);
    paste_picture(sheet, small, x + (g.still_width - width) / 2, y + (g.still_height - height) / 2);
    const std::string label = time_label(still.seconds);
    const uint32_t label_width = text_width(small_sheet_font, label);
    const int32_t label_x
        = static_cast<int32_t>(x) + (static_cast<int32_t>(g.still_width) - static_cast<int32_t>(label_width)) / 2;
    draw_text(
        sheet, small_sheet_font, label_x, static_cast<int32_t>(y + g.still_height + label_gap), label, time_color);
}

picture make_contact_sheet(
    const sheet_layout& layout, std::string_view title, std::string_view note, const std::vector<sheet_still>& stills)
{
    if (stills.empty())
        return {};
    const picture& first = stills.front().image;
    const sheet_geometry g = plan_sheet(layout, static_cast<uint32_t>(stills.size()), first.width, first.height);
    if (g.width == 0 || uint64_t{g.width} * g.height > largest_sheet)
        return {};
    picture sheet = make_picture(g.width, g.height, background.red, background.green, background.blue);
    draw_heading(sheet, g, title, note);
    for (uint32_t i = 0; i < stills.size(); ++i) {
        const uint32_t x = g.first_x + i % g.columns * g.step_x;
        const uint32_t y = g.first_y + i / g.columns * g.step_y;
        draw_still(sheet, g, x, y, stills[i]);
    }
    return sheet;
}

std::vector<double> spread_times(double first, double last, uint32_t count)
{
    std::vector<double> times;
    for (uint32_t i = 0; i < count; ++i)
        times.push_back(first + (last - first) * (2.0 * i + 1.0) / (2.0 * count));
    return times;
}

std::string time_label(double seconds)
{
    // A hair is added: 12.29 s is a little less than 1229 hundredths in binary.
    const double hundredths = seconds > 0 && seconds < 1e9 ? std::floor(seconds * 100 + 1e-6) : 0;
    const uint64_t ticks = static_cast<uint64_t>(hundredths);
    char text[64];
    std::snprintf(text, sizeof text, "%02u:%02u.%02u", static_cast<unsigned>(ticks / 6000),
        static_cast<unsigned>(ticks / 100 % 60), static_cast<unsigned>(ticks % 100));
    return text;
}
