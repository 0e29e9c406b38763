// Packs as strangers make them, opened into files.
#include "authoring/open/open_pack.h"

#include "content/pack.h"
#include "document_text.h"

#include <doctest/doctest.h>

#include <algorithm>

static opened_show opened(const std::vector<pack_content>& entries, std::vector<std::string>& notes)
{
    const owned_pack pack(open_pack(entries));
    opened_show show;
    open_pack(pack.get(), {}, show, notes);
    return show;
}

static std::string source_of(const opened_show& show)
{
    return {show.files[0].bytes.begin(), show.files[0].bytes.end()};
}

TEST_CASE("An entry in a folder of the pack keeps the folder in its name")
{
    std::vector<std::string> notes;
    const std::string source = source_of(opened({{"a/b.bin", "1"}, {"c/b.bin", "2"}, {"d.bin", "3"}}, notes));
    CHECK(source.find("entry(\"a/b.bin\", { name = \"a/b.bin\" })\n") != std::string::npos);
    CHECK(source.find("entry(\"c/b.bin\", { name = \"c/b.bin\" })\n") != std::string::npos);
    CHECK(source.find("entry \"d.bin\"\n") != std::string::npos);
    CHECK(notes.empty());
}

TEST_CASE("A document that is damaged is left out with a note, one that is not there without")
{
    std::string damaged = in_envelope(to_text(document_text{}));
    damaged.resize(damaged.size() / 2);
    std::vector<std::string> notes;
    opened({{"demo.xmlz", damaged}, {"loading.xmlz", "abc"}}, notes);
    CHECK(notes
        == std::vector<std::string>{"the document \"demo.xmlz\" is damaged: it is left out.",
            "the document \"loading.xmlz\" is damaged: it is left out."});
    notes.clear();
    opened({{"a.bin", "1"}}, notes);
    CHECK(notes.empty());
}

TEST_CASE("Records of one name get numbers behind it, none of them twice")
{
    document_text text;
    for (const char* name : {"a", "a", "a_2", "a", "b", "a_2"})
        text.records[section_scenes] += std::string("<scene name=\"") + name + "\"></scene>";
    std::vector<std::string> notes;
    const std::string source = source_of(opened({{"demo.xmlz", in_envelope(to_text(text))}}, notes));
    size_t at = 0;
    for (const char* name : {"a", "a_2", "a_2_2", "a_3", "b", "a_2_3"}) {
        at = source.find("\nscenes." + std::string(name) + " = ", at);
        CHECK_MESSAGE(at != std::string::npos, name);
    }
}
