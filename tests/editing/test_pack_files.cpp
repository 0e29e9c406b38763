// Writing packs and taking them apart.
#include "editing/pack_files.h"

#include "content/pack.h"
#include "content_files.h"

#include <csignal>
#include <cstddef>
#include <doctest/doctest.h>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <utility>
#include <vector>

// Pairs of name and directory; a null directory takes the entry from the old pack.
static pack_file_list* list_of(const std::vector<std::pair<std::string, const char*>>& entries)
{
    pack_file_list* list = pack_file_list_new();
    for (const auto& [name, directory] : entries)
        pack_file_list_append(list, strdup(name.c_str()), directory ? strdup(directory) : nullptr);
    return list;
}

// A pack of given entries in a form of its own: all slots first, then all bytes.
static std::string pack_of(const std::vector<std::pair<std::string, std::string>>& entries)
{
    std::string index;
    std::string data;
    uint32_t start = 35 + 40 * static_cast<uint32_t>(entries.size());
    for (const auto& [name, bytes] : entries) {
        const auto size = static_cast<uint32_t>(bytes.size());
        index += slot_bytes(name, start, start + size - 1);
        data += bytes;
        start += size;
    }
    return "DP\x01" + index + std::string(32, '\0') + data;
}

static bool write_silently(
    const pack_file_list* list, const std::string& path, const pack_file* old_pack, std::string& errors)
{
    bool written = false;
    errors = printed_on(stderr,
        [&] { CHECK(printed_on(stdout, [&] { written = pack_write(list, path.c_str(), old_pack); }).empty()); });
    return written;
}

static bool file_exists(const std::string& path)
{
    struct stat status;
    return lstat(path.c_str(), &status) == 0;
}

static mode_t permissions(const std::string& path)
{
    struct stat status;
    return stat(path.c_str(), &status) == 0 ? status.st_mode & 0777 : 0;
}

TEST_CASE("a written pack is the expected bytes, with permissions 0600")
{
    const temporary_directory directory;
    write_bytes(directory.path + "a", "one");
    write_bytes(directory.path + "b", "three");
    pack_file_list* list = list_of({{"a", directory.path.c_str()}, {"b", directory.path.c_str()}});
    std::string errors;
    CHECK(write_silently(list, directory.path + "x.dpk", nullptr, errors));
    pack_file_list_free(list);
    const std::string bytes = read_bytes(directory.path + "x.dpk");
    REQUIRE(bytes.size() == 123);
    CHECK((bytes == pack_of({{"a", "one"}, {"b", "three"}})));
    CHECK(bytes.substr(0, 3) == "DP\x01");
    CHECK((bytes.substr(35, 8) == std::string("\0\0\0\x73\0\0\0\x75", 8))); // 115..117
    CHECK((bytes.substr(75, 8) == std::string("\0\0\0\x76\0\0\0\x7A", 8))); // 118..122
    CHECK(bytes.substr(115) == "onethree");
    CHECK(permissions(directory.path + "x.dpk") == 0600);
}

TEST_CASE("every written entry is found again byte for byte")
{
    const temporary_directory directory;
    std::vector<std::pair<std::string, const char*>> entries;
    std::vector<std::string> contents;
    for (uint32_t i = 0; i < 40; ++i) {
        std::string content;
        for (uint32_t byte = 0; byte < i * i * 60; ++byte) // 0 bytes to 91,260
            content.push_back(static_cast<char>(byte * 31 + i));
        const std::string name = "entry" + std::to_string(i);
        write_bytes(directory.path + name, content);
        entries.push_back({name, directory.path.c_str()});
        contents.push_back(content);
    }
    pack_file_list* list = list_of(entries);
    const std::string path = directory.path + "x.dpk";
    std::string errors;
    REQUIRE(write_silently(list, path, nullptr, errors));
    pack_file_list_free(list);
    const owned_pack pack(pack_open(std::fopen(path.c_str(), "rb")));
    for (size_t i = 0; i < entries.size(); ++i) {
        uint32_t size = 77;
        void* bytes = pack_find_entry(pack.get(), entries[i].first.c_str(), &size);
        REQUIRE(bytes);
        CHECK((std::string(static_cast<char*>(bytes), size) == contents[i]));
        std::free(bytes);
    }
}

