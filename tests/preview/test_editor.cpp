#include "tools/preview/editor.h"

#include <doctest/doctest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <unistd.h>
#include <vector>

// ---- the command --------------------------------------------------------------------------------------

// "[terminal] WORD WORD ..." of a call for line 12 of a file; a problem in its place.
static std::string called(const char* visual, const char* editor, const std::string& path = "my show/a.lua")
{
    editor_call call;
    std::string problem;
    if (!editor_command({visual, editor}, path, 12, call, problem))
        return "problem: " + problem;
    std::string text = call.in_terminal ? "terminal:" : "";
    for (const std::string& word : call.words)
        text += (text.empty() ? "" : " ") + word;
    return text;
}

TEST_CASE("Editors of a terminal get the line behind a plus, in a terminal")
{
    for (const char* name : {"vi", "vim", "nvim", "nano", "micro", "joe", "kak", "helix", "hx", "ed"})
        CHECK(called(nullptr, name) == std::string("terminal: ") + name + " +12 my show/a.lua");
    CHECK(called(nullptr, "/usr/bin/vim -p") == "terminal: /usr/bin/vim -p +12 my show/a.lua");
}

TEST_CASE("Emacs has windows of its own unless it is told otherwise")
{
    CHECK(called(nullptr, "emacs") == "emacs +12 my show/a.lua");
    CHECK(called(nullptr, "emacsclient -n") == "emacsclient -n +12 my show/a.lua");
    CHECK(called(nullptr, "emacs -nw") == "terminal: emacs -nw +12 my show/a.lua");
    CHECK(called(nullptr, "emacsclient -t") == "terminal: emacsclient -t +12 my show/a.lua");
    CHECK(called(nullptr, "emacs-nox") == "terminal: emacs-nox +12 my show/a.lua");
    CHECK(called(nullptr, "gedit -t") == "gedit -t +12 my show/a.lua"); // its own -t
}

TEST_CASE("Editors with windows get the line in the way of each")
{
    CHECK(called(nullptr, "gvim") == "gvim +12 my show/a.lua");
    CHECK(called(nullptr, "gedit") == "gedit +12 my show/a.lua");
    CHECK(called(nullptr, "kate") == "kate -l 12 my show/a.lua");
    CHECK(called(nullptr, "mousepad") == "mousepad --line=12 my show/a.lua");
    CHECK(called(nullptr, "code --wait") == "code --wait -g my show/a.lua:12");
    CHECK(called(nullptr, "codium") == "codium -g my show/a.lua:12");
    CHECK(called(nullptr, "subl") == "subl my show/a.lua:12");
    CHECK(called(nullptr, "zed") == "zed my show/a.lua:12");
}

TEST_CASE("An editor that is not known gets the file alone, behind its own words")
{
    CHECK(called(nullptr, "my-editor --fast 'two words'") == "my-editor --fast two words my show/a.lua");
    CHECK(called(nullptr, "vimish") == "vimish my show/a.lua");
    CHECK(called(nullptr, "xterm -e vim") == "xterm -e vim my show/a.lua"); // brings its own terminal
}

TEST_CASE("A command may say itself where file and line stand")
{
    CHECK(called(nullptr, "my-editor --at={line} {file} --end") == "my-editor --at=12 my show/a.lua --end");
    CHECK(called(nullptr, "my-editor {file}:{line}:{line}") == "my-editor my show/a.lua:12:12");
    CHECK(called(nullptr, "my-editor {file}") == "my-editor my show/a.lua");
    CHECK(called(nullptr, "my-editor --line {line}") == "my-editor --line 12 my show/a.lua");
    CHECK(called(nullptr, "my-editor {other} { {file") == "my-editor {other} { {file my show/a.lua");
    CHECK(called(nullptr, "vim -c {line} {file}") == "terminal: vim -c 12 my show/a.lua");
    CHECK(called(nullptr, "my-editor {file}", "{line}.lua") == "my-editor {line}.lua"); // a file's name is left alone
}

