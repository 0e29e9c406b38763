#include "flash_report.h"

#include "contact_sheet.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

constexpr float luminance_change = 0.1f;
constexpr float darker_limit = 0.8f;
constexpr float red_change = 20.0f;
constexpr float red_scale = 320.0f;
constexpr float rounding = 1e-5f;      // of sums of many pixels
constexpr double time_rounding = 1e-6; // s
constexpr double moment_gap = 1.0;     // s: closer moments are one

// ---- cells ------------------------------------------------------------------------

static uint32_t fit_field(uint32_t cells, uint32_t field, uint32_t screen)
{
    return std::max(1u, (cells * field + screen / 2) / screen);
}

static void start_anew(flash_report& report, const picture& p, double seconds)
{
    report.picture_width = p.width;
    report.picture_height = p.height;
    report.columns = std::min(p.width, flash_grid_width);
    report.rows = std::min(p.height, flash_grid_height);
    report.field_columns = fit_field(report.columns, 341, 1024);
    report.field_rows = fit_field(report.rows, 256, 768);
    report.first_time = seconds;
    report.pictures = 0;
    const size_t cell_count = size_t{report.columns} * report.rows;
    const size_t field_count
        = size_t{report.columns - report.field_columns + 1} * (report.rows - report.field_rows + 1);
    report.light.assign(cell_count * 3, 0.0f);
    report.sums.assign(size_t{report.columns + 1} * (report.rows + 1), 0);
    for (int32_t kind = 0; kind < flash_kind_count; ++kind) {
        report.cells[kind].assign(cell_count, {});
        report.fields[kind].assign(field_count, {});
    }
}

// The first pixel of a cell along one axis.
static uint32_t cell_begin(uint32_t cell, uint32_t cells, uint32_t pixels)
{
    return static_cast<uint32_t>(uint64_t{cell} * pixels / cells);
}

// The mean linear light of every cell.
static void reduce(flash_report& report, const picture& p)
{
    float light[256];
    for (uint32_t b = 0; b < 256; ++b)
        light[b] = linear_light(static_cast<uint8_t>(b));
    std::fill(report.light.begin(), report.light.end(), 0.0f);
    for (uint32_t row = 0; row < report.rows; ++row) {
        float* cells = &report.light[size_t{row} * report.columns * 3];
        const uint32_t top = cell_begin(row, report.rows, p.height);
        const uint32_t bottom = cell_begin(row + 1, report.rows, p.height);
        for (uint32_t y = top; y < bottom; ++y) {
            const uint8_t* from = &p.rgb[size_t{y} * p.width * 3];
            for (uint32_t column = 0; column < report.columns; ++column) {
                const uint32_t end = cell_begin(column + 1, report.columns, p.width);
                float sum[3] = {};
                for (uint32_t x = cell_begin(column, report.columns, p.width); x < end; ++x, from += 3)
                    for (uint32_t k = 0; k < 3; ++k)
                        sum[k] += light[from[k]];
                for (uint32_t k = 0; k < 3; ++k)
                    cells[column * 3 + k] += sum[k];
            }
        }
        for (uint32_t column = 0; column < report.columns; ++column) {
            const uint32_t width
                = cell_begin(column + 1, report.columns, p.width) - cell_begin(column, report.columns, p.width);
            for (uint32_t k = 0; k < 3; ++k)
                cells[column * 3 + k] /= static_cast<float>(width * (bottom - top));
        }
    }
}

static void note_extremes(flash_cell& cell, float value, bool saturated)
{
    if (cell.direction >= 0 && value >= cell.high) {
        cell.high_saturated = saturated || (cell.high_saturated && value == cell.high);
        cell.high = value;
    }
    if (cell.direction <= 0 && value <= cell.low) {
        cell.low_saturated = saturated || (cell.low_saturated && value == cell.low);
        cell.low = value;
    }
}

static void turn(flash_cell& cell, int32_t direction, float value, bool saturated, double seconds)
{
    cell.direction = direction;
    cell.since = seconds;
    cell.low = cell.high = value;
    cell.low_saturated = cell.high_saturated = saturated;
}

static void start_cell(flash_cell& cell, float value, bool saturated)
{
    turn(cell, 0, value, saturated, 0);
}

