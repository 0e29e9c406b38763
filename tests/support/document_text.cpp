#include "document_text.h"

#include "content/owners.h"
#include "content/xmlz.h"

#include <cstdlib>
#include <cstring>
#include <doctest/doctest.h>

// ---- texts ------------------------------------------------------------------------

std::string to_text(const document_text& text, uint32_t sections)
{
    std::string result = "<document>\n";
    for (uint32_t section = 1; section <= sections; ++section) {
        const std::string name = "s" + std::to_string(section);
        std::string records = text.records[section];
        if (section == section_scenes && records.empty())
            records = "<scene/>";
        if (section == section_timeline && records.empty())
            records = "<track>" + clip_text(1, 0, 100) + "</track>";
        result += "<" + name + (section == section_music ? text.music_attributes : "") + ">" + records + "</" + name
            + ">\n";
    }
    return result + "</document>\n";
}

std::string with(std::string text, const std::string& from, const std::string& to)
{
    const size_t found = text.find(from);
    REQUIRE_MESSAGE(found != std::string::npos, from);
    return text.replace(found, from.size(), to);
}

std::string without_attribute(const std::string& text, const std::string& name)
{
    const size_t begin = text.find(" " + name + "=\"");
    REQUIRE_MESSAGE(begin != std::string::npos, name);
    const size_t end = text.find('"', begin + name.size() + 3);
    REQUIRE_MESSAGE(end != std::string::npos, name);
    return text.substr(0, begin) + text.substr(end + 1);
}

std::string repeated(const std::string& text, uint32_t count)
{
    std::string result;
    for (uint32_t i = 0; i < count; ++i)
        result += text;
    return result;
}

std::string animated(const std::string& type, const std::string& value)
{
    return "<v type=\"" + type + "\" value=\"" + value + "\"/>";
}

std::string placement_values()
{
    return repeated(animated("static", "0"), 6) + repeated(animated("static", "1"), 3);
}

std::string scene_object_text(
    int type, int object, int material, int font, const std::string& text, const std::string& manipulators)
{
    return "<object type=\"" + std::to_string(type) + "\" object=\"" + std::to_string(object) + "\" material=\""
        + std::to_string(material) + "\" font=\"" + std::to_string(font) + "\" text=\"" + text + "\">"
        + placement_values() + "<visibility value=\"0\"/><offset value=\"0\"/><facing value=\"0\"/><manipulators>"
        + manipulators + "</manipulators></object>";
}

std::string clip_text(int id, int space_before, int length)
{
    return "<clip id=\"" + std::to_string(id) + "\" space_before=\"" + std::to_string(space_before) + "\" length=\""
        + std::to_string(length) + "\" offset=\"0\" type=\"0\" clearcolor=\"0\">" + repeated(animated("static", "0"), 6)
        + animated("static", "60") + animated("static", "100") + animated("static", "0") + "</clip>";
}

std::string function_text()
{
    return "<f type=\"0\" loop_type=\"0\" loop_begin=\"0\" loop_end=\"0\">"
           "<segment type=\"0\" length=\"100\"><a>1</a></segment></f>";
}

static std::string complete_material()
{
    std::string uniforms = "<glsl_uniforms u1=\"1\"";
    for (int i = 2; i <= 24; ++i)
        uniforms += " u" + std::to_string(i) + "=\"0\"";
    return "<material><backface_culling value=\"1\"/><depth_test value=\"1\"/><normalization value=\"1\"/>"
           "<wireframe value=\"1\"/><blend_function value=\"1\"/><red type=\"dynamic\" value=\"1\"/>"
           "<green type=\"static\" value=\"0.5\"/><blue type=\"static\" value=\"0.25\"/>"
           "<alpha type=\"static\" value=\"1\"/><linewidth type=\"static\" value=\"2\"/>"
           "<light1 value=\"1\"/><light2 value=\"1\"/>"
           "<texture1 value=\"1\" wrapmode=\"1\" cgenmode=\"1\" rotation=\"1\" function=\"1\"/>"
           "<texture2 value=\"2\" wrapmode=\"0\" cgenmode=\"0\" rotation=\"0\" function=\"2\"/>"
           "<texture3 value=\"3\" wrapmode=\"0\" cgenmode=\"2\" rotation=\"0\" function=\"0\"/>"
           "<fogtype value=\"1\"/><fogstart type=\"static\" value=\"3\"/><fogend type=\"static\" value=\"4\"/>"
           "<fogcolor value=\"1\"/><enable_glsl value=\"1\"/>"
        + uniforms
        + "/><vertex_shader>void main(void) {}</vertex_shader><fragment_shader>void main(void) { }</fragment_shader>"
          "</material>";
}

