#include "comparison.h"

#include "tools/frames/picture_file.h"
#include "tools/frames/png_file.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

constexpr uint32_t difference_amplification = 8;

// ---- references ------------------------------------------------------------------------

static bool read_frame_number(const std::string& stem, uint64_t& frame)
{
    const char* end = stem.data() + stem.size();
    const auto result = std::from_chars(stem.data(), end, frame);
    return result.ec == std::errc() && result.ptr == end;
}

static std::string driver_of(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    return read_png_text({reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()}, "Driver");
}

static bool load_reference(
    const std::filesystem::path& path, std::vector<reference_picture>& references, std::string& problem)
{
    reference_picture reference;
    reference.path = path.string();
    if (path.extension() != ".png" || !read_frame_number(path.stem().string(), reference.frame))
        return true; // something else
    if (!load_png(reference.path, reference.image, problem))
        return false;
    reference.driver = driver_of(reference.path);
    if (!references.empty()
        && (references[0].image.width != reference.image.width
            || references[0].image.height != reference.image.height)) {
        problem = references[0].path + " and " + reference.path + " differ in size";
        return false;
    }
    references.push_back(std::move(reference));
    return true;
}

bool load_references(const std::string& directory, std::vector<reference_picture>& references, std::string& problem)
{
    std::error_code error;
    std::vector<std::filesystem::path> paths;
    for (std::filesystem::directory_iterator entry(directory, error), end; !error && entry != end;
         entry.increment(error))
        paths.push_back(entry->path());
    if (error) {
        problem = "cannot read the directory " + directory + ": " + error.message();
        return false;
    }
    std::sort(paths.begin(), paths.end());
    for (const std::filesystem::path& path : paths)
        if (!load_reference(path, references, problem))
            return false;
    std::sort(references.begin(), references.end(),
        [](const reference_picture& a, const reference_picture& b) { return a.frame < b.frame; });
    const auto same = std::adjacent_find(references.begin(), references.end(),
        [](const reference_picture& a, const reference_picture& b) { return a.frame == b.frame; });
    if (same != references.end())
        problem = same->path + " and " + (same + 1)->path + " are of the same frame";
    else if (references.empty())
        problem = directory + " has no numbered pictures like 00750.png";
    return problem.empty();
}

// ---- comparing ---------------------------------------------------------------------------

static std::string beside(const reference_picture& reference, const char* kind)
{
    return std::filesystem::path(reference.path).replace_extension(kind).string();
}

static void keep_evidence(
    const reference_picture& reference, const picture& image, const picture& difference, std::string& text)
{
    std::string problem;
    if (!save_png(beside(reference, ".new.png"), image, problem)
        || !save_png(beside(reference, ".difference.png"), difference, problem))
        text += " (" + problem + ")";
}

static void drop_evidence(const reference_picture& reference)
{
    std::error_code ignored;
    std::filesystem::remove(beside(reference, ".new.png"), ignored);
    std::filesystem::remove(beside(reference, ".difference.png"), ignored);
}

comparison_result compare_with_reference(
    const reference_picture& reference, const picture& image, const std::string& driver)
{
    const picture_comparison found = compare_pictures(reference.image, image, difference_amplification);
    const double mean = std::max({found.mean[0], found.mean[1], found.mean[2]});
    const bool equal = found.same_size && found.greatest == 0;
    const bool same_driver = reference.driver == as_png_text(driver);
    comparison_result result = {equal || (found.same_size && !same_driver && mean <= comparison_tolerance),
        std::filesystem::path(reference.path).filename().string() + ": "};
    if (equal) {
        result.text += "equal";
    } else {
        char words[160];
        std::snprintf(words, sizeof words, "%s, by %.3f of 255 in the mean, at most %u, in %llu pixels%s",
            result.passed ? "close" : "DIFFERENT", mean, found.greatest,
            static_cast<unsigned long long>(found.differing_pixels), same_driver ? "" : " (another driver)");
        result.text += words;
    }
    if (result.passed)
        drop_evidence(reference);
    else
        keep_evidence(reference, image, found.difference, result.text);
    return result;
}