static void step_luminance(flash_cell& cell, float value, double seconds)
{
    const float change = luminance_change - rounding;
    if (cell.direction <= 0 && value - cell.low >= change && cell.low < darker_limit)
        turn(cell, 1, value, false, seconds);
    else if (cell.direction >= 0 && cell.high - value >= change && value < darker_limit)
        turn(cell, -1, value, false, seconds);
    else
        note_extremes(cell, value, false);
}

static void step_red(flash_cell& cell, float value, bool saturated, double seconds)
{
    const float change = red_change + rounding * red_scale;
    if (cell.direction <= 0 && value - cell.low > change && (saturated || cell.low_saturated))
        turn(cell, 1, value, saturated, seconds);
    else if (cell.direction >= 0 && cell.high - value > change && (saturated || cell.high_saturated))
        turn(cell, -1, value, saturated, seconds);
    else
        note_extremes(cell, value, saturated);
}

static void step_cells(flash_report& report, double seconds)
{
    for (size_t i = 0; i < report.cells[flash_luminance].size(); ++i) {
        const float* light = &report.light[i * 3];
        const float luminance = 0.2126f * light[0] + 0.7152f * light[1] + 0.0722f * light[2];
        const float red = std::max(0.0f, light[0] - light[1] - light[2]) * red_scale;
        // R / (R + G + B) >= 4/5, without the division; black is not red.
        const bool saturated = light[0] > 0 && light[0] * (1 + rounding) >= 4 * (light[1] + light[2]);
        flash_cell& bright_cell = report.cells[flash_luminance][i];
        flash_cell& red_cell = report.cells[flash_red][i];
        if (report.pictures == 0) {
            start_cell(bright_cell, luminance, false);
            start_cell(red_cell, red, saturated);
        } else {
            step_luminance(bright_cell, luminance, seconds);
            step_red(red_cell, red, saturated, seconds);
        }
    }
}

// ---- rectangles -------------------------------------------------------------------

// Sums over everything above and to the left: cells that have become brighter within
// the last tenth of a second in the low half of each word, darker in the high half.
// (At most 14,400 cells: the halves do not meet.) False where there are none.
static bool sum_changes(flash_report& report, flash_kind kind, double seconds)
{
    const size_t stride = report.columns + 1;
    for (uint32_t y = 0; y < report.rows; ++y) {
        uint32_t in_row = 0;
        for (uint32_t x = 0; x < report.columns; ++x) {
            const flash_cell& cell = report.cells[kind][size_t{y} * report.columns + x];
            if (cell.direction != 0 && seconds - cell.since <= flash_concurrence + time_rounding)
                in_row += cell.direction > 0 ? 1u : 1u << 16;
            report.sums[(y + 1) * stride + x + 1] = report.sums[y * stride + x + 1] + in_row;
        }
    }
    return report.sums.back() != 0;
}

static uint32_t changes_in_field(const flash_report& report, uint32_t x, uint32_t y)
{
    const size_t stride = report.columns + 1;
    const uint32_t* top = &report.sums[y * stride + x];
    const uint32_t* bottom = top + report.field_rows * stride;
    return bottom[report.field_columns] - bottom[0] - top[report.field_columns] + top[0];
}

// Which way a rectangle changed at this moment: 1, -1, or 0; and how much of it did.
// Where parts go either way the greater wins; where they are equal, the one that
// opposes its last transition.
static int32_t field_direction(const flash_report& report, const flash_field& field, uint32_t changes, float& share)
{
    const uint32_t size = report.field_columns * report.field_rows;
    const uint32_t up = changes & 0xFFFF;
    const uint32_t down = changes >> 16;
    const uint32_t most = std::max(up, down);
    share = static_cast<float>(most) / static_cast<float>(size);
    if (most * 4 <= size)
        return 0;
    if (up == down)
        return field.direction > 0 ? -1 : 1;
    return up > down ? 1 : -1;
}

// Flashes of the rectangle in the second that ends with its latest transition: pairs.
static uint32_t flashes_of(const flash_field& field, double& from, float& share)
{
    const double now = field.times[(field.count - 1) % flash_history];
    uint32_t transitions = 0;
    const uint32_t remembered = std::min(field.count, flash_history);
    while (transitions < remembered) {
        const uint32_t i = (field.count - 1 - transitions) % flash_history;
        if (now - field.times[i] > 1 + time_rounding)
            break;
        from = field.times[i];
        share = std::max(share, field.shares[i]);
        ++transitions;
    }
    return transitions / 2;
}

