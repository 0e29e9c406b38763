#include "authoring/lua/sandbox.h"

#include "authoring/lua/sandbox_state.h"
#include "authoring/lua/wording.h"
#include "authoring/near_name.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <locale.h>
#include <new>
#include <utility>

static constexpr int hook_interval = 1000;   // instructions between two looks at the limits
static constexpr int stopped_interval = 100; // of what still runs while a stopped run unwinds
static constexpr uint64_t bytes_a_step = 64; // memory asked for counts as steps
static constexpr uint64_t refusals_a_run = 16;
static constexpr int most_values = 40'000;   // of one function: calling what is called by "__call" copies them all
static constexpr int many_values = 2'000;    // from which on that takes long
static constexpr int slow_interval = 10;     // instructions between two looks then, and where they take long
static constexpr double slow_seconds = 0.05; // between two looks
static constexpr int place_depth = 100;      // functions that are looked through for one of the show
static constexpr size_t callers_told = 3;

// Addresses that are keys of Lua's registry.
static const char words_key = 0;
static const char globals_key = 0;
static const char told_key = 0;

// ---- limits ----------------------------------------------------------------------------------------------------

static double seconds_computed()
{
    timespec t = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
}

sandbox& sandbox_of(lua_State* L)
{
    sandbox* s = nullptr;
    std::memcpy(&s, lua_getextraspace(L), sizeof s);
    return *s;
}

static void check_limits(lua_State* L, lua_Debug*)
{
    sandbox& s = sandbox_of(L);
    s.steps += static_cast<uint64_t>(lua_gethookcount(L));
    if (s.stopped != stop_none) {
        stop_run(L, s.stopped);
    }
    if (s.refusals > refusals_a_run) {
        stop_run(L, s.refused);
    }
    if (s.steps > s.options.step_limit) {
        stop_run(L, stop_steps);
    }
    const double now = seconds_computed();
    if (now - s.begun - s.excused > s.options.time_limit) {
        stop_run(L, stop_time);
    }
    const bool slow = s.wary || now - s.last_look > slow_seconds;
    const int interval = slow ? slow_interval : hook_interval;
    s.last_look = now;
    if (lua_gethookcount(L) != interval) {
        lua_sethook(L, check_limits, LUA_MASKCOUNT, interval);
    }
}

void stop_run(lua_State* L, stop_reason reason)
{
    sandbox& s = sandbox_of(L);
    if (s.stopped == stop_none) {
        s.stopped = reason;
        s.stopped_at = current_place(L);
        lua_sethook(L, check_limits, LUA_MASKCOUNT, stopped_interval);
    }
    lua_pushboolean(L, 0); // what is told is made of the reason
    lua_error(L);
    std::abort(); // lua_error does not return
}

void keep_stopped(lua_State* L, int status)
{
    sandbox& s = sandbox_of(L);
    if (status == LUA_ERRMEM && s.stopped == stop_none) {
        s.stopped = s.refused != stop_none ? s.refused : stop_memory;
        s.stopped_at = s.refused_at;
        lua_sethook(L, check_limits, LUA_MASKCOUNT, stopped_interval);
    }
    if (s.stopped != stop_none) {
        lua_error(L);
    }
}

void charge_steps(lua_State* L, uint64_t steps)
{
    sandbox& s = sandbox_of(L);
    s.steps += steps;
    if (s.running && s.steps > s.options.step_limit) {
        stop_run(L, s.stopped != stop_none ? s.stopped : stop_steps);
    }
}

static void* refuse_memory(sandbox& s, stop_reason reason)
{
    s.refused = reason;
    s.refusals += 1;
    s.refused_at = current_place(s.L);
    return nullptr;
}

// Lua's allocator: counts what it gives, as memory and as work.
static void* resize_block(void* user, void* block, size_t old_size, size_t size)
{
    sandbox& s = *static_cast<sandbox*>(user);
    const size_t held = block != nullptr ? old_size : 0; // of a new block, the old size is its type
    if (size == 0) {
        std::free(block);
        s.memory -= held;
        return nullptr;
    }
    if (size > held && s.running) {
        const int values = block == nullptr && old_size == 0 ? lua_gettop(s.L) : 0;
        const bool holds_values = size >= static_cast<size_t>(values) * sizeof(lua_Number) * 2;
        if (values > most_values && holds_values) {
            return refuse_memory(s, stop_values);
        }
        s.wary = s.wary || values > many_values;
        if (block == nullptr && old_size == LUA_TSTRING && size > s.options.text_limit) {
            return refuse_memory(s, stop_text);
        }
        if (s.memory + (size - held) > s.options.memory_limit) {
            return refuse_memory(s, stop_memory);
        }
        s.steps += (size - held) / bytes_a_step;
        if (s.steps > s.options.step_limit || s.refusals > refusals_a_run || (values > many_values && holds_values)) {
            lua_sethook(s.L, check_limits, LUA_MASKCOUNT, 1); // at the next instruction
        }
    }
    void* moved = std::realloc(block, size);
    if (moved != nullptr) {
        s.memory = s.memory - held + size;
    }
    return moved;
}

