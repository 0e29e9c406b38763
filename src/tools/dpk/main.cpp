// dpk: lists, takes apart and writes packs, for demo makers.
//
// Exit status: 0 done; 1 something could not be done; 2 the command line is wrong.
// What it tells goes to standard output, what went wrong to standard error.

#include "content/file_bytes.h"
#include "content/owners.h"
#include "content/pack.h"
#include "content/xmlz.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <span>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <unordered_set>
#include <vector>

enum exit_status : int { exit_done = 0, exit_failed = 1, exit_usage = 2 };

static const char usage_text[] = R"(dpk: lists, takes apart and writes packs.

  dpk list PACK                        every entry's size in bytes and name
  dpk extract PACK [PREFIX [NAME...]]  writes all entries, or those named, to the
                                       files PREFIX + name ("out/" is a directory,
                                       which must exist; "" is here)
  dpk write PACK FILE...               writes a new pack of these files, in order
  dpk write PACK --keep FILE...        keeps the entries of PACK, replaces those of
                                       the same name, and appends the others
  dpk remove PACK NAME...              takes entries out of PACK
  dpk wrap FILE ENTRY                  puts a document or mesh into the envelope of
                                       an .xmlz entry, uncompressed
  dpk unwrap ENTRY FILE                takes it out of the envelope
  dpk --help                           this text

An entry is called like its file, without the directories. Behind "-C DIR" files
are looked for below DIR and are called as they are given: with
"write demo.dpk -C assets sky/up.png" the entry sky/up.png comes from the file
assets/sky/up.png. Names have at most 31 bytes, do not begin with "/" and have no
".." in them. "--" ends the options.

Files that exist are overwritten, but never the pack while it is read, a file that
goes into the pack, nor a file that is no pack where a pack is to be written.
)";

// ---- small helpers -----------------------------------------------------------------

using file_list = std::unique_ptr<pack_file_list, decltype([](pack_file_list* list) { pack_file_list_free(list); })>;

static char* copy_text(const std::string& text)
{
    return strdup(text.c_str());
}

static exit_status usage_error(const char* problem, const char* what = "")
{
    std::fprintf(stderr, "Error: %s%s. \"dpk --help\" tells more.\n", problem, what);
    return exit_usage;
}

static bool begins_like_a_pack(FILE* file)
{
    char head[pack_index_offset] = {};
    return std::fread(head, 1, sizeof head, file) == sizeof head && std::memcmp(head, "DP\x01", sizeof head) == 0;
}

static owned_file open_pack(const char* path)
{
    struct stat status;
    owned_file pack(stat(path, &status) == 0 && S_ISREG(status.st_mode) ? std::fopen(path, "rb") : nullptr);
    if (!pack)
        std::fprintf(stderr, "Error: cannot open %s!\n", path);
    else if (!begins_like_a_pack(pack.get()))
        std::fprintf(stderr, "Warning: %s does not begin like a pack.\n", path);
    return pack;
}

// False, with a line, when writing a pack to `path` would overwrite something else.
static bool may_become_pack(const char* path)
{
    struct stat status;
    if (stat(path, &status) != 0 || status.st_size == 0)
        return true;
    const owned_file file(S_ISREG(status.st_mode) ? std::fopen(path, "rb") : nullptr);
    const bool is_pack = file && begins_like_a_pack(file.get());
    if (!is_pack)
        std::fprintf(stderr, "Error: %s exists and is no pack: it is left as it is.\n", path);
    return is_pack;
}

// The names of a pack, each once: of two entries with one name the first counts.
static file_list list_of_pack(FILE* pack)
{
    file_list list(pack_file_list_new());
    const file_list all(pack_list_names(pack));
    std::unordered_set<std::string> seen;
    pack_file_list* last = list.get();
    for (const pack_file_list* node = all.get(); node && node->name; node = node->next)
        if (seen.insert(node->name).second)
            last = pack_file_list_append(last, copy_text(node->name), nullptr);
    return list;
}

// The number of the entry called `name`, from 0; the list's length when there is none.
static uint32_t index_of(const pack_file_list* list, const char* name)
{
    uint32_t index = 0;
    for (; list && list->name && std::strcmp(list->name, name) != 0; list = list->next)
        ++index;
    return index;
}