TEST_CASE("The editor of env is known, too")
{
    CHECK(called(nullptr, "env LANG=C A=b vim -p") == "terminal: env LANG=C A=b vim -p +12 my show/a.lua");
    CHECK(called(nullptr, "env") == "env my show/a.lua");
}

TEST_CASE("$VISUAL wins over $EDITOR unless it is blank")
{
    CHECK(called("gedit", "vim") == "gedit +12 my show/a.lua");
    CHECK(called(" \t", "gedit") == "gedit +12 my show/a.lua");
    CHECK(called("gedit", nullptr) == "gedit +12 my show/a.lua");
}

TEST_CASE("A file whose name begins with a dash is no option")
{
    CHECK(called(nullptr, "gedit", "-n.lua") == "gedit +12 ./-n.lua");
    CHECK(called(nullptr, "code", "/tmp/-n.lua") == "code -g /tmp/-n.lua:12");
}

TEST_CASE("Without an editor, and with one that is no command, a sentence says what to do")
{
    const std::string none
        = "problem: neither $VISUAL nor $EDITOR says which editor to open: start the preview with, say, EDITOR=gedit";
    CHECK(called(nullptr, nullptr) == none);
    CHECK(called("", " ") == none);
    CHECK(called(nullptr, "vim 'a") == "problem: $EDITOR is no command, for its quotes are not closed: vim 'a");
    CHECK(called("vim \"", "gedit") == "problem: $VISUAL is no command, for its quotes are not closed: vim \"");
    CHECK(called(nullptr, "''").starts_with("problem: "));
}

TEST_CASE("A terminal gets the program behind what each takes for it")
{
    using list = std::vector<std::string>;
    CHECK(terminal_command(nullptr, "xterm") == list{"xterm", "-e"});
    CHECK(terminal_command(" ", "x-terminal-emulator") == list{"x-terminal-emulator", "-e"});
    CHECK(terminal_command("/usr/bin/urxvt +sb", "xterm") == list{"/usr/bin/urxvt", "+sb", "-e"});
    CHECK(terminal_command("gnome-terminal", "xterm") == list{"gnome-terminal", "--"});
    CHECK(terminal_command("/usr/bin/xfce4-terminal", "xterm") == list{"/usr/bin/xfce4-terminal", "-x"});
    CHECK(terminal_command("wezterm start --", "xterm") == list{"wezterm", "start", "--"});
    CHECK(terminal_command("st -e", "xterm") == list{"st", "-e"});
    CHECK(terminal_command("xterm 'a", "xterm").empty());
}

// ---- starting --------------------------------------------------------------------------------------------

namespace {

// A folder with programs, and an environment in which they are the editor and the terminal.
struct editors {
    std::string folder;
    editors()
    {
        folder = "/tmp/brimlow-editor-XXXXXX"; // no blank, which $EDITOR would take for the end of its name
        REQUIRE(mkdtemp(folder.data()) != nullptr);
        for (const char* name : {"VISUAL", "EDITOR", "TERMINAL"})
            unsetenv(name);
    }
    ~editors()
    {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
        for (const char* name : {"VISUAL", "EDITOR", "TERMINAL"})
            unsetenv(name);
    }
    editors(const editors&) = delete;
    editors& operator=(const editors&) = delete;

    // Writes what `script` says into the file "told", which is there when it is whole.
    std::string add(const char* name, const std::string& script) const
    {
        const std::string path = folder + "/" + name;
        std::ofstream(path) << "#!/bin/sh\n{ " + script + "; } > " + folder + "/telling\nmv " + folder + "/telling "
                + folder + "/told\n";
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
        return path;
    }
    std::string told() const
    {
        for (int wait = 0; wait < 6000 && !std::filesystem::exists(folder + "/told"); ++wait)
            usleep(10000);
        std::ifstream file(folder + "/told");
        return {std::istreambuf_iterator<char>(file), {}};
    }
};

} // namespace

constexpr char tell_arguments[] = "for word in \"$@\"; do echo \"$word\"; done";

