// Files that are written beside their place. What is in a folder is listed by hand.
#include "content/new_file.h"
#include "content_files.h"

#include <algorithm>
#include <doctest/doctest.h>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

static std::vector<std::string> names_in(const std::string& folder)
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

static std::string reason(const char* problem)
{
    return problem ? problem : "";
}

static std::string write_text(new_file& file, const std::string& text)
{
    return reason(new_file_write(file, text.data(), text.size()));
}

static constexpr new_file_rules only_new = {.signals_wait = true, .safe_on_disk = true};
static constexpr new_file_rules replacing = {.may_replace = true, .signals_wait = true, .safe_on_disk = true};
static constexpr new_file_rules everyday = {.permissions = 0666, .may_replace = true, .devices_as_they_are = true};

// A file of this text at `path`, or the first reason why not.
static std::string put(const std::string& path, const std::string& text, const new_file_rules& rules = replacing)
{
    return reason(new_file_put(path, rules, text.data(), text.size()));
}

static mode_t permissions(const std::string& path)
{
    struct stat status;
    return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

namespace {

using strings = std::vector<std::string>;

} // namespace

TEST_CASE("a new file lies beside its place until it is kept")
{
    const temporary_directory directory;
    new_file file;
    REQUIRE(new_file_open(file, directory.path + "x.dpk", replacing) == nullptr);
    CHECK(write_text(file, "one").empty());
    const strings names = names_in(directory.path);
    REQUIRE(names.size() == 1);
    CHECK(directory.path + names[0] == new_file_path(file));
    const std::string begin = "x.dpk." + std::to_string(getpid()) + "-";
    CHECK(names[0].substr(0, begin.size()) == begin);
    CHECK(names[0].substr(names[0].size() - 5) == ".part"); // "dpk" would be a pack
    CHECK(new_file_keep(file) == nullptr);
    CHECK(names_in(directory.path) == strings{"x.dpk"});
    CHECK(read_bytes(directory.path + "x.dpk") == "one");
    CHECK(permissions(directory.path + "x.dpk") == 0600);
    new_file_drop(file); // does nothing any more
    CHECK(read_bytes(directory.path + "x.dpk") == "one");
}

TEST_CASE("large writes arrive whole")
{
    const temporary_directory directory;
    std::string text(2500000, 'a'); // more than two steps
    text[1048575] = 'b';
    text[1048576] = 'c';
    CHECK(put(directory.path + "x", text).empty());
    CHECK((read_bytes(directory.path + "x") == text));
}

TEST_CASE("what was there stays until the new file is kept, and lends its permissions")
{
    const temporary_directory directory;
    const std::string path = directory.path + "x";
    write_bytes(path, "the old one");
    chmod(path.c_str(), 0640);
    new_file file;
    REQUIRE(new_file_open(file, path, replacing) == nullptr);
    CHECK(write_text(file, "new").empty());
    CHECK(read_bytes(path) == "the old one");
    CHECK(new_file_keep(file) == nullptr);
    CHECK(read_bytes(path) == "new");
    CHECK(permissions(path) == 0640);
    CHECK(names_in(directory.path) == strings{"x"});
    chmod(path.c_str(), 0777);
    CHECK(put(path, "newer", everyday).empty());
    CHECK(permissions(path) == 0777);
}

TEST_CASE("a file that replaces none has the permissions that are asked for, less the mask's")
{
    const temporary_directory directory;
    const mode_t mask = umask(027);
    CHECK(put(directory.path + "pack", "x").empty());
    CHECK(put(directory.path + "picture", "x", everyday).empty());
    umask(mask);
    CHECK(permissions(directory.path + "pack") == 0600);
    CHECK(permissions(directory.path + "picture") == 0640);
}

TEST_CASE("devices and pipes are written as they are where the rules say so")
{
    const temporary_directory directory;
    const std::string pipe = directory.path + "pipe";
    mkfifo(pipe.c_str(), 0600);
    FILE* reader = std::fopen(pipe.c_str(), "r+"); // both ways: opens at once
    REQUIRE(reader);
    CHECK(put(pipe, "text\n", everyday).empty());
    char line[8] = "";
    CHECK(std::string(std::fgets(line, sizeof line, reader)) == "text\n");
    new_file file;
    REQUIRE(new_file_open(file, pipe, everyday) == nullptr);
    CHECK(new_file_path(file) == pipe); // for programs that open it themselves
    new_file_drop(file);
    std::fclose(reader);
    CHECK(std::filesystem::is_fifo(pipe));
    CHECK(names_in(directory.path) == strings{"pipe"});
    CHECK(put("/dev/null", "x", everyday).empty());
    CHECK(std::filesystem::is_character_file("/dev/null"));
    CHECK(put("/dev/full", "x", everyday) == "No space left on device");
    CHECK(put(directory.path, "x", everyday) == "Is a directory");
}

TEST_CASE("a standard output that is a pipe is written through its name")
{
    int ends[2];
    REQUIRE(pipe(ends) == 0);
    const std::string name = "/proc/self/fd/" + std::to_string(ends[1]); // a link to what is no path
    CHECK(put(name, "text", everyday).empty());
    char text[4] = "";
    CHECK(read(ends[0], text, sizeof text) == 4);
    CHECK(std::string(text, 4) == "text");
    close(ends[0]);
    close(ends[1]);
}

TEST_CASE("the longest names have room, and two of one beginning do not meet")
{
    const temporary_directory directory;
    const std::string name(254, 'n');
    new_file a;
    new_file b;
    REQUIRE(new_file_open(a, directory.path + name + "a", everyday) == nullptr);
    REQUIRE(new_file_open(b, directory.path + name + "b", everyday) == nullptr);
    CHECK(new_file_path(a) != new_file_path(b));
    CHECK(write_text(a, "a").empty());
    CHECK(new_file_keep(a) == nullptr);
    CHECK(new_file_keep(b) == nullptr);
    CHECK(read_bytes(directory.path + name + "a") == "a");
    CHECK(names_in(directory.path) == strings{name + "a", name + "b"});
}

TEST_CASE("a place that is taken by a folder in the meantime is left to it")
{
    const temporary_directory directory;
    new_file file;
    REQUIRE(new_file_open(file, directory.path + "late", everyday) == nullptr);
    mkdir((directory.path + "late").c_str(), 0700);
    CHECK(reason(new_file_keep(file)) == "Is a directory");
    CHECK(names_in(directory.path) == strings{"late"});
}

TEST_CASE("a replaced file keeps its owner where that is allowed")
{
    const temporary_directory directory;
    const std::string path = directory.path + "x";
    write_bytes(path, "old");
    if (chown(path.c_str(), 12345, 23456) != 0)
        return; // only the superuser can
    CHECK(put(path, "new").empty());
    struct stat status;
    REQUIRE(stat(path.c_str(), &status) == 0);
    CHECK(status.st_uid == 12345);
    CHECK(status.st_gid == 23456);
}

TEST_CASE("a dropped file leaves nothing, and what was there as it was")
{
    const temporary_directory directory;
    write_bytes(directory.path + "x", "old");
    new_file file;
    REQUIRE(new_file_open(file, directory.path + "x", replacing) == nullptr);
    CHECK(write_text(file, "new").empty());
    new_file_drop(file);
    new_file_drop(file);
    CHECK(names_in(directory.path) == strings{"x"});
    CHECK(read_bytes(directory.path + "x") == "old");
}

TEST_CASE("a symbolic link stays, and what it points to is replaced")
{
    const temporary_directory directory;
    mkdir((directory.path + "far").c_str(), 0700);
    write_bytes(directory.path + "far/x", "old");
    CHECK(symlink("far/x", (directory.path + "one").c_str()) == 0);
    CHECK(symlink((directory.path + "one").c_str(), (directory.path + "two").c_str()) == 0);
    CHECK(put(directory.path + "two", "new").empty());
    CHECK(read_bytes(directory.path + "far/x") == "new");
    CHECK(std::filesystem::is_symlink(directory.path + "one"));
    CHECK(std::filesystem::is_symlink(directory.path + "two"));
    CHECK(names_in(directory.path + "far") == strings{"x"});
    // a link to nothing yet
    CHECK(symlink("far/y", (directory.path + "three").c_str()) == 0);
    CHECK(put(directory.path + "three", "made").empty());
    CHECK(read_bytes(directory.path + "far/y") == "made");
    CHECK(std::filesystem::is_symlink(directory.path + "three"));
    // a ring
    CHECK(symlink("ring", (directory.path + "ring").c_str()) == 0);
    CHECK(put(directory.path + "ring", "never") == "Too many levels of symbolic links");
}

TEST_CASE("what exists is left alone where nothing may be replaced")
{
    const temporary_directory directory;
    write_bytes(directory.path + "x", "old");
    new_file file;
    CHECK(reason(new_file_open(file, directory.path + "x", only_new)) == "File exists"); // before a byte is written
    CHECK(read_bytes(directory.path + "x") == "old");
    CHECK(put(directory.path + "y", "new", only_new).empty());
    CHECK(names_in(directory.path) == strings{"x", "y"});
    // also what comes in the meantime
    REQUIRE(new_file_open(file, directory.path + "z", only_new) == nullptr);
    write_bytes(directory.path + "z", "another's");
    CHECK(reason(new_file_keep(file)) == "File exists");
    CHECK(read_bytes(directory.path + "z") == "another's");
    CHECK(names_in(directory.path) == strings{"x", "y", "z"});
}

TEST_CASE("what is no plain file, and what cannot be begun, is refused with the reason")
{
    const temporary_directory directory;
    mkdir((directory.path + "folder").c_str(), 0700);
    mkfifo((directory.path + "pipe").c_str(), 0600);
    write_bytes(directory.path + "file", "old");
    CHECK(put(directory.path + "folder", "x") == "it is a folder");
    CHECK(put(directory.path + "pipe", "x") == "it is a pipe or a device and no file");
    CHECK(put("/dev/full", "x") == "it is a pipe or a device and no file");
    CHECK(put(directory.path + "none/x", "x") == "No such file or directory");
    CHECK(put(directory.path + "file/x", "x") == "Not a directory");
    const std::filesystem::path here = std::filesystem::current_path();
    std::filesystem::current_path(directory.path); // where something may be written
    CHECK(put("", "x") == "No such file or directory");
    std::filesystem::current_path(here);
    CHECK(names_in(directory.path) == strings{"file", "folder", "pipe"});
}

TEST_CASE("a disk without room gives its reason and keeps the old file")
{
    const temporary_directory directory;
    write_bytes(directory.path + "x", "old");
    struct rlimit before;
    REQUIRE(getrlimit(RLIMIT_FSIZE, &before) == 0);
    const struct rlimit small = {100000, before.rlim_max};
    const auto action = std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &small);
    const std::string problem = put(directory.path + "x", std::string(200000, 'a'));
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, action);
    CHECK(problem == "File too large");
    CHECK(read_bytes(directory.path + "x") == "old");
    CHECK(names_in(directory.path) == strings{"x"});
}