static pack_file_list* node_at(pack_file_list* list, uint32_t index)
{
    for (; index > 0; --index)
        list = list->next;
    return list;
}

// A name from a pack may hold anything: what a terminal would act on is shown as "?".
static std::string printable(const char* name)
{
    std::string text = name;
    for (char& byte : text)
        if (static_cast<unsigned char>(byte) < 32 || byte == 127)
            byte = '?';
    return text;
}

// ---- list, extract, remove -----------------------------------------------------------

static exit_status run_list(std::span<char* const> arguments)
{
    if (arguments.size() != 1)
        return usage_error("list takes one pack");
    const owned_file pack = open_pack(arguments[0]);
    if (!pack)
        return exit_failed;
    exit_status result = exit_done;
    pack_slot slot;
    for (uint32_t index = 0; pack_read_slot(pack.get(), index, slot); ++index) {
        if (slot.damaged)
            result = exit_failed;
        const std::string size = slot.damaged ? "damaged" : std::to_string(slot.size);
        std::printf("%10s  %s\n", size.c_str(), printable(slot.name).c_str());
    }
    return result;
}

static exit_status run_extract(std::span<char* const> arguments)
{
    if (arguments.empty())
        return usage_error("extract takes a pack");
    const owned_file pack = open_pack(arguments[0]);
    if (!pack)
        return exit_failed;
    const char* prefix = arguments.size() > 1 ? arguments[1] : "";
    if (arguments.size() <= 2)
        return pack_extract_all(pack.get(), prefix) ? exit_done : exit_failed;

    const file_list list(pack_file_list_new());
    for (const char* name : arguments.subspan(2))
        pack_file_list_append(list.get(), copy_text(name), nullptr);
    return pack_export_list(list.get(), pack.get(), prefix) ? exit_done : exit_failed;
}

static exit_status run_remove(std::span<char* const> arguments)
{
    if (arguments.size() < 2)
        return usage_error("remove takes a pack and the names of entries");
    const owned_file pack = open_pack(arguments[0]);
    if (!pack || !may_become_pack(arguments[0]))
        return exit_failed;
    file_list list = list_of_pack(pack.get());
    for (const char* name : arguments.subspan(1)) {
        const uint32_t index = index_of(list.get(), name);
        if (!node_at(list.get(), index)->name) {
            std::fprintf(stderr, "Error: the entry \"%s\" is not in the pack.\n", name);
            return exit_failed;
        }
        list.reset(pack_file_list_remove(list.release(), index));
    }
    return pack_write_in_place(list.get(), arguments[0], pack.get()) ? exit_done : exit_failed;
}

// ---- write -----------------------------------------------------------------------------

struct write_order {
    const char* pack_path;
    bool keep;
    struct source {
        std::string directory; // ends in "/", or is empty
        std::string name;
    };
    std::vector<source> sources;
};

static write_order::source source_of(const std::string& path, const char* below)
{
    if (below) {
        const std::string directory = below;
        return {directory.empty() || directory.back() == '/' ? directory : directory + "/", path};
    }
    const size_t name_at = path.rfind('/') + 1; // 0 when there is no directory
    return {path.substr(0, name_at), path.substr(name_at)};
}

static exit_status read_write_order(std::span<char* const> arguments, write_order& order)
{
    const char* below = nullptr;
    bool options = true;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::string argument = arguments[i];
        if (options && argument == "--") {
            options = false;
        } else if (options && argument == "--keep") {
            order.keep = true;
        } else if (options && argument == "-C") {
            if (++i == arguments.size())
                return usage_error("-C needs a directory");
            below = arguments[i];
        } else if (options && argument.size() > 1 && argument[0] == '-') {
            return usage_error("unknown option ", arguments[i]);
        } else if (!order.pack_path) {
            order.pack_path = arguments[i];
        } else {
            order.sources.push_back(source_of(argument, below));
        }
    }
    return order.pack_path && !order.sources.empty() ? exit_done : usage_error("write takes a pack and files");
}

// False, with a line, for names that no entry may have and for names given twice.
static bool names_are_accepted(const write_order& order)
{
    std::unordered_set<std::string> seen;
    for (const write_order::source& source : order.sources) {
        const char* problem = pack_name_problem(source.name.c_str());
        if (!problem && !seen.insert(source.name).second)
            problem = "is given twice";
        if (problem) {
            std::fprintf(stderr, "Error: the name \"%s\" %s.\n", source.name.c_str(), problem);
            return false;
        }
    }
    return true;
}

