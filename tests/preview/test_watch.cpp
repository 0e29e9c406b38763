// Events are queued while the system call runs that causes them, so nothing here has to wait; times are made up.
#include "tools/preview/watch.h"

#include "scratch_folder.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

// What has been written is older then than what is told or written next. The clock of files has steps of up to 10 ms,
// and the system may give a file a time that lies within one.
void wait_for_files_clock()
{
    usleep(20 * 1000);
}

// A folder with a file in it that is watched.
struct watched_show {
    scratch_folder folder;
    file_watch watch;
    double now = 100;

    watched_show()
    {
        std::string problem;
        write_text(folder / "show.lua", "x = 1");
        REQUIRE(watch_open(watch, problem));
        take({"show.lua"});
        told();
    }
    ~watched_show()
    {
        watch_close(watch);
    }

    void take(const std::vector<std::string>& names)
    {
        std::vector<std::string> paths;
        for (const std::string& name : names)
            paths.push_back(folder / name);
        watch_files(watch, paths);
    }
    bool told()
    {
        now += 2; // long enough for whoever looks at times
        return watch_poll(watch, now, 0);
    }
};

} // namespace

TEST_CASE("a file that is written and closed is told once")
{
    watched_show show;
    CHECK(!show.told());
    write_text(show.folder / "show.lua", "x = 2");
    CHECK(show.told());
    CHECK(!show.told());
}

TEST_CASE("a file that is being written is not told before it is closed")
{
    watched_show show;
    std::ofstream file(show.folder / "show.lua");
    file << "x = " << std::flush;
    CHECK(!show.told());
    file << "3" << std::flush;
    CHECK(!show.told());
    file.close();
    CHECK(show.told());
}

TEST_CASE("a file that is saved with the same text is told all the same")
{
    watched_show show;
    write_text(show.folder / "show.lua", "x = 1");
    CHECK(show.told());
}

TEST_CASE("a file that is written beside and renamed is told")
{
    watched_show show;
    write_text(show.folder / ".show.lua.swp", "x = 2");
    CHECK(!show.told());
    fs::rename(show.folder / ".show.lua.swp", show.folder / "show.lua");
    CHECK(show.told());
    write_text(show.folder / "show.lua", "x = 3");
    CHECK(show.told());
}

TEST_CASE("a file that is moved away and written anew is told when it is whole")
{
    watched_show show;
    fs::rename(show.folder / "show.lua", show.folder / "show.lua~");
    CHECK(!show.told());
    std::ofstream file(show.folder / "show.lua");
    file << "x" << std::flush;
    CHECK(!show.told());
    file.close();
    CHECK(show.told());
}

TEST_CASE("a file that is removed is not told, and one that comes back is")
{
    watched_show show;
    fs::remove(show.folder / "show.lua");
    CHECK(!show.told());
    write_text(show.folder / "show.lua", "x = 1");
    CHECK(show.told());
}

TEST_CASE("other files of the folder are not told")
{
    watched_show show;
    write_text(show.folder / "still-0001.png", "x");
    write_text(show.folder / "show.lua~", "x");
    CHECK(!show.told());
}

TEST_CASE("a file that is not there yet is told when it comes")
{
    watched_show show;
    show.take({"show.lua", "rock.png"});
    CHECK(!show.told());
    write_text(show.folder / "rock.png", "x");
    CHECK(show.told());
}

TEST_CASE("a file in folders that are not there yet is told when they come")
{
    watched_show show;
    show.take({"show.lua", "pictures/rocks/grey.png"});
    CHECK(!show.told());
    fs::create_directory(show.folder / "pictures");
    CHECK(!show.told());
    fs::create_directory(show.folder / "pictures/rocks");
    CHECK(!show.told());
    write_text(show.folder / "pictures/rocks/grey.png", "x");
    CHECK(show.told());
}

TEST_CASE("folders that come with the file in them, faster than anybody looks, are told")
{
    watched_show show;
    show.take({"show.lua", "pictures/rocks/grey.png"});
    fs::create_directories(show.folder / "pictures/rocks");
    write_text(show.folder / "pictures/rocks/grey.png", "x");
    CHECK(show.told());
}

TEST_CASE("a folder that is replaced as a whole is told, and watched in its new place")
{
    watched_show show;
    fs::create_directory(show.folder / "pictures");
    write_text(show.folder / "pictures/rock.png", "x");
    show.take({"show.lua", "pictures/rock.png"});
    show.told();
    fs::create_directory(show.folder / "new");
    write_text(show.folder / "new/rock.png", "another");
    CHECK(!show.told());
    fs::rename(show.folder / "pictures", show.folder / "old");
    CHECK(!show.told());
    fs::rename(show.folder / "new", show.folder / "pictures");
    CHECK(show.told());
    write_text(show.folder / "old/rock.png", "nobody asks");
    CHECK(!show.told());
    write_text(show.folder / "pictures/rock.png", "x");
    CHECK(show.told());
}

TEST_CASE("the folder of the show itself may be replaced")
{
    watched_show show;
    fs::create_directory(show.folder / "demo");
    write_text(show.folder / "demo/show.lua", "x = 1");
    show.take({"demo/show.lua"});
    show.told();
    fs::remove_all(show.folder / "demo");
    CHECK(!show.told());
    fs::create_directory(show.folder / "demo");
    write_text(show.folder / "demo/show.lua", "x = 2");
    CHECK(show.told());
    write_text(show.folder / "demo/show.lua", "x = 3");
    CHECK(show.told());
}

