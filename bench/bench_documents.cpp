// Documents and packs: trees beside pugixml, inflating beside zlib's own call, look-ups beside reading the same bytes.
//
// Trees are made and freed again on both sides; pugixml takes load_buffer with its default options, which like ours
// copies the text first, and decodes entities and line ends besides.

#include "content/owners.h"
#include "content/pack.h"
#include "content/xml.h"
#include "content/xmlz.h"
#include "plain_xml.h"

#include <benchmark/benchmark.h>
#include <pugixml.hpp>
#include <zlib.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <unistd.h>
#include <vector>

// ---- texts ----------------------------------------------------------------------------------

// Beside the program that runs: build/native/bench, build/native/productions.
static pack_file* open_first_light()
{
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe");
    const std::string path = program.parent_path().parent_path() / "productions/first-light/demo.dpk";
    pack_file* pack = pack_open(std::fopen(path.c_str(), "rb"));
    if (pack == nullptr) {
        std::fprintf(stderr, "there is no %s: ninja first_light\n", path.c_str());
        std::exit(1);
    }
    return pack;
}

static std::string packed_show()
{
    const owned_pack pack(open_first_light());
    uint8_t* bytes = nullptr;
    uint32_t size = 0;
    if (pack_read_entry(pack.get(), "demo.xmlz", &bytes, &size) != pack_found)
        std::exit(1);
    const owned_block<uint8_t> block(bytes);
    return {reinterpret_cast<const char*>(bytes), size};
}

static std::string show_text()
{
    const std::string entry = packed_show();
    uint8_t* bytes = nullptr;
    uint32_t size = 0;
    if (xmlz_inflate(reinterpret_cast<const uint8_t*>(entry.data()), static_cast<uint32_t>(entry.size()), &bytes, &size)
        != xmlz_ok)
        std::exit(1);
    const owned_block<uint8_t> block(bytes);
    return {reinterpret_cast<const char*>(bytes), size};
}

// Records in the fashion of a show: a few attributes, and in each second section a child with a number as its text.
static std::string records_text()
{
    std::string text = "<production name=\"bench\">\n";
    for (uint32_t section = 0; section < 14; ++section) {
        text += "  <section>\n";
        for (uint32_t n = 0; n < 4096; ++n) {
            const std::string number = std::to_string(n);
            text += "    <record name=\"record " + number + "\" handle=\"" + number + "\" scale=\"0.500000\"";
            text += section % 2 == 0 ? "/>\n" : ">\n      <value>" + number + ".250000</value>\n    </record>\n";
        }
        text += "  </section>\n";
    }
    return text + "</production>\n";
}

// Long texts in few elements, as shaders and scrolling texts have them.
static std::string words_text()
{
    std::string text = "<texts>\n";
    for (uint32_t n = 0; n < 400; ++n) {
        text += "  <text>";
        for (uint32_t word = 0; word < 300; ++word)
            text += "word" + std::to_string(n * word % 97) + (word % 12 == 11 ? "\n" : " ");
        text += "</text>\n";
    }
    return text + "</texts>\n";
}

// Elements of forty attributes, as shapes of curves have them.
static std::string attributes_text()
{
    std::string text = "<list>\n";
    for (uint32_t n = 0; n < 2000; ++n) {
        text += "  <item";
        for (uint32_t a = 0; a < 40; ++a)
            text += " key" + std::to_string(a) + "=\"" + std::to_string(n * a % 1013) + "\"";
        text += "/>\n";
    }
    return text + "</list>\n";
}

// ---- trees ----------------------------------------------------------------------------------

static void count_bytes(benchmark::State& state, size_t bytes)
{
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(bytes));
}

static void tree_ours(benchmark::State& state, std::string (*make)())
{
    const std::string text = make();
    for (auto _ : state)
        xml_free(xml_parse(text.c_str()));
    count_bytes(state, text.size());
}

