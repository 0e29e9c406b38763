// Trees and faults beside those of the plain reader, which takes one byte after another.
#include "content/xml.h"
#include "content/xml_fault.h"
#include "plain_xml.h"

#include <cstring>
#include <doctest/doctest.h>
#include <random>
#include <string>

static bool same_text(const char* a, const char* b)
{
    return a == nullptr || b == nullptr ? a == b : std::strcmp(a, b) == 0;
}

static bool same_node(const xml_node* a, const plain_node* b)
{
    bool same = a->attribute_count == b->attribute_count && same_text(a->name, b->name) && same_text(a->text, b->text)
        && (a->first_child == nullptr) == (b->first_child == nullptr)
        && (a->next_sibling == nullptr) == (b->next_sibling == nullptr)
        && (a->parent == nullptr) == (b->parent == nullptr);
    for (int32_t i = 0; same && i < a->attribute_count; ++i)
        same = same_text(a->attributes[i].name, b->attributes[i].name)
            && same_text(a->attributes[i].value, b->attributes[i].value);
    return same;
}

// Both trees node by node, and that nodes lead back to their parents.
static bool same_tree(const xml_node* a, const plain_node* b)
{
    const xml_node* top = a;
    while (same_node(a, b)) {
        if (a->first_child) {
            if (a->first_child->parent != a)
                return false;
            a = a->first_child;
            b = b->first_child;
            continue;
        }
        while (a != top && !a->next_sibling) {
            a = a->parent;
            b = b->parent;
        }
        if (a == top)
            return true;
        if (a->next_sibling->parent != a->parent)
            return false;
        a = a->next_sibling;
        b = b->next_sibling;
    }
    return false;
}

static bool reads_alike(const std::string& text, uint32_t max_items = xml_max_items)
{
    xml_node* ours = xml_parse_bounded(text.c_str(), max_items);
    plain_node* plain = plain_parse(text.c_str(), max_items);
    const bool same = same_tree(ours, plain);
    xml_free(ours);
    plain_free(plain);
    return same;
}

static bool faults_alike(const std::string& text)
{
    const xml_fault ours = xml_find_fault(text.c_str());
    const xml_fault plain = plain_find_fault(text.c_str());
    return ours.kind == plain.kind && ours.line == plain.line && ours.name == plain.name;
}

// ---- texts -------------------------------------------------------------------------

static uint32_t below(std::mt19937& chance, size_t limit)
{
    return static_cast<uint32_t>(chance() % limit);
}

// What documents are made of, whole and broken, and bytes that mean something here or there.
static const char* const pieces[] = {"<a", "<b>", "<c/>", "</a>", "</b", "<", ">", "/>", "/", "</", "</>", "<>", "<?",
    "<?xml version=\"1.0\"?>", "?>", "<!", "<!--", "-->", "--", "-", "<!-->", "<!---->", "<!-- c -->", "<!-/>",
    "<![CDATA[", "]]>", "\"", "\"\"", "=", " x=\"1\"", " y = \"2\"", " z='3'", " x=", " =\"", "x=\"p/>q\"", "x=\"p>q\"",
    "x", "text", "a longer text than a scan takes at one time", " ", "\n", "\t", "\v", "\f", "\r", "\x1", "\b", "\xE",
    "\xA0", "\xFF", "\x85", "&amp;", "!", "?", "a name that is longer than sixteen bytes=\"and a value that is, too\""};

static std::string random_text(std::mt19937& chance)
{
    const uint32_t kinds = 2 + below(chance, std::size(pieces) - 1); // few of them often, so that they meet again
    const uint32_t first = below(chance, std::size(pieces));
    std::string text;
    for (uint32_t count = below(chance, 40); count > 0; --count)
        text += pieces[(first + below(chance, kinds)) % std::size(pieces)];
    if (below(chance, 8) == 0 && !text.empty())
        text[below(chance, text.size())] = '\0';
    return text;
}

// A sound document, in which a byte here and there may be another one.
static std::string random_document(std::mt19937& chance)
{
    std::string text;
    uint32_t depth = 0;
    for (uint32_t count = below(chance, 60); count > 0; --count) {
        const uint32_t kind = below(chance, 4);
        if (kind == 0 && depth > 0) {
            --depth;
            text += "</e>";
            continue;
        }
        text += "\n" + std::string(2 * depth, ' ') + "<e" + std::string(below(chance, 20), 'n');
        for (uint32_t attributes = below(chance, 5); attributes > 0; --attributes)
            text += " " + std::string(1 + below(chance, 24), 'a') + "=\"" + std::string(below(chance, 40), 'v') + "\"";
        depth += kind == 1 ? 1 : 0;
        text += kind == 1 ? ">" : kind == 2 ? "/>" : ">" + std::string(below(chance, 40), 't') + "</e>";
    }
    static const char marks[] = {'<', '>', '/', '"', '=', '-', ' ', '!', '?', '\0'};
    for (uint32_t count = below(chance, 3); count > 0 && !text.empty(); --count)
        text[below(chance, text.size())] = marks[below(chance, sizeof marks)];
    return text;
}

// ---- cases -------------------------------------------------------------------------

TEST_CASE("odd texts give the trees and faults of the plain reader")
{
    std::mt19937 chance(1);
    uint32_t different = 0;
    for (uint32_t n = 0; n < 150000; ++n) {
        const std::string text = random_text(chance);
        if (!reads_alike(text) || !faults_alike(text)) {
            ++different;
            CHECK_MESSAGE(different > 5, text);
        }
    }
    CHECK(different == 0);
}

TEST_CASE("documents give the trees and faults of the plain reader")
{
    std::mt19937 chance(2);
    uint32_t different = 0;
    for (uint32_t n = 0; n < 10000; ++n) {
        const std::string text = random_document(chance);
        if (!reads_alike(text) || !faults_alike(text)) {
            ++different;
            CHECK_MESSAGE(different > 5, text);
        }
    }
    CHECK(different == 0);
}

TEST_CASE("a text ends for both readers where the items do")
{
    std::mt19937 chance(3);
    for (uint32_t n = 0; n < 5000; ++n) {
        const std::string text = random_document(chance);
        const uint32_t most = below(chance, 40);
        if (!reads_alike(text, most))
            CHECK_MESSAGE(false, text);
    }
}

TEST_CASE("long and deep documents give the trees of the plain reader")
{
    std::string deep;
    for (uint32_t n = 0; n < 100000; ++n)
        deep += "<a x=\"1\">";
    CHECK(reads_alike(deep));
    std::string wide = "<a>";
    for (uint32_t n = 0; n < 20000; ++n)
        wide += "<b x=\"" + std::to_string(n) + "\" y=\"\">" + std::string(n % 50, 't') + "</b>";
    CHECK(reads_alike(wide + "</a>"));
    std::string many = "<a";
    for (uint32_t n = 0; n < 20000; ++n)
        many += " x" + std::to_string(n) + "=\"" + std::to_string(n) + "\"";
    CHECK(reads_alike(many + "><b x=\"1\"/></a>"));
    CHECK(reads_alike("<a>" + std::string(300000, 't') + "</a>"));
    CHECK(reads_alike(
        "<" + std::string(300000, 'n') + " " + std::string(300000, 'a') + "=\"" + std::string(300000, 'v') + "\"/>"));
}
