#include "authoring/lua/source_wording.h"

namespace {

struct phrase {
    const char* document;
    const char* source; // what stands there instead
};

} // namespace

constexpr phrase phrases[] = {
    {"texture2 is not used: texture1 is empty.", "texture2 is not used without texture: call it texture."},
    {"texture3 is not used: texture2 is empty.", "texture3 is not used without texture2: call it texture2."},
    {"light2 without light1 lights only with shaders.",
        "light2 without light lights only with shaders: call it light."},
    {"a model without a material is not drawn.",
        "an object without a material is not drawn: write material = ... in it."},
    {"a text is not rippled.", "a text is not rippled: leave the rippler out."},
    {"rotation without cgenmode", "turn without coordinates"},
    {"with shaders its function is 0: the third", "with shaders its combine counts for nothing: the third"},
    {"fogstart is fogend: from there on all is fog, and nothing before.",
        "fog: from is to, so that from there on all is fog, and nothing before: write to = ... behind it."},
    {"it is used as a light, and its colours, values 1 to 3 and 4 to 6, are black.",
        "the light is black, ambient and diffuse: write diffuse = \"white\", say."},
    {"texture_filter 1 has none.", "write filter = \"linear\", which has none."},
    {"its field of view has to lie", "the field of view has to lie"},
    {"degrees: nothing that makes sense is seen.",
        "degrees, and nothing that makes sense is seen: write fov = 60, say."},
    {"which is 0.1 away: nothing that makes sense is seen.",
        "which is 0.1 away, and nothing that makes sense is seen: write far = 600, say."},
    {"its material does not set normalization.", "write normalize = true in its material."},
    {"its mesh has no normals: it gets the ambient light alone.",
        "its mesh has no normals, so that it gets the ambient light alone: write normals = \"smooth\" in the mesh."},
    {" are drawn.", " are drawn: take fewer."},
    {"the object is never shown.", "the object is never shown; let it be 1 for a while."},
    {"what it is on cannot be seen.", "what it is on cannot be seen; alpha = 1 is all of it."},
    {"or a picture that stands for its program there.", "or a texture that stands for its program there."},
};

// "its time, function 3, grows" is "its time grows": functions have no numbers in a source.
static void drop_function_number(std::string& text)
{
    const std::string mark = ", function ";
    const size_t begin = text.find(mark);
    const size_t end = begin == std::string::npos ? begin : text.find_first_not_of("0123456789", begin + mark.size());
    if (end == std::string::npos || end == begin + mark.size() || text[end] != ',')
        return;
    text.erase(begin, end + 1 - begin);
}

std::string source_wording(const std::string& text)
{
    std::string told = text;
    for (const phrase& p : phrases)
        if (const size_t at = told.find(p.document); at != std::string::npos)
            told.replace(at, std::string(p.document).size(), p.source);
    drop_function_number(told);
    if (told.starts_with("its alpha is lost:")) // numbers of formats
        told = "its alpha is lost, and a material blends by it: write format = \"RGBA\" in the image.";
    if (told.find(" with a cube map: with shaders") != std::string::npos)
        told
            = "with shaders a cube map is drawn with coordinates = \"cubemap\" alone: write it in the texture's table.";
    if (told.find(" without a cube map: with shaders") != std::string::npos)
        told = "coordinates = \"cubemap\" is for cube maps: with shaders the material draws nothing.";
    if (told.find("there is no glyph for") != std::string::npos)
        told.replace(told.size() - 1, 1,
            ": fonts have a-z, A-Z, á é í ó ö ő ř ú ü ű and their capitals, 0-9, ? ! & / and the space.");
    if (const size_t at = told.find(" has no mesh for "); told.starts_with("font ") && at != std::string::npos)
        told.replace(0, at, "its font");
    if (told.starts_with("the loop ends at tick"))
        told.replace(told.size() - 1, 1, "; let both end together.");
    if (told.starts_with("its last clip ends at tick"))
        told.replace(told.size() - 1, 1, "; let it end at \"100%\".");
    if (told.find("\" is cut to ") != std::string::npos)
        told.replace(told.size() - 1, 1, ": write a shorter one.");
    if (told.starts_with("the ping-pong begins at tick"))
        told.replace(told.size() - 1, 1, "; let it begin at 0.");
    return told;
}