TEST_CASE("an empty list is written as an empty pack")
{
    const temporary_directory directory;
    pack_file_list* list = pack_file_list_new();
    std::string errors;
    CHECK(write_silently(list, directory.path + "x.dpk", nullptr, errors));
    CHECK((read_bytes(directory.path + "x.dpk") == "DP\x01" + std::string(32, '\0')));
    pack_file_list_free(list);
}

TEST_CASE("entries without a directory come from the old pack")
{
    const temporary_directory directory;
    const pack_in_file old_pack(pack_of({{"old", "from the pack"}, {"empty", ""}, {"unused", "x"}}));
    write_bytes(directory.path + "new", "from the disk");
    pack_file_list* list = list_of({{"empty", nullptr}, {"new", directory.path.c_str()}, {"old", nullptr}});
    std::string errors;
    CHECK(write_silently(list, directory.path + "x.dpk", old_pack.pack, errors));
    CHECK((read_bytes(directory.path + "x.dpk")
        == pack_of({{"empty", ""}, {"new", "from the disk"}, {"old", "from the pack"}})));
    pack_file_list_free(list);
}

TEST_CASE("nothing is put between directory and name")
{
    const temporary_directory directory;
    write_bytes(directory.path + "pre_a", "content");
    pack_file_list* list = list_of({{"a", (directory.path + "pre_").c_str()}});
    std::string errors;
    CHECK(write_silently(list, directory.path + "x.dpk", nullptr, errors));
    CHECK((read_bytes(directory.path + "x.dpk") == pack_of({{"a", "content"}})));
    pack_file_list_free(list);
}

TEST_CASE("a longer file that was there before is truncated")
{
    const temporary_directory directory;
    write_bytes(directory.path + "x.dpk", std::string(5000, 'z'));
    write_bytes(directory.path + "a", "one");
    pack_file_list* list = list_of({{"a", directory.path.c_str()}});
    std::string errors;
    CHECK(write_silently(list, directory.path + "x.dpk", nullptr, errors));
    CHECK((read_bytes(directory.path + "x.dpk") == pack_of({{"a", "one"}})));
    pack_file_list_free(list);
}

TEST_CASE("names that do not fit a slot or lead elsewhere are refused")
{
    CHECK(pack_name_problem("a") == nullptr);
    CHECK(pack_name_problem(std::string(31, 'n').c_str()) == nullptr);
    CHECK(pack_name_problem("music/a.ogg") == nullptr);
    CHECK(pack_name_problem(".a.b.") == nullptr);
    CHECK(std::string(pack_name_problem(std::string(32, 'n').c_str())) == "is longer than 31 bytes");
    CHECK(std::string(pack_name_problem("/etc/passwd")) == "is absolute");
    CHECK(std::string(pack_name_problem("../a")) == "has \"..\" in it");
    CHECK(std::string(pack_name_problem("a/../b")) == "has \"..\" in it");
    CHECK(std::string(pack_name_problem("")) == "is empty");
    CHECK(std::string(pack_name_problem(nullptr)) == "is empty");
}

// Whether writing this list is refused with that line, and leaves the output alone.
static void check_refused(
    const temporary_directory& directory, pack_file_list* list, const pack_file* old_pack, const std::string& line)
{
    const std::string path = directory.path + "x.dpk";
    std::string errors;
    CHECK_FALSE(write_silently(list, path, old_pack, errors));
    CHECK(errors == line);
    CHECK_FALSE(file_exists(path));
    write_bytes(path, "what was there");
    CHECK_FALSE(write_silently(list, path, old_pack, errors));
    CHECK(read_bytes(path) == "what was there");
    std::remove(path.c_str());
    pack_file_list_free(list);
}

TEST_CASE("writing refuses bad names before any file is touched")
{
    const temporary_directory directory;
    const std::string name(32, 'n');
    write_bytes(directory.path + name, "x");
    check_refused(directory, list_of({{name, directory.path.c_str()}}), nullptr,
        "Error: the name \"" + name + "\" is longer than 31 bytes.\n");
}

