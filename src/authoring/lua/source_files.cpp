// Where a source's text comes from: files of the show's folder, and the library.
#include "authoring/lua/sandbox.h"
#include "authoring/lua/sandbox_state.h"
#include "authoring/lua/wording.h"
#include "authoring/near_name.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

static constexpr size_t largest_source = size_t{16} << 20;
static constexpr size_t bytes_a_step = 16; // of a text to be compiled

static const char loaded_key = 0; // of the registry: what files and texts of the library gave, by name

namespace {

struct owned_descriptor {
    int number;
    ~owned_descriptor()
    {
        if (number >= 0) {
            close(number);
        }
    }
};

struct free_text {
    void operator()(char* text) const
    {
        std::free(text);
    }
};

using owned_text = std::unique_ptr<char, free_text>;

} // namespace

// The file without links, when it lies below the folder; else empty.
static std::string path_below(const std::string& folder, const std::string& name)
{
    const owned_text root(realpath(folder.empty() ? "." : folder.c_str(), nullptr));
    const owned_text path(root ? realpath((std::string(root.get()) + "/" + name).c_str(), nullptr) : nullptr);
    if (!path) {
        return {};
    }
    const std::string begin = std::strcmp(root.get(), "/") == 0 ? "/" : std::string(root.get()) + "/";
    if (!std::string_view(path.get()).starts_with(begin)) {
        errno = EXDEV; // what the system itself says of a way out of a tree
        return {};
    }
    return path.get();
}

static std::string reason_of(int error)
{
    return error == EXDEV ? "it is a link that leads out of the show's folder" : std::strerror(error);
}

std::string read_source_file(sandbox& s, const std::string& name, std::string& text)
{
    const std::string path = path_below(s.options.folder, name);
    if (path.empty()) {
        return "cannot read \"" + name + "\": " + reason_of(errno) + ".";
    }
    const owned_descriptor file = {open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW)};
    struct stat about = {};
    if (file.number < 0 || fstat(file.number, &about) != 0) {
        return "cannot read \"" + name + "\": " + reason_of(errno) + ".";
    }
    if (!S_ISREG(about.st_mode)) {
        return "\"" + name + "\" is no file.";
    }
    text.clear();
    char block[65536];
    ssize_t got = 0;
    while (text.size() <= largest_source && (got = read(file.number, block, sizeof block)) > 0) {
        text.append(block, static_cast<size_t>(got));
    }
    if (got < 0) {
        return "cannot read \"" + name + "\": " + reason_of(errno) + ".";
    }
    if (text.size() > largest_source) {
        return "\"" + name
            + "\" is larger than 16 MiB: a source is shorter, and models and pictures are files of their own.";
    }
    if (std::find(s.files.begin(), s.files.end(), name) == s.files.end()) {
        s.files.push_back(name);
    }
    return {};
}

// Without the mark of UTF-8, and with nothing in its first line when that is for a shell ("#!").
static std::string_view skip_what_is_not_lua(std::string_view text)
{
    if (text.starts_with("\xef\xbb\xbf")) {
        text.remove_prefix(3);
    }
    if (text.starts_with("#")) {
        const size_t end = text.find('\n');
        text.remove_prefix(end == std::string_view::npos ? text.size() : end); // the line's end stays: lines count on
    }
    return text;
}

namespace {

struct source_text {
    std::string_view text;
    const char* chunk;
};

} // namespace

static int compile_text(lua_State* L)
{
    const source_text& source = *static_cast<const source_text*>(lua_touserdata(L, 1));
    if (luaL_loadbufferx(L, source.text.data(), source.text.size(), source.chunk, "t") != LUA_OK) {
        lua_error(L);
    }
    return 1;
}

void load_source(lua_State* L, const std::string& name, std::string_view text, bool is_library)
{
    sandbox& s = sandbox_of(L);
    charge_steps(L, text.size() / bytes_a_step);
    source_place place = {name, 0};
    if (!is_library && text.find("try") != std::string_view::npos) {
        s.tries[name] = find_tries(text);
    }
    text = skip_what_is_not_lua(text);
    if (text.starts_with(LUA_SIGNATURE)) {
        report(L, problem_error, place, "this is a compiled program; a show's source is Lua text.");
        raise_told(L);
    }
    const std::string chunk = (is_library ? "=library:" : "@") + name;
    source_text source = {text, chunk.c_str()};
    lua_pushcfunction(L, compile_text);
    lua_pushlightuserdata(L, &source);
    const int status = lua_pcall(L, 1, 1, 0); // of its own, so that no other handler tells its errors
    if (status != LUA_OK) {
        keep_stopped(L, status);
        size_t length = 0;
        const char* message = lua_tolstring(L, -1, &length);
        const std::string plain
            = strip_place(std::string_view(message == nullptr ? "" : message, length), s.files, place);
        report(L, problem_error, place, plain_syntax_wording(plain));
        raise_told(L);
    }
    if (is_library) { // its globals are words
        push_words(L);
        lua_setupvalue(L, -2, 1);
    }
}

// ---- require ---------------------------------------------------------------------------------------------------

static bool is_name_character(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '-'
        || static_cast<unsigned char>(c) >= 0x80;
}