TEST_CASE("The editor is started with its words, whatever blanks they have")
{
    const editors e;
    setenv("EDITOR", (e.add("my-editor", tell_arguments) + " 'a b' {line} {file}").c_str(), 1);
    std::string problem;
    REQUIRE(start_editor("my show/it's.lua", 7, problem));
    CHECK(e.told() == "a b\n7\nmy show/it's.lua\n");
    CHECK(problem.empty());
}

TEST_CASE("An editor of a terminal is started in $TERMINAL")
{
    const editors e;
    setenv("TERMINAL", (e.add("my-terminal", tell_arguments) + " --title 'a show'").c_str(), 1);
    const std::string vim = e.add("vim", "true");
    setenv("VISUAL", vim.c_str(), 1);
    std::string problem;
    REQUIRE(start_editor("show.lua", 7, problem));
    CHECK(e.told() == "--title\na show\n-e\n" + vim + "\n+7\nshow.lua\n");
}

TEST_CASE("An editor whose name leads to one of a terminal gets a terminal")
{
    const editors e;
    setenv("TERMINAL", e.add("my-terminal", tell_arguments).c_str(), 1);
    std::filesystem::create_symlink(e.add("emacs-nox", "true"), e.folder + "/emacs");
    setenv("EDITOR", (e.folder + "/emacs").c_str(), 1);
    std::string problem;
    REQUIRE(start_editor("show.lua", 7, problem));
    CHECK(e.told() == "-e\n" + e.folder + "/emacs\n+7\nshow.lua\n");
}

TEST_CASE("The editor shares no session, no terminal and no file with whoever starts it, and is nobody's child")
{
    const editors e;
    const int open_file = dup2(2, 50);
    setenv("EDITOR",
        e.add("my-editor",
             "cut -d' ' -f6 /proc/$$/stat; readlink /proc/$$/fd/2; ls /proc/$$/fd | grep -c -x 50; cut -d' ' -f4 "
             "/proc/$$/stat")
            .c_str(),
        1);
    std::string problem;
    REQUIRE(start_editor("show.lua", 7, problem));
    const std::string told = e.told();
    close(open_file);
    const std::string own_session = std::to_string(getsid(0)), own = std::to_string(getpid());
    const size_t end = told.find('\n');
    CHECK(told.substr(0, end) != own_session);
    CHECK(told.substr(end + 1).starts_with("/dev/null\n0\n"));
    CHECK(told.substr(end + 13) != own + "\n");
}

TEST_CASE("A program that is not there, or cannot be started, is told")
{
    const editors e;
    std::string problem;
    setenv("EDITOR", "no-such-editor -a", 1);
    CHECK(!start_editor("show.lua", 7, problem));
    CHECK(problem == "there is no program no-such-editor, which $EDITOR names");
    setenv("VISUAL", (e.folder + "/nothing").c_str(), 1);
    CHECK(!start_editor("show.lua", 7, problem));
    CHECK(problem == "there is no program " + e.folder + "/nothing, which $VISUAL names");
    setenv("VISUAL", e.folder.c_str(), 1); // a folder
    CHECK(!start_editor("show.lua", 7, problem));
    CHECK(problem == e.folder + " cannot be started: Permission denied");
    const std::string vim = e.add("vim", "true");
    setenv("VISUAL", vim.c_str(), 1);
    setenv("TERMINAL", "no-such-terminal", 1);
    CHECK(!start_editor("show.lua", 7, problem));
    CHECK(problem == vim + " needs a terminal, and there is no no-such-terminal: set $TERMINAL to one that is there");
    setenv("TERMINAL", "xterm '", 1);
    CHECK(!start_editor("show.lua", 7, problem));
    CHECK(problem == "$TERMINAL is no command, for its quotes are not closed: xterm '");
    unsetenv("VISUAL");
    unsetenv("EDITOR");
    CHECK(!start_editor("show.lua", 7, problem));
    CHECK(problem.starts_with("neither $VISUAL nor $EDITOR"));
}
