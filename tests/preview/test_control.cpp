#include "tools/preview/control.h"

#include "scratch_folder.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

using texts = std::vector<std::string>;

struct open_control {
    scratch_folder folder;
    control_socket control;
    std::string problem;

    open_control()
    {
        REQUIRE(control_open(control, folder / "control", problem));
    }
    ~open_control()
    {
        control_close(control);
    }
};

// A client that never waits.
struct client_end {
    int descriptor;

    explicit client_end(const std::string& path)
        : descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0))
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        REQUIRE(path.size() < sizeof address.sun_path);
        path.copy(address.sun_path, path.size());
        REQUIRE(connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0);
    }
    ~client_end()
    {
        close(descriptor);
    }
    client_end(const client_end&) = delete;
    client_end& operator=(const client_end&) = delete;

    size_t say(const std::string& text) const
    {
        const ssize_t count = send(descriptor, text.data(), text.size(), MSG_NOSIGNAL);
        return count < 0 ? 0 : static_cast<size_t>(count);
    }
    // What has come; "(end)" when the other side is closed.
    std::string hear() const
    {
        std::string text;
        char bytes[64 * 1024];
        ssize_t count = 0;
        while ((count = recv(descriptor, bytes, sizeof bytes, 0)) > 0)
            text.append(bytes, static_cast<size_t>(count));
        return count == 0 ? text + "(end)" : text;
    }
};

} // namespace

// Everything that a client says, one line of it after the other.
static texts lines_of(const std::vector<control_line>& lines)
{
    texts found;
    for (const control_line& line : lines)
        found.push_back(line.text);
    return found;
}

// ---- the file -------------------------------------------------------------------------------------

TEST_CASE("a control socket can be opened by its user alone")
{
    const mode_t mask = umask(0);
    open_control c;
    CHECK(umask(mask) == 0);
    struct stat made = {};
    REQUIRE(lstat((c.folder / "control").c_str(), &made) == 0);
    CHECK(S_ISSOCK(made.st_mode));
    CHECK((made.st_mode & 07777) == 0600);
}

TEST_CASE("a socket that nobody serves any more is replaced")
{
    open_control c;
    close(c.control.descriptor);
    c.control.descriptor = -1;
    control_socket next;
    CHECK(control_open(next, c.folder / "control", c.problem));
    const client_end client(c.folder / "control");
    client.say("a\n");
    CHECK(lines_of(control_poll(next)) == texts{"a"});
    control_close(next);
    CHECK(!fs::exists(c.folder / "control"));
}

TEST_CASE("a socket that is served is left to its program")
{
    open_control c;
    control_socket next;
    CHECK(!control_open(next, c.folder / "control", c.problem));
    CHECK(c.problem.find("another program serves the socket") != std::string::npos);
    control_close(next);
    const client_end client(c.folder / "control");
    client.say("a\n");
    CHECK(lines_of(control_poll(c.control)) == texts{"a"});
}

TEST_CASE("a file that is no socket stays, and so does a link")
{
    scratch_folder folder;
    write_text(folder / "notes", "mine");
    fs::create_symlink("notes", folder / "link");
    for (const char* name : {"notes", "link"}) {
        control_socket c;
        std::string problem;
        CHECK(!control_open(c, folder / name, problem));
        CHECK(problem.find("is no socket: it stays") != std::string::npos);
    }
    CHECK(fs::file_size(folder / "notes") == 4);
    CHECK(fs::is_symlink(folder / "link"));
}

TEST_CASE("names that no socket can have are one sentence")
{
    scratch_folder folder;
    std::string problem;
    control_socket c;
    CHECK(!control_open(c, "", problem));
    CHECK(problem == "the name of the control socket is empty");
    CHECK(!control_open(c, "/tmp/" + std::string(103, 'x'), problem));
    CHECK(problem.find("has 108 bytes, and a socket's has at most 107") != std::string::npos);
    CHECK(!control_open(c, folder / "no/control", problem));
    CHECK(problem.find("No such file or directory") != std::string::npos);
}

TEST_CASE("closing leaves a file that another program has put in the socket's place")
{
    scratch_folder folder;
    control_socket c;
    std::string problem;
    REQUIRE(control_open(c, folder / "control", problem));
    fs::remove(folder / "control");
    write_text(folder / "control", "another's");
    control_close(c);
    CHECK(fs::exists(folder / "control"));
}

// ---- lines -------------------------------------------------------------------------------------------

TEST_CASE("lines come whole, whatever parts they are sent in, and empty ones are none")
{
    open_control c;
    const client_end client(c.folder / "control");
    CHECK(control_poll(c.control).empty());
    client.say("{\"do\":");
    CHECK(control_poll(c.control).empty());
    client.say("\"status\"}\r\n\n \t\nsecond\nthi");
    CHECK(lines_of(control_poll(c.control)) == texts{"{\"do\":\"status\"}", "second"});
    client.say("rd\n");
    CHECK(lines_of(control_poll(c.control)) == texts{"third"});
}

