// try(value, least, most): a number that is tried by hand while its show is looked at.
//
// A build without overrides takes every number as it is written. Which call of the text is being made Lua does not say;
// it says the line. The call is the next one of that line, in the order in which they are made and after the last the
// first again, that can be it by the numbers that are written out in it: calls of unlike numbers are never mistaken for
// each other, and equal ones take turns. Only equal ones on one line of which some are not made at times may change
// places; they belong on lines of their own. However often a call is made, it is one, with one slider.
#include "authoring/lua/sandbox.h"
#include "authoring/lua/word_list.h"
#include "authoring/show/units.h"

#include <lua.hpp>

#include <algorithm>
#include <cmath>

namespace {

struct try_numbers {
    double value;
    double least;
    double most;
    bool is_whole; // all three are integers
};

} // namespace

// ---- what it is given -----------------------------------------------------------------------------

static std::string call_text(const std::string& value, const std::string& least, const std::string& most)
{
    return "try(" + value + ", " + least + ", " + most + ")";
}

static std::string text_of(lua_State* L, int index, const char* name)
{
    return lua_type(L, index) == LUA_TNUMBER ? value_text(L, index) : name;
}

// Whether three things stand in the brackets; reports otherwise.
static bool has_three(lua_State* L)
{
    const int given = lua_gettop(L);
    const std::string meant = call_text(text_of(L, 1, "value"), text_of(L, 2, "least"), text_of(L, 3, "most"));
    if (given == 1 && lua_istable(L, 1))
        report_error(L, "try takes three numbers in round brackets: write " + meant + ".");
    else if (given < 3 || lua_isnil(L, 2) || lua_isnil(L, 3))
        report_error(L,
            "try takes a number and the ends of its slider: write " + meant
                + (given == 0 ? ", like try(0.35, 0, 1)." : "."));
    else if (given > 3)
        report_error(L, "try takes three numbers, and is given " + std::to_string(given) + ": write " + meant + ".");
    else
        return true;
    return false;
}

// What to write in the place of something that is no number; empty: whatever number there is to be.
static std::string number_instead(lua_State* L, int index)
{
    if (as<curve_thing>(thing_at(L, index)) != nullptr)
        return ": try the numbers that it is made of";
    if (lua_type(L, index) != LUA_TSTRING)
        return "";
    if (lua_isnumber(L, index) != 0)
        return ": leave the quotation marks out";
    const show_description& show = *state_of(L).show;
    double ticks = 0;
    const bool is_time = read_time(lua_tostring(L, index), {show.bpm, show.beats_per_bar}, ticks).empty();
    return is_time ? ": a time is tried as its ticks, " + number_text(ticks) : "";
}

static bool is_number(lua_State* L, int index, const char* what)
{
    if (lua_type(L, index) == LUA_TNUMBER)
        return !std::isnan(number_at(L, index, what, NAN));
    report_error(
        L, std::string(what) + " is " + what_is(L, index) + ", and wants a number" + number_instead(L, index) + ".");
    return false;
}

static bool read_numbers(lua_State* L, try_numbers& n)
{
    if (!has_three(L))
        return false;
    const bool are_numbers = is_number(L, 1, "try: value");
    if (!is_number(L, 2, "try: least") || !is_number(L, 3, "try: most") || !are_numbers)
        return false;
    const std::string value = value_text(L, 1);
    const std::string least = value_text(L, 2);
    const std::string most = value_text(L, 3);
    n = {lua_tonumber(L, 1), lua_tonumber(L, 2), lua_tonumber(L, 3),
        lua_isinteger(L, 1) != 0 && lua_isinteger(L, 2) != 0 && lua_isinteger(L, 3) != 0};
    if (n.least > n.most)
        report_error(L,
            "try: least is " + least + " and most is " + most + ": the smaller one comes first, write "
                + call_text(value, most, least) + ".");
    else if (n.least == n.most)
        report_error(L, "try: least and most are both " + least + ": write two ends between which its slider goes.");
    else if (n.value < n.least || n.value > n.most)
        report_error(L,
            "try: the value " + value + " lies outside of " + least + " to " + most
                + ": write a number between them, or "
                + (n.value < n.least ? call_text(value, value, most) : call_text(value, least, value)) + ".");
    else
        return true;
    return false;
}

