#include "editing/pack_files.h"

#include "content/file_bytes.h"
#include "content/new_file.h"
#include "content/owners.h"
#include "content/pack.h"
#include "content/printable.h"

#include <algorithm>
#include <cassert>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <unordered_set>
#include <vector>

static constexpr uint64_t offset_count = uint64_t{1} << 32; // what 32-bit offsets can tell apart

// ---- single entries ----------------------------------------------------------------

void* pack_find_entry(const pack_file* pack, const char* name, uint32_t* out_size)
{
    uint8_t* bytes = nullptr;
    return pack_read_entry(pack, name, &bytes, out_size) == pack_found ? bytes : nullptr;
}

void* pack_find_entry_ktx(const pack_file* pack, const char* name, uint32_t* out_size)
{
    if (!name || std::strlen(name) < 3)
        return nullptr;
    std::string other_name = name;
    other_name.replace(other_name.size() - 3, 3, "ktx");
    return pack_find_entry(pack, other_name.c_str(), out_size);
}

// ---- what is said ------------------------------------------------------------------

// One line on standard error: "Error: BEFORE NAME BEHIND", with the name as it may be shown.
static bool refuse(const char* before, const std::string& name, const std::string& behind)
{
    assert(before != nullptr);
    std::fprintf(stderr, "Error: %s%s%s.\n", before, printable(name).c_str(), behind.c_str());
    return false;
}

static bool refuse_entry(const std::string& name, const char* problem)
{
    assert(problem != nullptr);
    return refuse("the entry \"", name, std::string("\" ") + problem);
}

static bool refuse_writing(const std::string& path, const char* problem)
{
    assert(problem != nullptr);
    return refuse("cannot write ", path, std::string(": ") + problem);
}

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
    return !problem || refuse("the name \"", name, std::string("\" ") + problem);
}

namespace {

// Which file something is, whatever its path; `known` is false for what is none.
struct file_identity {
    bool known;
    dev_t device;
    ino_t number;
};

} // namespace

static file_identity identity(const struct stat& status)
{
    return {true, status.st_dev, status.st_ino};
}

static file_identity identity_of_path(const char* path)
{
    struct stat status;
    return stat(path, &status) == 0 ? identity(status) : file_identity{};
}

// A pack, or what is taken out of one, may be the only copy of what it holds.
static new_file_rules rules_of_packs(bool may_replace)
{
    return {.permissions = 0600, .may_replace = may_replace, .signals_wait = true, .safe_on_disk = true};
}

static file_identity identity_of_pack(const pack_file* pack)
{
    struct stat status;
    return pack && pack->stream && fstat(fileno(pack->stream), &status) == 0 ? identity(status) : file_identity{};
}

static bool same_file(const file_identity& a, const file_identity& b)
{
    return a.known && b.known && a.device == b.device && a.number == b.number;
}

// Copies exactly `size` bytes of the file at `path`. False, with a line, when it has fewer
// or more by now, or the target takes no more.
static bool copy_stream(FILE* from, const std::string& path, new_file& to, uint64_t size, const std::string& to_path)
{
    assert(from != nullptr && to.open);
    std::vector<uint8_t> block(65536);
    errno = 0;
    while (size > 0) {
        const size_t length = static_cast<size_t>(std::min<uint64_t>(size, block.size()));
        if (std::fread(block.data(), 1, length, from) != length)
            break;
        if (const char* problem = new_file_write(to, block.data(), length))
            return refuse_writing(to_path, problem);
        size -= length;
    }
    if (size == 0 && std::fgetc(from) == EOF && !std::ferror(from))
        return true;
    const char* problem = std::ferror(from) ? std::strerror(errno) : "it changed while it was read";
    return refuse("cannot read ", path, std::string(": ") + problem);
}

// A file to be read, and its size; null, with a line, when it is no plain file.
static owned_file open_source(const std::string& path, uint64_t& size, file_identity& which)
{
    const char* problem = nullptr;
    owned_file file(open_plain_file(path.c_str(), &problem));
    struct stat status;
    if (!file || fstat(fileno(file.get()), &status) != 0) {
        refuse("cannot open ", path, std::string(": ") + (problem ? problem : std::strerror(errno)));
        return nullptr;
    }
    size = static_cast<uint64_t>(status.st_size);
    which = identity(status);
    return file;
}

