#include "content/owners.h"
#include "content/pack.h"
#include "counted_allocations.h"
#include "document_text.h"
#include "model/decode_ahead.h"
#include "model/image_decode.h"
#include "shell/loading.h"
#include "silent_gl.h"
#include "texgen/cosine_table.h"
#include "texgen/maze_tables.h"

#include <chrono>
#include <doctest/doctest.h>
#include <thread>

// What a show comes to when it is unpacked: all that stays in memory when it is loaded, and all pictures, which loading
// hands to OpenGL one after the other. Loading is to hold no more than a fifth more than that at once.

namespace {

struct loading_memory {
    int64_t content; // bytes
    int64_t most;
};

} // namespace

static int64_t picture_bytes(const pack_file& pack, const char* name)
{
    uint8_t* bytes = nullptr;
    uint32_t size = 0;
    decoded_image image = {};
    if (name == nullptr || pack_read_entry(&pack, name, &bytes, &size) != pack_found)
        return 0;
    const owned_block<uint8_t> entry(bytes);
    if (decode_image(bytes, size, 0, image) != image_decoded)
        return 0;
    std::free(image.pixels);
    return int64_t{image.width} * image.height * image.components;
}

// Of all records that have pictures, levels and faces included. Those of the texture graph are there all at once, too.
static int64_t all_picture_bytes(const document& d, const xml_node& root, const pack_file& pack)
{
    int64_t bytes = 0;
    uint32_t number = 0;
    for (const xml_node* section = root.first_child->first_child; section != nullptr; section = section->next_sibling) {
        ++number;
        for (const xml_node* record = section->first_child; record != nullptr; record = record->next_sibling) {
            if (number == section_generated_images)
                bytes += 3 * generated_size * generated_size;
            if (number == section_image_textures) {
                const char* name = xml_get_attribute(record, "filename");
                bytes += picture_bytes(pack, name);
                for (const uint32_t level : {1u, 2u})
                    bytes += picture_bytes(pack, name_of_level(name, level).text);
            }
            if (number == section_cube_maps)
                for (const char* face : {"xp", "xn", "yp", "yn", "zp", "zn"})
                    bytes += picture_bytes(pack, xml_get_attribute(record, face));
        }
    }
    for (auto [handle, node] : d.texture_table)
        bytes += 3 * generated_size * generated_size;
    return bytes;
}

static loading_memory load(const pack_file& pack, uint32_t workers)
{
    load_silent_gl();
    build_cosine_table();
    build_maze_tables();
    loading_options options = {};
    options.caps.vbo = 1;
    options.first_images = true;
    options.workers = workers;
    document d = {};
    owned_tree tree;
    std::string problem;
    const int64_t before = bytes_held();
    forget_most_bytes_held();
    const bool loaded = load_document(&pack, "demo.xmlz", timeline_new(), options, d, tree, problem);
    loading_memory memory = {bytes_held() - before, most_bytes_held() - before};
    CHECK_MESSAGE(loaded, problem);
    memory.content += all_picture_bytes(d, *tree, pack);
    unload_document_memory(d);
    return memory;
}

static void check_memory(const pack_file& pack, const char* what)
{
    for (const uint32_t workers : {0u, 1u, 3u}) {
        const loading_memory memory = load(pack, workers);
        const std::string line = std::string(what) + ", " + std::to_string(workers)
            + " workers: " + std::to_string(memory.most >> 10) + " of " + std::to_string(memory.content >> 10) + " KiB";
        INFO(line);
        CHECK(memory.most * 5 <= memory.content * 6);
        if (std::getenv("BRIMLOW_TELL_MEMORY") != nullptr)
            std::puts(line.c_str());
    }
}

static std::vector<pack_content> many_entries(document_text& text)
{
    std::vector<pack_content> entries;
    for (uint32_t i = 0; i < 40; ++i) {
        const std::string number = std::to_string(i);
        entries.push_back({"p" + number + ".tga", tga_picture(700, 500, i % 2 == 0 ? 3 : 4, static_cast<uint8_t>(i))});
        text.records[section_image_textures]
            += "<i filename=\"p" + number + ".tga\" texture_format=\"0\" texture_filter=\"2\"/>";
        entries.push_back({"m" + number + ".mesh", in_envelope(mesh_text(2000, 1, {0, 1, 2}))});
        text.records[section_meshes] += "<m filename=\"m" + number + ".mesh\"/>";
    }
    entries.push_back({"demo.xmlz", in_envelope(to_text(text))});
    return entries;
}

TEST_CASE("loading many pictures and meshes holds little more than they come to")
{
    document_text text;
    const owned_pack pack(open_pack(many_entries(text)));
    check_memory(*pack, "many");
}

TEST_CASE("loading the bundled show holds little more than it comes to")
{
    const owned_pack pack(pack_open(std::fopen(BRIMLOW_FIRST_LIGHT, "rb")));
    if (pack == nullptr)
        return; // not made in this build
    check_memory(*pack, "First Light");
}

TEST_CASE("workers unpack no further ahead than they may, and leave nothing")
{
    document_text text;
    const owned_pack pack(open_pack(many_entries(text)));
    const owned_tree tree(xml_parse(to_text(text).c_str()));
    constexpr int64_t entry = 700 * 500 * 4;
    for (const uint32_t workers : {1u, 3u}) {
        const int64_t before = bytes_held();
        forget_most_bytes_held();
        owned_decode_ahead ahead(decode_ahead_begin(tree.get(), pack.get(), workers));
        REQUIRE(ahead != nullptr);
        const auto room = static_cast<int64_t>(decode_ahead_room * (workers + 1));
        for (int64_t last = -1; last != bytes_held();) { // until they rest
            last = bytes_held();
            std::this_thread::sleep_for(std::chrono::milliseconds(200));
        }
        CHECK(bytes_held() - before > room - 2 * entry);                // they have been at it
        CHECK(most_bytes_held() - before < room + 2 * workers * entry); // with what they are just at
        ahead.reset();
        CHECK(bytes_held() - before < 4096); // the test itself may take some
    }
}