excused_time::excused_time(lua_State* state)
    : L(state)
    , begun(seconds_computed())
{
}

excused_time::~excused_time()
{
    sandbox_of(L).excused += seconds_computed() - begun;
}

static std::string grouped(uint64_t number)
{
    std::string text = std::to_string(number);
    for (size_t i = text.size(); i > 3; i -= 3) {
        text.insert(i - 3, ",");
    }
    return text;
}

static std::string size_text(size_t bytes)
{
    const size_t mib = bytes >> 20;
    return mib > 0 ? grouped(mib) + " MiB" : grouped(bytes) + " bytes";
}

static std::string stop_text_of(const sandbox& s)
{
    switch (s.stopped) {
    case stop_none:
        break;
    case stop_steps:
        return "the program ran for more than " + grouped(s.options.step_limit) + " steps: is this loop endless?";
    case stop_time:
        return "the program computed for more than " + grouped(static_cast<uint64_t>(s.options.time_limit))
            + " seconds: is this loop endless?";
    case stop_memory:
        return "the program needs more than " + size_text(s.options.memory_limit)
            + " of memory: does a table or a text grow here without an end?";
    case stop_text:
        return "a text grew beyond " + size_text(s.options.text_limit) + ": does it grow here without an end?";
    case stop_values:
        return "more than " + grouped(most_values) + " values are handed over at once: keep them in a table.";
    }
    return {};
}

// ---- places and problems ---------------------------------------------------------------------------------------

static bool is_of_the_show(const lua_Debug& function)
{
    return function.source != nullptr && function.source[0] == '@' && function.currentline > 0;
}

source_place current_place(lua_State* L)
{
    lua_Debug function = {};
    for (int level = 0; level < place_depth && lua_getstack(L, level, &function) != 0; ++level) {
        lua_getinfo(L, "Sl", &function);
        if (is_of_the_show(function)) {
            return {function.source + 1, static_cast<uint32_t>(function.currentline)};
        }
    }
    return {{}, 0};
}

// The places that led to the one told, " (called from show.lua:20)": where a function goes wrong, its caller may be
// why.
static std::string callers_text(lua_State* L, const source_place& told)
{
    lua_Debug function = {};
    std::string text;
    std::string last = told.file + ":" + std::to_string(told.line);
    size_t count = 0;
    for (int level = 0; level < place_depth && count < callers_told && lua_getstack(L, level, &function) != 0;
         ++level) {
        lua_getinfo(L, "Sl", &function);
        const std::string place = is_of_the_show(function)
            ? std::string(function.source + 1) + ":" + std::to_string(function.currentline)
            : "";
        if (!place.empty() && place != last) {
            text += (text.empty() ? "" : ", ") + place;
            last = place;
            ++count;
        }
    }
    return text.empty() ? text : " (called from " + text + ")";
}

static void add_problem(sandbox& s, problem_severity severity, const source_place& place, const std::string& text)
{
    if (s.problems.size() >= max_sandbox_problems) {
        s.untold += 1;
        return;
    }
    const std::string file = place.file.empty() && !s.files.empty() ? s.files.front() : place.file;
    s.problems.push_back({severity, file, place.line, {}, one_line(text)});
}

void report(lua_State* L, problem_severity severity, const source_place& place, std::string text)
{
    add_problem(sandbox_of(L), severity, place, text);
}

problem_list sandbox_problems(const sandbox& s)
{
    problem_list problems = s.problems;
    if (s.untold > 0) {
        problems.push_back({problem_error, s.problems.back().file, 0, {},
            "and " + std::to_string(s.untold) + " problems more, which are not shown."});
    }
    return problems;
}

void raise_error(lua_State* L, const std::string& text)
{
    const source_place place = current_place(L);
    const std::string prefix = place.line != 0 ? place.file + ":" + std::to_string(place.line) + ": " : std::string();
    lua_pushlstring(L, (prefix + text).data(), prefix.size() + text.size());
    lua_error(L);
    std::abort(); // lua_error does not return
}

void raise_foreign_error(lua_State* L, const char* what)
{
    raise_error(L, std::string("this cannot be computed: ") + what + ".");
}