// ---- writing -----------------------------------------------------------------------

namespace {

// One entry to be written: from a file on disk, or from memory.
struct pack_source {
    const char* name; // the list's
    std::string path; // empty: from memory
    owned_block<uint8_t> bytes;
    uint64_t size;
};

} // namespace

static bool prepare_file(pack_source& source, const file_identity& output)
{
    assert(!source.path.empty());
    file_identity which = {};
    if (!open_source(source.path, source.size, which))
        return false;
    return !same_file(which, output) || refuse("", source.path, " is the pack to be written");
}

static bool prepare_old_entry(pack_source& source, const pack_file* old_pack)
{
    assert(source.name != nullptr && source.path.empty());
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
    return refuse_entry(source.name, problem);
}

// Looks at everything that is to be written, and takes what comes from the old pack.
static bool prepare_sources(const pack_file_list* list, const char* out_path, const pack_file* old_pack, bool tell,
    std::vector<pack_source>& sources)
{
    assert(sources.empty());
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
                std::printf("NAME: %s\n", printable(node->name).c_str());
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
    std::memcpy(head.data(), pack_magic, sizeof pack_magic);
    uint32_t start = static_cast<uint32_t>(head.size());
    uint8_t* slot = head.data() + pack_index_offset;
    for (const pack_source& source : sources) {
        assert(start + source.size <= offset_count); // prepare_sources refuses more
        const auto size = static_cast<uint32_t>(source.size);
        assert(std::strlen(source.name) < pack_name_size); // prepare_sources refuses others
        std::memcpy(slot, source.name, std::strlen(source.name));
        put_big_endian(slot + pack_name_size, start);
        put_big_endian(slot + pack_name_size + 4, start + size - 1);
        start += size;
        slot += pack_slot_size;
    }
    assert(slot + pack_name_size == head.data() + head.size());
    return head;
}

static bool write_file_source(const pack_source& source, new_file& out, const char* out_path, bool tell)
{
    uint64_t size = 0;
    file_identity which = {};
    const owned_file file = open_source(source.path, size, which);
    if (!file)
        return false;
    if (tell)
        std::printf("size of the file: %d\n", static_cast<int>(source.size));
    return copy_stream(file.get(), source.path, out, source.size, out_path);
}

static bool write_bytes(const uint8_t* bytes, uint64_t size, new_file& out, const std::string& out_path)
{
    assert(bytes != nullptr || size == 0);
    const char* problem = new_file_write(out, bytes, static_cast<size_t>(size));
    return !problem || refuse_writing(out_path, problem);
}

static bool write_source(const pack_source& source, new_file& out, const char* out_path, bool tell)
{
    if (!source.path.empty())
        return write_file_source(source, out, out_path, tell);
    if (tell)
        std::printf("size=%d\n", static_cast<int>(source.size));
    return write_bytes(source.bytes.get(), source.size, out, out_path);
}

static bool keep_written(new_file& out, const std::string& out_path)
{
    assert(out.open);
    const char* problem = new_file_keep(out);
    return !problem || refuse_writing(out_path, problem);
}

static bool write_pack(const pack_file_list* list, const char* out_path, const pack_file* old_pack, bool tell)
{
    std::vector<pack_source> sources;
    if (!prepare_sources(list, out_path, old_pack, tell, sources))
        return false;
    const std::vector<uint8_t> head = make_head(sources);

    new_file out;
    if (const char* problem = new_file_open(out, out_path, rules_of_packs(true)))
        return refuse_writing(out_path, problem);
    bool written = write_bytes(head.data(), head.size(), out, out_path);
    for (const pack_source& source : sources)
        written = written && write_source(source, out, out_path, tell);
    if (written)
        return keep_written(out, out_path);
    new_file_drop(out);
    return false;
}

bool pack_write(const pack_file_list* list, const char* out_path, const pack_file* old_pack)
{
    return write_pack(list, out_path, old_pack, false);
}

bool pack_write_in_place(const pack_file_list* list, const char* out_path, const pack_file* old_pack)
{
    return write_pack(list, out_path, old_pack, true);
}

// ---- taking apart ------------------------------------------------------------------

