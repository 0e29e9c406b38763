#include "tools/preview/tries_by_hand.h"

#include "authoring/lua/tries.h"
#include "content/file_bytes.h"
#include "content/new_file.h"
#include "content/owners.h"

#include <algorithm>
#include <cmath>
#include <sys/stat.h>

constexpr uint32_t largest_source = 16u << 20; // bytes, as the language reads them

// ---- sliders -----------------------------------------------------------------------------------------

double stop_of_slider(const tried_number& number, double value)
{
    if (std::isnan(value) || number.least > number.most)
        return number.value;
    const double step = number.step > 0 ? number.step : try_step(number.least, number.most, false);
    return nearest_tried(value, number.least, number.most, step);
}

static bool is_of(const tried_value& tried, const tried_number& number)
{
    return tried.file == number.file && tried.site == number.site;
}

void keep_tried(std::vector<tried_value>& tries, const tried_number& number, double value)
{
    std::erase_if(tries, [&number](const tried_value& tried) { return is_of(tried, number); });
    if (value != number.written)
        tries.push_back({number.file, number.site, number.written, value});
}

void forget_stale(std::vector<tried_value>& tries, const std::vector<tried_number>& numbers)
{
    std::erase_if(tries, [&numbers](const tried_value& tried) {
        const auto is_changed
            = [&tried](const tried_number& number) { return is_of(tried, number) && tried.written != number.written; };
        return std::any_of(numbers.begin(), numbers.end(), is_changed);
    });
}

// ---- files ---------------------------------------------------------------------------------------------

static bool read_text(const std::string& path, std::string& text, std::string& problem)
{
    uint8_t* bytes = nullptr;
    uint32_t size = 0;
    const char* reason = nullptr;
    if (!read_whole_file(path.c_str(), largest_source, &bytes, &size, &reason)) {
        problem = "cannot read " + path + ": " + reason;
        return false;
    }
    const owned_block<uint8_t> owned(bytes);
    text.assign(bytes, bytes + size);
    return true;
}

// The number's call in a text that may have changed since it was built: the one at its place if it has that number for
// that purpose, else the only one that has. Null: there is none, or there are several.
static const try_site* find_site(const std::vector<try_site>& sites, const tried_number& number)
{
    const auto is_it = [&number](const try_site& site) {
        return site.can_write && site.value == number.written && site.label == number.label;
    };
    if (number.site < sites.size() && is_it(sites[number.site]))
        return &sites[number.site];
    const auto found = std::find_if(sites.begin(), sites.end(), is_it);
    const bool is_only = found != sites.end() && std::none_of(found + 1, sites.end(), is_it);
    return is_only ? &*found : nullptr;
}

static std::string why_not_written(const std::string& path, const tried_number& number, double value)
{
    if (!std::isfinite(value))
        return "what is tried is no number that a file can have";
    if (!number.can_write)
        return "line " + std::to_string(number.line) + " of " + path
            + " computes this number: only one that is written out, like try(0.35, 0, 1), can be replaced";
    return path + " has changed, and this number is not where it was: save it, and try again";
}

// Beside it, into its place if nobody else wrote it since `before`.
static bool replace_text(
    const std::string& path, const struct stat& before, const std::string& text, std::string& problem)
{
    new_file file;
    const char* reason = new_file_open(file, path, {.may_replace = true, .signals_wait = true, .safe_on_disk = true});
    if (reason == nullptr)
        reason = new_file_write(file, text.data(), text.size());
    struct stat now = {};
    const bool is_same = stat(path.c_str(), &now) == 0 && now.st_ino == before.st_ino && now.st_size == before.st_size
        && now.st_mtim.tv_sec == before.st_mtim.tv_sec && now.st_mtim.tv_nsec == before.st_mtim.tv_nsec;
    if (reason == nullptr)
        reason = is_same ? new_file_keep(file) : "it was saved at the same moment; try again";
    new_file_drop(file);
    if (reason != nullptr)
        problem = "cannot write " + path + ": " + reason;
    return reason == nullptr;
}

bool write_try_into(const std::string& path, const tried_number& number, double value, std::string& problem)
{
    std::string text;
    struct stat before = {};
    stat(path.c_str(), &before);
    if (!read_text(path, text, problem))
        return false;
    const std::vector<try_site> sites = find_tries(text);
    const try_site* site = find_site(sites, number);
    const std::string written = site != nullptr ? with_try_written(text, *site, value) : "";
    if (written.empty()) {
        problem = why_not_written(path, number, value);
        return false;
    }
    return written == text || replace_text(path, before, written, problem);
}
