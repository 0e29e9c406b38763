#include "tools/frames/frame_clock.h"

#include <algorithm>
#include <charconv>
#include <numeric>

constexpr uint64_t microseconds = 1000000;
constexpr uint64_t longest_seconds = 86400;
constexpr uint64_t whole_share = 100000; // 100 % in thousandths

uint32_t tick_of_frame(uint64_t frame, frame_rate rate)
{
    const uint64_t parts = uint64_t{100} * rate.denominator;
    if (frame > UINT64_MAX / parts)
        return UINT32_MAX;
    return static_cast<uint32_t>(std::min<uint64_t>(frame * parts / rate.numerator, UINT32_MAX));
}

// ---- reading --------------------------------------------------------------------

static bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

// Digits only, all of the text.
static bool read_whole(std::string_view text, uint64_t& value)
{
    if (text.empty() || !std::all_of(text.begin(), text.end(), is_digit))
        return false;
    return std::from_chars(text.data(), text.data() + text.size(), value).ec == std::errc();
}

// A decimal number in units of 10 to the minus `decimals`; more decimals are refused
// rather than lost.
static bool read_decimal(std::string_view text, size_t decimals, uint64_t& value)
{
    const size_t point = text.find('.');
    const std::string_view whole = text.substr(0, point);
    const std::string_view part = point == std::string_view::npos ? "" : text.substr(point + 1);
    if (point != std::string_view::npos && part.empty())
        return false;
    uint64_t fraction = 0;
    if (part.size() > decimals || !read_whole(whole, value) || (!part.empty() && !read_whole(part, fraction)))
        return false;
    for (size_t i = part.size(); i < decimals; ++i)
        fraction *= 10;
    uint64_t unit = 1;
    for (size_t i = 0; i < decimals; ++i)
        unit *= 10;
    if (value > longest_seconds * microseconds / unit)
        return false;
    value = value * unit + fraction;
    return true;
}

// Seconds, or minutes and seconds below 60.
static bool read_time(std::string_view text, uint64_t& value)
{
    const size_t colon = text.find(':');
    if (colon == std::string_view::npos)
        return read_decimal(text, 6, value) && value <= longest_seconds * microseconds;
    uint64_t minutes = 0;
    const std::string_view seconds = text.substr(colon + 1);
    const size_t whole_digits = std::min(seconds.find('.'), seconds.size());
    if (whole_digits != 2 || !read_whole(text.substr(0, colon), minutes) || !read_decimal(seconds, 6, value)
        || value >= 60 * microseconds || minutes > longest_seconds / 60)
        return false;
    value += minutes * 60 * microseconds;
    return value <= longest_seconds * microseconds;
}

bool read_moment(std::string_view text, moment& result)
{
    if (text.empty())
        return false;
    moment read = {moment_time, 0};
    bool understood = false;
    if (text.back() == 'f') {
        read.kind = moment_frame;
        understood = read_whole(text.substr(0, text.size() - 1), read.value)
            && read.value <= longest_seconds * max_rate_number;
    } else if (text.back() == '%') {
        read.kind = moment_share;
        understood = read_decimal(text.substr(0, text.size() - 1), 3, read.value) && read.value <= whole_share;
    } else {
        understood = read_time(text, read.value);
    }
    if (understood)
        result = read;
    return understood;
}

// What is called 29.97 is 30 x 1000/1001, and so are its kin: in thousandths, as they are
// written with two decimals or with three.
static bool read_television_rate(uint64_t thousandths, uint64_t& numerator, uint64_t& denominator)
{
    for (const uint64_t whole : {24u, 30u, 48u, 60u, 120u, 240u}) {
        const uint64_t with_three = (whole * 2000000 / 1001 + 1) / 2;
        const uint64_t with_two = (whole * 200000 / 1001 + 1) / 2 * 10;
        if (thousandths != with_three && thousandths != with_two)
            continue;
        numerator = whole * 1000;
        denominator = 1001;
        return true;
    }
    return false;
}

static bool read_decimal_rate(std::string_view text, uint64_t& numerator, uint64_t& denominator)
{
    uint64_t thousandths = 0;
    if (!read_decimal(text, 3, thousandths))
        return false;
    if (read_television_rate(thousandths, numerator, denominator))
        return true;
    const uint64_t common = std::gcd(thousandths, uint64_t{1000});
    numerator = thousandths / common;
    denominator = 1000 / common;
    return true;
}

static bool read_fraction(std::string_view text, uint64_t& numerator, uint64_t& denominator)
{
    const size_t slash = text.find('/');
    denominator = 1;
    return read_whole(text.substr(0, slash), numerator)
        && (slash == std::string_view::npos || read_whole(text.substr(slash + 1), denominator));
}

bool read_frame_rate(std::string_view text, frame_rate& rate)
{
    uint64_t numerator = 0;
    uint64_t denominator = 1;
    const bool decimal = text.find('.') != std::string_view::npos;
    if (!(decimal ? read_decimal_rate(text, numerator, denominator) : read_fraction(text, numerator, denominator)))
        return false;
    if (numerator == 0 || denominator == 0 || numerator > max_rate_number || denominator > max_rate_number
        || numerator > 1000 * denominator || denominator > 1000 * numerator)
        return false;
    rate = {static_cast<uint32_t>(numerator), static_cast<uint32_t>(denominator)};
    return true;
}

// ---- moments and frames -----------------------------------------------------------

// A day at 1000 frames a second, and a rate's greatest number, keep below 64 bits.
static uint64_t frame_before(const moment& when, frame_rate rate, uint64_t end)
{
    switch (when.kind) {
    case moment_time:
        return when.value * rate.numerator / (microseconds * rate.denominator);
    case moment_frame:
        return when.value;
    case moment_share:
        return end * when.value / whole_share;
    case moment_unset:
        break;
    }
    return 0;
}

// The end of the production shows nothing: all of it is its last frame.
uint64_t frame_at(const moment& when, frame_rate rate, uint64_t end)
{
    const uint64_t frame = frame_before(when, rate, end);
    return when.kind == moment_share && end > 0 ? std::min(frame, end - 1) : frame;
}

uint64_t frame_from(const moment& when, frame_rate rate, uint64_t end)
{
    const uint64_t before = frame_before(when, rate, end);
    const bool exact = when.kind != moment_time || when.value * rate.numerator % (microseconds * rate.denominator) == 0;
    return exact ? before : before + 1;
}
