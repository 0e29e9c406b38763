#include "authoring/check/read_documents.h"

#include "../built_source.h"

#include "authoring/check/findings.h"
#include "authoring/show/kept_work.h"

#include <doctest/doctest.h>

// A show of a mesh, a picture with levels' names free, and a cube map.
static const char* const pictured_show
    = "local skin = image 'skin.png'\n"
      "local sky = cube_map { xp = 'a.jpg', xn = 'a.jpg', yp = 'a.jpg', yn = 'a.jpg', zp = 'a.jpg', zn = 'a.jpg' }\n"
      "local one = material { texture = skin, blend = 'alpha' }\n"
      "local two = material { texture = sky }\n"
      "local box = require 'solids'.box()\n"
      "track { scene 'a' { box { material = one }, box { material = two } } { from = '0s', to = '2s' } }\n";

static void make_pictured_show(const test_folder& folder)
{
    write_file(folder, "show.lua", pictured_show);
    copy_file(folder, "first-light/pictures/glow.png", "skin.png");
    copy_file(folder, "first-light/pictures/lake_xp.jpg", "a.jpg");
}

static const image_texture& first_image(const read_document& read)
{
    const image_texture* image = table_get(read.d.image_texture_table, 1);
    REQUIRE(image != nullptr);
    REQUIRE(image->pixels != nullptr);
    return *image;
}

static std::vector<uint8_t> pixels_of(const image_texture& image)
{
    return {image.pixels, image.pixels + size_t{image.width} * image.height * image.components};
}

TEST_CASE("pictures and meshes of a document that is known are taken and not decoded, and are the same")
{
    test_folder folder;
    make_pictured_show(folder);
    const built_source built = build_folder(folder);
    REQUIRE_MESSAGE(built.file != nullptr, built.told);
    known_document known;
    owned_read_document first = read_packed_document(show_document_name, built.file.get(), &known);
    const uint8_t* decoded = first_image(*first).pixels;
    const uint8_t* face = table_get(first->d.cube_map_table, 1)->faces[0];
    const uint8_t* mesh = table_get(first->d.mesh_table, 1)->data;
    const std::vector<uint8_t> pixels = pixels_of(first_image(*first));
    know_document(known, std::move(first));
    owned_read_document second = read_packed_document(show_document_name, built.file.get(), &known);
    CHECK(first_image(*second).pixels == decoded);
    CHECK(pixels_of(first_image(*second)) == pixels);
    CHECK(table_get(second->d.cube_map_table, 1)->faces[0] == face);
    CHECK(table_get(second->d.mesh_table, 1)->data == mesh);
    CHECK(table_get(second->d.mesh_table, 1)->arrays.index_count == 36);
    know_document(known, std::move(second));
    copy_file(folder, "first-light/pictures/aurora.png", "other.png");
    std::filesystem::rename(folder.path + "/other.png", folder.path + "/skin.png");
    const built_source changed = build_folder(folder);
    REQUIRE(changed.file != nullptr);
    const owned_read_document third = read_packed_document(show_document_name, changed.file.get(), &known);
    const owned_read_document alone = read_packed_document(show_document_name, changed.file.get());
    CHECK(pixels_of(first_image(*third)) == pixels_of(first_image(*alone)));
    CHECK(pixels_of(first_image(*third)) != pixels);
    CHECK(table_get(third->d.cube_map_table, 1)->faces[0] == face);
}

static std::string lines_with(const pack_file* pack, known_documents* known)
{
    std::string lines;
    for (const show_problem& problem : findings_as_problems(check_documents(pack, {}, known)))
        lines += problem.file + " " + problem.where + " " + problem.text + "\n";
    return lines;
}

TEST_CASE("what is found of a show is the same whether the show before is known or not, also behind a broken one")
{
    test_folder folder;
    make_pictured_show(folder);
    const built_source built = build_folder(folder);
    REQUIRE(built.file != nullptr);
    known_documents known;
    const std::string fresh = lines_with(built.file.get(), nullptr);
    CHECK(lines_with(built.file.get(), &known) == fresh);
    CHECK(lines_with(built.file.get(), &known) == fresh);
    std::vector<pack_entry> entries = built.built.entries;
    for (pack_entry& entry : entries)
        if (entry.name == "skin.png")
            entry.bytes.resize(entry.bytes.size() / 2);
    const std::vector<uint8_t> bytes = pack_bytes(entries);
    const owned_pack broken(pack_open_bytes(bytes));
    const std::string told = lines_with(broken.get(), nullptr);
    REQUIRE(told.find("cannot decode") != std::string::npos);
    for (uint32_t round = 0; round < 3; ++round) // a record that could not be read must not be taken for a good one
        CHECK(lines_with(broken.get(), &known) == told);
    for (uint32_t round = 0; round < 3; ++round)
        CHECK(lines_with(built.file.get(), &known) == fresh);
}