// ---- which call it is -------------------------------------------------------------------------------

static bool can_be(const try_site& site, const try_numbers& n)
{
    return (!site.can_write || site.value == n.value) && site.least.value_or(n.least) == n.least
        && site.most.value_or(n.most) == n.most;
}

// The numbers of a line's calls among those of their file, in the order in which they are made.
static std::vector<size_t> calls_of_line(std::span<const try_site> sites, uint32_t line)
{
    const auto is_before = [](const try_site& site, uint32_t wanted) { return site.line < wanted; };
    auto at = static_cast<size_t>(std::lower_bound(sites.begin(), sites.end(), line, is_before) - sites.begin());
    std::vector<size_t> calls;
    for (; at < sites.size() && sites[at].line == line; ++at)
        calls.push_back(at);
    std::sort(calls.begin(), calls.end(), [sites](size_t a, size_t b) { return sites[a].closed < sites[b].closed; });
    return calls;
}

// -1: none of those that are written out.
static int64_t site_of_call(lua_State* L, const source_place& place, const try_numbers& n)
{
    const std::span<const try_site> sites = tries_of_file(L, place.file);
    const std::vector<size_t> calls = calls_of_line(sites, place.line);
    charge_steps(L, calls.size());
    size_t& last = state_of(L).tries.last_of_line.try_emplace({place.file, place.line}, calls.size() - 1).first->second;
    for (size_t turn = 1; turn <= calls.size(); ++turn) {
        const size_t next = (last + turn) % calls.size();
        if (!can_be(sites[calls[next]], n))
            continue;
        last = next;
        return static_cast<int64_t>(calls[next]);
    }
    return -1;
}

static void say_without_slider(lua_State* L, const source_place& place)
{
    if (place.line == 0 || !state_of(L).tries.told.insert({place.file, place.line}).second)
        return;
    const bool is_beyond = tries_of_file(L, place.file).size() == most_tries_of_a_text;
    report(L, problem_note, place,
        std::string("this try has no slider: ")
            + (is_beyond ? "a file has 1,000 of them at most."
                         : "write try(value, least, most) itself, and not another name for it."));
}

// ---- what it gives ------------------------------------------------------------------------------------

static const try_override* override_of(const try_calls& tries, const tried_call& call)
{
    for (const try_override& each : tries.overrides)
        if (each.file == call.file && each.site == call.site && each.written == call.written
            && std::isfinite(each.value))
            return &each;
    return nullptr;
}

static void push_tried(lua_State* L, double value)
{
    constexpr double largest = 9007199254740992; // up to which all whole numbers are told apart
    if (lua_isinteger(L, 1) != 0 && value == std::floor(value) && std::fabs(value) <= largest)
        lua_pushinteger(L, static_cast<lua_Integer>(value));
    else
        lua_pushnumber(L, value);
}

static int try_word(lua_State* L)
{
    try_numbers n = {};
    if (!read_numbers(L, n)) {
        const bool is_usable = lua_type(L, 1) == LUA_TNUMBER && std::isfinite(lua_tonumber(L, 1));
        is_usable ? lua_pushvalue(L, 1) : lua_pushinteger(L, 0); // so that what is asked of it makes no errors more
        return 1;
    }
    const source_place place = current_place(L);
    const int64_t site = site_of_call(L, place, n);
    lua_pushvalue(L, 1);
    if (site < 0) {
        say_without_slider(L, place);
        return 1;
    }
    try_calls& tries = state_of(L).tries;
    const auto number = static_cast<uint32_t>(site);
    const double step = try_step(n.least, n.most, n.is_whole);
    const auto [made, is_first] = tries.made.try_emplace({place.file, number});
    tried_call& call = made->second;
    if (is_first) {
        const try_site& written = tries_of_file(L, place.file)[number];
        call = {
            place.file, place.line, number, written.label, n.value, n.value, n.least, n.most, step, written.can_write};
    }
    const try_override* given = override_of(tries, call);
    if (given == nullptr)
        return 1;
    const double value = nearest_tried(given->value, n.least, n.most, step);
    call.value = is_first ? value : call.value;
    push_tried(L, value);
    return 1;
}

void define_try_word(lua_State* L)
{
    define_word(L, "try", guarded<try_word>);
}
