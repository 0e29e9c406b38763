// Keys of records, and what one document takes from another.
#include "model/record_handover.h"

#include "document_text.h"

#include <doctest/doctest.h>

#include <set>
#include <string>

static source_key key_of(const std::string& bytes)
{
    source_key key;
    add_to_key(key, bytes.data(), bytes.size());
    return key;
}

TEST_CASE("equal bytes have equal keys, and others differ in both halves")
{
    std::set<uint64_t> low;
    std::set<uint64_t> high;
    uint32_t count = 0;
    const std::string base(40, 'a');
    for (size_t size = 0; size <= base.size(); ++size) {
        for (size_t at = 0; at <= size; ++at) {
            std::string bytes = base.substr(0, size);
            if (at < size)
                bytes[at] = '\0'; // a zero byte is no missing one
            CHECK(key_of(bytes) == key_of(std::string(bytes)));
            low.insert(key_of(bytes).low);
            high.insert(key_of(bytes).high);
            ++count;
        }
    }
    CHECK(low.size() == count);
    CHECK(high.size() == count);
}

TEST_CASE("what is added in two parts is not what is added in one, and nothing added is not none")
{
    source_key parts = key_of("ab");
    add_to_key(parts, "c", 1);
    source_key others = key_of("a");
    add_to_key(others, "bc", 2);
    CHECK(parts != others);
    CHECK(parts != key_of("abc"));
    CHECK(key_of("") != source_key{});
}

TEST_CASE("one old record serves one new one of its section and key, and its key is noted in any case")
{
    document before = {};
    record_handover h;
    h.before = &before;
    offer_record(h, section_meshes, 3, key_of("cube"));
    offer_record(h, section_meshes, 1, key_of("ball"));
    offer_record(h, section_meshes, 2, key_of("cube"));
    offer_record(h, section_meshes, 4, {}); // none
    sort_offers(h);
    CHECK(take_record(h, section_image_textures, 1, key_of("cube")) == 0);
    CHECK(take_record(h, section_meshes, 1, key_of("cube")) == 3);
    CHECK(take_record(h, section_meshes, 2, key_of("cube")) == 2);
    CHECK(take_record(h, section_meshes, 3, key_of("cube")) == 0);
    CHECK(take_record(h, section_meshes, 4, key_of("cone")) == 0);
    CHECK(take_record(h, section_meshes, 6, key_of("ball")) == 1);
    CHECK(h.made == 3);
    REQUIRE(h.taken.size() == 3);
    CHECK(h.taken[0].section == section_meshes);
    CHECK(h.taken[2].from == 1);
    CHECK(h.taken[2].to == 6);
    CHECK(key_of_record(h, section_meshes, 3) == key_of("cube"));
    CHECK(key_of_record(h, section_meshes, 4) == key_of("cone"));
    CHECK(key_of_record(h, section_meshes, 5) == source_key{});
    CHECK(key_of_record(h, section_meshes, 7) == source_key{});
    CHECK(key_of_record(h, section_image_textures, 1) == key_of("cube"));
    drop_key(h, section_meshes, 3);
    CHECK(key_of_record(h, section_meshes, 3) == source_key{});
}

// ---- readers that ask ---------------------------------------------------------------------

namespace {

// A document read to its end with a handover, and never uploaded: what it takes is there to be looked at.
struct asked_reading {
    document d = {};
    pack_file* pack;
    xml_node* root;
    record_handover h;
    document_reader reader;

    explicit asked_reading(
        const document_text& text, const std::vector<pack_content>& entries, asked_reading* before = nullptr)
        : pack(open_pack(entries))
        , root(xml_parse(to_text(text).c_str()))
    {
        if (before != nullptr)
            offer_all(*before);
        document_create(d, "demo.xmlz", timeline_new());
        document_reader_begin(reader, d, root, pack);
        reader.handover = &h;
        while (document_read_step(reader) <= read_section_end) { }
    }
    void offer_all(asked_reading& before)
    {
        h.before = &before.d;
        for (uint32_t section = 1; section < no_more_sections; ++section)
            for (uint32_t handle = 1; handle < before.h.keys[section].size(); ++handle)
                offer_record(h, section, handle, key_of_record(before.h, section, handle));
        sort_offers(h);
    }
    ~asked_reading()
    {
        for (const taken_record& taken : h.taken) { // they are those of the document before
            if (taken.section == section_meshes)
                *table_get(d.mesh_table, taken.to) = {};
            if (taken.section == section_image_textures)
                *table_get(d.image_texture_table, taken.to) = {};
            if (taken.section == section_cube_maps)
                *table_get(d.cube_map_table, taken.to) = {};
        }
        document_free(d);
        xml_free(root);
        pack_close(pack);
    }
    asked_reading(const asked_reading&) = delete;
    asked_reading& operator=(const asked_reading&) = delete;
};

} // namespace