void raise_told(lua_State* L)
{
    lua_pushlightuserdata(L, const_cast<char*>(&told_key));
    lua_error(L);
}

// ---- names -----------------------------------------------------------------------------------------------------

void push_words(lua_State* L)
{
    lua_rawgetp(L, LUA_REGISTRYINDEX, &words_key);
}

void push_globals(lua_State* L)
{
    lua_rawgetp(L, LUA_REGISTRYINDEX, &globals_key);
}

// Adds the keys of the table on the top of the stack, sorted, and pops it.
static void take_keys(lua_State* L, std::vector<std::string>& names)
{
    const size_t first = names.size();
    for (lua_pushnil(L); lua_next(L, -2) != 0; lua_pop(L, 1)) {
        if (lua_type(L, -2) == LUA_TSTRING) {
            names.emplace_back(lua_tostring(L, -2));
        }
    }
    lua_pop(L, 1);
    std::sort(names.begin() + static_cast<std::ptrdiff_t>(first), names.end());
}

// Adds the locals that the function at `level` sees.
static void take_locals(lua_State* L, int level, std::vector<std::string>& names)
{
    lua_Debug function = {};
    if (lua_getstack(L, level, &function) == 0) {
        return;
    }
    const auto take = [&](const char* name) {
        if (name[0] != '(' && name[0] != '\0' && std::strcmp(name, "_ENV") != 0) {
            names.emplace_back(name);
        }
        lua_pop(L, 1);
    };
    for (int i = 1; const char* name = lua_getlocal(L, &function, i); ++i) {
        take(name);
    }
    lua_getinfo(L, "f", &function);
    for (int i = 1; const char* name = lua_getupvalue(L, -1, i); ++i) {
        take(name);
    }
    lua_pop(L, 1);
}

std::vector<std::string> names_in_sight(lua_State* L)
{
    std::vector<std::string> names;
    for (int level = 1; level <= 4; ++level) { // of callers too: a function's own list has only what it uses
        take_locals(L, level, names);
    }
    push_globals(L);
    take_keys(L, names);
    push_words(L);
    take_keys(L, names);
    return names;
}

// Of Lua's words those that a show has not, and why.
static std::string missing_word_text(const std::string& name)
{
    for (const char* reaches_out : {"io", "os", "debug", "package"}) {
        if (name == reaches_out) {
            return "a show has no \"" + name
                + "\": its source reaches nothing but files of its own folder, by require.";
        }
    }
    for (const char* compiles : {"load", "loadstring", "loadfile", "dofile"}) {
        if (name == compiles) {
            return "a show has no \"" + name + "\": require \"name\" runs the file name.lua of its folder.";
        }
    }
    if (name == "coroutine" || name == "collectgarbage") {
        return "a show has no \"" + name + "\".";
    }
    return {};
}

// __index of the words: a name that nobody has given.
static int read_unknown_global(lua_State* L)
{
    if (lua_type(L, 2) != LUA_TSTRING) {
        return 0;
    }
    const std::string name = lua_tostring(L, 2);
    const std::string missing = missing_word_text(name);
    if (!missing.empty()) {
        raise_error(L, missing);
    }
    raise_error(L, "there is no \"" + name + "\"" + did_you_mean(name, names_in_sight(L)) + ".");
}

// __newindex of the globals: a name is given for the first time.
static int give_global(lua_State* L)
{
    push_words(L);
    lua_pushvalue(L, 2);
    if (lua_type(L, 2) == LUA_TSTRING && lua_rawget(L, -2) != LUA_TNIL) {
        report(L, problem_warning, current_place(L),
            std::string("\"") + lua_tostring(L, 2)
                + "\" is a word of the language, which is hidden from here on: give yours another name, or make it "
                  "local.");
    }
    lua_settop(L, 3);
    lua_rawset(L, 1);
    return 0;
}

static int read_unknown_field(lua_State* L)
{
    if (lua_type(L, 2) != LUA_TSTRING) {
        return 0;
    }
    const std::string name = lua_tostring(L, 2);
    std::vector<std::string> names;
    lua_pushvalue(L, lua_upvalueindex(2));
    take_keys(L, names);
    constexpr size_t few = 12; // names that are all told
    std::string all;
    for (const std::string& known : names)
        all += (all.empty() ? ": there are " : ", ") + known;
    const std::string meant = did_you_mean(name, names);
    raise_error(L,
        std::string(lua_tostring(L, lua_upvalueindex(1))) + " has no \"" + name + "\""
            + (meant.empty() && names.size() <= few ? all : meant) + ".");
}