TEST_CASE("writing refuses sources that cannot be read before any file is touched")
{
    const temporary_directory directory;
    SUBCASE("a missing file")
    {
        check_refused(directory, list_of({{"a", directory.path.c_str()}}), nullptr,
            "Error: cannot open " + directory.path + "a: No such file or directory.\n");
    }
    SUBCASE("a directory")
    {
        mkdir((directory.path + "a").c_str(), 0700);
        check_refused(directory, list_of({{"a", directory.path.c_str()}}), nullptr,
            "Error: cannot open " + directory.path + "a: it is a folder.\n");
    }
    SUBCASE("a named pipe")
    {
        mkfifo((directory.path + "a").c_str(), 0600);
        check_refused(directory, list_of({{"a", directory.path.c_str()}}), nullptr,
            "Error: cannot open " + directory.path + "a: it is a pipe or a device and no file.\n");
    }
    SUBCASE("more than offsets can tell apart")
    {
        // 3 + 32 + 40 bytes, and a hole up to one byte more than 4 GiB
        const std::string path = directory.path + "a";
        write_bytes(path, "");
        if (truncate(path.c_str(), static_cast<off_t>((1ll << 32) + 1 - 75)) == 0)
            check_refused(
                directory, list_of({{"a", directory.path.c_str()}}), nullptr, "Error: a pack holds at most 4 GiB.\n");
    }
    SUBCASE("an entry that the old pack lacks")
    {
        const pack_in_file old_pack(pack_of({{"b", "x"}}));
        check_refused(
            directory, list_of({{"a", nullptr}}), old_pack.pack, "Error: the entry \"a\" is not in the pack.\n");
        check_refused(directory, list_of({{"a", nullptr}}), nullptr, "Error: the entry \"a\" is not in the pack.\n");
    }
    SUBCASE("a damaged entry of the old pack")
    {
        const pack_in_file old_pack("DP\x01" + slot_bytes("a", 75, 99) + std::string(32, '\0'));
        check_refused(directory, list_of({{"a", nullptr}}), old_pack.pack, "Error: the entry \"a\" is damaged.\n");
    }
}

TEST_CASE("a file that goes into the pack is not overwritten by it")
{
    const temporary_directory directory;
    const std::string path = directory.path + "a";
    write_bytes(path, "precious");
    pack_file_list* list = list_of({{"a", directory.path.c_str()}});
    std::string errors;
    CHECK_FALSE(write_silently(list, path, nullptr, errors));
    CHECK(errors == "Error: " + path + " is the pack to be written.\n");
    CHECK(read_bytes(path) == "precious");
    pack_file_list_free(list);
}

TEST_CASE("an output that cannot be opened is reported")
{
    const temporary_directory directory;
    pack_file_list* list = pack_file_list_new();
    std::string errors;
    CHECK_FALSE(write_silently(list, directory.path + "none/x.dpk", nullptr, errors));
    CHECK(errors == "Error: cannot write " + directory.path + "none/x.dpk: No such file or directory.\n");
    CHECK_FALSE(write_silently(list, "/dev/full", nullptr, errors));
    CHECK(errors == "Error: cannot write /dev/full: it is a pipe or a device and no file.\n");
    pack_file_list_free(list);
}

TEST_CASE("a pack is rewritten in place with its lines in order")
{
    const temporary_directory directory;
    const std::string path = directory.path + "x.dpk";
    write_bytes(path, pack_of({{"first", "1"}, {"second", "22"}, {"third", "333"}}));
    write_bytes(directory.path + "second", "4444");
    write_bytes(directory.path + "fourth", "55555");
    pack_file_list* list = list_of({{"third", nullptr}, {"second", directory.path.c_str()}, {"first", nullptr},
        {"fourth", directory.path.c_str()}});
    const owned_pack old_pack(pack_open(std::fopen(path.c_str(), "rb")));
    bool written = false;
    const std::string lines
        = printed_on(stdout, [&] { written = pack_write_in_place(list, path.c_str(), old_pack.get()); });
    pack_file_list_free(list);
    CHECK(written);
    CHECK(lines
        == "count = 2\n"
           "NAME: third\n"
           "NAME: first\n"
           "size=3\n"
           "size of the file: 4\n"
           "size=1\n"
           "size of the file: 5\n");
    CHECK((read_bytes(path) == pack_of({{"third", "333"}, {"second", "4444"}, {"first", "1"}, {"fourth", "55555"}})));
}

