// A contact sheet: stills of a show in rows, their times beneath, a title above.
//
// Pure pixels; the letters are DejaVu Sans (sheet_font.h).
#pragma once

#include "tools/frames/picture.h"

#include <string>
#include <string_view>
#include <vector>

struct sheet_still {
    double seconds = 0; // shown beneath as mm:ss.cc
    picture image;      // any size; all of one aspect look best
};

struct sheet_layout {
    uint32_t columns = 0;       // 0: chosen from the number of stills, 1..8
    uint32_t still_width = 320; // pixels; the height follows from the first still's aspect
    uint32_t gap = 16;          // between stills, pixels
    uint32_t margin = 32;       // around everything, pixels
};

// Where everything stands: pixels from the upper left corner of the sheet.
struct sheet_geometry {
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t columns = 0;
    uint32_t rows = 0;
    uint32_t still_width = 0;
    uint32_t still_height = 0;
    uint32_t first_x = 0; // the first still
    uint32_t first_y = 0;
    uint32_t step_x = 0; // from still to still
    uint32_t step_y = 0; // from row to row; includes the line of the time
};

// The layout of `count` stills of `width` x `height` pixels; all 0 for no stills, and
// for a sheet of more than 65,536 pixels along a side.
sheet_geometry plan_sheet(const sheet_layout& layout, uint32_t count, uint32_t width, uint32_t height);

// The sheet: title large, note small and to the right of it (UTF-8; either may be
// empty; letters that the font lacks are shown as "?"; a title that is too long is
// cut with "..."). Stills are scaled into their places. No stills give no picture.
picture make_contact_sheet(
    const sheet_layout& layout, std::string_view title, std::string_view note, const std::vector<sheet_still>& stills);

// `count` times spread over first..last seconds, at the middle of equal parts: no black
// first and last frames.
std::vector<double> spread_times(double first, double last, uint32_t count);

// A time as mm:ss.cc (hundredths, rounded down; 100 minutes and more have more digits;
// negative and not-a-number as 00:00.00).
std::string time_label(double seconds);
