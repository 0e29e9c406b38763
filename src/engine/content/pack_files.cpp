// Writing packs, and taking them apart into files.

#include "content/owners.h"
#include "content/pack.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <unordered_set>
#include <vector>

static constexpr uint8_t magic[pack_index_offset] = {0x44, 0x50, 0x01};
static constexpr uint64_t offset_count = uint64_t{1} << 32; // what 32-bit offsets can tell apart

// ---- names and files ---------------------------------------------------------------

const char* pack_name_problem(const char* name)
{
    const std::string_view text = name ? name : "";
    if (text.empty())
        return "is empty";
    if (text.size() >= pack_name_size)
        return "is longer than 31 bytes";
    if (text.front() == '/')
        return "is absolute";
    if (text.find("..") != std::string_view::npos)
        return "has \"..\" in it";
    return nullptr;
}

static bool name_is_accepted(const char* name)
{
    const char* problem = pack_name_problem(name);
    if (problem)
        std::fprintf(stderr, "Error: the name \"%s\" %s.\n", name, problem);
    return !problem;
}

// Which file something is, whatever its path; `known` is false for what is none.
struct file_identity {
    bool known;
    dev_t device;
    ino_t number;
};

static file_identity identity(const struct stat& status)
{
    return {true, status.st_dev, status.st_ino};
}

static file_identity identity_of_path(const char* path)
{
    struct stat status;
    return stat(path, &status) == 0 ? identity(status) : file_identity{};
}

static file_identity identity_of_stream(FILE* file)
{
    struct stat status;
    return file && fstat(fileno(file), &status) == 0 ? identity(status) : file_identity{};
}

static bool same_file(const file_identity& a, const file_identity& b)
{
    return a.known && b.known && a.device == b.device && a.number == b.number;
}

// Copies exactly `size` bytes; false when the source has fewer or more, or the
// target takes no more.
static bool copy_stream(FILE* from, FILE* to, uint64_t size)
{
    std::vector<uint8_t> block(65536);
    while (size > 0) {
        const size_t length = static_cast<size_t>(std::min<uint64_t>(size, block.size()));
        if (std::fread(block.data(), 1, length, from) != length)
            return false;
        if (std::fwrite(block.data(), 1, length, to) != length)
            return false;
        size -= length;
    }
    return std::fgetc(from) == EOF && !std::ferror(from);
}

// A file to be read, and its size; null, with a line, when it is no plain file.
// That is asked before opening: opening a named pipe waits for its other end.
static owned_file open_source(const std::string& path, uint64_t& size, file_identity& which)
{
    struct stat status;
    const bool exists = stat(path.c_str(), &status) == 0;
    if (exists && !S_ISREG(status.st_mode)) {
        std::fprintf(stderr, "Error: %s is not a file.\n", path.c_str());
        return nullptr;
    }
    owned_file file(exists ? std::fopen(path.c_str(), "rb") : nullptr);
    if (!file) {
        std::fprintf(stderr, "Error: cannot open %s: %s.\n", path.c_str(), std::strerror(errno));
        return nullptr;
    }
    size = static_cast<uint64_t>(status.st_size);
    which = identity(status);
    return file;
}

static bool close_written(owned_file file)
{
    const bool clean = !std::ferror(file.get());
    return std::fclose(file.release()) == 0 && clean;
}

// ---- writing -----------------------------------------------------------------------

// One entry to be written: from a file on disk, or from memory.
struct pack_source {
    const char* name; // the list's
    std::string path; // empty: from memory
    owned_block<uint8_t> bytes;
    uint64_t size;
};

static bool prepare_file(pack_source& source, const file_identity& output)
{
    file_identity which = {};
    if (!open_source(source.path, source.size, which))
        return false;
    if (same_file(which, output))
        std::fprintf(stderr, "Error: %s is the pack to be written.\n", source.path.c_str());
    return !same_file(which, output);
}

static bool prepare_old_entry(pack_source& source, FILE* old_pack)
{
    uint8_t* bytes = nullptr;
    uint32_t size = 0;
    const char* problem = "";
    switch (pack_read_entry(old_pack, source.name, &bytes, &size)) {
    case pack_found:
        source.bytes.reset(bytes);
        source.size = size;
        return true;
    case pack_missing:
        problem = "is not in the pack";
        break;
    case pack_damaged:
        problem = "is damaged";
        break;
    case pack_out_of_memory:
        problem = "does not fit in memory";
        break;
    }
    std::fprintf(stderr, "Error: the entry \"%s\" %s.\n", source.name, problem);
    return false;
}

