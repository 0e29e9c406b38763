#include "tools/preview/show_build.h"

#include "tools/preview/message_bytes.h"

#include <algorithm>
#include <tuple>

// ---- places -----------------------------------------------------------------------------

static std::tuple<uint32_t, uint32_t, uint32_t> key_of(const source_mark& mark)
{
    return {mark.section, mark.record, mark.part};
}

bool marks_are_ordered(std::span<const source_mark> marks)
{
    return std::is_sorted(
        marks.begin(), marks.end(), [](const source_mark& a, const source_mark& b) { return key_of(a) < key_of(b); });
}

// Null: there is none.
static const source_mark* find_mark(const show_build& build, uint32_t section, uint32_t record, uint32_t part)
{
    const std::tuple wanted(section, record, part);
    const auto found = std::lower_bound(build.marks.begin(), build.marks.end(), wanted,
        [](const source_mark& mark, const auto& key) { return key_of(mark) < key; });
    return found != build.marks.end() && key_of(*found) == wanted ? &*found : nullptr;
}

source_place place_of_mark(const show_build& build, uint32_t section, uint32_t record, uint32_t part)
{
    const source_mark* mark = find_mark(build, section, record, part);
    if (part != 0 && (mark == nullptr || mark->place.line == 0))
        mark = find_mark(build, section, record, 0);
    return mark != nullptr ? mark->place : source_place();
}

std::string name_of_mark(const show_build& build, uint32_t section, uint32_t record, uint32_t part)
{
    const source_mark* mark = find_mark(build, section, record, part);
    return mark != nullptr ? mark->name : "";
}

// ---- as bytes ---------------------------------------------------------------------------
//
// All in the order of the record's fields. The first four bytes tell a build from what is none, the next eight how long
// the whole is.

constexpr uint32_t first_bytes = 0x31444c42; // "BLD1"
constexpr size_t length_offset = 4;

static void put(std::vector<uint8_t>& out, const source_place& place)
{
    put(out, place.file);
    put(out, place.line, 4);
}

static void put(std::vector<uint8_t>& out, const show_problem& problem)
{
    put(out, problem.severity, 1);
    put(out, problem.file);
    put(out, problem.line, 4);
    put(out, problem.where);
    put(out, problem.text);
}

static void put(std::vector<uint8_t>& out, const source_mark& mark)
{
    put(out, mark.section, 4);
    put(out, mark.record, 4);
    put(out, mark.part, 4);
    put(out, mark.place);
    put(out, mark.name);
}

static void put(std::vector<uint8_t>& out, const tried_number& tried)
{
    put(out, tried.file);
    put(out, tried.line, 4);
    put(out, tried.site, 4);
    put(out, tried.label);
    for (const double number : {tried.written, tried.value, tried.least, tried.most})
        put(out, number);
    put(out, tried.can_write, 1);
    put(out, tried.step);
}

std::vector<uint8_t> encode_build(const show_build& build)
{
    std::vector<uint8_t> out;
    out.reserve(build.pack.size() + 64 * build.marks.size() + 4096);
    put(out, first_bytes, 4);
    put(out, 0, 8);
    put(out, build.number, 8);
    put(out, build.can_play, 1);
    put(out, build.folder);
    put(out, build.file);
    put(out, build.from_source, 1);
    put(out, build.pack.size(), 8);
    out.insert(out.end(), build.pack.begin(), build.pack.end());
    put_list(out, build.problems);
    put_list(out, build.files);
    put(out, build.music);
    put(out, build.title);
    put(out, build.bpm);
    put(out, build.beats_per_bar);
    put_list(out, build.marks);
    put_list(out, build.tries);
    put_list(out, build.printed);
    put(out, build.seconds);
    for (uint32_t byte = 0; byte < 8; ++byte)
        out[length_offset + byte] = static_cast<uint8_t>(uint64_t{out.size()} >> (8 * byte));
    return out;
}

// ---- and back -----------------------------------------------------------------------------

static void take(byte_reader& in, source_place& place)
{
    take(in, place.file);
    take(in, place.line);
}

static void take(byte_reader& in, show_problem& problem)
{
    problem.severity = static_cast<problem_severity>(take_number(in, 1, problem_note));
    take(in, problem.file);
    take(in, problem.line);
    take(in, problem.where);
    take(in, problem.text);
}

static void take(byte_reader& in, source_mark& mark)
{
    take(in, mark.section);
    take(in, mark.record);
    take(in, mark.part);
    take(in, mark.place);
    take(in, mark.name);
}

static void take(byte_reader& in, tried_number& tried)
{
    take(in, tried.file);
    take(in, tried.line);
    take(in, tried.site);
    take(in, tried.label);
    for (double* number : {&tried.written, &tried.value, &tried.least, &tried.most})
        take(in, *number);
    take(in, tried.can_write);
    take(in, tried.step);
}

static void take_fields(byte_reader& in, show_build& build)
{
    build.number = take_number(in, 8);
    take(in, build.can_play);
    take(in, build.folder);
    take(in, build.file);
    take(in, build.from_source);
    const std::span<const uint8_t> pack = take_bytes(in, take_number(in, 8));
    build.pack.assign(pack.begin(), pack.end());
    take_list(in, build.problems);
    take_list(in, build.files);
    take(in, build.music);
    take(in, build.title);
    take(in, build.bpm);
    take(in, build.beats_per_bar);
    take_list(in, build.marks);
    take_list(in, build.tries);
    take_list(in, build.printed);
    take(in, build.seconds);
}

std::optional<show_build> decode_build(std::span<const uint8_t> bytes)
{
    byte_reader in = {bytes};
    const bool begins = take_number(in, 4) == first_bytes && take_number(in, 8) == bytes.size();
    if (!in.good || !begins)
        return {};
    show_build build;
    take_fields(in, build);
    if (!in.good || !in.left.empty() || !marks_are_ordered(build.marks))
        return {};
    return build;
}
