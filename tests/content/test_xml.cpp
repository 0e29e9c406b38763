// Reading element trees. Trees are compared as outlines written by hand:
// (name attribute=[value] 'text' (child) ...), "~" standing for null.
#include "content/xml.h"
#include "content_files.h"
#include "editing/xml_edit.h"

#include <doctest/doctest.h>
#include <string>

static std::string or_null(const char* text)
{
    return text ? text : "~";
}

static std::string outline(const xml_node* node)
{
    std::string text = "(" + or_null(node->name);
    for (int32_t i = 0; i < node->attribute_count; ++i) {
        const xml_attribute& attribute = node->attributes[i];
        text
            += " " + or_null(attribute.name) + "=" + (attribute.value ? "[" + std::string(attribute.value) + "]" : "~");
    }
    if (node->text)
        text += " '" + std::string(node->text) + "'";
    for (const xml_node* child = node->first_child; child; child = child->next_sibling)
        text += " " + outline(child);
    return text + ")";
}

// What stands below the root, element by element.
static std::string parsed(const std::string& text)
{
    xml_node* root = xml_parse(text.c_str());
    std::string all = outline(root);
    xml_free(root);
    return all == "(~)" ? "" : all.substr(3, all.size() - 4);
}

TEST_CASE("an element keeps its attributes and children in order")
{
    xml_node* root = xml_parse("<a x=\"1\"><b/><c>t</c></a>");
    CHECK(root->name == nullptr);
    CHECK(root->parent == nullptr);
    const xml_node* a = root->first_child;
    REQUIRE(a);
    CHECK(std::string(a->name) == "a");
    CHECK(a->parent == root);
    CHECK(a->next_sibling == nullptr);
    REQUIRE(a->attribute_count == 1);
    CHECK(std::string(a->attributes[0].name) == "x");
    CHECK(std::string(a->attributes[0].value) == "1");
    const xml_node* b = a->first_child;
    REQUIRE(b);
    CHECK(std::string(b->name) == "b");
    CHECK(b->text == nullptr);
    CHECK(b->parent == a);
    const xml_node* c = b->next_sibling;
    REQUIRE(c);
    CHECK(std::string(c->name) == "c");
    CHECK(std::string(c->text) == "t");
    CHECK(c->parent == a);
    CHECK(c->next_sibling == nullptr);
    xml_free(root);
}

TEST_CASE("the document element is the root's first child")
{
    CHECK(parsed("<a/>") == "(a)");
    xml_node* root = xml_parse("<a/>");
    CHECK(root->name == nullptr);
    CHECK(std::string(root->first_child->name) == "a");
    xml_free(root);
}

TEST_CASE("an empty text gives a root alone")
{
    CHECK(parsed("") == "");
    CHECK(parsed("just words") == "");
    xml_node* root = xml_parse(nullptr);
    REQUIRE(root);
    CHECK(root->first_child == nullptr);
    xml_free(root);
}

TEST_CASE("text is kept verbatim with its blanks and lines")
{
    CHECK(parsed("<a>\n  hi\n</a>") == "(a '\n  hi\n')");
}

TEST_CASE("text knows no entities")
{
    CHECK(parsed("<a>x &amp; y</a>") == "(a 'x &amp; y')");
    CHECK(parsed("<a v=\"&lt;\"/>") == "(a v=[&lt;])");
}

TEST_CASE("empty text is null")
{
    CHECK(parsed("<a></a>") == "(a)");
}

TEST_CASE("text beside child elements is dropped")
{
    CHECK(parsed("<a><b/>text</a>") == "(a (b))");
    CHECK(parsed("<a>text<b/></a>") == "(a (b))");
    CHECK(parsed("<a>before<b>in</b>after</a>") == "(a (b 'in'))");
}

TEST_CASE("a slash and a greater-than sign end an element wherever they stand")
{
    SUBCASE("in a quoted value, which stays null")
    {
        CHECK(parsed("<a x=\"p/>q\">") == "(a x=~)");
    }
    SUBCASE("in text, which is lost")
    {
        CHECK(parsed("<a>one/>two<b/>") == "(a) (b)");
    }
    SUBCASE("in a comment, which ends with it")
    {
        CHECK(parsed("<a><!-- /><b/></a>") == "(a) (b)");
    }
    SUBCASE("in an instruction")
    {
        CHECK(parsed("<a><?x/><b/></a>") == "(a) (b)");
    }
    SUBCASE("right behind the name, behind a blank, behind an attribute")
    {
        CHECK(parsed("<r><a/><b /><c x=\"1\"/><d x=\"1\" /></r>") == "(r (a) (b) (c x=[1]) (d x=[1]))");
    }
    SUBCASE("but not with a blank between them")
    {
        CHECK(parsed("<a / ><b/></a>") == "(a (b))");
    }
}