// Looks at everything that is to be written, and takes what comes from the old pack.
static bool prepare_sources(
    const pack_file_list* list, const char* out_path, FILE* old_pack, bool tell, std::vector<pack_source>& sources)
{
    int old_count = 0;
    for (const pack_file_list* node = list; node && node->name; node = node->next) {
        if (!name_is_accepted(node->name))
            return false;
        old_count += node->source_dir == nullptr;
    }
    if (tell)
        std::printf("count = %d\n", old_count);

    const file_identity output = identity_of_path(out_path);
    uint64_t total = pack_index_offset + pack_name_size;
    for (const pack_file_list* node = list; node && node->name; node = node->next) {
        pack_source source = {node->name, node->source_dir ? std::string(node->source_dir) + node->name : "", {}, 0};
        if (node->source_dir) {
            if (!prepare_file(source, output))
                return false;
        } else {
            if (tell)
                std::printf("NAME: %s\n", node->name);
            if (!prepare_old_entry(source, old_pack))
                return false;
        }
        total += pack_slot_size + source.size;
        if (total > offset_count) {
            std::fputs("Error: a pack holds at most 4 GiB.\n", stderr);
            return false;
        }
        sources.push_back(std::move(source));
    }
    return true;
}

static void put_big_endian(uint8_t* bytes, uint32_t value)
{
    bytes[0] = static_cast<uint8_t>(value >> 24);
    bytes[1] = static_cast<uint8_t>(value >> 16);
    bytes[2] = static_cast<uint8_t>(value >> 8);
    bytes[3] = static_cast<uint8_t>(value);
}

// Everything in front of the entries' bytes.
static std::vector<uint8_t> make_head(const std::vector<pack_source>& sources)
{
    std::vector<uint8_t> head(pack_index_offset + pack_slot_size * sources.size() + pack_name_size);
    std::memcpy(head.data(), magic, sizeof magic);
    uint32_t start = static_cast<uint32_t>(head.size());
    uint8_t* slot = head.data() + pack_index_offset;
    for (const pack_source& source : sources) {
        const auto size = static_cast<uint32_t>(source.size);
        std::memcpy(slot, source.name, std::strlen(source.name));
        put_big_endian(slot + pack_name_size, start);
        put_big_endian(slot + pack_name_size + 4, start + size - 1);
        start += size;
        slot += pack_slot_size;
    }
    return head;
}

static bool write_file_source(const pack_source& source, FILE* out, bool tell)
{
    uint64_t size = 0;
    file_identity which = {};
    const owned_file file = open_source(source.path, size, which);
    if (!file)
        return false;
    if (tell)
        std::printf("size of the file: %d\n", static_cast<int>(source.size));
    if (copy_stream(file.get(), out, source.size))
        return true;
    std::fprintf(stderr, "Error: cannot copy %s into the pack.\n", source.path.c_str());
    return false;
}

static bool write_old_entry(const pack_source& source, FILE* out, bool tell)
{
    if (tell)
        std::printf("size=%d\n", static_cast<int>(source.size));
    return std::fwrite(source.bytes.get(), 1, static_cast<size_t>(source.size), out) == source.size;
}