TEST_CASE("an answer goes to the client that asked")
{
    open_control c;
    const client_end one(c.folder / "control");
    const client_end two(c.folder / "control");
    one.say("from one\n");
    two.say("from two\n");
    for (const control_line& line : control_poll(c.control))
        control_answer(c.control, line.client, "to" + line.text.substr(4));
    CHECK(one.hear() == "to one\n");
    CHECK(two.hear() == "to two\n");
    control_answer(c.control, 12345, "to nobody");
}

TEST_CASE("a line of 65,536 bytes is taken, and a longer one is told once and passed over")
{
    open_control c;
    const client_end client(c.folder / "control");
    client.say(std::string(65536, 'x') + "\n");
    size_t taken = 0;
    for (int turn = 0; turn < 3; ++turn)
        for (const control_line& line : control_poll(c.control))
            taken = line.text.size();
    CHECK(taken == 65536);
    for (int part = 0; part < 20; ++part) {
        client.say(std::string(40000, 'y'));
        CHECK(control_poll(c.control).empty());
        CHECK(c.control.clients[0].received.size() <= 65536);
    }
    client.say("y\nnext\n");
    CHECK(lines_of(control_poll(c.control)) == texts{"next"});
    CHECK(client.hear() == "{\"ok\":false,\"error\":\"a request is one line of at most 65,536 bytes\"}\n");
}

TEST_CASE("a client that ends its side still gets its answers, and a last line may lack its end")
{
    open_control c;
    const client_end client(c.folder / "control");
    client.say("first\nlast");
    shutdown(client.descriptor, SHUT_WR);
    const std::vector<control_line> lines = control_poll(c.control);
    CHECK(lines_of(lines) == texts{"first", "last"});
    control_answer(c.control, lines[0].client, "1");
    CHECK(control_poll(c.control).empty());
    CHECK(client.hear() == "1\n");
    control_answer(c.control, lines[1].client, "2");
    CHECK(control_poll(c.control).empty());
    CHECK(client.hear() == "2\n(end)");
    CHECK(c.control.clients.empty());
}

TEST_CASE("what a client sent before it went is handed out, and its waits are forgotten")
{
    open_control c;
    {
        const client_end client(c.folder / "control");
        client.say("wait\n");
        const std::vector<control_line> lines = control_poll(c.control);
        REQUIRE(lines.size() == 1);
        c.control.waits.push_back({.client = lines[0].client, .id = {}, .file = {}});
        client.say("pause\n");
    }
    CHECK(lines_of(control_poll(c.control)) == texts{"pause"});
    CHECK(c.control.clients.empty());
    CHECK(c.control.waits.empty());
}

TEST_CASE("a client that reads nothing is dropped when 4 MiB wait for it, and others go on")
{
    open_control c;
    const client_end deaf(c.folder / "control");
    const client_end other(c.folder / "control");
    deaf.say("a\n");
    other.say("b\n");
    const std::vector<control_line> lines = control_poll(c.control);
    REQUIRE(lines.size() == 2);
    const std::string megabyte(1024 * 1024, 'z');
    for (int i = 0; i < 4; ++i)
        control_answer(c.control, lines[0].client, megabyte);
    static_cast<void>(control_poll(c.control));
    CHECK(c.control.clients.size() == 2);
    for (int i = 0; i < 2; ++i)
        control_answer(c.control, lines[0].client, megabyte);
    static_cast<void>(control_poll(c.control));
    CHECK(c.control.clients.size() == 1);
    control_answer(c.control, lines[1].client, "still here");
    CHECK(other.hear() == "still here\n");
}

TEST_CASE("a long answer arrives whole at a client that reads it in parts")
{
    open_control c;
    const client_end client(c.folder / "control");
    client.say("a\n");
    const std::vector<control_line> lines = control_poll(c.control);
    REQUIRE(lines.size() == 1);
    const std::string text(3 * 1024 * 1024, 'z');
    control_answer(c.control, lines[0].client, text);
    std::string heard;
    for (int turn = 0; turn < 1000 && heard.size() <= text.size(); ++turn) {
        heard += client.hear();
        static_cast<void>(control_poll(c.control));
    }
    CHECK(heard == text + "\n");
}

TEST_CASE("sixty-four clients are served, and one more is told so")
{
    open_control c;
    std::vector<std::unique_ptr<client_end>> clients;
    for (int turn = 0; turn < 8; ++turn) {
        for (int i = 0; i < 8; ++i)
            clients.push_back(std::make_unique<client_end>(c.folder / "control"));
        CHECK(control_poll(c.control).empty());
    }
    const client_end late(c.folder / "control");
    CHECK(control_poll(c.control).empty());
    CHECK(late.hear() == "{\"ok\":false,\"error\":\"64 clients are connected already\"}\n(end)");
    clients[63]->say("the last\n");
    CHECK(lines_of(control_poll(c.control)) == texts{"the last"});
}

TEST_CASE("without a socket nothing comes, and closing harms nothing")
{
    control_socket c;
    CHECK(control_poll(c).empty());
    control_close(c);
    control_close(c);
}
