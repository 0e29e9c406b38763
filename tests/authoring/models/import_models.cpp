// Imports every file below a folder and prints a row for each: what came out of it, or the one line.
//
//     import_models FOLDER [LEAST]
//
// Ends with 1 when a shape is no mesh, a line is none, or fewer than LEAST files are read (1 where it is not given);
// what cannot be read is no fault else. The sums at the end are by the names' endings. Two runs print the same.
#include "authoring/asset/model_import.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>

namespace {

struct format_sum {
    uint32_t read, refused;
    std::map<std::string, uint32_t> lines; // reasons without names, and how often
};

} // namespace

static uint64_t hash_of(const imported_model& model)
{
    uint64_t hash = 1469598103934665603u;
    for (const shape_data& shape : model.shapes) {
        for (const uint8_t byte : shape_bytes(shape))
            hash = (hash ^ byte) * 1099511628211u;
    }
    return hash;
}

static std::string ending_of(const std::filesystem::path& path)
{
    std::string ending = path.extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(), [](unsigned char c) { return std::tolower(c); });
    return ending.empty() ? "none" : ending;
}

// Prints the model's row. False when one of its shapes is no mesh.
static bool print_model(const std::string& name, const imported_model& model)
{
    size_t vertices = 0, triangles = 0, sets = 0;
    std::string fault = model.shapes.empty() ? "no shape" : "";
    for (const shape_data& shape : model.shapes) {
        vertices += shape_vertex_count(shape);
        triangles += shape.triangles.size() / 3;
        for (size_t set = 0; set < shape.coordinates.size(); ++set)
            sets = std::max(sets, shape.coordinates[set].empty() ? 0 : set + 1);
        fault += shape_fault(shape);
    }
    if (fault.empty())
        std::printf("%-70s %4zu parts %2zu meshes %6zu vertices %6zu triangles %zu sets %016llx", name.c_str(),
            model.parts.size(), model.shapes.size(), vertices, triangles, sets,
            static_cast<unsigned long long>(hash_of(model)));
    else
        std::printf("%-70s FAULT: %s", name.c_str(), fault.c_str());
    std::printf(model.triangles_dropped == 0 ? "\n" : " (%u dropped)\n", model.triangles_dropped);
    return fault.empty();
}

// Imports the file, prints its row, and adds it to the sum.
static bool import_one(const std::filesystem::path& path, const std::string& name, format_sum& sum)
{
    imported_model model;
    std::string problem;
    if (take_model(open_model(path.string()), model_options{}, model, problem)) {
        ++sum.read;
        return print_model(name, model);
    }
    ++sum.refused;
    std::printf("%-70s %s\n", name.c_str(), problem.c_str());
    const std::string begin = "\"" + path.filename().string() + "\" ";
    const bool is_line
        = problem.find('\n') == std::string::npos && problem.rfind(begin, 0) == 0 && problem.ends_with(".");
    if (!is_line)
        std::printf("FAULT: that is no line\n");
    ++sum.lines[is_line ? problem.substr(begin.size()) : "no line"];
    return is_line;
}

int main(int count, char** arguments)
{
    if (count != 2 && count != 3)
        return std::fprintf(stderr, "usage: import_models FOLDER [LEAST]\n"), 2;
    std::vector<std::filesystem::path> paths;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(arguments[1])) {
        if (entry.is_regular_file())
            paths.push_back(entry.path());
    }
    std::sort(paths.begin(), paths.end());
    std::map<std::string, format_sum> sums;
    bool whole = true;
    for (const std::filesystem::path& path : paths) {
        whole = import_one(path, path.lexically_relative(arguments[1]).string(), sums[ending_of(path)]) && whole;
        std::fflush(stdout);
    }
    uint32_t read = 0;
    for (const auto& [ending, sum] : sums)
        read += sum.read;
    std::printf("\n%zu files, %u read\n", paths.size(), read);
    for (const auto& [ending, sum] : sums) {
        std::printf("%-10s %3u read, %3u refused\n", ending.c_str(), sum.read, sum.refused);
        for (const auto& [line, times] : sum.lines)
            std::printf("    %3u x %s\n", times, line.c_str());
    }
    return whole && read >= (count == 3 ? std::strtoul(arguments[2], nullptr, 10) : 1) ? 0 : 1;
}
