#include "model/decode_ahead.h"

#include "content/pack.h"
#include "document_text.h"

#include <cstring>
#include <doctest/doctest.h>
#include <pthread.h>
#include <unistd.h>

namespace {

// Meshes, pictures with and without levels, cube maps: large enough that workers are hired.
struct packed_show {
    document_text text;
    std::vector<pack_content> entries;
};

// What reading left, as text: all that was unpacked, and all lines.
struct read_result {
    std::vector<std::string> unpacked;
    std::string lines;
    bool with_workers;
};

} // namespace

static void add_mesh(packed_show& s, const std::string& name, const std::string& bytes)
{
    s.text.records[section_meshes] += "<m filename=\"" + name + "\"/>";
    s.entries.push_back({name, bytes});
}

static void add_picture(packed_show& s, const std::string& name, const std::string& bytes)
{
    s.text.records[section_image_textures]
        += "<i filename=\"" + name + "\" texture_format=\"2\" texture_filter=\"2\"/>";
    s.entries.push_back({name, bytes});
}

static packed_show many_entries()
{
    packed_show s;
    for (uint16_t i = 0; i < 30; ++i) {
        const std::string number = std::to_string(i);
        const auto side = static_cast<uint16_t>(8 + 4 * i);
        const auto first = static_cast<uint8_t>(i);
        add_mesh(s, "m" + number + ".mesh", in_envelope(mesh_text(static_cast<uint16_t>(3 + i), 1, {0, 1, 2})));
        add_picture(s, "p" + number + ".tga", tga_picture(side, side, i % 2 == 0 ? 3 : 4, first));
        if (i % 3 == 0)
            s.entries.push_back({"p" + number + "_mm1.tga", tga_picture(side / 2, side / 2, 3, first)});
        if (i % 5 == 0)
            s.entries.push_back({"p" + number + "_mm2.tga", tga_picture(side / 4, side / 4, 4, first)});
        s.entries.push_back({"f" + number + ".tga", tga_picture(16, 16, 3, first)});
    }
    for (uint32_t cube = 0; cube < 5; ++cube) {
        s.text.records[section_cube_maps] += "<c texture_format=\"3\" texture_filter=\"1\"";
        for (uint32_t face = 0; face < cube_face_count; ++face)
            s.text.records[section_cube_maps] += std::string(" ") + "xyz"[face / 2] + "pn"[face % 2] + "=\"f"
                + std::to_string(cube * cube_face_count + face) + ".tga\"";
        s.text.records[section_cube_maps] += "/>";
    }
    return s;
}

static std::string bytes_of(const void* bytes, size_t size)
{
    return bytes != nullptr ? std::string(static_cast<const char*>(bytes), size) : "none";
}

static void note_records(const document& d, std::vector<std::string>& unpacked)
{
    for (auto [handle, mesh] : d.mesh_table)
        unpacked.push_back(bytes_of(mesh.data, 4 + 32 * mesh.arrays.vertex_count + 2 * mesh.arrays.index_count));
    for (auto [handle, image] : d.image_texture_table) {
        const size_t size = size_t{image.width} * image.height * image.components;
        unpacked.push_back(bytes_of(image.pixels, size));
        unpacked.push_back(bytes_of(image.level1, size / 4));
        unpacked.push_back(bytes_of(image.level2, size / 16));
    }
    for (auto [handle, cube] : d.cube_map_table)
        for (uint32_t face = 0; face < cube_face_count; ++face)
            unpacked.push_back(bytes_of(cube.faces[face], size_t{cube.size} * cube.size * cube.components[face]));
}

// Of an open pack that loses its end only the first `kept` bytes are there when it is read.
static read_result read_with(const packed_show& s, uint32_t workers, uint64_t kept = UINT64_MAX)
{
    const owned_pack pack(open_pack(s.entries));
    if (kept < pack->size)
        REQUIRE(ftruncate(fileno(pack->stream), static_cast<off_t>(kept)) == 0);
    const owned_tree tree(xml_parse(to_text(s.text).c_str()));
    document d;
    document_create(d, "demo.xmlz", timeline_new());
    document_reader reader;
    document_reader_begin(reader, d, tree.get(), pack.get());
    const owned_decode_ahead ahead(decode_ahead_begin(tree.get(), pack.get(), workers));
    reader.ahead = ahead.get();
    read_step step = read_record;
    while (step <= read_section_end)
        step = document_read_step(reader);
    read_result result = {{}, "", ahead != nullptr};
    for (const document_problem& problem : reader.problems)
        result.lines += problem.text + "\n";
    if (step == read_done) // else the last record is half there
        note_records(d, result.unpacked);
    document_free(d);
    return result;
}

static void check_alike(const packed_show& s, const std::string& part_of_lines, uint64_t kept = UINT64_MAX)
{
    const read_result alone = read_with(s, 0, kept);
    CHECK_FALSE(alone.with_workers);
    CHECK(alone.lines.find(part_of_lines) != std::string::npos);
    for (const uint32_t workers : {1u, 2u, 7u}) {
        const read_result beside = read_with(s, workers, kept);
        CHECK(beside.with_workers);
        CHECK(beside.lines == alone.lines);
        CHECK(beside.unpacked == alone.unpacked);
    }
}

TEST_CASE("meshes, pictures, their levels and cube maps are the same with workers and without")
{
    check_alike(many_entries(), "");
    CHECK(read_with(many_entries(), 3).lines == "");
}

