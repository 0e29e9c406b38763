#include "tools/preview/editor.h"

#include "tools/common/words.h"

#include <algorithm>
#include <cassert>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <iterator>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// How an editor is told a line.
enum line_style : uint8_t {
    line_plus,         // +12 FILE
    line_behind_colon, // FILE:12
    line_goto,         // -g FILE:12
    line_option,       // -l 12 FILE
    line_long_option,  // --line=12 FILE
    line_unknown       // FILE
};

struct known_editor {
    const char* name;
    line_style style;
    bool in_terminal;
};

} // namespace

constexpr known_editor known_editors[] = {
    {"vi", line_plus, true},
    {"vim", line_plus, true},
    {"vim.basic", line_plus, true},
    {"vim.tiny", line_plus, true},
    {"nvim", line_plus, true},
    {"nano", line_plus, true},
    {"pico", line_plus, true},
    {"micro", line_plus, true},
    {"joe", line_plus, true},
    {"jmacs", line_plus, true},
    {"kak", line_plus, true},
    {"helix", line_plus, true},
    {"hx", line_plus, true},
    {"mcedit", line_plus, true},
    {"ne", line_plus, true},
    {"ed", line_plus, true},
    {"emacs", line_plus, false}, // with options of its own for a terminal
    {"emacs-nox", line_plus, true},
    {"emacsclient", line_plus, false},
    {"gvim", line_plus, false},
    {"gedit", line_plus, false},
    {"pluma", line_plus, false},
    {"xed", line_plus, false},
    {"geany", line_plus, false},
    {"kate", line_option, false},
    {"kwrite", line_option, false},
    {"mousepad", line_long_option, false},
    {"code", line_goto, false},
    {"code-insiders", line_goto, false},
    {"code-oss", line_goto, false},
    {"codium", line_goto, false},
    {"vscodium", line_goto, false},
    {"subl", line_behind_colon, false},
    {"zed", line_behind_colon, false},
    {"zeditor", line_behind_colon, false},
};

// ---- the editor's words -----------------------------------------------------------------------------

static bool is_blank(const char* text)
{
    return text == nullptr || std::string_view(text).find_first_not_of(" \t\r\n") == std::string_view::npos;
}

static std::string_view name_of_program(std::string_view word)
{
    const size_t slash = word.rfind('/');
    return slash == std::string_view::npos ? word : word.substr(slash + 1);
}

static const known_editor* find_editor(std::string_view word)
{
    const auto found = std::find_if(std::begin(known_editors), std::end(known_editors),
        [&](const known_editor& editor) { return name_of_program(word) == editor.name; });
    return found == std::end(known_editors) ? nullptr : found;
}

// "env NAME=value vim" starts vim.
static size_t first_program(const std::vector<std::string>& words)
{
    size_t at = 0;
    if (name_of_program(words[0]) == "env")
        for (at = 1; at < words.size() && words[at].find('=') != std::string::npos;)
            ++at;
    return at < words.size() ? at : 0;
}

static bool asks_for_terminal(const std::vector<std::string>& words, const known_editor& editor)
{
    static const char* const options[] = {"-nw", "--no-window-system", "-t", "-tty", "--tty"};
    if (editor.in_terminal || !std::string_view(editor.name).starts_with("emacs"))
        return editor.in_terminal;
    return std::any_of(words.begin() + 1, words.end(), [](const std::string& word) {
        return std::find(std::begin(options), std::end(options), word) != std::end(options);
    });
}

// Looks for the signs in each word once, so that a file whose name has one stays what it is. True: there were some.
static bool put_in_signs(std::vector<std::string>& words, const std::string& path, const std::string& line)
{
    bool has_file = false, has_line = false;
    for (std::string& word : words) {
        std::string made;
        size_t begin = 0;
        for (size_t at; (at = word.find('{', begin)) != std::string::npos;) {
            made += word.substr(begin, at - begin);
            const bool is_file = word.compare(at, 6, "{file}") == 0, is_line = word.compare(at, 6, "{line}") == 0;
            made += is_file ? path : is_line ? line : "{";
            begin = at + (is_file || is_line ? 6 : 1);
            has_file |= is_file;
            has_line |= is_line;
        }
        word = made + word.substr(begin);
    }
    if (has_line && !has_file)
        words.push_back(path);
    return has_file || has_line;
}

static void add_place(
    std::vector<std::string>& words, line_style style, const std::string& path, const std::string& line)
{
    switch (style) {
    case line_plus:
        words.insert(words.end(), {"+" + line, path});
        return;
    case line_behind_colon:
        words.push_back(path + ":" + line);
        return;
    case line_goto:
        words.insert(words.end(), {"-g", path + ":" + line});
        return;
    case line_option:
        words.insert(words.end(), {"-l", line, path});
        return;
    case line_long_option:
        words.insert(words.end(), {"--line=" + line, path});
        return;
    case line_unknown:
        words.push_back(path);
        return;
    }
}

bool editor_command(
    const editor_settings& settings, const std::string& path, uint32_t line, editor_call& call, std::string& problem)
{
    const bool has_visual = !is_blank(settings.visual);
    const char* text = has_visual ? settings.visual : settings.editor;
    if (is_blank(text)) {
        problem = "neither $VISUAL nor $EDITOR says which editor to open: start the preview with, say, EDITOR=gedit";
        return false;
    }
    std::vector<std::string> words;
    if (!split_words(text, words) || words.empty() || words[0].empty()) {
        problem = std::string(has_visual ? "$VISUAL" : "$EDITOR")
            + " is no command, for its quotes are not closed: " + text;
        return false;
    }
    const known_editor* editor = find_editor(words[first_program(words)]);
    call.in_terminal = editor != nullptr && asks_for_terminal(words, *editor);
    const std::string file = path.starts_with('-') ? "./" + path : path; // no option
    const std::string number = std::to_string(std::max(line, 1u));
    if (!put_in_signs(words, file, number))
        add_place(words, editor == nullptr ? line_unknown : editor->style, file, number);
    call.words = std::move(words);
    return true;
}