TEST_CASE("what a link points at is told, and a link that is set anew, too")
{
    watched_show show;
    fs::create_directory(show.folder / "shared");
    write_text(show.folder / "shared/rock.png", "x");
    write_text(show.folder / "shared/stone.png", "a stone");
    fs::create_symlink("shared/rock.png", show.folder / "link.png");
    show.take({"link.png"});
    show.told();
    write_text(show.folder / "shared/rock.png", "y");
    CHECK(show.told());
    fs::create_symlink("shared/stone.png", show.folder / "next.png");
    fs::rename(show.folder / "next.png", show.folder / "link.png");
    CHECK(show.told());
    write_text(show.folder / "shared/rock.png", "z");
    CHECK(!show.told());
    write_text(show.folder / "shared/stone.png", "y");
    CHECK(show.told());
    write_text(show.folder / "new.png", "no link any more");
    fs::rename(show.folder / "new.png", show.folder / "link.png");
    CHECK(show.told());
    write_text(show.folder / "shared/stone.png", "z");
    CHECK(!show.told());
}

TEST_CASE("a link that leads nowhere is told when its target comes, and one in a circle harms nobody")
{
    watched_show show;
    fs::create_symlink("later.png", show.folder / "link.png");
    fs::create_symlink("b.png", show.folder / "a.png");
    fs::create_symlink("a.png", show.folder / "b.png");
    show.take({"link.png", "a.png"});
    CHECK(!show.told());
    write_text(show.folder / "later.png", "x");
    CHECK(show.told());
}

TEST_CASE("a folder under two names tells of files under both")
{
    watched_show show;
    fs::create_directory(show.folder / "pictures");
    fs::create_directory_symlink("pictures", show.folder / "again");
    write_text(show.folder / "pictures/rock.png", "x");
    write_text(show.folder / "pictures/stone.png", "x");
    show.take({"pictures/rock.png", "again/stone.png", "pictures/../pictures/./rock.png"});
    show.told();
    write_text(show.folder / "again/rock.png", "y");
    CHECK(show.told());
    write_text(show.folder / "pictures/stone.png", "y");
    CHECK(show.told());
}

TEST_CASE("a file that gets its name by a hard link is told")
{
    watched_show show;
    write_text(show.folder / "one.png", "x");
    show.take({"two.png"});
    CHECK(!show.told());
    fs::create_hard_link(show.folder / "one.png", show.folder / "two.png");
    CHECK(show.told());
}

TEST_CASE("files that are asked for no more are not told")
{
    watched_show show;
    show.take({"show.lua", "rock.png"});
    show.take({"show.lua"});
    write_text(show.folder / "rock.png", "x");
    CHECK(!show.told());
}

TEST_CASE("nothing is told before it has been quiet, and what never is quiet is told nevertheless")
{
    watched_show show;
    write_text(show.folder / "show.lua", "x = 2");
    CHECK(!watch_poll(show.watch, 200, 0.01));
    write_text(show.folder / "show.lua", "x = 3");
    CHECK(!watch_poll(show.watch, 200.009, 0.01));
    CHECK(!watch_poll(show.watch, 200.018, 0.01));
    CHECK(watch_poll(show.watch, 200.02, 0.01));
    CHECK(show.watch.noticed == 200);
    double now = 300;
    bool told = false;
    for (; now < 301 && !told; now += 0.005) {
        write_text(show.folder / "show.lua", "x");
        told = watch_poll(show.watch, now, 0.01);
    }
    CHECK(told);
    CHECK(now < 300.3);
}

TEST_CASE("a file that was saved between being read and being watched is told")
{
    watched_show show;
    wait_for_files_clock();
    write_text(show.folder / "palette.lua", "saved after the build was asked for");
    CHECK(!show.told());
    show.take({"show.lua", "palette.lua"});
    CHECK(show.told());
    CHECK(!show.told());
}

TEST_CASE("a queue that overflows counts as a change")
{
    watched_show show;
    std::ifstream limit("/proc/sys/fs/inotify/max_queued_events");
    int most = 16384;
    limit >> most;
    for (int i = 0; i < most / 2 + 2; ++i) { // two events a turn: it is made, and it is closed
        const int file = open((show.folder / "other").c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
        close(file);
        unlink((show.folder / "other").c_str());
    }
    CHECK(show.told());
    write_text(show.folder / "show.lua", "x = 2");
    CHECK(show.told());
}

TEST_CASE("where inotify cannot be had, the times of files are looked at once a second")
{
    scratch_folder folder;
    write_text(folder / "show.lua", "x = 1");
    wait_for_files_clock();
    rlimit before = {};
    REQUIRE(getrlimit(RLIMIT_NOFILE, &before) == 0);
    const rlimit none = {0, before.rlim_max};
    REQUIRE(setrlimit(RLIMIT_NOFILE, &none) == 0);
    file_watch watch;
    std::string problem;
    const bool is_open = watch_open(watch, problem);
    REQUIRE(setrlimit(RLIMIT_NOFILE, &before) == 0);
    REQUIRE(is_open);
    CHECK(watch.looks);
    watch_files(watch, {folder / "show.lua", folder / "later.png"});
    CHECK(!watch_poll(watch, 100, 0));
    write_text(folder / "show.lua", "x = 20");
    CHECK(!watch_poll(watch, 100.5, 0));
    CHECK(!watch_poll(watch, 101, 0)); // seen, and perhaps being written
    write_text(folder / "show.lua", "x = 2000");
    CHECK(!watch_poll(watch, 101.12, 0));
    CHECK(watch_poll(watch, 101.24, 0));
    CHECK(!watch_poll(watch, 103, 0));
    write_text(folder / "later.png", "x");
    CHECK(!watch_poll(watch, 104, 0));
    CHECK(watch_poll(watch, 104.2, 0));
    watch_close(watch);
}
