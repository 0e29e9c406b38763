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

#include <algorithm>
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

// Whoever was left inside a decoder comes out some time. The test itself may take a little.
static bool comes_down_to(int64_t bytes)
{
    for (int looks = 0; looks < 6000 && bytes_held() - bytes >= 4096; ++looks)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return bytes_held() - bytes < 4096;
}

TEST_CASE("workers unpack no further ahead than they may, and leave nothing")
{
    document_text text;
    const owned_pack pack(open_pack(many_entries(text)));
    const owned_tree tree(xml_parse(to_text(text).c_str()));
    constexpr int64_t entry = 700 * 500 * 4;
    for (const uint32_t workers : {1u, 3u, max_decode_workers}) {
        const int64_t before = bytes_held();
        forget_most_bytes_held();
        owned_decode_ahead ahead(decode_ahead_begin(tree.get(), pack.get(), workers));
        REQUIRE(ahead != nullptr);
        const auto room = static_cast<int64_t>(std::min(decode_ahead_room * (workers + 1), most_decode_ahead_room));
        const auto rest = [&] { // they have been at it, and who waits for room holds nothing
            const int64_t held = bytes_held() - before;
            return held > room / 2 && held < room + 65536;
        };
        for (const int pause_ms : {0, 200}) { // time to go on for those that should not
            std::this_thread::sleep_for(std::chrono::milliseconds(pause_ms));
            for (int looks = 0; looks < 6000 && !rest(); ++looks)
                std::this_thread::sleep_for(std::chrono::milliseconds(10));
            CHECK(rest());
        }
        CHECK(most_bytes_held() - before < room + 2 * workers * entry); // with what they are just at
        ahead.reset();
        CHECK(comes_down_to(before));
    }
}

// Of 201 MB in one colour, which take the decoder a while.
static std::string large_picture()
{
    constexpr uint32_t side = 8192;
    std::string picture = tga_picture(1, 1, 3).substr(0, 18);
    picture[2] = 10; // runs of pixels
    picture[13] = picture[15] = side >> 8;
    picture[12] = picture[14] = 0;
    for (uint32_t run = 0; run < side * side / 128; ++run)
        picture += "\xFF\1\2\3";
    return picture;
}

TEST_CASE("nobody waits for a worker that is inside a large picture, and it leaves nothing")
{
    document_text text;
    std::vector<pack_content> entries;
    for (const char* name : {"one.tga", "two.tga"}) {
        entries.push_back({name, large_picture()});
        text.records[section_image_textures]
            += std::string("<i filename=\"") + name + "\" texture_format=\"0\" texture_filter=\"0\"/>";
    }
    const owned_tree tree(xml_parse(to_text(text).c_str()));
    const int64_t before = bytes_held();
    bool was_left = false; // it may have come out by chance
    for (int tries = 0; tries < 20 && !was_left; ++tries) {
        owned_pack pack(open_pack(entries));
        owned_decode_ahead ahead(decode_ahead_begin(tree.get(), pack.get(), 1));
        REQUIRE(ahead != nullptr);
        const auto is_inside = [&] { return bytes_held() - before > 200'000'000; };
        for (int looks = 0; looks < 60000 && !is_inside(); ++looks)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        REQUIRE(is_inside());
        ahead.reset();
        was_left = is_inside();
        pack.reset(); // it needs no pack any more
        CHECK(comes_down_to(before));
    }
    CHECK(was_left);
}