static void tree_pugixml(benchmark::State& state, std::string (*make)())
{
    const std::string text = make();
    for (auto _ : state) {
        pugi::xml_document document;
        if (!document.load_buffer(text.data(), text.size()))
            state.SkipWithError("pugixml does not read it");
    }
    count_bytes(state, text.size());
}

// A byte at a time, and a block of memory for every node and string.
static void tree_plain(benchmark::State& state, std::string (*make)())
{
    const std::string text = make();
    for (auto _ : state)
        plain_free(plain_parse(text.c_str(), xml_max_items));
    count_bytes(state, text.size());
}

BENCHMARK_CAPTURE(tree_ours, show, show_text)->Name("tree of First Light/ours");
BENCHMARK_CAPTURE(tree_pugixml, show, show_text)->Name("tree of First Light/pugixml");
BENCHMARK_CAPTURE(tree_plain, show, show_text)->Name("tree of First Light/plain");
BENCHMARK_CAPTURE(tree_ours, records, records_text)->Name("tree of 4096 records a section/ours");
BENCHMARK_CAPTURE(tree_pugixml, records, records_text)->Name("tree of 4096 records a section/pugixml");
BENCHMARK_CAPTURE(tree_plain, records, records_text)->Name("tree of 4096 records a section/plain");
BENCHMARK_CAPTURE(tree_ours, words, words_text)->Name("tree of long texts/ours");
BENCHMARK_CAPTURE(tree_pugixml, words, words_text)->Name("tree of long texts/pugixml");
BENCHMARK_CAPTURE(tree_plain, words, words_text)->Name("tree of long texts/plain");
BENCHMARK_CAPTURE(tree_ours, attributes, attributes_text)->Name("tree of many attributes/ours");
BENCHMARK_CAPTURE(tree_pugixml, attributes, attributes_text)->Name("tree of many attributes/pugixml");
BENCHMARK_CAPTURE(tree_plain, attributes, attributes_text)->Name("tree of many attributes/plain");

// ---- envelopes ------------------------------------------------------------------------------

static std::string in_deflated_envelope(const std::string& content)
{
    uLongf size = compressBound(static_cast<uLong>(content.size()));
    std::string entry(4 + size, '\0');
    for (uint32_t byte = 0; byte < 4; ++byte)
        entry[byte] = static_cast<char>(content.size() >> 8 * byte);
    compress(reinterpret_cast<Bytef*>(entry.data() + 4), &size, reinterpret_cast<const Bytef*>(content.data()),
        static_cast<uLong>(content.size()));
    entry.resize(4 + size);
    return entry;
}

static std::string packed_records()
{
    return in_deflated_envelope(records_text());
}

static uLongf inflated_size(const std::string& entry)
{
    uLongf size = 0;
    for (uint32_t byte = 0; byte < 4; ++byte)
        size |= static_cast<uLongf>(static_cast<uint8_t>(entry[byte])) << 8 * byte;
    return size;
}

static void inflate_ours(benchmark::State& state, std::string (*make)())
{
    const std::string entry = make();
    uint32_t size = 0;
    for (auto _ : state) {
        uint8_t* bytes = nullptr;
        if (xmlz_inflate(
                reinterpret_cast<const uint8_t*>(entry.data()), static_cast<uint32_t>(entry.size()), &bytes, &size)
            != xmlz_ok)
            state.SkipWithError("it is damaged");
        std::free(bytes);
    }
    count_bytes(state, size);
}

// Into a block of its own, too: its pages are new for whoever inflates something large.
static void inflate_zlib(benchmark::State& state, std::string (*make)())
{
    const std::string entry = make();
    const uLongf room = inflated_size(entry);
    uLongf size = 0;
    for (auto _ : state) {
        const owned_block<Bytef> content(static_cast<Bytef*>(std::malloc(room)));
        size = room;
        if (uncompress(content.get(), &size, reinterpret_cast<const Bytef*>(entry.data() + 4),
                static_cast<uLong>(entry.size() - 4))
            != Z_OK)
            state.SkipWithError("zlib does not inflate it");
        benchmark::ClobberMemory();
    }
    count_bytes(state, size);
}