static volatile std::sig_atomic_t signals_taken = 0;

static void count_signal(int)
{
    signals_taken = signals_taken + 1;
}

TEST_CASE("a signal that ends the process waits until nothing is left of the file")
{
    const temporary_directory directory;
    write_bytes(directory.path + "x", "old");
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGXFSZ}) {
        const auto before = std::signal(number, count_signal);
        signals_taken = 0;
        new_file file;
        REQUIRE(new_file_open(file, directory.path + "x", replacing) == nullptr);
        CHECK(write_text(file, "new").empty());
        raise(number);
        CHECK(signals_taken == 0);
        CHECK(write_text(file, "er") == "it was interrupted");
        CHECK(signals_taken == 0);
        new_file_drop(file);
        CHECK(signals_taken == 1);
        std::signal(number, before);
    }
    CHECK(read_bytes(directory.path + "x") == "old");
    CHECK(names_in(directory.path) == strings{"x"});
}

TEST_CASE("a signal before the last step keeps the old file too")
{
    const temporary_directory directory;
    write_bytes(directory.path + "x", "old");
    const auto before = std::signal(SIGTERM, count_signal);
    signals_taken = 0;
    new_file file;
    REQUIRE(new_file_open(file, directory.path + "x", replacing) == nullptr);
    CHECK(write_text(file, "new").empty());
    raise(SIGTERM);
    CHECK(reason(new_file_keep(file)) == "it was interrupted");
    CHECK(signals_taken == 1);
    std::signal(SIGTERM, before);
    CHECK(read_bytes(directory.path + "x") == "old");
    CHECK(names_in(directory.path) == strings{"x"});
}