static exit_status run_write(std::span<char* const> arguments)
{
    write_order order = {};
    const exit_status understood = read_write_order(arguments, order);
    if (understood != exit_done)
        return understood;
    if (!names_are_accepted(order) || !may_become_pack(order.pack_path))
        return exit_failed;

    const owned_file old_pack = order.keep ? open_pack(order.pack_path) : nullptr;
    if (order.keep && !old_pack)
        return exit_failed;
    const file_list list = order.keep ? list_of_pack(old_pack.get()) : file_list(pack_file_list_new());
    for (const write_order::source& source : order.sources) {
        pack_file_list* node = node_at(list.get(), index_of(list.get(), source.name.c_str()));
        if (node->name)
            node->source_dir = copy_text(source.directory); // replaced where it stands
        else
            pack_file_list_append(node, copy_text(source.name), copy_text(source.directory));
    }
    const bool written = order.keep ? pack_write_in_place(list.get(), order.pack_path, old_pack.get())
                                    : pack_write(list.get(), order.pack_path, nullptr);
    return written ? exit_done : exit_failed;
}

// ---- envelopes -----------------------------------------------------------------------

static bool same_file(const char* a, const char* b)
{
    struct stat first;
    struct stat second;
    return stat(a, &first) == 0 && stat(b, &second) == 0 && first.st_dev == second.st_dev
        && first.st_ino == second.st_ino;
}

static exit_status write_file(const char* path, const uint8_t* bytes, uint32_t size)
{
    owned_file file(std::fopen(path, "wb"));
    bool written = file && std::fwrite(bytes, 1, size, file.get()) == size;
    written = file && std::fclose(file.release()) == 0 && written;
    if (!written)
        std::fprintf(stderr, "Error: cannot write %s: %s.\n", path, std::strerror(errno));
    return written ? exit_done : exit_failed;
}

static exit_status run_envelope(std::span<char* const> arguments, bool wrap)
{
    if (arguments.size() != 2)
        return usage_error(wrap ? "wrap takes a file and an entry" : "unwrap takes an entry and a file");
    uint8_t* bytes = nullptr;
    uint32_t size = 0;
    if (!read_whole_file(arguments[0], UINT32_MAX - 1, &bytes, &size)) {
        std::fprintf(stderr, "Error: cannot open %s!\n", arguments[0]);
        return exit_failed;
    }
    const owned_block<uint8_t> input(bytes);
    if (same_file(arguments[0], arguments[1])) {
        std::fprintf(stderr, "Error: %s is the file that is being read.\n", arguments[1]);
        return exit_failed;
    }
    uint8_t* result = nullptr;
    uint32_t result_size = 0;
    xmlz_status status = xmlz_ok;
    if (wrap)
        result = xmlz_store(input.get(), size, &result_size);
    else
        status = xmlz_inflate(input.get(), size, &result, &result_size);
    const owned_block<uint8_t> output(result);
    if (!output) {
        const char* problem = wrap ? "is larger than 256 MiB" : xmlz_status_text(status);
        std::fprintf(stderr, "Error: %s %s.\n", arguments[0], problem);
        return exit_failed;
    }
    return write_file(arguments[1], output.get(), result_size);
}

// ---- the command line ------------------------------------------------------------------

int main(int count, char** values)
{
    std::setvbuf(stdout, nullptr, _IOLBF, 0); // so that lines keep their order beside standard error's
    const std::span<char* const> arguments(values, static_cast<size_t>(count));
    if (count < 2)
        return usage_error("a command is missing");
    const std::string command = arguments[1];
    const std::span<char* const> rest = arguments.subspan(2);
    if (command == "--help" || command == "-h" || command == "help") {
        std::fputs(usage_text, stdout);
        return exit_done;
    }
    if (command == "list")
        return run_list(rest);
    if (command == "extract")
        return run_extract(rest);
    if (command == "write")
        return run_write(rest);
    if (command == "remove")
        return run_remove(rest);
    if (command == "wrap" || command == "unwrap")
        return run_envelope(rest, command == "wrap");
    return usage_error("unknown command ", arguments[1]);
}
