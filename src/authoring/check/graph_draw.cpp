#include "authoring/check/graph.h"

#include "content/owners.h"
#include "content/reason.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstring>
#include <ctime>
#include <map>
#include <spawn.h>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>

constexpr long longest_wait_ms = 120'000;

// ---- pictures ---------------------------------------------------------------------------

static std::string base64(const std::vector<uint8_t>& bytes)
{
    constexpr char letters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (size_t at = 0; at < bytes.size(); at += 3) {
        const size_t left = std::min<size_t>(bytes.size() - at, 3);
        uint32_t three = 0;
        for (size_t i = 0; i < 3; ++i)
            three = three << 8 | (i < left ? bytes[at + i] : 0u);
        for (size_t i = 0; i < 4; ++i)
            text += i <= left ? letters[three >> (18 - 6 * i) & 63] : '=';
    }
    return text;
}

// The value of an element's attribute; empty: none.
static std::string_view value_of(std::string_view element, std::string_view name)
{
    const size_t at = element.find(" " + std::string(name) + "=\"");
    if (at == std::string_view::npos)
        return {};
    const std::string_view rest = element.substr(at + name.size() + 3);
    return rest.substr(0, rest.find('"'));
}

// Takes a number off the front, and the comma or blank behind it.
static bool take_number(std::string_view& text, double& number)
{
    const auto end = std::from_chars(text.data(), text.data() + text.size(), number);
    if (end.ec != std::errc())
        return false;
    text.remove_prefix(std::min(text.size(), static_cast<size_t>(end.ptr - text.data()) + 1));
    return true;
}

static std::string attribute(const char* name, double value)
{
    char text[64];
    const std::string_view number(text, static_cast<size_t>(std::to_chars(text, text + sizeof text, value).ptr - text));
    return std::string(" ") + name + "=\"" + std::string(number) + "\"";
}

// A picture in the place of a polygon, with an edge for those that are white.
static std::string image_element(std::string_view polygon, const std::vector<uint8_t>& png)
{
    std::string_view points = value_of(polygon, "points");
    double left = 1e9;
    double top = 1e9;
    double right = -1e9;
    double bottom = -1e9;
    double x = 0;
    double y = 0;
    while (take_number(points, x) && take_number(points, y)) {
        left = std::min(left, x);
        right = std::max(right, x);
        top = std::min(top, y);
        bottom = std::max(bottom, y);
    }
    const std::string box = attribute("x", left) + attribute("y", top) + attribute("width", right - left)
        + attribute("height", bottom - top);
    return "<image" + box + " xlink:href=\"data:image/png;base64," + base64(png) + "\"/><rect" + box
        + " fill=\"none\" stroke=\"#dde4ea\"/>";
}

std::string put_graph_pictures(const std::string& svg, const std::vector<graph_picture>& pictures)
{
    std::map<std::string_view, const graph_picture*> by_color;
    for (const graph_picture& picture : pictures)
        by_color[picture.color] = &picture;
    constexpr std::string_view begin = "<polygon ";
    constexpr std::string_view end = "/>";
    std::string out;
    for (size_t at = 0; at < svg.size();) {
        const size_t found = std::min(svg.find(begin, at), svg.size());
        const size_t close = svg.find(end, found);
        const size_t next = close != std::string::npos ? close + end.size() : svg.size();
        const std::string_view element = std::string_view(svg).substr(found, next - found);
        const auto picture = by_color.find(value_of(element, "fill"));
        out.append(svg, at, found - at);
        out += picture != by_color.end() ? image_element(element, picture->second->png) : std::string(element);
        at = next;
    }
    return out;
}

std::string plain_dot(const document_graph& graph)
{
    constexpr std::string_view grey = "#dde4ea";
    std::string text = graph.dot;
    size_t at = 0;
    for (const graph_picture& picture : graph.pictures) {
        at = text.find(picture.color, at);
        if (at == std::string::npos)
            break;
        text.replace(at, picture.color.size(), grey);
    }
    return text;
}

// ---- the program dot ----------------------------------------------------------------------

static std::string text_in(FILE* file)
{
    std::string text;
    char block[65536];
    std::rewind(file);
    while (const size_t size = std::fread(block, 1, sizeof block, file))
        text.append(block, size);
    return text;
}

// Starts dot between three files; 0, or why not.
static int start_dot(FILE* in, FILE* out, FILE* errors, pid_t& process)
{
    posix_spawn_file_actions_t actions;
    if (const int error = posix_spawn_file_actions_init(&actions); error != 0)
        return error;
    posix_spawn_file_actions_adddup2(&actions, fileno(in), STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, fileno(out), STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, fileno(errors), STDERR_FILENO);
    char program[] = "dot";
    char format[] = "-Tsvg";
    char* arguments[] = {program, format, nullptr};
    const int error = posix_spawnp(&process, program, &actions, nullptr, arguments, environ);
    posix_spawn_file_actions_destroy(&actions);
    return error;
}

// Its status; -1 after too long a time, when it is ended.
static int wait_for(pid_t process)
{
    constexpr long step_ms = 5;
    for (long waited = 0; waited < longest_wait_ms; waited += step_ms) {
        int status = 0;
        const pid_t ended = waitpid(process, &status, WNOHANG);
        if (ended == process)
            return status;
        if (ended < 0 && errno != EINTR)
            return -1;
        const timespec pause = {0, step_ms * 1'000'000};
        nanosleep(&pause, nullptr);
    }
    kill(process, SIGKILL);
    waitpid(process, nullptr, 0);
    return -1;
}

static std::string start_problem(int error)
{
    if (error == ENOENT)
        return "The program dot is not there: install the package graphviz, or write to a file whose name ends in "
               "\".dot\".";
    return std::string("The program dot cannot be started: ") + given_reason(std::strerror(error)) + ".";
}

static std::string end_problem(int status, FILE* errors)
{
    if (status == -1)
        return "The program dot took longer than two minutes and was ended.";
    const std::string told = text_in(errors);
    return std::string("The program dot failed: ") + given_reason(told.substr(0, told.find('\n')).c_str()) + ".";
}

bool draw_graph(const document_graph& graph, std::string& svg, std::string& problem)
{
    const owned_file in(std::tmpfile());
    const owned_file out(std::tmpfile());
    const owned_file errors(std::tmpfile());
    if (!in || !out || !errors || std::fwrite(graph.dot.data(), 1, graph.dot.size(), in.get()) != graph.dot.size()
        || std::fflush(in.get()) != 0) {
        problem = std::string("The graph cannot be kept for dot: ") + given_reason(std::strerror(errno)) + ".";
        return false;
    }
    std::rewind(in.get());
    pid_t process = 0;
    if (const int error = start_dot(in.get(), out.get(), errors.get(), process); error != 0) {
        problem = start_problem(error);
        return false;
    }
    const int status = wait_for(process);
    const std::string drawing = status == 0 ? text_in(out.get()) : "";
    if (drawing.find("</svg>") == std::string::npos) {
        problem = end_problem(status, errors.get());
        return false;
    }
    svg = put_graph_pictures(drawing, graph.pictures);
    problem.clear();
    return true;
}