// Makes the folders that the entry's own name asks for, behind the prefix, and passes
// through no symbolic link on the way.
static bool make_folders(const std::string& path, size_t name_at)
{
    assert(name_at < path.size());
    for (size_t slash = path.find('/', name_at); slash != std::string::npos; slash = path.find('/', slash + 1)) {
        const std::string folder = path.substr(0, slash);
        const bool made = mkdir(folder.c_str(), 0700) == 0;
        const int reason = errno;
        struct stat status;
        if (made || (lstat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode)))
            continue;
        if (reason != EEXIST)
            return refuse("cannot make the folder ", folder, std::string(": ") + std::strerror(reason));
        return refuse("", folder, S_ISLNK(status.st_mode) ? " is a symbolic link" : " is not a folder");
    }
    return true;
}

// Begins the file prefix + name. False, with a line, for a symbolic link, for what is no
// plain file, for the pack and the file that bytes come from, and for what exists where
// nothing may be replaced.
static bool open_target(
    new_file& target, const std::string& path, size_t name_at, bool replace, const file_identity (&read)[2])
{
    if (!make_folders(path, name_at))
        return false;
    struct stat status;
    const bool exists = lstat(path.c_str(), &status) == 0;
    const char* problem = nullptr;
    if (exists && S_ISLNK(status.st_mode))
        problem = "it is a symbolic link";
    else if (exists && (same_file(identity(status), read[0]) || same_file(identity(status), read[1])))
        problem = "it is being read";
    else
        problem = new_file_open(target, path, rules_of_packs(replace));
    return !problem || refuse_writing(path, problem);
}

static bool extract_bytes(const pack_file* pack, const pack_source& source, const char* prefix, bool replace)
{
    const std::string path = std::string(prefix) + source.name;
    new_file target;
    if (!open_target(target, path, std::strlen(prefix), replace, {identity_of_pack(pack), {}}))
        return false;
    if (write_bytes(source.bytes.get(), source.size, target, path))
        return keep_written(target, path);
    new_file_drop(target);
    return false;
}

static bool extract_slot(const pack_file* pack, const pack_slot& slot, const char* prefix, bool replace)
{
    uint8_t* bytes = nullptr;
    if (!name_is_accepted(slot.name))
        return false;
    if (pack_read_slot_bytes(pack, slot, &bytes) != pack_found)
        return refuse_entry(slot.name, "is damaged");
    const pack_source source = {slot.name, "", owned_block<uint8_t>(bytes), slot.size};
    return extract_bytes(pack, source, prefix, replace);
}

// Of entries with one name the first counts, as in every look-up.
bool pack_extract_all(const pack_file* pack, const char* prefix, bool replace)
{
    bool complete = pack != nullptr;
    std::unordered_set<std::string> names;
    pack_slot slot;
    for (uint32_t index = 0; pack_read_slot(pack, index, slot); ++index)
        if (names.insert(slot.name).second)
            complete = extract_slot(pack, slot, prefix, replace) && complete;
    return complete;
}

static bool export_file(const pack_file_list* node, const pack_file* pack, const char* prefix, bool replace)
{
    assert(node->source_dir != nullptr);
    const std::string source_path = std::string(node->source_dir) + node->name;
    const std::string path = std::string(prefix) + node->name;
    uint64_t size = 0;
    file_identity which = {};
    const owned_file source = open_source(source_path, size, which);
    new_file target;
    if (!source || !open_target(target, path, std::strlen(prefix), replace, {identity_of_pack(pack), which}))
        return false;
    if (copy_stream(source.get(), source_path, target, size, path))
        return keep_written(target, path);
    new_file_drop(target);
    return false;
}

static bool export_old_entry(const pack_file_list* node, const pack_file* pack, const char* prefix, bool replace)
{
    pack_source source = {node->name, "", {}, 0};
    return prepare_old_entry(source, pack) && extract_bytes(pack, source, prefix, replace);
}

bool pack_export_list(const pack_file_list* list, const pack_file* pack, const char* prefix, bool replace)
{
    bool complete = true;
    for (const pack_file_list* node = list; node && node->name; node = node->next) {
        const bool written = name_is_accepted(node->name)
            && (node->source_dir ? export_file(node, pack, prefix, replace)
                                 : export_old_entry(node, pack, prefix, replace));
        complete = written && complete;
    }
    return complete;
}