document_text complete_document()
{
    const std::string manipulator = "<m type=\"3\"><manipulator type=\"0\" model=\"1\"/>" + placement_values() + "</m>";
    document_text text;
    text.records[1] = "<layer type=\"0\"><r>1</r><g>0.5</g><b>0.25</b></layer>";
    text.records[2] = "<t name=\"sum\" type=\"101\" texture_format=\"0\" texture_filter=\"0\" layer_id=\"0\">"
                      "<i>0</i><output>2</output><p>1</p><p>0.5</p></t>"
                      "<t name=\"out\" type=\"255\" texture_format=\"8\" texture_filter=\"2\"><i>1</i></t>";
    text.records[3] = "<mesh filename=\"cube.mesh\"/>";
    text.records[4] = function_text();
    text.records[5] = "<v><values>" + repeated(animated("static", "0.5"), 9) + "</values></v>";
    text.records[6] = "<d name=\"plasma\" type=\"1\" texture_format=\"1\" texture_filter=\"1\" resolution=\"64x64\" "
                      "bpp=\"24\"><p>1</p></d>";
    text.records[7] = "<i filename=\"rock.tga\" texture_format=\"2\" texture_filter=\"2\"/>";
    text.records[8] = "<c xp=\"face.tga\" xn=\"face.tga\" yp=\"face.tga\" yn=\"face.tga\" zp=\"face.tga\" "
                      "zn=\"face.tga\" texture_format=\"3\" texture_filter=\"1\"/>";
    text.records[9] = "<font>"
        + repeated("<g model=\"1\" material=\"1\" bitmap=\"0\" offset=\"0.5\" width=\"1.5\"/>", glyph_count)
        + "</font>";
    text.records[10] = "<o type=\"0\" id=\"2\"/><o type=\"1\" id=\"1\"/><o type=\"3\" id=\"1\"/>"
                       "<o type=\"0\" id=\"1\"/><o type=\"2\" id=\"1\"/>";
    text.records[11] = complete_material();
    text.records[12] = "<e type=\"2\"><p>1</p><p>0</p></e>";
    text.records[13] = "<scene name=\"first\">" + scene_object_text(0, 4, 1, 1, "", manipulator)
        + scene_object_text(2, 0, 1, 1, "Hello") + "</scene>";
    text.records[14] = "<layer>" + clip_text(1, 0, 500) + clip_text(1, 100, 300) + "</layer>";
    text.music_attributes = " file=\"music.ogg\"";
    return text;
}

// ---- packs ----------------------------------------------------------------------------

static void append_big_endian(std::string& text, uint32_t value)
{
    for (int shift = 24; shift >= 0; shift -= 8)
        text += static_cast<char>(value >> shift);
}

std::string packed(const std::vector<pack_content>& entries)
{
    std::string index = std::string("DP\1", 3);
    std::string data;
    for (const pack_content& entry : entries) {
        const size_t start = 40 * entries.size() + 35 + data.size();
        index += entry.name + std::string(32 - entry.name.size(), '\0');
        append_big_endian(index, static_cast<uint32_t>(start));
        append_big_endian(index, static_cast<uint32_t>(start + entry.bytes.size() - 1));
        data += entry.bytes;
    }
    return index + std::string(32, '\0') + data;
}

pack_file* open_packed(const std::string& bytes)
{
    FILE* file = std::tmpfile();
    REQUIRE(file != nullptr);
    REQUIRE(std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size());
    REQUIRE(std::fflush(file) == 0);
    return pack_open(file);
}

pack_file* open_pack(const std::vector<pack_content>& entries)
{
    return open_packed(packed(entries));
}

std::vector<pack_content> complete_pack()
{
    return {{"cube.mesh", in_envelope(mesh_text(3, 1, {0, 1, 2}))}, {"rock.tga", tga_picture(4, 8, 3)},
        {"rock_mm1.tga", tga_picture(2, 4, 3)}, {"face.tga", tga_picture(2, 2, 3)}};
}

std::string in_envelope(const std::string& bytes)
{
    uint32_t size = 0;
    const owned_block<uint8_t> entry(
        xmlz_store(reinterpret_cast<const uint8_t*>(bytes.data()), static_cast<uint32_t>(bytes.size()), &size));
    REQUIRE(entry != nullptr);
    return std::string(reinterpret_cast<const char*>(entry.get()), size);
}

template <typename number> static void append_bytes(std::string& text, number value)
{
    char bytes[sizeof(number)];
    std::memcpy(bytes, &value, sizeof(number));
    text.append(bytes, sizeof(number));
}

