#include "../built_source.h"

#include "authoring/show/entries.h"
#include "content/owners.h"
#include "content/pack.h"
#include "content/xmlz.h"

#include <doctest/doctest.h>
#include <zlib.h>

static std::string names_of(const built_source& b)
{
    std::string names;
    for (const pack_entry& entry : b.built.entries)
        names += (names.empty() ? "" : " ") + entry.name;
    return names;
}

// A show of one picture, called as given, in its folder.
static built_source build_picture(const std::vector<std::string>& files, const std::string& more = "")
{
    const test_folder folder;
    std::string source;
    for (const std::string& file : files) {
        if (!std::filesystem::exists(folder.path + "/" + file))
            copy_file(folder, "examples/pictures/boat.png", file);
        source += "track { scene \"s\" { screen() { material = material { texture = image(\"" + file + "\", {" + more
            + "}) } } } { from = 0, to = 100 } }\n";
    }
    write_file(folder, "show.lua", source);
    return build_folder(folder);
}

TEST_CASE("an entry is called as its file, and as a number more where that is taken")
{
    CHECK(names_of(build_picture({"boat.png"})) == "demo.xmlz boat.png screen.mesh");
    CHECK(names_of(build_picture({"a/boat.png", "b/boat.png", "a/boat.png"}))
        == "demo.xmlz boat.png screen.mesh boat-2.png");
}

TEST_CASE("a name has room for 31 bytes, and is cut between letters")
{
    CHECK(names_of(build_picture({"a-name-of-just-thirty-1-bytes.png"})).find("a-name-of-just-thirty-1-byt.png ")
        != std::string::npos);
    const std::string exact = "abcdefghijklmnopqrstuvwxyz0.png"; // 31
    CHECK(names_of(build_picture({exact})).find(exact + " ") != std::string::npos);
    const std::string letters = "abcdefghijklmnopqrstuvwxy\xc3\xa9.png"; // 31, the last letter of two bytes
    CHECK(names_of(build_picture({letters})).find(letters + " ") != std::string::npos);
    const std::string cut = "abcdefghijklmnopqrstuvwxyz\xc3\xa9\xc3\xa9.png"; // the cut would fall inside
    CHECK(names_of(build_picture({cut})).find("abcdefghijklmnopqrstuvwxyz.png ") != std::string::npos);
    const std::string two = "abcdefghijklmnopqrstuvwxyz012345.png";
    CHECK(
        names_of(build_picture({"a/" + two, "b/" + two})).find("abcdefghijklmnopqrstuvwxy-2.png") != std::string::npos);
    const std::string no_ending = "boat.an-ending-that-is-none-and-is-much-too-long";
    const built_source b = build_picture({no_ending});
    for (const pack_entry& entry : b.built.entries)
        CHECK(entry.name.size() <= 31);
    CHECK(names_of(b).find("boat.an-ending-that-is-none-and ") != std::string::npos);
}

TEST_CASE("a picture is packed once, whoever shows it, and again where it is scaled")
{
    const test_folder folder;
    copy_file(folder, "examples/pictures/boat.png", "boat.png");
    write_file(folder, "show.lua",
        "local function m(more) return material { texture = image(\"boat.png\", more) } end\n"
        "track { scene \"s\" { screen() { material = m {} }, screen() { material = m { filter = \"linear\" } }, "
        "screen() { material = m { size = 16 } } } { from = 0, to = 100 } }");
    const built_source b = build_folder(folder);
    CHECK(names_of(b) == "demo.xmlz boat.png screen.mesh boat-2.png");
    CHECK(fields_of(b, section_image_textures, 3, {"width", "height"}) == "16 16");
}