BENCHMARK_CAPTURE(inflate_ours, show, packed_show)->Name("inflate First Light's document/ours");
BENCHMARK_CAPTURE(inflate_zlib, show, packed_show)->Name("inflate First Light's document/zlib");
BENCHMARK_CAPTURE(inflate_ours, records, packed_records)->Name("inflate 4096 records a section/ours");
BENCHMARK_CAPTURE(inflate_zlib, records, packed_records)->Name("inflate 4096 records a section/zlib");

// ---- look-ups -------------------------------------------------------------------------------

static constexpr uint32_t entry_count = 4000;
static constexpr uint32_t entry_size = 100; // bytes

static void append_number(std::string& bytes, uint32_t value)
{
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes += static_cast<char>(value >> shift);
}

static std::string large_pack_bytes()
{
    std::string bytes = "DP\1";
    for (uint32_t n = 0; n < entry_count; ++n) {
        std::string name = "entry" + std::to_string(n);
        name.resize(pack_name_size);
        const uint32_t start = 35 + entry_count * pack_slot_size + n * entry_size;
        bytes += name;
        append_number(bytes, start);
        append_number(bytes, start + entry_size - 1);
    }
    return bytes + std::string(pack_name_size, '\0') + std::string(size_t{entry_count} * entry_size, 'x');
}

static const pack_file* large_pack()
{
    static const owned_pack pack([] {
        const std::string bytes = large_pack_bytes();
        FILE* file = std::tmpfile();
        if (file == nullptr || std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size()
            || std::fflush(file) != 0)
            std::exit(1);
        return pack_open(file);
    }());
    return pack.get();
}

static void look_up_ours(benchmark::State& state, uint32_t number)
{
    const std::string name = "entry" + std::to_string(number);
    for (auto _ : state) {
        uint8_t* bytes = nullptr;
        uint32_t size = 0;
        if (pack_read_entry(large_pack(), name.c_str(), &bytes, &size) != pack_found)
            state.SkipWithError("it is not there");
        benchmark::DoNotOptimize(bytes[0]);
        std::free(bytes);
    }
}

// The same bytes into a block of their own, as if one knew where they are.
static void look_up_pread(benchmark::State& state, uint32_t number)
{
    const off_t start = static_cast<off_t>(35 + entry_count * pack_slot_size + number * entry_size);
    const int file = fileno(large_pack()->stream);
    for (auto _ : state) {
        char* bytes = static_cast<char*>(std::malloc(entry_size));
        if (pread(file, bytes, entry_size, start) != static_cast<ssize_t>(entry_size))
            state.SkipWithError("it cannot be read");
        benchmark::DoNotOptimize(bytes[0]);
        std::free(bytes);
    }
}

BENCHMARK_CAPTURE(look_up_ours, last, entry_count - 1)->Name("look up the last of 4000 entries/ours");
BENCHMARK_CAPTURE(look_up_pread, last, entry_count - 1)->Name("look up the last of 4000 entries/pread");

// Opening: its index is read and its names are put into a table.
static void open_ours(benchmark::State& state)
{
    for (auto _ : state)
        pack_close(pack_open(fdopen(dup(fileno(large_pack()->stream)), "rb")));
}

// The index alone.
static void open_pread(benchmark::State& state)
{
    std::vector<char> index(entry_count * pack_slot_size);
    for (auto _ : state)
        if (pread(fileno(large_pack()->stream), index.data(), index.size(), pack_index_offset) < 0)
            state.SkipWithError("it cannot be read");
}

BENCHMARK(open_ours)->Name("open a pack of 4000 entries/ours");
BENCHMARK(open_pread)->Name("open a pack of 4000 entries/pread");

BENCHMARK_MAIN();
