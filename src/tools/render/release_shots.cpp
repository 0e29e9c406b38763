#include "release_shots.h"

#include "tools/frames/output_file.h"
#include "tools/frames/picture_file.h"
#include "tools/frames/png_file.h"

#include <filesystem>
#include <system_error>

encoded_shot encode_below(const picture& p, size_t limit)
{
    encoded_shot shot;
    shot.bytes = encode_png(p, {}, png_level_small);
    if (shot.bytes.size() <= limit)
        return shot;
    shot.is_jpeg = true;
    for (int quality = 95; quality >= 0; quality -= 5) {
        shot.quality = quality > 0 ? quality : 1;
        shot.bytes = encode_jpeg(p, shot.quality);
        if (shot.bytes.size() <= limit)
            return shot;
    }
    return {};
}

static bool write_shot(
    const std::string& path, const std::vector<uint8_t>& bytes, std::vector<std::string>& written, std::string& error)
{
    if (bytes.empty()) {
        error = "cannot make \"" + path + "\" small enough";
        return false;
    }
    if (!write_file(path, bytes, error))
        return false;
    written.push_back(path);
    return true;
}

bool write_release_shots(const picture& full, const std::string& directory, const std::string& name,
    std::vector<std::string>& written, std::string& error)
{
    if (!is_whole(full)) {
        error = "there is no picture to make shots of";
        return false;
    }
    std::error_code problem;
    std::filesystem::create_directories(directory, problem);
    if (problem) {
        error = "cannot make the directory \"" + directory + "\": " + problem.message();
        return false;
    }
    const std::string stem = directory + "/" + name;
    if (!write_shot(stem + "-1920x1080.png",
            encode_png(scale_picture(full, shot_width, shot_height), {}, png_level_small), written, error))
        return false;
    const encoded_shot middle = encode_below(scale_picture(full, 400, 225), shot_limit);
    if (!write_shot(stem + (middle.is_jpeg ? "-400x225.jpg" : "-400x225.png"), middle.bytes, written, error))
        return false;
    return write_shot(
        stem + "-160x90.png", encode_png(scale_picture(full, 160, 90), {}, png_level_small), written, error);
}

std::vector<std::string> release_shot_names(const std::string& directory, const std::string& name)
{
    const std::string stem = directory + "/" + name;
    return {stem + "-1920x1080.png", stem + "-400x225.png", stem + "-400x225.jpg", stem + "-160x90.png"};
}