// What is wrong with the name given to require, or empty.
static std::string name_fault(std::string_view name)
{
    if (name.size() > 4 && name.ends_with(".lua")) {
        return "require takes the name without \".lua\": require \"" + std::string(name.substr(0, name.size() - 4))
            + "\".";
    }
    if (name.empty() || name.size() > NAME_MAX || name.front() == '.' || name.back() == '.'
        || name.find("..") != std::string_view::npos) {
        return "require takes the name of a file of the show's folder, \"colors\" for colors.lua.";
    }
    for (const char c : name) {
        if (c == '/' || c == '\\') {
            return "require reads the show's own folder, and separates folders by dots: \"parts.walk\" for "
                   "parts/walk.lua.";
        }
        if (c != '.' && !is_name_character(c)) {
            return "require takes a name of letters, digits, \"_\" and \"-\", with dots between folder and file.";
        }
    }
    return {};
}

static std::string circle_text(const std::vector<std::string>& being_read, const std::string& file)
{
    std::string text = "files require each other in a circle: ";
    for (auto i = std::find(being_read.begin(), being_read.end(), file); i != being_read.end(); ++i) {
        text += *i + ", ";
    }
    return text + "and again " + file + ": what both need belongs into a file of its own.";
}

namespace {

struct reading_mark { // a file is being read, until this ends
    sandbox& s;
    reading_mark(sandbox& own, const std::string& file)
        : s(own)
    {
        s.being_read.push_back(file);
    }
    ~reading_mark()
    {
        s.being_read.pop_back();
    }
    reading_mark(const reading_mark&) = delete;
    reading_mark& operator=(const reading_mark&) = delete;
};

} // namespace

// Runs the text and leaves what it gives, or true, on the stack and in the table of what is loaded, at index 2.
static int run_required(
    lua_State* L, const std::string& name, const std::string& file, std::string_view text, bool is_library)
{
    sandbox& s = sandbox_of(L);
    if (std::find(s.being_read.begin(), s.being_read.end(), file) != s.being_read.end()) {
        raise_error(L, circle_text(s.being_read, file));
    }
    const reading_mark mark(s, file);
    load_source(L, file, text, is_library);
    lua_pushlstring(L, name.data(), name.size());
    lua_call(L, 1, 1);
    if (lua_isnil(L, -1)) {
        lua_pop(L, 1);
        lua_pushboolean(L, 1);
    }
    lua_pushvalue(L, -1);
    lua_setfield(L, 2, name.c_str());
    return 1;
}

static bool file_exists(const sandbox& s, const std::string& file)
{
    struct stat about = {};
    return lstat(((s.options.folder.empty() ? "." : s.options.folder) + "/" + file).c_str(), &about) == 0;
}

// The names by which require knows the sources of the folder that `name` is looked for in, sorted.
static std::vector<std::string> sources_beside(const sandbox& s, const std::string& name)
{
    const size_t dot = name.rfind('.');
    const std::string prefix = dot == std::string::npos ? "" : name.substr(0, dot + 1);
    std::string folder = (s.options.folder.empty() ? "." : s.options.folder) + "/" + prefix;
    std::replace(folder.end() - static_cast<std::ptrdiff_t>(prefix.size()), folder.end(), '.', '/');
    std::vector<std::string> names;
    std::error_code fault;
    for (const auto& entry : std::filesystem::directory_iterator(folder, fault)) {
        if (entry.path().extension() == ".lua") {
            names.push_back(prefix + entry.path().stem().string());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

static int require_word(lua_State* L)
{
    sandbox& s = sandbox_of(L);
    if (lua_type(L, 1) != LUA_TSTRING) {
        raise_error(L, "require takes a name, and this is " + value_kind(L, 1) + ".");
    }
    size_t length = 0;
    const char* given = lua_tolstring(L, 1, &length);
    const std::string name(given, length);
    const std::string fault = name_fault(name);
    if (!fault.empty()) {
        raise_error(L, fault);
    }
    lua_settop(L, 1);
    lua_rawgetp(L, LUA_REGISTRYINDEX, &loaded_key);
    if (lua_getfield(L, 2, name.c_str()) != LUA_TNIL) {
        return 1;
    }
    std::string file = name;
    std::replace(file.begin(), file.end(), '.', '/');
    file += ".lua";
    if (file_exists(s, file)) {
        std::string text;
        const std::string wrong = read_source_file(s, file, text);
        if (!wrong.empty()) {
            s.files_missing.push_back(file);
            raise_error(L, wrong);
        }
        return run_required(L, name, file, text, false);
    }
    s.files_missing.push_back(file);
    if (const library_text* found = find_library_text(s.options.library, name)) {
        return run_required(L, name, name, found->text, true);
    }
    raise_error(L,
        "there is no file \"" + file + "\" in the show's folder, and the library has no \"" + name + "\""
            + did_you_mean(name, sources_beside(s, name)) + ".");
}

void define_require(lua_State* L)
{
    lua_newtable(L);
    lua_rawsetp(L, LUA_REGISTRYINDEX, &loaded_key);
    define_word(L, "require", guarded<require_word>);
}