// ---- a terminal -----------------------------------------------------------------------------------------

// Most terminals run what stands behind "-e", to the end of the line.
std::vector<std::string> terminal_command(const char* terminal, const std::string& fallback)
{
    std::vector<std::string> words = {fallback};
    if (!is_blank(terminal) && (!split_words(terminal, words) || words.empty()))
        return {};
    const std::string_view last = words.back(), name = name_of_program(words[0]);
    if (words.size() > 1 && (last == "-e" || last == "-x" || last == "--"))
        return words;
    if (name == "gnome-terminal")
        words.push_back("--");
    else if (name == "xfce4-terminal" || name == "mate-terminal" || name == "terminator")
        words.push_back("-x");
    else
        words.push_back("-e");
    return words;
}

// ---- starting ----------------------------------------------------------------------------------------------

// Where a program of this name is that can be started, as execvp looks for it; empty: nowhere.
static std::string find_program(const std::string& name)
{
    if (name.find('/') != std::string::npos)
        return access(name.c_str(), X_OK) == 0 ? name : "";
    const char* path = std::getenv("PATH");
    const std::string folders = path != nullptr ? path : "/bin:/usr/bin";
    for (size_t begin = 0; begin <= folders.size();) {
        const size_t end = std::min(folders.find(':', begin), folders.size());
        const std::string file = (end == begin ? "." : folders.substr(begin, end - begin)) + "/" + name;
        if (access(file.c_str(), X_OK) == 0)
            return file;
        begin = end + 1;
    }
    return "";
}

// A general name may lead to an editor that is made for terminals alone.
static bool leads_to_terminal_editor(const std::string& program)
{
    std::error_code fault;
    const known_editor* editor = find_editor(std::filesystem::canonical(program, fault).string());
    return !fault && editor != nullptr && editor->in_terminal;
}

// Puts the terminal's words before the editor's.
static bool add_terminal(std::vector<std::string>& words, std::string& problem)
{
    const char* wanted = std::getenv("TERMINAL");
    const std::string fallback = find_program("x-terminal-emulator").empty() ? "xterm" : "x-terminal-emulator";
    const std::vector<std::string> terminal = terminal_command(wanted, fallback);
    if (terminal.empty()) {
        problem = std::string("$TERMINAL is no command, for its quotes are not closed: ") + wanted;
        return false;
    }
    if (find_program(terminal[0]).empty()) {
        problem
            = words[0] + " needs a terminal, and there is no " + terminal[0] + ": set $TERMINAL to one that is there";
        return false;
    }
    words.insert(words.begin(), terminal.begin(), terminal.end());
    return true;
}

// In the process that becomes the editor: nothing but calls that are safe there, since the preview has threads.
[[noreturn]] static void become(char* const words[], int report)
{
    const int nothing = open("/dev/null", O_RDWR);
    for (int descriptor = 0; descriptor < 3 && nothing >= 0; ++descriptor)
        dup2(nothing, descriptor);
    if (report > 3)
        close_range(3, static_cast<unsigned>(report) - 1, 0);
    close_range(static_cast<unsigned>(report) + 1, ~0u, 0);
    std::signal(SIGPIPE, SIG_DFL);
    execvp(words[0], words);
    const int error = errno;
    const ssize_t told = write(report, &error, sizeof error);
    _exit(told == sizeof error ? 1 : 2);
}

// Starts a process that is nobody's child, so that nobody has to wait for its end. The error; 0: it runs.
static int start_apart(char* const words[])
{
    int pipe_ends[2];
    if (pipe2(pipe_ends, O_CLOEXEC) != 0)
        return errno;
    const pid_t parent = fork();
    if (parent == 0) {
        setsid();
        const pid_t process = fork();
        if (process == 0)
            become(words, pipe_ends[1]);
        _exit(process > 0 ? 0 : 1);
    }
    int error = parent < 0 ? errno : 0;
    close(pipe_ends[1]);
    int status = 0;
    while (parent > 0 && waitpid(parent, &status, 0) < 0 && errno == EINTR) { }
    if (error == 0 && (!WIFEXITED(status) || WEXITSTATUS(status) != 0))
        error = EAGAIN; // no second process
    int reported = 0;
    ssize_t got = 0;
    while ((got = read(pipe_ends[0], &reported, sizeof reported)) < 0 && errno == EINTR) { }
    close(pipe_ends[0]);
    return error == 0 && got == sizeof reported ? reported : error;
}

bool start_editor(const std::string& path, uint32_t line, std::string& problem)
{
    editor_call call;
    if (!editor_command({std::getenv("VISUAL"), std::getenv("EDITOR")}, path, line, call, problem))
        return false;
    const std::string program = find_program(call.words[0]);
    if (program.empty()) {
        problem = "there is no program " + call.words[0] + ", which "
            + (is_blank(std::getenv("VISUAL")) ? "$EDITOR" : "$VISUAL") + " names";
        return false;
    }
    if ((call.in_terminal || leads_to_terminal_editor(program)) && !add_terminal(call.words, problem))
        return false;
    std::vector<char*> words;
    for (std::string& word : call.words)
        words.push_back(word.data());
    words.push_back(nullptr);
    const int error = start_apart(words.data());
    if (error != 0)
        problem = call.words[0] + " cannot be started: " + std::strerror(error);
    return error == 0;
}