std::string mesh_text(uint16_t vertices, uint16_t sets, const std::vector<uint16_t>& indices)
{
    std::string mesh;
    append_bytes(mesh, vertices);
    append_bytes(mesh, sets);
    for (uint16_t v = 0; v < vertices; ++v)
        for (const float value : {static_cast<float>(v), 0.0f, 0.0f})
            append_bytes(mesh, value);
    for (uint16_t set = 0; set < sets; ++set)
        for (uint16_t v = 0; v < vertices; ++v)
            for (const float value : {static_cast<float>(set), static_cast<float>(v)})
                append_bytes(mesh, value);
    for (uint16_t v = 0; v < vertices; ++v)
        for (const float value : {0.0f, 0.0f, 1.0f})
            append_bytes(mesh, value);
    for (const uint16_t index : indices)
        append_bytes(mesh, index);
    return mesh;
}

std::string tga_picture(uint16_t width, uint16_t height, uint32_t components, uint8_t first)
{
    const bool grey = components < 3;
    const bool alpha = components == 2 || components == 4;
    std::string picture(18, '\0');
    picture[2] = grey ? 3 : 2;
    std::memcpy(&picture[12], &width, 2);
    std::memcpy(&picture[14], &height, 2);
    picture[16] = static_cast<char>(8 * components);
    picture[17] = static_cast<char>(0x20 | (alpha ? 8 : 0));
    const uint8_t c = first;
    const uint8_t pixel[4] = {static_cast<uint8_t>(grey ? c : c + 2), static_cast<uint8_t>(c + 1),
        static_cast<uint8_t>(c), static_cast<uint8_t>(c + 3)}; // colours are stored blue first
    for (uint32_t i = 0; i < uint32_t{width} * height; ++i)
        picture.append(reinterpret_cast<const char*>(pixel), components);
    return picture;
}

// ---- reading --------------------------------------------------------------------------

reading::reading(const document_text& text, const std::vector<pack_content>& entries)
    : reading(to_text(text), entries)
{
}

reading::reading(const std::string& text, const std::vector<pack_content>& entries)
    : d{}
    , root(xml_parse(text.c_str()))
    , pack(open_pack(entries))
    , failed(false)
    , records_read(0)
{
    document_create(d, "demo.xmlz", timeline_new());
    document_reader reader;
    document_reader_begin(reader, d, root, pack);
    for (bool going = true; going;) {
        switch (document_read_step(reader)) {
        case read_record:
            REQUIRE((reader.problems.empty() || !reader.problems.back().fatal)); // what is fatal ends the step
            ++records_read;
            break;
        case read_section_end:
            sections_ended.push_back(reader.section);
            break;
        case read_failed:
            failed = true;
            going = false;
            break;
        case read_done:
            going = false;
            break;
        }
    }
    problems = reader.problems;
    for (const document_problem& problem : problems) {
        lines.push_back(problem.text);
        REQUIRE(problem.fatal == (failed && lines.size() == problems.size())); // what is fatal comes last
    }
}

reading::~reading()
{
    document_free(d);
    xml_free(root);
    pack_close(pack);
}

std::string joined(const reading& r)
{
    std::string all;
    for (const std::string& line : r.lines)
        all += line + "\n";
    return all;
}

std::string fatal_line(const reading& r)
{
    return r.failed ? r.lines.back() + "\n" : "";
}

std::string lines_with(const reading& r, const std::string& part)
{
    std::string all;
    for (const std::string& line : r.lines)
        if (line.find(part) != std::string::npos)
            all += line + "\n";
    return all;
}

std::string dangling_lines(const reading& r)
{
    return lines_with(r, " does not exist.");
}

void check_byte(uint32_t section, const std::string& record, const std::string& from, const std::string& warning,
    uint8_t (*byte_of)(const reading& r))
{
    const struct {
        const char* number;
        const char* byte; // empty: the number itself
        uint8_t value;
    } cases[] = {{"0", "", 0}, {"1", "", 1}, {"255", "", 255}, {"256", "0", 0}, {"257", "1", 1}, {"258", "2", 2},
        {"-1", "255", 255}, {"-255", "1", 1}, {"2147483647", "255", 255}, {"-2147483648", "0", 0}};
    for (const auto& c : cases) {
        document_text text = complete_document();
        text.records[section] = with(record, from, std::string("\"") + c.number + "\"");
        const reading r(text);
        const std::string line = warning + c.number + " is outside 0..255: its low eight bits, " + c.byte + ", count.";
        CHECK_FALSE(r.failed);
        CHECK_MESSAGE(byte_of(r) == c.value, line);
        CHECK_MESSAGE((joined(r).find(line + "\n") != std::string::npos) == (c.byte[0] != 0), line);
    }
}