TEST_CASE("levels of one's own are entries beside the picture")
{
    const test_folder folder;
    for (const char* name : {"boat.png", "boat-half.png", "boat-quarter.png"})
        copy_file(folder, std::string("examples/pictures/") + name, name);
    write_file(folder, "show.lua",
        "local t = image(\"boat.png\", { levels = { \"boat-half.png\", \"boat-quarter.png\" } })\n"
        "track { scene \"s\" { screen() { material = material { texture = t } } } { from = 0, to = 100 } }");
    const built_source b = build_folder(folder);
    CHECK(b.told == "");
    CHECK(b.built.entries.size() == 5);
    CHECK(field_of(b, section_image_textures, 1, "level 1") != "none");
    CHECK(field_of(b, section_image_textures, 1, "level 2") != "none");
}

TEST_CASE("files that are not there, or lie elsewhere, are errors that say so")
{
    const std::pair<const char*, const char*> faults[] = {
        {"image \"baot.png\"", "1: there is no file \"baot.png\": did you mean \"boat.png\"?"},
        {"image \"../boat.png\"", "1: \"../boat.png\" leads out of the show's folder"},
        {"image \"/etc/passwd\"", "1: \"/etc/passwd\" leads out of the show's folder"},
        {"image \"a/../../x.png\"", "leads out of the show's folder"},
        {"image \"\"", "1: image is given the text \"\" first, and wants the name of a file"},
        {"image \"show.lua\"", "1: \"show.lua\" "},
        {"image \"a\\0b.png\"", "has a zero byte in it"},
        {"image 'a\"b.png'", "there is no file"},
    };
    for (const auto& [words, fault] : faults) {
        const test_folder folder;
        copy_file(folder, "examples/pictures/boat.png", "boat.png");
        write_file(folder, "show.lua",
            std::string("local t = ") + words
                + " track { scene \"s\" { screen() { material = material { texture = t } } } { from = 0, to = 100 } }");
        const built_source b = build_folder(folder);
        CHECK_MESSAGE(b.told.find(fault) != std::string::npos, words << ": " << b.told);
        CHECK(b.pack.empty());
    }
}

TEST_CASE("a name that a document cannot write is an error at its line")
{
    const test_folder folder;
    copy_file(folder, "examples/pictures/boat.png", "a\"b.png");
    write_file(folder, "show.lua",
        "\nlocal t = image 'a\"b.png'\n"
        "local n = texture.noise { color = \"red\", random_seed = 1 }:blur { name = 'x\"y' }\n"
        "track { scene \"s\" { screen() { material = material { texture = t, texture2 = n } } } { from = 0, to = 100 } "
        "}");
    const built_source b = build_folder(folder);
    CHECK(b.told.find("2: the text \"a\"b.png\" has a \" in it") != std::string::npos);
    CHECK(b.told.find("3: the text \"x\"y\" has a \" in it") != std::string::npos);
    CHECK(b.pack.empty());
}

TEST_CASE("files go in as they are, and a document's text in its envelope")
{
    const test_folder folder;
    const std::string text = text_of_document(build_text(
        "track { scene \"s\" { effect \"Lake water\" { material = material {} } } { from = 0, to = 100 } }"));
    write_file(folder, "about.txt", std::string("a\0b", 3));
    write_file(folder, "old.xml", text);
    write_file(folder, "show.lua",
        "entry \"about.txt\"\nentry(\"about.txt\", { name = \"again\" })\ndocument(\"old.xml\", { name = "
        "\"loading.xmlz\" })\n"
        "track { scene \"s\" { screen() { material = material {} } } { from = 0, to = 100 } }");
    const built_source b = build_folder(folder);
    CHECK(b.told == "");
    REQUIRE(names_of(b) == "demo.xmlz screen.mesh about.txt again loading.xmlz");
    CHECK(b.built.entries[2].bytes == std::vector<uint8_t>{'a', 0, 'b'});
    const std::vector<uint8_t>& packed = b.built.entries[4].bytes;
    uint8_t* content = nullptr;
    uint32_t size = 0;
    REQUIRE(xmlz_inflate(packed.data(), static_cast<uint32_t>(packed.size()), &content, &size) == xmlz_ok);
    const owned_block<uint8_t> block(content);
    CHECK(std::string(reinterpret_cast<const char*>(content), size) == text);
}