TEST_CASE("a level that is none is warned about with workers as without, and computed")
{
    packed_show s = many_entries();
    s.entries.push_back({"p1_mm1.tga", tga_picture(5, 5, 3)});
    s.entries.push_back({"p2_mm1.tga", "no picture"});
    s.entries.push_back({"p4_mm2.tga", tga_picture(6, 6, 3).substr(0, 30)});
    check_alike(s, "record 2: \"p1_mm1.tga\" is no picture of 6 x 6 pixels: the level is computed.");
}

TEST_CASE("what cannot be unpacked fails at its record with workers as without")
{
    const auto broken = [](const std::string& name, const std::string& bytes) {
        packed_show s = many_entries();
        for (pack_content& entry : s.entries)
            if (entry.name == name)
                entry.bytes = bytes;
        return s;
    };
    check_alike(broken("m7.mesh", "no mesh"), "record 8: entry \"m7.mesh\" is not compressed");
    check_alike(broken("m7.mesh", in_envelope("no mesh")), "record 8: \"m7.mesh\" is not a mesh");
    check_alike(broken("m7.mesh", ""), "record 8: entry \"m7.mesh\" is damaged.");
    check_alike(broken("p9.tga", "no picture"), "record 10: cannot decode \"p9.tga\".");
    check_alike(broken("p9.tga", ""), "record 10: cannot decode \"p9.tga\".");
    check_alike(
        broken("p9.tga", std::string("P6 20000 20000 255\n") + std::string(100, 'x')), "\"p9.tga\" is too large.");
    check_alike(broken("f8.tga", "no picture"), "record 2, yp: cannot decode \"f8.tga\".");
    check_alike(broken("f8.tga", tga_picture(16, 8, 3)), "record 2, yp: \"f8.tga\" is 16 x 8, not a square.");
    packed_show s = many_entries();
    s.text.records[section_image_textures] = with(s.text.records[section_image_textures], "p20.tga", "elsewhere.tga");
    check_alike(s, "record 21: entry \"elsewhere.tga\" is missing.");
    s.text.records[section_image_textures]
        = with(s.text.records[section_image_textures], " filename=\"elsewhere.tga\"", "");
    check_alike(s, "record 21: attribute \"filename\" is missing.");
}

TEST_CASE("a pack that loses its end while it is open fails at the same record with workers as without")
{
    const packed_show s = many_entries();
    uint64_t size = 0;
    for (const pack_content& entry : s.entries)
        size += entry.bytes.size();
    for (const uint64_t part : {3u, 10u, 50u, 90u})
        check_alike(s, "is damaged.", size * part / 100);
}

TEST_CASE("where no thread can be started the reader is alone")
{
    pthread_attr_t before;
    pthread_attr_t huge;
    REQUIRE(pthread_getattr_default_np(&before) == 0);
    REQUIRE(pthread_attr_init(&huge) == 0);
    REQUIRE(pthread_attr_setstacksize(&huge, SIZE_MAX - 0xFFFFF) == 0); // which no memory has place for
    REQUIRE(pthread_setattr_default_np(&huge) == 0);
    const read_result result = read_with(many_entries(), 3);
    REQUIRE(pthread_setattr_default_np(&before) == 0);
    CHECK_FALSE(result.with_workers);
    CHECK(result.unpacked == read_with(many_entries(), 0).unpacked);
}

TEST_CASE("the empty name and names of 32 bytes are the reader's, with workers as without")
{
    packed_show s = many_entries();
    s.text.records[section_meshes] = with(s.text.records[section_meshes], "m3.mesh", "");
    check_alike(s, "attribute \"filename\" is empty: the first entry of the pack is taken.");
    s.text.records[section_meshes] = with(s.text.records[section_meshes], "m5.mesh", std::string(32, 'm'));
    check_alike(s, "is longer than the 31 bytes of an entry's name.");
}

TEST_CASE("workers that are ended in the middle leave nothing behind")
{
    packed_show s = many_entries();
    const owned_pack pack(open_pack(s.entries));
    const owned_tree tree(xml_parse(to_text(s.text).c_str()));
    for (uint32_t taken = 0; taken < 12; ++taken) {
        const owned_decode_ahead ahead(decode_ahead_begin(tree.get(), pack.get(), 4));
        REQUIRE(ahead != nullptr);
        for (uint32_t record = 1; record <= taken; ++record) {
            unpacked_mesh mesh = {};
            if (take_mesh_ahead(ahead.get(), record, mesh))
                CHECK(mesh.size == 4 + 32 * (3 + record - 1) + 6);
            std::free(mesh.bytes);
        }
    }
}

TEST_CASE("pictures that have no room ahead come when they are asked for")
{
    packed_show s;
    for (uint32_t i = 0; i < 6; ++i) // each alone takes more than all may be ahead
        add_picture(s, "p" + std::to_string(i) + ".tga", tga_picture(2000, 1500, 3, static_cast<uint8_t>(i)));
    check_alike(s, "");
}

TEST_CASE("nobody is hired for small documents, without workers and without a pack")
{
    const packed_show s = many_entries();
    const owned_pack pack(open_pack(s.entries));
    const owned_tree tree(xml_parse(to_text(s.text).c_str()));
    CHECK(decode_ahead_begin(tree.get(), pack.get(), 0) == nullptr);
    CHECK(decode_ahead_begin(tree.get(), nullptr, 2) == nullptr);
    CHECK(decode_ahead_begin(nullptr, pack.get(), 2) == nullptr);
    const owned_pack small(open_pack(complete_pack()));
    const owned_tree complete(xml_parse(to_text(complete_document()).c_str()));
    CHECK(decode_ahead_begin(complete.get(), small.get(), 2) == nullptr);
    unpacked_picture picture;
    CHECK_FALSE(take_picture_ahead(nullptr, 1, picture));
    CHECK(decode_worker_count() < max_decode_workers + 1);
}