void make_strict(lua_State* L, int index, const char* what)
{
    index = lua_absindex(L, index);
    lua_newtable(L);
    lua_pushstring(L, what);
    lua_pushvalue(L, index);
    lua_pushcclosure(L, read_unknown_field, 2);
    lua_setfield(L, -2, "__index");
    lua_pushboolean(L, 0);
    lua_setfield(L, -2, "__metatable");
    lua_setmetatable(L, index);
}

void define_value(lua_State* L, const char* name)
{
    if (lua_istable(L, -1)) { // "math.sine" asks for its names
        std::vector<std::string> names;
        lua_pushvalue(L, -1);
        take_keys(L, names);
        for (const std::string& field : names) {
            add_known_name(L, field.c_str());
        }
    }
    push_words(L);
    lua_insert(L, -2);
    lua_pushstring(L, name);
    lua_insert(L, -2);
    lua_rawset(L, -3);
    lua_pop(L, 1);
}

void define_word(lua_State* L, const char* name, int (*word)(lua_State*))
{
    lua_pushcfunction(L, word);
    define_value(L, name);
}

void add_known_name(lua_State* L, const char* name)
{
    std::vector<std::string>& names = sandbox_of(L).known_names;
    if (std::find(names.begin(), names.end(), name) == names.end()) {
        names.emplace_back(name);
    }
}

std::span<const try_site> tries_of_file(lua_State* L, const std::string& file)
{
    const sandbox& s = sandbox_of(L);
    const auto found = s.tries.find(file);
    return found != s.tries.end() ? std::span<const try_site>(found->second) : std::span<const try_site>();
}

void* sandbox_user(lua_State* L)
{
    return sandbox_of(L).options.user;
}

// ---- running ---------------------------------------------------------------------------------------------------

// Turns the error that ends a run into a problem, while the stack still shows where it came up.
static int tell_error(lua_State* L)
{
    sandbox& s = sandbox_of(L);
    if (s.stopped != stop_none || (lua_islightuserdata(L, 1) && lua_touserdata(L, 1) == &told_key)) {
        return 1; // told when the run has ended, or told already
    }
    source_place place = current_place(L);
    std::string text;
    if (lua_type(L, 1) == LUA_TSTRING) {
        size_t length = 0;
        const char* message = lua_tolstring(L, 1, &length);
        text = strip_place(std::string_view(message, length), s.files, place);
        std::vector<std::string> names = names_in_sight(L);
        names.insert(names.end(), s.known_names.begin(), s.known_names.end());
        text = plain_wording(text, names);
    } else if (lua_isnil(L, 1)) {
        text = "error was called without a text.";
    } else {
        text = "error was called with " + value_kind(L, 1) + ": give it a text.";
    }
    text = one_line(text);
    text.insert(text.size() - 1, callers_text(L, place));
    add_problem(s, problem_error, place, text);
    lua_pushlightuserdata(L, const_cast<char*>(&told_key));
    return 1;
}

namespace {

// The C locale, for as long as a source runs.
struct plain_locale {
    locale_t ours;
    locale_t before;

    plain_locale()
        : ours(newlocale(LC_ALL_MASK, "C", nullptr))
        , before(uselocale(ours))
    {
    }
    ~plain_locale()
    {
        uselocale(before);
        freelocale(ours);
    }
    plain_locale(const plain_locale&) = delete;
    plain_locale& operator=(const plain_locale&) = delete;
};

} // namespace

static void tell_what_no_handler_saw(sandbox& s, int status)
{
    if (status == LUA_ERRMEM && s.stopped == stop_none) {
        s.stopped = s.refused != stop_none ? s.refused : stop_memory;
        s.stopped_at = s.refused_at;
    }
    if (s.stopped != stop_none) {
        add_problem(s, problem_error, s.stopped_at, stop_text_of(s));
    } else if (!lua_islightuserdata(s.L, -1) || lua_touserdata(s.L, -1) != &told_key) {
        add_problem(s, problem_error, {}, "an error came up while another was handled.");
    }
}

// Calls f with `argument` as its light userdata. Only one run at a time.
static bool run_protected(sandbox& s, int (*f)(lua_State*), void* argument)
{
    assert(!s.running);
    const plain_locale locale;
    s.steps = 0;
    s.refusals = 0;
    s.excused = 0.0;
    s.begun = seconds_computed();
    s.last_look = s.begun;
    s.wary = false;
    s.stopped = stop_none;
    s.refused = stop_none;
    s.being_read.clear();
    lua_settop(s.L, 0);
    lua_pushcfunction(s.L, tell_error);
    lua_pushcfunction(s.L, f);
    lua_pushlightuserdata(s.L, argument);
    lua_sethook(s.L, check_limits, LUA_MASKCOUNT, hook_interval);
    s.running = true;
    const int status = lua_pcall(s.L, 1, 0, 1);
    s.running = false;
    lua_sethook(s.L, nullptr, 0, 0);
    if (status != LUA_OK) {
        tell_what_no_handler_saw(s, status);
    }
    lua_settop(s.L, 0);
    return status == LUA_OK;
}

