#include "commands.h"

#include "content/file_bytes.h"
#include "content/new_file.h"
#include "content/owners.h"
#include "content/xmlz.h"

#include <sys/stat.h>

static bool same_file(const std::string& a, const std::string& b)
{
    struct stat first;
    struct stat second;
    return stat(a.c_str(), &first) == 0 && stat(b.c_str(), &second) == 0 && first.st_dev == second.st_dev
        && first.st_ino == second.st_ino;
}

// A document is an everyday file: new ones can be read by all whom the process's mask lets.
static exit_status write_file(const std::string& path, const uint8_t* bytes, uint32_t size, bool force)
{
    const new_file_rules rules
        = {.permissions = 0666, .may_replace = force, .signals_wait = true, .safe_on_disk = true};
    const char* problem = new_file_put(path, rules, bytes, size);
    return problem ? fail("cannot write ", path, std::string(": ") + problem) : exit_done;
}

static bool place_is_free(const std::string& path, bool force)
{
    struct stat status;
    return force || lstat(path.c_str(), &status) != 0
        || fail("", path, " exists: it is left as it is. \"--force\" replaces it") == exit_done;
}

exit_status run_envelope(const make_options& options)
{
    uint8_t* bytes = nullptr;
    uint32_t size = 0;
    const char* reason = nullptr;
    if (!read_whole_file(options.input.c_str(), UINT32_MAX - 1, &bytes, &size, &reason))
        return fail("cannot open ", options.input, std::string(": ") + reason);
    const owned_block<uint8_t> input(bytes);
    if (same_file(options.input, options.output))
        return fail("", options.output, " is the file that is being read");
    if (!place_is_free(options.output, options.force))
        return exit_failed;
    const bool wrap = options.command == command_wrap;
    uint8_t* result = nullptr;
    uint32_t result_size = 0;
    xmlz_status status = xmlz_ok;
    if (wrap)
        result = xmlz_store(input.get(), size, &result_size);
    else
        status = xmlz_inflate(input.get(), size, &result, &result_size);
    const owned_block<uint8_t> output(result);
    if (!output)
        return fail("", options.input, std::string(" ") + (wrap ? "is larger than 256 MiB" : xmlz_status_text(status)));
    return write_file(options.output, output.get(), result_size, options.force);
}