TEST_CASE("a greater-than sign inside a quoted value ends the tag")
{
    CHECK(parsed("<a x=\"p>q\"><b/></a>") == "(a x=~ (b))");
    CHECK(parsed("<a x=\"p>q</a>") == "(a x=~ 'q')");
}

TEST_CASE("a greater-than sign in text is ordinary")
{
    CHECK(parsed("<a>1 > 0</a>") == "(a '1 > 0')");
}

TEST_CASE("names of closing tags are not compared")
{
    CHECK(parsed("<a><b></x></a>") == parsed("<a><b></b></a>"));
    CHECK(parsed("<a><b></x></a>") == "(a (b))");
    CHECK(parsed("<a><b>t</></>") == "(a (b 't'))");
}

TEST_CASE("an element stays current behind its first closing tag so that a sibling follows")
{
    CHECK(parsed("<a><b></b><c></c></a>") == "(a (b) (c))");
    CHECK(parsed("<a><b><c></c></b><d/></a>") == "(a (b (c)) (d))");
    CHECK(parsed("<a><b><c/></b><d/></a>") == "(a (b (c)) (d))");
}

TEST_CASE("instructions and comments before the document element are skipped")
{
    CHECK(parsed("<?xml version=\"1.0\"?><a/>") == "(a)");
    CHECK(parsed("<!-- c --><a/>") == "(a)");
    CHECK(parsed("<?xml version=\"1.0\"?>\n<!-- c -->\n<a><b/></a>\n") == "(a (b))");
}

TEST_CASE("an instruction leaves the element open as it was")
{
    CHECK(parsed("<a><?x?><b/></a>") == "(a (b))");
    CHECK(parsed("<a><b/><?x?><c/></a>") == "(a (b) (c))");
}

TEST_CASE("a comment inside text stays part of it")
{
    CHECK(parsed("<a>x<!-- <c> -->y</a>") == "(a 'x<!-- <c> -->y')");
}

TEST_CASE("a comment is skipped between elements")
{
    CHECK(parsed("<a><!-- <b> </b> --><c/></a>") == "(a (c))");
    CHECK(parsed("<a><b/><!-- -- > - -> --><c/></a>") == "(a (b) (c))");
}

TEST_CASE("the dashes that open a comment may close it")
{
    CHECK(parsed("<a><!--><b/></a>") == "(a (b))");
}

TEST_CASE("an instruction inside text cuts off what stood before")
{
    CHECK(parsed("<a>before<?x?>after</a>") == "(a 'after')");
}

TEST_CASE("a declaration is text and no markup")
{
    CHECK(parsed("<a>x<!DOCTYPE y>z</a>") == "(a 'x<!DOCTYPE y>z')");
    CHECK(parsed("<!DOCTYPE show><a/>") == "(a)");
    CHECK(parsed("<a><!-x--></a>") == "(a '<!-x-->')");
}

TEST_CASE("blanks before the equals sign belong to the attribute's name")
{
    CHECK(parsed("<a x =\"1\"/>") == "(a x =[1])");
    CHECK(parsed("<a x y=\"1\"/>") == "(a x y=[1])");
}

TEST_CASE("anything between the equals sign and the quote is ignored")
{
    CHECK(parsed("<a x= = 7 \"1\"/>") == "(a x=[1])");
}

TEST_CASE("single quotes delimit nothing")
{
    CHECK(parsed("<a x='1'/>") == "(a x=~)");
    CHECK(parsed("<a x='1' y=\"2\"/>") == "(a x=[2])");
}

TEST_CASE("an empty value is an empty string")
{
    CHECK(parsed("<a x=\"\"/>") == "(a x=[])");
}

TEST_CASE("an attribute that never gets its equals sign is dropped")
{
    CHECK(parsed("<a x><b/></a>") == "(a (b))");
}

TEST_CASE("an attribute without a value is kept with a null one")
{
    CHECK(parsed("<a x=><b/></a>") == "(a x=~ (b))");
}

TEST_CASE("attributes may follow each other without a blank")
{
    CHECK(parsed("<a x=\"1\"y=\"2\"/>") == "(a x=[1] y=[2])");
}

TEST_CASE("every kind of blank separates")
{
    CHECK(parsed("<a\tx=\"1\"\n\v\f\ry=\"2\"/>") == "(a x=[1] y=[2])");
}

TEST_CASE("values keep their blanks and lines")
{
    CHECK(parsed("<a x=\" 1\n \"/>") == "(a x=[ 1\n ])");
}

TEST_CASE("blanks right behind the less-than sign are skipped")
{
    CHECK(parsed("<  a x=\"1\"/>") == "(a x=[1])");
}

TEST_CASE("a tag without a name has an empty one")
{
    CHECK(parsed("<><b/></>") == "( (b))");
    CHECK(parsed("< />") == "()");
    CHECK(parsed("<a =\"1\"/>") == "(a =[1])");
}