// Whether `action` leaves the folder with nothing but the pack "x.dpk" of these bytes.
template <typename F> static void check_pack_stays(const temporary_directory& directory, F action)
{
    const std::string path = directory.path + "x.dpk";
    const std::string before = pack_of({{"first", "1"}});
    write_bytes(path, before);
    action(path);
    CHECK((read_bytes(path) == before));
    size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(directory.path))
        count += entry.path().filename() == "x.dpk" ? 1u : 100u;
    CHECK(count == 1);
}

TEST_CASE("a disk without room leaves the old pack whole, and says why")
{
    const temporary_directory directory;
    const temporary_directory elsewhere;
    write_bytes(elsewhere.path + "large", std::string(200000, 'l'));
    check_pack_stays(directory, [&](const std::string& path) {
        const owned_pack old_pack(pack_open(std::fopen(path.c_str(), "rb")));
        struct rlimit before;
        REQUIRE(getrlimit(RLIMIT_FSIZE, &before) == 0);
        const struct rlimit small = {100000, before.rlim_max};
        const auto action = std::signal(SIGXFSZ, SIG_IGN);
        for (const char* kept : {"first", ""}) {
            pack_file_list* list = *kept ? list_of({{"first", nullptr}, {"large", elsewhere.path.c_str()}})
                                         : list_of({{"large", elsewhere.path.c_str()}});
            std::string errors;
            setrlimit(RLIMIT_FSIZE, &small);
            const bool written = write_silently(list, path, old_pack.get(), errors);
            setrlimit(RLIMIT_FSIZE, &before);
            CHECK_FALSE(written);
            CHECK(errors == "Error: cannot write " + path + ": File too large.\n");
            pack_file_list_free(list);
        }
        std::signal(SIGXFSZ, action);
    });
}

TEST_CASE("a source that has another length than it says is reported, and no pack is made")
{
    const temporary_directory directory;
    // Files of the kernel: the first says that it is empty, the second that it has a page.
    for (const std::string folder : {"/proc/", "/sys/devices/system/cpu/"}) {
        const std::string name = folder == "/proc/" ? "version" : "online";
        struct stat status;
        if (stat((folder + name).c_str(), &status) != 0 || read_bytes(folder + name).empty())
            continue;
        pack_file_list* list = list_of({{name, folder.c_str()}});
        std::string errors;
        CHECK_FALSE(write_silently(list, directory.path + "x.dpk", nullptr, errors));
        CHECK(errors == "Error: cannot read " + folder + name + ": it changed while it was read.\n");
        CHECK(std::distance(std::filesystem::directory_iterator(directory.path), {}) == 0);
        pack_file_list_free(list);
    }
}

TEST_CASE("a rewritten pack keeps its permissions, and stays behind its symbolic link")
{
    const temporary_directory directory;
    mkdir((directory.path + "far").c_str(), 0700);
    const std::string path = directory.path + "far/x.dpk";
    write_bytes(path, pack_of({{"first", "1"}}));
    chmod(path.c_str(), 0644);
    CHECK(symlink("far/x.dpk", (directory.path + "x.dpk").c_str()) == 0);
    write_bytes(directory.path + "a", "one");
    pack_file_list* list = list_of({{"a", directory.path.c_str()}});
    std::string errors;
    CHECK(write_silently(list, directory.path + "x.dpk", nullptr, errors));
    CHECK((read_bytes(path) == pack_of({{"a", "one"}})));
    CHECK(permissions(path) == 0644);
    CHECK(std::filesystem::is_symlink(directory.path + "x.dpk"));
    pack_file_list_free(list);
}

TEST_CASE("the old pack goes on reading its own bytes")
{
    const temporary_directory directory;
    const std::string path = directory.path + "x.dpk";
    write_bytes(path, pack_of({{"first", "1"}}));
    const owned_pack old_pack(pack_open(std::fopen(path.c_str(), "rb")));
    pack_file_list* list = pack_file_list_new();
    std::string errors;
    CHECK(write_silently(list, path, nullptr, errors));
    uint32_t size = 0;
    void* bytes = pack_find_entry(old_pack.get(), "first", &size);
    CHECK(bytes != nullptr);
    std::free(bytes);
    pack_file_list_free(list);
}