namespace {

struct named_text {
    const std::string& name;
    std::string_view text;
    bool is_library;
};

using plain_function = int (*)(lua_State*);

} // namespace

static int run_loaded(lua_State* L)
{
    const named_text source = *static_cast<const named_text*>(lua_touserdata(L, 1));
    lua_settop(L, 0);
    sandbox_of(L).being_read.push_back(source.name);
    load_source(L, source.name, source.text, source.is_library);
    lua_call(L, 0, 0);
    return 0;
}

bool sandbox_run_text(sandbox& s, const std::string& name, std::string_view text)
{
    if (std::find(s.files.begin(), s.files.end(), name) == s.files.end()) {
        s.files.push_back(name);
    }
    named_text source = {name, text, false};
    return run_protected(s, guarded<run_loaded>, &source);
}

bool sandbox_run_file(sandbox& s, const std::string& name)
{
    std::string text;
    const std::string wrong = read_source_file(s, name, text);
    if (!wrong.empty()) {
        add_problem(s, problem_error, {name, 0}, wrong);
        return false;
    }
    return sandbox_run_text(s, name, text);
}

bool sandbox_run_library(sandbox& s, std::string_view name)
{
    const library_text* found = find_library_text(s.options.library, name);
    if (found == nullptr) {
        add_problem(s, problem_error, {}, "the library has no \"" + std::string(name) + "\".");
        return false;
    }
    const std::string own_name(name);
    named_text source = {own_name, found->text, true};
    return run_protected(s, guarded<run_loaded>, &source);
}

static int run_plain_function(lua_State* L)
{
    const plain_function f = *static_cast<const plain_function*>(lua_touserdata(L, 1));
    lua_settop(L, 0);
    lua_pop(L, f(L));
    return 0;
}

bool sandbox_run_function(sandbox& s, int (*f)(lua_State*))
{
    plain_function function = f;
    return run_protected(s, guarded<run_plain_function>, &function);
}

const std::vector<std::string>& sandbox_missing_files(const sandbox& s)
{
    return s.files_missing;
}

const std::vector<std::string>& sandbox_files(const sandbox& s)
{
    return s.files;
}

uint64_t sandbox_steps(const sandbox& s)
{
    return s.steps;
}

// A table of globals that reads the words behind it, and is told of new names.
static int set_up_words(lua_State* L)
{
    lua_newtable(L); // words
    lua_newtable(L);
    lua_pushcfunction(L, guarded<read_unknown_global>);
    lua_setfield(L, -2, "__index");
    lua_setmetatable(L, -2);
    lua_newtable(L); // globals
    lua_newtable(L);
    lua_pushvalue(L, -3);
    lua_setfield(L, -2, "__index");
    lua_pushcfunction(L, guarded<give_global>);
    lua_setfield(L, -2, "__newindex");
    lua_pushboolean(L, 0);
    lua_setfield(L, -2, "__metatable");
    lua_setmetatable(L, -2);
    lua_rawsetp(L, LUA_REGISTRYINDEX, &globals_key);
    lua_rawsetp(L, LUA_REGISTRYINDEX, &words_key);
    define_plain_words(L);
    define_table_words(L);
    define_text_words(L);
    define_require(L);
    push_globals(L);
    lua_rawseti(L, LUA_REGISTRYINDEX, LUA_RIDX_GLOBALS); // Lua's own, whole table is gone
    return 0;
}

owned_sandbox sandbox_open(const sandbox_options& options)
{
    owned_sandbox s(new (std::nothrow) sandbox());
    if (!s) {
        return nullptr;
    }
    s->options = options;
    s->L = lua_newstate(resize_block, s.get());
    if (s->L == nullptr) {
        return nullptr;
    }
    sandbox* self = s.get();
    std::memcpy(lua_getextraspace(s->L), &self, sizeof self);
    set_random_seed(s->L, options.seed);
    s->options.memory_limit = std::max(options.memory_limit, size_t{1} << 20);
    return sandbox_run_function(*s, set_up_words) ? std::move(s) : nullptr;
}

void close_sandbox::operator()(sandbox* s) const
{
    if (s->L != nullptr) {
        lua_close(s->L);
    }
    delete s;
}