static bool write_pack(const pack_file_list* list, const char* out_path, FILE* old_pack, bool tell)
{
    std::vector<pack_source> sources;
    if (!prepare_sources(list, out_path, old_pack, tell, sources))
        return false;
    const std::vector<uint8_t> head = make_head(sources);

    const int descriptor = open(out_path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    owned_file out(descriptor < 0 ? nullptr : fdopen(descriptor, "wb"));
    if (!out) {
        std::fprintf(stderr, "Error: cannot write %s: %s.\n", out_path, std::strerror(errno));
        if (descriptor >= 0)
            close(descriptor);
        return false;
    }
    bool written = std::fwrite(head.data(), 1, head.size(), out.get()) == head.size();
    for (const pack_source& source : sources) {
        if (!written)
            break;
        written = source.path.empty() ? write_old_entry(source, out.get(), tell)
                                      : write_file_source(source, out.get(), tell);
    }
    written = close_written(std::move(out)) && written;
    if (!written)
        std::fprintf(stderr, "Error: %s is incomplete.\n", out_path);
    return written;
}

bool pack_write(const pack_file_list* list, const char* out_path, FILE* old_pack)
{
    return write_pack(list, out_path, old_pack, false);
}

bool pack_write_in_place(const pack_file_list* list, const char* out_path, FILE* old_pack)
{
    return write_pack(list, out_path, old_pack, true);
}

// ---- taking apart ------------------------------------------------------------------

// Makes the directories that the entry's own name asks for, behind the prefix, and
// passes through no symbolic link on the way.
static bool make_directories(const std::string& path, size_t name_at)
{
    for (size_t slash = path.find('/', name_at); slash != std::string::npos; slash = path.find('/', slash + 1)) {
        const std::string directory = path.substr(0, slash);
        mkdir(directory.c_str(), 0700);
        struct stat status;
        if (lstat(directory.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
            std::fprintf(stderr, "Error: %s is not a directory.\n", directory.c_str());
            return false;
        }
    }
    return true;
}

// Opens prefix + name for writing, empty. Null, with a line, for a symbolic link,
// for what is no plain file, and for the pack and the file that bytes come from.
static owned_file open_target(
    const char* prefix, const char* name, const file_identity& pack, const file_identity& source)
{
    const std::string path = std::string(prefix) + name;
    if (!make_directories(path, std::strlen(prefix)))
        return nullptr;
    const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600);
    if (descriptor < 0) {
        const char* reason = errno == ELOOP ? "it is a symbolic link" : std::strerror(errno);
        std::fprintf(stderr, "Error: cannot write %s: %s.\n", path.c_str(), reason);
        return nullptr;
    }
    struct stat status;
    const char* problem = nullptr;
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode))
        problem = "it is not a file";
    else if (same_file(identity(status), pack) || same_file(identity(status), source))
        problem = "it is being read";
    else if (ftruncate(descriptor, 0) != 0)
        problem = "it cannot be emptied";
    owned_file file(problem ? nullptr : fdopen(descriptor, "wb"));
    if (problem)
        std::fprintf(stderr, "Error: cannot write %s: %s.\n", path.c_str(), problem);
    if (!file)
        close(descriptor);
    return file;
}

static bool report_written(bool written, const char* prefix, const char* name)
{
    if (!written)
        std::fprintf(stderr, "Error: cannot write %s%s.\n", prefix, name);
    return written;
}

static bool extract_bytes(FILE* pack, const pack_source& source, const char* prefix)
{
    owned_file target = open_target(prefix, source.name, identity_of_stream(pack), {});
    if (!target)
        return false;
    const auto size = static_cast<size_t>(source.size);
    const bool written = std::fwrite(source.bytes.get(), 1, size, target.get()) == size;
    return report_written(close_written(std::move(target)) && written, prefix, source.name);
}

static bool extract_slot(FILE* pack, const pack_slot& slot, const char* prefix)
{
    uint8_t* bytes = nullptr;
    if (!name_is_accepted(slot.name))
        return false;
    if (pack_read_slot_bytes(pack, slot, &bytes) != pack_found) {
        std::fprintf(stderr, "Error: the entry \"%s\" is damaged.\n", slot.name);
        return false;
    }
    const pack_source source = {slot.name, "", owned_block<uint8_t>(bytes), slot.size};
    return extract_bytes(pack, source, prefix);
}

// Of entries with one name the first counts, as in every look-up.
bool pack_extract_all(FILE* pack, const char* prefix)
{
    bool complete = pack != nullptr;
    std::unordered_set<std::string> names;
    pack_slot slot;
    for (uint32_t index = 0; pack_read_slot(pack, index, slot); ++index)
        if (names.insert(slot.name).second)
            complete = extract_slot(pack, slot, prefix) && complete;
    return complete;
}

static bool export_file(const pack_file_list* node, FILE* pack, const char* prefix)
{
    uint64_t size = 0;
    file_identity which = {};
    const owned_file source = open_source(std::string(node->source_dir) + node->name, size, which);
    owned_file target = source ? open_target(prefix, node->name, identity_of_stream(pack), which) : nullptr;
    if (!target)
        return false;
    const bool written = copy_stream(source.get(), target.get(), size);
    return report_written(close_written(std::move(target)) && written, prefix, node->name);
}

static bool export_old_entry(const pack_file_list* node, FILE* pack, const char* prefix)
{
    pack_source source = {node->name, "", {}, 0};
    return prepare_old_entry(source, pack) && extract_bytes(pack, source, prefix);
}

bool pack_export_list(const pack_file_list* list, FILE* pack, const char* prefix)
{
    bool complete = true;
    for (const pack_file_list* node = list; node && node->name; node = node->next) {
        const bool written = name_is_accepted(node->name)
            && (node->source_dir ? export_file(node, pack, prefix) : export_old_entry(node, pack, prefix));
        complete = written && complete;
    }
    return complete;
}