TEST_CASE("names that a terminal would act on are spelled out in every line")
{
    const temporary_directory directory;
    const std::string bell = "a\x1B[7m\xC3\xA9";
    const std::string shown = "a\\x1B[7m\xC3\xA9";
    const std::string path = directory.path + bell + ".dpk";
    write_bytes(path, pack_of({{bell, "1"}}));
    const owned_pack old_pack(pack_open(std::fopen(path.c_str(), "rb")));
    pack_file_list* list = list_of({{bell, nullptr}});
    const std::string lines
        = printed_on(stdout, [&] { CHECK(pack_write_in_place(list, path.c_str(), old_pack.get())); });
    CHECK(lines == "count = 1\nNAME: " + shown + "\nsize=1\n");
    std::string errors;
    CHECK_FALSE(write_silently(list, path, nullptr, errors));
    CHECK(errors == "Error: the entry \"" + shown + "\" is not in the pack.\n");
    pack_file_list_free(list);
    list = list_of({{bell + "/..", nullptr}});
    CHECK_FALSE(write_silently(list, path, nullptr, errors));
    CHECK(errors == "Error: the name \"" + shown + "/..\" has \"..\" in it.\n");
    pack_file_list_free(list);
    list = list_of({{"none", (directory.path + bell + "/").c_str()}});
    CHECK_FALSE(write_silently(list, path, nullptr, errors));
    CHECK(errors == "Error: cannot open " + directory.path + shown + "/none: No such file or directory.\n");
    pack_file_list_free(list);
}

TEST_CASE("a refused rewrite leaves the pack as it was")
{
    const temporary_directory directory;
    const std::string path = directory.path + "x.dpk";
    const std::string before = pack_of({{"first", "1"}});
    write_bytes(path, before);
    pack_file_list* list = list_of({{"first", nullptr}, {"missing", nullptr}});
    const owned_pack old_pack(pack_open(std::fopen(path.c_str(), "rb")));
    std::string lines;
    CHECK(printed_on(stderr, [&] {
        lines = printed_on(stdout, [&] { CHECK_FALSE(pack_write_in_place(list, path.c_str(), old_pack.get())); });
    }) == "Error: the entry \"missing\" is not in the pack.\n");
    CHECK(lines == "count = 2\nNAME: first\nNAME: missing\n");
    CHECK((read_bytes(path) == before));
    pack_file_list_free(list);
}

// ---- taking apart ------------------------------------------------------------------

static bool extract(const pack_file* pack, const std::string& prefix, std::string& errors)
{
    bool complete = false;
    errors = printed_on(
        stderr, [&] { CHECK(printed_on(stdout, [&] { complete = pack_extract_all(pack, prefix.c_str()); }).empty()); });
    return complete;
}

TEST_CASE("every entry is extracted to the prefix and its name, with permissions 0600")
{
    const temporary_directory directory;
    const pack_in_file pack(pack_of({{"a", "one"}, {"b", std::string("\0\xFF\n", 3)}, {"c", ""}, {"a", "never seen"}}));
    std::string errors;
    CHECK(extract(pack.pack, directory.path + "pre_", errors));
    CHECK(errors.empty());
    CHECK(read_bytes(directory.path + "pre_a") == "one");
    CHECK((read_bytes(directory.path + "pre_b") == std::string("\0\xFF\n", 3)));
    CHECK(file_exists(directory.path + "pre_c"));
    CHECK(read_bytes(directory.path + "pre_c").empty());
    CHECK(permissions(directory.path + "pre_a") == 0600);
}

TEST_CASE("directories that a name asks for are made")
{
    const temporary_directory directory;
    const pack_in_file pack(pack_of({{"sky/day/up.png", "one"}, {"sky/down.png", "two"}}));
    std::string errors;
    CHECK(extract(pack.pack, directory.path, errors));
    CHECK(read_bytes(directory.path + "sky/day/up.png") == "one");
    CHECK(read_bytes(directory.path + "sky/down.png") == "two");
}

TEST_CASE("an existing file is overwritten whole")
{
    const temporary_directory directory;
    write_bytes(directory.path + "a", "something longer");
    const pack_in_file pack(pack_of({{"a", "one"}}));
    std::string errors;
    CHECK(extract(pack.pack, directory.path, errors));
    CHECK(read_bytes(directory.path + "a") == "one");
}