static void add_moment(flash_report& report, const flash_moment& found)
{
    for (flash_moment& moment : report.moments) {
        if (moment.kind != found.kind || found.from > moment.to + moment_gap || found.to < moment.from - moment_gap)
            continue;
        moment.from = std::min(moment.from, found.from);
        moment.to = std::max(moment.to, found.to);
        moment.flashes_in_a_second = std::max(moment.flashes_in_a_second, found.flashes_in_a_second);
        moment.field_share = std::max(moment.field_share, found.field_share);
        return;
    }
    report.moments.push_back(found);
}

static void step_fields(flash_report& report, flash_kind kind, double seconds)
{
    flash_moment found = {.kind = kind, .from = seconds, .to = seconds};
    const uint32_t columns = report.columns - report.field_columns + 1;
    for (size_t i = 0; i < report.fields[kind].size(); ++i) {
        const uint32_t changes
            = changes_in_field(report, static_cast<uint32_t>(i % columns), static_cast<uint32_t>(i / columns));
        flash_field& field = report.fields[kind][i];
        float share = 0;
        const int32_t direction = field_direction(report, field, changes, share);
        if (direction == 0)
            continue;
        if (direction == field.direction) { // the same one still grows
            float& known = field.shares[(field.count - 1) % flash_history];
            known = std::max(known, share);
            continue;
        }
        field.direction = direction;
        field.times[field.count % flash_history] = seconds - report.first_time;
        field.shares[field.count % flash_history] = share;
        ++field.count;
        double from = 0;
        float most = 0;
        const uint32_t flashes = flashes_of(field, from, most);
        if (flashes <= flash_limit)
            continue;
        found.flashes_in_a_second = std::max(found.flashes_in_a_second, flashes);
        found.from = std::min(found.from, report.first_time + from);
        found.field_share = std::max(found.field_share, static_cast<double>(most));
    }
    if (found.flashes_in_a_second > 0)
        add_moment(report, found);
}

// ---- the report -------------------------------------------------------------------

void flash_report_feed(flash_report& report, const picture& p, double seconds)
{
    if (!is_whole(p) || !std::isfinite(seconds)) {
        report.picture_width = 0; // whatever comes next starts anew
        return;
    }
    if (p.width != report.picture_width || p.height != report.picture_height || seconds < report.last_time)
        start_anew(report, p, seconds);
    reduce(report, p);
    step_cells(report, seconds);
    report.last_time = seconds;
    ++report.pictures;
    for (int32_t kind = 0; kind < flash_kind_count; ++kind)
        if (sum_changes(report, static_cast<flash_kind>(kind), seconds))
            step_fields(report, static_cast<flash_kind>(kind), seconds);
}

std::vector<flash_moment> flash_report_moments(const flash_report& report)
{
    std::vector<flash_moment> moments = report.moments;
    std::stable_sort(
        moments.begin(), moments.end(), [](const flash_moment& a, const flash_moment& b) { return a.from < b.from; });
    return moments;
}

static const char* name_of(flash_kind kind)
{
    switch (kind) {
    case flash_luminance:
        return "bright and dark";
    case flash_red:
        return "saturated red";
    case flash_kind_count:
        break;
    }
    return "";
}

std::string flash_report_text(const flash_report& report)
{
    const std::vector<flash_moment> moments = flash_report_moments(report);
    std::string text;
    if (moments.empty())
        text = "Flashes: no second has more than three (WCAG 2.3.1).\n";
    else
        text = "Flashes: more than three in a second (WCAG 2.3.1) at\n";
    for (const flash_moment& moment : moments) {
        char line[160];
        std::snprintf(line, sizeof line, "  %s - %s  %u in a second, %s, over %.0f %% of a field of view\n",
            time_label(moment.from).c_str(), time_label(moment.to).c_str(), moment.flashes_in_a_second,
            name_of(moment.kind), moment.field_share * 100);
        text += line;
    }
    return text
        + "This is a measurement of the pictures, and no guarantee that nobody is harmed by them. Warn\n"
          "your audience of flickering light where there is any.\n";
}