TEST_CASE("signals that are ignored or held back already do not stop a file")
{
    const temporary_directory directory;
    const auto before = std::signal(SIGHUP, SIG_IGN);
    const auto before_int = std::signal(SIGINT, count_signal);
    sigset_t interrupt;
    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGINT);
    pthread_sigmask(SIG_BLOCK, &interrupt, nullptr);
    signals_taken = 0;
    new_file file;
    REQUIRE(new_file_open(file, directory.path + "x", replacing) == nullptr);
    raise(SIGHUP);
    raise(SIGINT);
    CHECK(write_text(file, "new").empty());
    CHECK(new_file_keep(file) == nullptr);
    CHECK(signals_taken == 0); // still held back by whoever did so
    pthread_sigmask(SIG_UNBLOCK, &interrupt, nullptr);
    CHECK(signals_taken == 1);
    std::signal(SIGHUP, before);
    std::signal(SIGINT, before_int);
    CHECK(read_bytes(directory.path + "x") == "new");
}

TEST_CASE("signals act at once where the rules let none wait")
{
    const temporary_directory directory;
    const auto before = std::signal(SIGINT, count_signal);
    signals_taken = 0;
    new_file file;
    REQUIRE(new_file_open(file, directory.path + "x", everyday) == nullptr);
    raise(SIGINT);
    CHECK(signals_taken == 1);
    CHECK(write_text(file, "new").empty());
    CHECK(new_file_keep(file) == nullptr);
    std::signal(SIGINT, before);
    CHECK(read_bytes(directory.path + "x") == "new");
}

TEST_CASE("a file that could not be begun holds no signal back")
{
    const auto before = std::signal(SIGTERM, count_signal);
    signals_taken = 0;
    CHECK(put("/nowhere/at/all/x", "x") == "No such file or directory");
    raise(SIGTERM);
    CHECK(signals_taken == 1);
    std::signal(SIGTERM, before);
}
