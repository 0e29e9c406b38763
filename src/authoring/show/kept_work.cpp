#include "authoring/show/kept_work.h"

#include <algorithm>
#include <cstring>
#include <ctime>
#include <sys/stat.h>

constexpr int64_t calm_after = 100'000'000; // nanoseconds: file systems count time in steps of up to some 10 ms

// ---- files --------------------------------------------------------------------------------

static int64_t nanoseconds(const timespec& time)
{
    return int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

read_stamp stamp_of(const std::string& path)
{
    read_stamp stamp;
    stamp.path = path;
    struct stat about = {};
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    if (stat(path.c_str(), &about) != 0) {
        stamp.is_calm = true;
        return stamp;
    }
    stamp.is_there = true;
    stamp.device = about.st_dev;
    stamp.inode = about.st_ino;
    stamp.size = static_cast<uint64_t>(about.st_size);
    stamp.written = nanoseconds(about.st_mtim);
    stamp.changed = nanoseconds(about.st_ctim);
    const int64_t last = std::max(stamp.written, stamp.changed);
    stamp.is_calm = nanoseconds(now) - last > calm_after || last > nanoseconds(now) + calm_after;
    return stamp;
}

static bool is_same_file(const read_stamp& then, const read_stamp& now)
{
    return then.is_calm && then.is_there == now.is_there && then.device == now.device && then.inode == now.inode
        && then.size == now.size && then.written == now.written && then.changed == now.changed;
}

// Whether what came of these files is good for the build under way, which is noted.
static bool still_hold(const kept_work& work, kept_files& from)
{
    if (from.looked == work.build)
        return true;
    const bool same = std::all_of(from.stamps.begin(), from.stamps.end(),
        [](const read_stamp& stamp) { return is_same_file(stamp, stamp_of(stamp.path)); });
    if (same)
        from.looked = work.build;
    return same;
}

// What is kept under `key` and still good; null where it has to be made.
template <typename kind>
static kind* find_kept(kept_work& work, std::map<std::string, kind>& all, const std::string& key)
{
    const auto found = all.find(key);
    return found != all.end() && still_hold(work, found->second.from) ? &found->second : nullptr;
}

// ---- builds ---------------------------------------------------------------------------------

void begin_build(kept_work& work)
{
    ++work.build;
}

void end_build(kept_work& work, bool broken)
{
    if (broken)
        return;
    const auto is_unused = [&work](const auto& each) { return each.second.from.looked != work.build; };
    std::erase_if(work.models, is_unused);
    for (auto& model : work.models)
        std::erase_if(model.second.parts, [&work](const auto& part) { return part.second.looked != work.build; });
    std::erase_if(work.fonts, is_unused);
    std::erase_if(work.pictures, is_unused);
    std::erase_if(work.music, is_unused);
    std::erase_if(work.targets, [&work](const auto& target) { return target.second.looked != work.build; });
}

// ---- keys -----------------------------------------------------------------------------------

template <typename number> static void add_bits(std::string& key, number value)
{
    char bits[sizeof value];
    std::memcpy(bits, &value, sizeof value);
    key.append(bits, sizeof bits);
}

static std::string key_of(const model_options& options)
{
    std::string key = options.part + '\0';
    add_bits(key, options.fit);
    add_bits(key, options.center);
    for (const float angle : options.turn)
        add_bits(key, angle);
    add_bits(key, options.normals);
    return key;
}

static std::string key_of(const std::string& path, const font_options& options, const std::vector<bool>& wanted)
{
    std::string key = path + '\0';
    add_bits(key, options.height);
    add_bits(key, options.depth);
    add_bits(key, options.bevel);
    add_bits(key, options.tracking);
    add_bits(key, options.detail);
    add_bits(key, options.face);
    for (const bool letter : wanted)
        key += letter ? '1' : '0';
    return key;
}

// ---- what is read -----------------------------------------------------------------------------

static void stamp_model(const std::string& path, kept_model& kept)
{
    const std::string folder = path.substr(0, path.find_last_of('/') + 1);
    for (const std::vector<std::string>* names : {&kept.file.scene.files_taken, &kept.file.scene.files_missing})
        for (const std::string& name : *names)
            if (folder + name != path)
                kept.from.stamps.push_back(stamp_of(folder + name));
}

const model_file& keep_model(kept_work& work, const std::string& path)
{
    if (const kept_model* kept = find_kept(work, work.models, path))
        return kept->file;
    kept_model& made = work.models[path];
    made = {};
    made.from.stamps.push_back(stamp_of(path)); // before it is read
    made.from.looked = work.build;
    made.file = open_model(path);
    if (made.file.problem.empty())
        stamp_model(path, made);
    else
        made.from.stamps[0].is_calm = false; // another time it may be read
    return made.file;
}

const imported_model* keep_part(
    kept_work& work, const std::string& path, const model_options& options, std::string& problem)
{
    keep_model(work, path);
    kept_model& model = work.models[path];
    const std::string key = key_of(options);
    const auto known = model.parts.find(key);
    kept_part made = {};
    if (known == model.parts.end() && !take_model(model.file, options, made.model, problem))
        return nullptr;
    kept_part& part = known != model.parts.end() ? known->second : model.parts[key] = std::move(made);
    part.looked = work.build;
    return &part.model;
}

const imported_font* keep_font(kept_work& work, const std::string& path, const font_options& options,
    const std::vector<bool>& wanted, std::string& problem)
{
    const std::string key = key_of(path, options, wanted);
    if (const kept_font* kept = find_kept(work, work.fonts, key))
        return &kept->letters;
    kept_font made = {{{stamp_of(path)}, work.build}, {}};
    if (!import_font(path, options, wanted, made.letters, problem))
        return nullptr;
    return &(work.fonts[key] = std::move(made)).letters;
}

const music_file_facts* keep_music(kept_work& work, const std::string& path, std::string& problem)
{
    if (const kept_music* kept = find_kept(work, work.music, path))
        return &kept->facts;
    kept_music made = {{{stamp_of(path)}, work.build}, {}};
    if (!check_music(path, made.facts, problem))
        return nullptr;
    return &(work.music[path] = std::move(made)).facts;
}

static std::string picture_key(const std::string& path, const std::string& wish)
{
    return path + '\0' + wish;
}

const imported_picture* find_picture(kept_work& work, const std::string& path, const std::string& wish)
{
    const kept_picture* kept = find_kept(work, work.pictures, picture_key(path, wish));
    return kept != nullptr ? &kept->picture : nullptr;
}

const imported_picture& keep_picture(
    kept_work& work, const read_stamp& from, const std::string& wish, imported_picture picture)
{
    kept_picture& kept = work.pictures[picture_key(from.path, wish)];
    kept = {{{from}, work.build}, std::move(picture)};
    return kept.picture;
}

const std::vector<uint8_t>& keep_target(kept_work& work, std::array<uint32_t, 2> size)
{
    kept_black_picture& kept = work.targets[size];
    if (kept.bytes.empty())
        kept.bytes = target_picture(size[0], size[1]);
    kept.looked = work.build;
    return kept.bytes;
}