TEST_CASE("a less-than sign inside a tag is part of what it stands in")
{
    CHECK(parsed("<<a/>") == "(<a)");
    CHECK(parsed("<a <b=\"1<2\"/>") == "(a <b=[1<2])");
}

TEST_CASE("several top-level elements are children of the root")
{
    CHECK(parsed("<a/><b/><c></c><d/>") == "(a) (b) (c) (d)");
}

TEST_CASE("a closing tag at the root changes nothing")
{
    CHECK(parsed("</x><a/>") == "(a)");
    CHECK(parsed("text</x><a/>") == "(a)");
    xml_node* root = xml_parse("text</x>");
    CHECK(root->text == nullptr);
    xml_free(root);
}

TEST_CASE("an element opened at the root becomes its last child")
{
    CHECK(parsed("<a/></x><b/>") == "(a) (b)");
    CHECK(parsed("<a/></x></y></z><b/><c/>") == "(a) (b) (c)");
    CHECK(parsed("<a><b/></a></x><c/></y></z><d/>") == "(a (b)) (c) (d)");
    CHECK(parsed("/><a/>") == "(a)");
}

TEST_CASE("unclosed elements simply stay")
{
    CHECK(parsed("<a><b x=\"1\">text") == "(a (b x=[1]))");
    CHECK(parsed("<a><b") == "(a (~))");
    CHECK(parsed("<a><") == "(a (~))");
    CHECK(parsed("<a x=\"1") == "(a x=~)");
    CHECK(parsed("<a x") == "(a)");
}

TEST_CASE("a zero byte ends the text in every state")
{
    CHECK(parsed(std::string("<a><b/>\0<c/></a>", 16)) == "(a (b))");
}

TEST_CASE("bytes above 127 are letters like any other")
{
    CHECK(parsed("<\xC3\xA4 \xFF=\"\xA0\">\xE9</\xC3\xA4>") == "(\xC3\xA4 \xFF=[\xA0] '\xE9')");
}

TEST_CASE("the first of two attributes of one name is found")
{
    xml_node* root = xml_parse("<a x=\"1\" x=\"2\" X=\"3\"/>");
    const xml_node* a = root->first_child;
    CHECK(a->attribute_count == 3);
    CHECK(std::string(xml_get_attribute(a, "x")) == "1");
    CHECK(std::string(xml_get_attribute(a, "X")) == "3");
    xml_free(root);
}

TEST_CASE("a missing attribute and one without a value are null")
{
    xml_node* root = xml_parse("<a xx=\"1\" y=>");
    const xml_node* a = root->first_child;
    CHECK(xml_get_attribute(a, "x") == nullptr);
    CHECK(xml_get_attribute(a, "xxx") == nullptr);
    CHECK(xml_get_attribute(a, "") == nullptr);
    CHECK(xml_get_attribute(a, "y") == nullptr);
    CHECK(xml_get_attribute(nullptr, "x") == nullptr);
    CHECK(xml_get_attribute(root, "x") == nullptr);
    xml_free(root);
}

TEST_CASE("the bound on elements and attributes ends the text")
{
    const char* text = "<a x=\"1\"><b y=\"2\"/><c/></a>";
    const char* expected[] = {"(~)", "(~ (a))", "(~ (a x=[1]))", "(~ (a x=[1] (b)))", "(~ (a x=[1] (b y=[2])))",
        "(~ (a x=[1] (b y=[2]) (c)))", "(~ (a x=[1] (b y=[2]) (c)))"};
    for (uint32_t bound = 0; bound < 7; ++bound) {
        xml_node* root = xml_parse_bounded(text, bound);
        CHECK(outline(root) == expected[bound]);
        xml_free(root);
    }
}

TEST_CASE("a file is read whole")
{
    const temporary_directory directory;
    write_bytes(directory.path + "x.xml", "<a>\r\n\x1A t</a>");
    xml_node* root = xml_load_file((directory.path + "x.xml").c_str());
    REQUIRE(root);
    CHECK(outline(root) == "(~ (a '\r\n\x1A t'))");
    xml_free(root);
    CHECK(xml_load_file((directory.path + "missing.xml").c_str()) == nullptr);
    CHECK(xml_load_file(directory.path.c_str()) == nullptr);
}

// ---- whatever bytes ----------------------------------------------------------------