TEST_CASE("an existing file is left as it is where nothing may be replaced")
{
    const temporary_directory directory;
    write_bytes(directory.path + "a", "precious");
    const pack_in_file pack(pack_of({{"a", "one"}, {"b", "two"}}));
    CHECK(printed_on(stderr, [&] { CHECK_FALSE(pack_extract_all(pack.pack, directory.path.c_str(), false)); })
        == "Error: cannot write " + directory.path + "a: File exists.\n");
    CHECK(read_bytes(directory.path + "a") == "precious");
    CHECK(read_bytes(directory.path + "b") == "two");
    pack_file_list* list = list_of({{"a", nullptr}, {"b", nullptr}});
    CHECK(printed_on(stderr, [&] { CHECK_FALSE(pack_export_list(list, pack.pack, directory.path.c_str(), false)); })
        == "Error: cannot write " + directory.path + "a: File exists.\nError: cannot write " + directory.path
            + "b: File exists.\n");
    pack_file_list_free(list);
    CHECK(read_bytes(directory.path + "a") == "precious");
}

TEST_CASE("a disk without room leaves the file that was there, and no part of the new one")
{
    const temporary_directory directory;
    write_bytes(directory.path + "a", "precious");
    const std::string large(200000, 'l');
    const pack_in_file pack(pack_of({{"a", large}, {"b", large}}));
    struct rlimit before;
    REQUIRE(getrlimit(RLIMIT_FSIZE, &before) == 0);
    const struct rlimit small = {100000, before.rlim_max};
    const auto action = std::signal(SIGXFSZ, SIG_IGN);
    std::string errors;
    setrlimit(RLIMIT_FSIZE, &small);
    const bool complete = extract(pack.pack, directory.path, errors);
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, action);
    CHECK_FALSE(complete);
    CHECK(errors
        == "Error: cannot write " + directory.path + "a: File too large.\nError: cannot write " + directory.path
            + "b: File too large.\n");
    CHECK(read_bytes(directory.path + "a") == "precious");
    CHECK(std::distance(std::filesystem::directory_iterator(directory.path), {}) == 1);
}

TEST_CASE("folders that cannot be made say why")
{
    const temporary_directory directory;
    write_bytes(directory.path + "d", "a file");
    const pack_in_file pack(pack_of({{"d/b", "two"}}));
    std::string errors;
    CHECK_FALSE(extract(pack.pack, directory.path, errors));
    CHECK(errors == "Error: " + directory.path + "d is not a folder.\n");
    CHECK_FALSE(extract(pack.pack, directory.path + "none/", errors));
    CHECK(errors == "Error: cannot make the folder " + directory.path + "none/d: No such file or directory.\n");
}

TEST_CASE("entries whose names lead elsewhere are left out and reported")
{
    const temporary_directory directory;
    mkdir((directory.path + "in").c_str(), 0700);
    const std::string full(32, 'n');
    const pack_in_file pack(pack_of({{"../out", "x"}, {directory.path + "q", "x"}, {full, "x"}, {"good", "one"}}));
    std::string errors;
    CHECK_FALSE(extract(pack.pack, directory.path + "in/", errors));
    CHECK(errors
        == "Error: the name \"../out\" has \"..\" in it.\n"
           "Error: the name \""
            + directory.path
            + "q\" is absolute.\n"
              "Error: the name \""
            + full + "\" is longer than 31 bytes.\n");
    CHECK_FALSE(file_exists(directory.path + "out"));
    CHECK_FALSE(file_exists(directory.path + "in" + directory.path + "q"));
    CHECK_FALSE(file_exists(directory.path + "in/" + full));
    CHECK(read_bytes(directory.path + "in/good") == "one");
}

TEST_CASE("a damaged entry is left out and leaves its file alone")
{
    const temporary_directory directory;
    write_bytes(directory.path + "a", "what was there");
    const pack_in_file pack(
        "DP\x01" + slot_bytes("a", 115, 200) + slot_bytes("b", 115, 117) + std::string(32, '\0') + "two");
    std::string errors;
    CHECK_FALSE(extract(pack.pack, directory.path, errors));
    CHECK(errors == "Error: the entry \"a\" is damaged.\n");
    CHECK(read_bytes(directory.path + "a") == "what was there");
    CHECK(read_bytes(directory.path + "b") == "two");
}