static uint32_t taken_of(const asked_reading& r, uint32_t section)
{
    uint32_t count = 0;
    for (const taken_record& taken : r.h.taken)
        count += taken.section == section;
    return count;
}

TEST_CASE("a mesh, a picture and a cube map of the same bytes are taken undecoded")
{
    asked_reading before(complete_document(), complete_pack());
    asked_reading after(complete_document(), complete_pack(), &before);
    CHECK(before.h.taken.empty());
    CHECK(before.h.made == 3);
    CHECK(after.h.made == 0);
    CHECK(after.h.taken.size() == 3);
    CHECK(table_get(after.d.mesh_table, 1)->data == table_get(before.d.mesh_table, 1)->data);
    CHECK(table_get(after.d.image_texture_table, 1)->pixels == table_get(before.d.image_texture_table, 1)->pixels);
    CHECK(table_get(after.d.cube_map_table, 1)->faces[5] == table_get(before.d.cube_map_table, 1)->faces[5]);
    CHECK(after.reader.unfolded_bytes == before.reader.unfolded_bytes);
    CHECK(after.reader.problems.size() == before.reader.problems.size());
}

TEST_CASE("another entry, level, format or filter is decoded")
{
    asked_reading before(complete_document(), complete_pack());
    const auto taken_with = [&before](const document_text& text, const std::vector<pack_content>& entries) {
        asked_reading after(text, entries, &before);
        return std::to_string(taken_of(after, section_meshes)) + std::to_string(taken_of(after, section_image_textures))
            + std::to_string(taken_of(after, section_cube_maps));
    };
    std::vector<pack_content> entries = complete_pack();
    CHECK(taken_with(complete_document(), entries) == "111");
    entries.push_back({"rock_mm2.tga", tga_picture(1, 2, 3)});
    CHECK(taken_with(complete_document(), entries) == "101");
    document_text text = complete_document();
    text.records[7] = with(text.records[7], "texture_format=\"2\"", "texture_format=\"1\"");
    text.records[8] = with(text.records[8], "texture_filter=\"1\"", "texture_filter=\"2\"");
    CHECK(taken_with(text, complete_pack()) == "100");
    for (const std::string name : {"cube.mesh", "rock.tga", "face.tga"}) {
        entries = complete_pack();
        for (pack_content& entry : entries)
            if (entry.name == name)
                entry.bytes = name == "cube.mesh" ? in_envelope(mesh_text(3, 1, {0, 2, 1})) : tga_picture(2, 2, 3, 77);
        const std::string expected = name == "cube.mesh" ? "011" : name == "rock.tga" ? "101" : "110";
        CAPTURE(name);
        CHECK(taken_with(complete_document(), entries) == expected);
    }
}

TEST_CASE("what warns while it is decoded is decoded each time, and warns each time")
{
    std::vector<pack_content> entries = complete_pack();
    for (pack_content& entry : entries) {
        if (entry.name == "rock_mm1.tga")
            entry.bytes = tga_picture(7, 5, 3); // no level of it
        if (entry.name == "cube.mesh")
            entry.bytes = in_envelope(mesh_text(3, 1, {0, 1, 2, 0})); // bytes behind the last triangle
    }
    asked_reading before(complete_document(), entries);
    asked_reading after(complete_document(), entries, &before);
    CHECK(after.h.taken.size() == 1); // the cube map
    CHECK(after.reader.warning_count == before.reader.warning_count);
    CHECK(before.reader.warning_count >= 2);
}