// Parses an allocation of exactly the text's size and checks what holds for every
// tree: a nameless root, parents that match, and no more items than bytes.
static void check_tree_of(const std::string& text)
{
    char* exact = static_cast<char*>(std::malloc(text.size() + 1));
    std::memcpy(exact, text.c_str(), text.size() + 1);
    xml_node* root = xml_parse(exact);
    std::free(exact);
    REQUIRE(root);
    REQUIRE(root->name == nullptr);
    REQUIRE(root->next_sibling == nullptr);
    REQUIRE(root->text == nullptr);
    REQUIRE(root->attribute_count == 0);

    size_t items = 0;
    bool consistent = true;
    for (const xml_node* node = root; node;) {
        consistent = consistent && (node->text == nullptr || node->first_child == nullptr);
        consistent = consistent && (node->text == nullptr || node->text[0] != '\0');
        for (int32_t i = 0; i < node->attribute_count; ++i)
            consistent = consistent && node->attributes[i].name != nullptr;
        items += 1 + static_cast<size_t>(node->attribute_count);
        if (node->first_child) {
            consistent = consistent && node->first_child->parent == node;
            node = node->first_child;
            continue;
        }
        while (node && !node->next_sibling)
            node = node->parent;
        if (node) {
            consistent = consistent && node->next_sibling->parent == node->parent;
            node = node->next_sibling;
        }
    }
    REQUIRE(consistent);
    REQUIRE(items <= text.size() + 1);
    char* written = xml_write(root);
    REQUIRE(written != nullptr);
    std::free(written);
    xml_free(root);
}

static uint32_t next_random(uint32_t& state)
{
    state = state * 1664525u + 1013904223u;
    return state >> 8;
}

static const char sample[]
    = "<?xml version=\"1.0\"?>\n<!-- show -->\n<a x=\"1\" y =\"p/>q\">\n <b u='2'/>text<c>t &amp;"
      "<!-- in --></c><d z=\"\"><e></x></d><!DOCTYPE f>\n</a></a></a><g h=\"i>j\">k</g></>\n";

TEST_CASE("every prefix of a document gives a sound tree")
{
    const std::string text = sample;
    for (size_t length = 0; length <= text.size(); ++length)
        check_tree_of(text.substr(0, length));
}

TEST_CASE("mutated documents give sound trees")
{
    const char marks[] = "<>/=\"'!?- \n\0axy\xFF";
    uint32_t state = 1;
    for (int round = 0; round < 4000; ++round) {
        std::string text = sample;
        for (uint32_t edits = 1 + next_random(state) % 8; edits > 0; --edits) {
            const size_t at = next_random(state) % text.size();
            const char mark = marks[next_random(state) % (sizeof marks - 1)];
            if (next_random(state) % 3 == 0)
                text.erase(at, 1 + next_random(state) % 5);
            else if (next_random(state) % 2 == 0)
                text.insert(at, 1, mark);
            else
                text[at] = mark;
            if (text.empty())
                text = "<";
        }
        check_tree_of(text.c_str());
    }
}

TEST_CASE("random marks give sound trees")
{
    const char marks[] = "<<<>>>//=\"!?-- a";
    uint32_t state = 2;
    for (int round = 0; round < 4000; ++round) {
        std::string text;
        for (uint32_t length = next_random(state) % 80; length > 0; --length)
            text.push_back(marks[next_random(state) % (sizeof marks - 1)]);
        check_tree_of(text);
    }
}

TEST_CASE("random bytes give sound trees")
{
    uint32_t state = 3;
    for (int round = 0; round < 1000; ++round) {
        std::string text = "<";
        for (uint32_t length = next_random(state) % 200; length > 0; --length)
            text.push_back(static_cast<char>(1 + next_random(state) % 255));
        check_tree_of(text);
    }
}

static std::string repeated(const std::string& piece, size_t count)
{
    std::string text;
    for (size_t i = 0; i < count; ++i)
        text += piece;
    return text;
}

TEST_CASE("a tree of many levels is read and freed without recursion")
{
    constexpr size_t depth = 300000;
    xml_node* root = xml_parse((repeated("<a>", depth) + "t" + repeated("</a>", depth)).c_str());
    size_t levels = 0;
    const xml_node* node = root;
    for (; node->first_child; node = node->first_child)
        ++levels;
    CHECK(levels == depth);
    CHECK(std::string(node->text) == "t");
    xml_free(root);
}

TEST_CASE("many siblings, many attributes and many stray closing tags are read in one pass")
{
    constexpr int32_t count = 300000;
    xml_node* root = xml_parse(
        ("<a " + repeated("x=\"\"", count) + ">" + repeated("<b/>", count) + "</a>" + repeated("</x><c/></y>", count))
            .c_str());
    const xml_node* a = root->first_child;
    CHECK(a->attribute_count == count);
    int32_t children = 0;
    for (const xml_node* child = a->first_child; child; child = child->next_sibling)
        ++children;
    CHECK(children == count);
    int32_t siblings = 0;
    for (const xml_node* sibling = a->next_sibling; sibling; sibling = sibling->next_sibling)
        ++siblings;
    CHECK(siblings == count);
    xml_free(root);
}