TEST_CASE("extracting passes through no symbolic link")
{
    const temporary_directory directory;
    mkdir((directory.path + "in").c_str(), 0700);
    mkdir((directory.path + "elsewhere").c_str(), 0700);
    write_bytes(directory.path + "target", "precious");
    CHECK(symlink("../target", (directory.path + "in/a").c_str()) == 0);
    CHECK(symlink("../elsewhere", (directory.path + "in/d").c_str()) == 0);
    const pack_in_file pack(pack_of({{"a", "one"}, {"d/b", "two"}}));
    std::string errors;
    CHECK_FALSE(extract(pack.pack, directory.path + "in/", errors));
    CHECK(errors
        == "Error: cannot write " + directory.path + "in/a: it is a symbolic link.\n" + "Error: " + directory.path
            + "in/d is a symbolic link.\n");
    CHECK(read_bytes(directory.path + "target") == "precious");
    CHECK_FALSE(file_exists(directory.path + "elsewhere/b"));
}

TEST_CASE("the pack is not overwritten by one of its entries")
{
    const temporary_directory directory;
    const std::string before = pack_of({{"x.dpk", "one"}, {"b", "two"}});
    write_bytes(directory.path + "x.dpk", before);
    const owned_pack pack(pack_open(std::fopen((directory.path + "x.dpk").c_str(), "rb")));
    std::string errors;
    CHECK_FALSE(extract(pack.get(), directory.path, errors));
    CHECK(errors == "Error: cannot write " + directory.path + "x.dpk: it is being read.\n");
    CHECK((read_bytes(directory.path + "x.dpk") == before));
    CHECK(read_bytes(directory.path + "b") == "two");
}

TEST_CASE("what is no file is not written into")
{
    const temporary_directory directory;
    mkdir((directory.path + "a").c_str(), 0700);
    mkfifo((directory.path + "b").c_str(), 0600);
    const pack_in_file pack(pack_of({{"a", "one"}, {"b", "two"}}));
    std::string errors;
    CHECK_FALSE(extract(pack.pack, directory.path, errors));
    CHECK(errors.find("Error: cannot write " + directory.path + "a: ") == 0);
    CHECK(errors.find("Error: cannot write " + directory.path + "b: ") != std::string::npos);
    CHECK_FALSE(extract(nullptr, directory.path, errors));
}

TEST_CASE("a list is exported from its directories and from the pack")
{
    const temporary_directory directory;
    const std::string out = directory.path + "out/";
    mkdir(out.c_str(), 0700);
    write_bytes(directory.path + "disk", std::string(200000, 'd'));
    const pack_in_file pack(pack_of({{"disk", "not this"}, {"packed", "one"}, {"other", "two"}}));
    pack_file_list* list = list_of({{"disk", directory.path.c_str()}, {"packed", nullptr}});
    CHECK(pack_export_list(list, pack.pack, out.c_str()));
    CHECK((read_bytes(out + "disk") == std::string(200000, 'd')));
    CHECK(read_bytes(out + "packed") == "one");
    CHECK_FALSE(file_exists(out + "other"));
    CHECK(permissions(out + "disk") == 0600);
    pack_file_list_free(list);
}

TEST_CASE("an export goes on behind what it cannot do")
{
    const temporary_directory directory;
    write_bytes(directory.path + "self", "precious");
    const pack_in_file pack(pack_of({{"packed", "one"}}));
    pack_file_list* list = list_of({{"self", directory.path.c_str()}, {"gone", directory.path.c_str()},
        {"missing", nullptr}, {"../x", nullptr}, {"packed", nullptr}});
    std::string errors
        = printed_on(stderr, [&] { CHECK_FALSE(pack_export_list(list, pack.pack, directory.path.c_str())); });
    CHECK(errors
        == "Error: cannot write " + directory.path + "self: it is being read.\n" + "Error: cannot open "
            + directory.path + "gone: No such file or directory.\n"
            + "Error: the entry \"missing\" is not in the pack.\n" + "Error: the name \"../x\" has \"..\" in it.\n");
    CHECK(read_bytes(directory.path + "self") == "precious");
    CHECK(read_bytes(directory.path + "packed") == "one");
    pack_file_list_free(list);
}