TEST_CASE("two entries of one name are an error")
{
    const test_folder folder;
    write_file(folder, "a.txt", "a");
    write_file(folder, "show.lua",
        "entry(\"a.txt\", { name = \"x\" })\nentry(\"a.txt\", { name = \"x\" })\n"
        "track { scene \"s\" { screen() { material = material {} } } { from = 0, to = 100 } }");
    CHECK(build_folder(folder).told == "2: the pack has an entry \"x\" already.");
}

TEST_CASE("the same source gives the same bytes")
{
    const auto bytes = [] { return build_picture({"a/boat.png", "b/boat.png"}, "size = 32").pack; };
    const std::vector<uint8_t> first = bytes();
    CHECK(!first.empty());
    CHECK(bytes() == first);
}

TEST_CASE("a pack is its index and its entries")
{
    const std::vector<uint8_t> bytes = pack_bytes({{"a", {1, 2, 3}, ""}, {"bc", {4}, ""}});
    const owned_pack pack(pack_open_bytes(bytes));
    pack_slot slot;
    REQUIRE(pack_read_slot(pack.get(), 1, slot));
    CHECK(std::string(slot.name) == "bc");
    CHECK(slot.size == 1);
    CHECK(pack_index_ends(pack.get(), 2));
    uint8_t* content = nullptr;
    uint32_t size = 0;
    REQUIRE(pack_read_entry(pack.get(), "a", &content, &size) == pack_found);
    const owned_block<uint8_t> block(content);
    CHECK(std::vector<uint8_t>(content, content + size) == std::vector<uint8_t>{1, 2, 3});
}

TEST_CASE("a stem is a file's name without folders and ending")
{
    CHECK(stem_of("models/spider.obj") == "spider");
    CHECK(stem_of("a.b.png") == "a.b");
    CHECK(stem_of("plain") == "plain");
}

TEST_CASE("an entry has no name that leads out of a folder")
{
    for (const char* name : {"../a", "/a", "a/../b"}) {
        const test_folder folder;
        write_file(folder, "a.txt", "a");
        write_file(folder, "show.lua",
            std::string("entry(\"a.txt\", { name = \"") + name
                + "\" })\n"
                  "track { scene \"s\" { screen { material = material {} } } { from = 0, to = 300, flat = true } }\n");
        const built_source b = build_folder(folder);
        const std::string fault = std::string("1: the name \"") + name + "\" leads out of a folder: write one";
        CHECK_MESSAGE(b.told.find(fault) != std::string::npos, b.told);
    }
}

TEST_CASE("a file is looked for once, however often and by whatever way it is named")
{
    show_description show;
    for (const char* file : {"b.png", "a.png", "./b.png", "a.png", "../a.png", "/a.png", "", "c/../b.png", "c.png"})
        want_file(show, file);
    CHECK(show.files_wanted.in_order == std::vector<std::string>{"b.png", "a.png", "c.png"});
}

TEST_CASE("An envelope that packs nothing is one that zlib reads, whatever its size")
{
    show_description show;
    show.compression = 0;
    for (const size_t size : {size_t{0}, size_t{1}, size_t{65534}, size_t{65535}, size_t{65536}, size_t{131070},
             size_t{131071}, size_t{200000}}) {
        std::vector<uint8_t> bytes(size);
        for (size_t i = 0; i < size; ++i)
            bytes[i] = static_cast<uint8_t>(i * i >> 5);
        const std::vector<uint8_t> envelope = enveloped(show, bytes);
        CAPTURE(size);
        REQUIRE(envelope.size() == 4 + 2 + 5 * std::max<size_t>(1, (size + 65534) / 65535) + size + 4);
        uLongf got = size + 1;
        uLong taken = envelope.size() - 4;
        std::vector<uint8_t> read(size + 1);
        REQUIRE(uncompress2(read.data(), &got, envelope.data() + 4, &taken) == Z_OK);
        CHECK(taken == envelope.size() - 4);
        read.resize(got);
        CHECK(read == bytes);
        const size_t told = size_t{envelope[0]} | size_t{envelope[1]} << 8 | size_t{envelope[2]} << 16;
        CHECK(told == size);
    }
}
