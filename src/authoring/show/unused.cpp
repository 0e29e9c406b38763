// What a source makes and nothing shows.
#include "authoring/show/entries.h"
#include "authoring/show/lowering.h"

static const char* noun_of(const thing& made)
{
    if (as<scene_thing>(&made) != nullptr)
        return "scene";
    if (as<material_thing>(&made) != nullptr)
        return "material";
    if (as<mesh_thing>(&made) != nullptr)
        return "mesh";
    if (as<effect_thing>(&made) != nullptr)
        return "effect";
    if (as<font_thing>(&made) != nullptr)
        return "font";
    if (const image_thing* image = as<image_thing>(&made))
        return image->file.empty() ? "target" : "image";
    if (as<cube_map_thing>(&made) != nullptr)
        return "cube map";
    if (as<dynamic_thing>(&made) != nullptr)
        return "dynamic texture";
    if (const value_thing* value = as<value_thing>(&made))
        return value->is_light ? "light" : nullptr;
    return nullptr;
}

static std::string called(const thing& made)
{
    if (!made.name.empty())
        return " \"" + made.name + "\"";
    if (const mesh_thing* mesh = as<mesh_thing>(&made); mesh != nullptr && !mesh->file.empty())
        return " \"" + mesh->file + "\"";
    if (const image_thing* image = as<image_thing>(&made); image != nullptr && !image->file.empty())
        return " \"" + image->file + "\"";
    if (const font_thing* font = as<font_thing>(&made); font != nullptr && !font->file.empty())
        return " \"" + font->file + "\"";
    return "";
}

// What is left out is not read; that its file is not there helps to see why.
static std::string lost_file(lowering& l, const thing& made)
{
    std::string file;
    if (const mesh_thing* mesh = as<mesh_thing>(&made))
        file = mesh->file;
    else if (const image_thing* image = as<image_thing>(&made))
        file = image->file;
    else if (const font_thing* font = as<font_thing>(&made))
        file = font->file;
    std::string fault;
    want_file(l.show, file);
    if (!file.empty())
        path_in_folder(l.show.folder, file, fault);
    return fault.empty() ? "" : " And " + fault;
}

void tell_unused(lowering& l, const std::set<const thing*>& used)
{
    for (const auto& owned : l.show.things) {
        const thing& made = *owned;
        if (made.used || used.count(&made) != 0)
            continue;
        if (const clip_thing* clip = as<clip_thing>(&made)) {
            add_problem(l.built.problems, problem_warning, made.place,
                "the clip" + (clip->scene != nullptr ? " of \"" + clip->scene->name + "\"" : "")
                    + " lies on no track: write track { ... } around it.");
        } else if (const placed_thing* placed = as<placed_thing>(&made)) {
            const std::string what = placed->kind == object_text ? "the text \"" + placed->text + "\"" : "the object";
            add_problem(l.built.problems, problem_warning, made.place,
                what + " is in no scene: write it into scene \"...\" { }, or use scene:add.");
        } else if (const char* noun = noun_of(made)) {
            add_problem(l.built.problems, problem_note, made.place,
                std::string("nothing shows the ") + noun + called(made) + ": it is left out." + lost_file(l, made));
        }
    }
}
