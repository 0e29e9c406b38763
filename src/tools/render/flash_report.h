// Flashes: counts those of a video as WCAG 2.3.1 "Three Flashes or Below Threshold"
// defines them.
//
// Formulas: the definitions "general flash and red flash thresholds" and "relative
// luminance" of the Web Content Accessibility Guidelines (www.w3.org/TR/WCAG21/):
//   relative luminance L = 0.2126 R + 0.7152 G + 0.0722 B of linear light 0..1;
//   general flash: a pair of opposing changes of L of 0.1 or more, where the darker of
//     the two is below 0.80;
//   red flash: a pair of opposing changes of max(0, (R - G - B) x 320) of more than 20
//     that involve a saturated red, R / (R + G + B) >= 0.8;
//   area: more than 25 % of any 10-degree field of view at once, that is of any
//     rectangle of 341 x 256 pixels where the screen has 1024 x 768;
//   more than three flashes of one kind in any one second.
//
// How it is measured: each picture is first reduced to at most 160 x 90 cells, each the
// mean linear light of its pixels, so patterns finer than a cell (a fifth of a degree)
// do not flash, as the guidelines except them. Every cell remembers its last extreme; a
// change that is large enough against it is a transition. A rectangle (a third of the
// picture's width and height, at every cell) makes a transition when more than a
// quarter of its cells have made it within the last tenth of a second; two opposing
// transitions are a flash; four flashes within a second are a moment of the report.
// A cell that is partly covered counts as a whole where its mean changes enough, and
// within a tenth of a second the brighter and darker parts of one fade count as one; a
// fast bright thing crossing the screen may so be named too: the count errs upward.
#pragma once

#include "tools/frames/picture.h"

#include <cstdint>
#include <string>
#include <vector>

enum flash_kind : int32_t { flash_luminance, flash_red, flash_kind_count };

constexpr uint32_t flash_grid_width = 160; // cells, at most
constexpr uint32_t flash_grid_height = 90;
constexpr double flash_concurrence = 0.1; // s: changes this close happen at once
constexpr uint32_t flash_limit = 3;       // flashes in a second that are still allowed

struct flash_moment {
    flash_kind kind = flash_luminance;
    double from = 0;                  // s: the first change of the first flash
    double to = 0;                    // s: the last change
    uint32_t flashes_in_a_second = 0; // the most in any second of it
    double field_share = 0;           // the most of a 10-degree field that changed at once, 0..1
};

struct flash_cell {        // of one kind
    int32_t direction = 0; // of its last transition: -1 darker, 1 brighter, 0 none yet
    float low = 0;         // extremes since then
    float high = 0;
    bool low_saturated = false; // red only: a saturated red stood at the extreme
    bool high_saturated = false;
    double since = 0; // s: the last transition
};

constexpr uint32_t flash_history = 64; // transitions remembered per rectangle

struct flash_field {                  // a rectangle of one kind
    int32_t direction = 0;            // of its last transition
    uint32_t count = 0;               // transitions so far
    double times[flash_history] = {}; // s after the first picture; transition n at n % 64
    float shares[flash_history] = {}; // of its cells
};

struct flash_report {
    uint32_t picture_width = 0; // of the latest picture
    uint32_t picture_height = 0;
    uint32_t columns = 0; // cells
    uint32_t rows = 0;
    uint32_t field_columns = 0; // cells of one rectangle
    uint32_t field_rows = 0;
    double first_time = 0; // s
    double last_time = 0;
    uint64_t pictures = 0;
    std::vector<float> light; // columns x rows x 3, linear
    std::vector<flash_cell> cells[flash_kind_count];
    std::vector<flash_field> fields[flash_kind_count];
    std::vector<uint32_t> sums;        // working memory
    std::vector<flash_moment> moments; // in order of their beginnings per kind; those less than 1 s apart are one
};

// Takes the next picture, which stands at `seconds`. Times rise from call to call; a
// picture that goes back in time, is not whole, or has another size starts anew (what
// was found is kept). At least 10 pictures a second are wanted for the result to mean
// anything.
void flash_report_feed(flash_report& report, const picture& p, double seconds);

// The moments of both kinds in order of time.
std::vector<flash_moment> flash_report_moments(const flash_report& report);

// The report in plain words, one line per moment, and that it is no guarantee; ends
// with a line end.
std::string flash_report_text(const flash_report& report);
