// What a document must say: every attribute and every number, each taken out of its place
// alone; and the exact words that make a value dynamic or static.
#include "document_text.h"
#include "editing/xml_edit.h"

#include <cstring>
#include <doctest/doctest.h>

// ---- a document with everything -------------------------------------------------------------

// The complete document with what it leaves out: a second input, a render target, four manipulators, a
// font of other numbers.
static std::string everything()
{
    document_text text = complete_document();
    text.records[2] += "<t name=\"n\" type=\"207\" texture_format=\"0\" texture_filter=\"0\"><i>0</i><input>0</input>"
                       "<output>4</output><output>4</output><p>1</p><p>1</p></t>"
                       "<t name=\"n\" type=\"210\" texture_format=\"0\" texture_filter=\"0\"><i>3</i><input>3</input>"
                       "<p>1</p><p>1</p></t>";
    text.records[4] += with(function_text(), "</segment>", "</segment><s type=\"1\" length=\"5\"><a>1</a><b>2</b></s>");
    text.records[12] = with(text.records[12], "<e ", "<e name=\"swirl\" ");
    const std::string more = "<m type=\"2\">" + repeated(animated("static", "1"), 3) + "</m>";
    text.records[13] = with(text.records[13], "</manipulators>", more + "</manipulators>");
    text.records[14] += "<track>"
        + with(with(clip_text(1, 0, 100), "type=\"0\"", "type=\"1\" rtex=\"1\""), "type=\"static\" value=\"60\"",
            "type=\"dynamic\" value=\"1\"")
        + "</track>";
    return to_text(text);
}

// ---- where a message finds an element ---------------------------------------------------------

static uint32_t number_of(const xml_node* node)
{
    uint32_t number = 1;
    for (const xml_node* n = node->parent->first_child; n != node; n = n->next_sibling)
        ++number;
    return number;
}

static std::string numbered(const char* name, uint32_t number)
{
    return std::string(", ") + name + " " + std::to_string(number);
}

// A child of a texture node: input1, then "input", every "output", and parameters.
static std::string part_of_node(const xml_node* child)
{
    const uint32_t number = number_of(child);
    if (number == 1)
        return ", input1";
    const bool has_input2 = std::strcmp(child->parent->first_child->next_sibling->name, "input") == 0;
    if (number == 2 && has_input2)
        return ", input2";
    uint32_t outputs = 0;
    for (const xml_node* n = child->parent->first_child; n != nullptr; n = n->next_sibling)
        outputs += std::strcmp(n->name, "output") == 0 ? 1 : 0;
    const uint32_t index = number - (has_input2 ? 2 : 1);
    return index <= outputs ? numbered("output", index) : numbered("parameter", index - outputs);
}

// A child of a placed object, of its manipulators, or of one of these.
static std::string part_of_object(const xml_node* child)
{
    static const char* const names[] = {", visibility", ", time offset", ", camera facing"};
    const uint32_t number = number_of(child);
    if (std::strcmp(child->parent->name, "object") == 0)
        return number <= 9 ? numbered("value", number) : names[number - 10];
    if (std::strcmp(child->parent->name, "manipulators") == 0)
        return numbered("manipulator", number);
    if (std::strcmp(child->name, "manipulator") == 0)
        return ", manipulator";
    const bool has_model = std::strcmp(child->parent->first_child->name, "manipulator") == 0;
    return numbered("parameter", has_model ? number - 1 : number);
}

// What stands behind "section N (NAME)" for the element `node` at `depth` (1: a record).
static std::string place_of(uint32_t section, const xml_node* node, uint32_t depth)
{
    if (depth == 1)
        return numbered("record", number_of(node));
    const std::string outer = place_of(section, node->parent, depth - 1);
    const uint32_t number = number_of(node);
    switch (section) {
    case 1:
        return outer + numbered("parameter", number);
    case 2:
        return outer + part_of_node(node);
    case 4:
        return outer + numbered(depth == 2 ? "segment" : "parameter", number);
    case 5:
        return depth == 2 ? outer : outer.substr(0, outer.rfind(", wrapper")) + numbered("value", number);
    case 6:
    case 12:
        return outer + numbered("p", number);
    case 9:
        return outer + numbered("glyph", number);
    case 11:
        return outer + ", " + node->name;
    case 13:
        if (depth == 2)
            return outer + numbered("object", number);
        return std::strcmp(node->name, "manipulators") == 0 ? outer : outer + part_of_object(node);
    case 14:
        return outer + numbered(depth == 2 ? "clip" : "value", number);
    }
    return outer;
}

// ---- taking one thing out -----------------------------------------------------------------------

namespace {

// A walk over the records that takes out the `wanted`-th of all attributes and texts, which it counts in `seen`.
struct remover {
    uint32_t wanted;
    uint32_t seen;
    bool found;
    bool optional;
    std::string line; // of the refusal
};

} // namespace

static void refuse(remover& r, uint32_t section, const xml_node* node, uint32_t depth, const std::string& what)
{
    r.found = true;
    r.line = "Error: demo.xmlz: section " + std::to_string(section) + " (" + section_name(section) + ")"
        + place_of(section, node, depth) + ": " + what + "\n";
}

static bool is_optional(uint32_t section, const char* attribute, uint32_t depth)
{
    return std::strcmp(attribute, "name") == 0 && depth == 1 && section >= 12;
}

static void take_out(remover& r, uint32_t section, xml_node* node, uint32_t depth)
{
    for (int32_t i = 0; i < node->attribute_count && !r.found; ++i)
        if (r.seen++ == r.wanted) {
            const std::string name = node->attributes[i].name;
            r.optional = is_optional(section, name.c_str(), depth);
            refuse(r, section, node, depth, "attribute \"" + name + "\" is missing.");
            node->attributes[i].name[0] = '~'; // another attribute, which nobody asks for
        }
    if (node->text != nullptr && !r.found && r.seen++ == r.wanted) {
        r.optional = section == section_materials; // the texts of shaders
        refuse(r, section, node, depth, "the number is missing.");
        xml_set_text(node, nullptr);
    }
    for (xml_node* child = node->first_child; child != nullptr && !r.found; child = child->next_sibling) {
        const bool is_glyph = section == section_fonts && depth == 1;
        if (!is_glyph || number_of(child) <= 2 || child->next_sibling == nullptr) // all other glyphs are alike
            take_out(r, section, child, depth + 1);
    }
}

// Reads the document without one of its attributes or numbers; false when there are no more.
static bool check_without(const std::string& whole, uint32_t wanted, uint32_t& optional)
{
    remover r = {wanted, 0, false, false, ""};
    const owned_tree root(xml_parse(whole.c_str()));
    uint32_t section = 1;
    for (xml_node* s = root->first_child->first_child; s != nullptr && section <= section_timeline;
         s = s->next_sibling, ++section)
        for (xml_node* record = s->first_child; record != nullptr && !r.found; record = record->next_sibling)
            take_out(r, section, record, 1);
    if (!r.found)
        return false;
    char* text = xml_write(root->first_child);
    const reading result{std::string(text)};
    std::free(text);
    CHECK_MESSAGE(result.failed == !r.optional, r.line);
    CHECK(fatal_line(result) == (r.optional ? "" : r.line));
    optional += r.optional ? 1 : 0;
    return true;
}

TEST_CASE("every attribute and every number is missed by its name and place, but for the optional ones")
{
    const std::string whole = everything();
    CHECK(joined(reading(whole)) == "");
    uint32_t optional = 0;
    uint32_t count = 0;
    while (check_without(whole, count, optional))
        ++count;
    CHECK(count > 300);
    CHECK(optional == 4); // the names of an effect and a scene, two shaders
}

TEST_CASE("every fixed child is missed when it is the last one that is left out")
{
    const std::string whole = everything();
    CHECK(fatal_line(reading(with(whole, "<values>", "<values/><values>"))).find("wrapper: too few children: 0 of 9.")
        != std::string::npos);
    const struct {
        const char* from;
        const char* line;
    } cases[] = {{"<v type=\"static\" value=\"0.5\"/></values>",
                     "section 5 (values), record 1, wrapper: too few children: 8 of 9."},
        {"<g model=\"1\" material=\"1\" bitmap=\"0\" offset=\"0.5\" width=\"1.5\"/></font>",
            "section 9 (fonts), record 1: too few children: 86 of 87."},
        {"<visibility value=\"0\"/>", "section 13 (scenes), record 1, object 1: too few children: 12 of 13."},
        {"<v type=\"static\" value=\"100\"/><v type=\"static\" value=\"0\"/></clip>",
            "section 14 (timeline), record 1, clip 1: too few children: 7 of 8."},
        {"<i>1</i></t>", "section 2 (texture nodes), record 2: too few children: 0 of 1."}};
    for (const auto& c : cases) {
        const std::string from = c.from;
        const size_t closing = from.rfind("</");
        const bool keeps_end
            = from.find("/>") != std::string::npos && closing > from.find("/>") && closing != std::string::npos;
        const std::string to = keeps_end || from.compare(0, 3, "<i>") == 0 ? from.substr(closing) : "";
        CHECK(fatal_line(reading(with(whole, from, to))) == std::string("Error: demo.xmlz: ") + c.line + "\n");
    }
}

// ---- exactly dynamic, exactly static ------------------------------------------------------------

static const char* const other_words[] = {"Dynamic", "dynamic ", " dynamic", "dyn", "dynamics", "", "1"};

// The value `index` of nine (or so) constants 0 becomes `type`, with the function 1.
static std::string values_with(uint32_t count, uint32_t index, const std::string& type)
{
    return repeated(animated("static", "0"), index) + animated(type, "1")
        + repeated(animated("static", "0"), count - index - 1);
}

TEST_CASE("each placement value is dynamic by exactly that word, and no other with it")
{
    for (uint32_t index = 0; index < placement_value_count; ++index) {
        const auto marks = [index](const std::string& type) {
            document_text text = complete_document();
            text.records[13] = "<scene>"
                + with(scene_object_text(0, 4, 1, 1, ""), placement_values(), values_with(9, index, type)) + "</scene>";
            const reading r(text);
            const scene_object& object = table_get(r.d.scene_table, 1)->objects[0];
            std::string result;
            for (const animated_value& value : object.values)
                result += value.dynamic == 1 ? 'd' : value.dynamic == 0 ? 's' : '?';
            CHECK(object.values[index].value == 1.0f);
            return result;
        };
        std::string expected(9, 's');
        for (const char* word : other_words)
            CHECK(marks(word) == expected);
        CHECK(marks("static") == expected);
        expected[index] = 'd';
        CHECK(marks("dynamic") == expected);
    }
}

TEST_CASE("each value of a record, and each parameter of a manipulator, is dynamic by exactly that word")
{
    for (uint32_t index = 0; index < 12; ++index) {
        const auto marks = [index](const std::string& type) {
            document_text text = complete_document();
            if (index < 9)
                text.records[5] = "<v><values>" + values_with(9, index, type) + "</values></v>";
            text.records[13] = "<scene>"
                + scene_object_text(0, 4, 1, 1, "", "<m type=\"0\">" + values_with(12, index, type) + "</m>")
                + "</scene>";
            const reading r(text);
            const value_record& values = *table_get(r.d.transform_table, 1);
            const manipulator_record& m = table_get(r.d.scene_table, 1)->objects[0].manipulators[0];
            std::string result;
            for (uint32_t i = 0; i < 12; ++i) {
                result += m.params[i].dynamic != 0 ? 'd' : 's';
                if (index < 9 && i < 9)
                    CHECK(value_is_dynamic(values, i) == (m.params[i].dynamic != 0));
            }
            return result;
        };
        std::string expected(12, 's');
        for (const char* word : other_words)
            CHECK(marks(word) == expected);
        expected[index] = 'd';
        CHECK(marks("dynamic") == expected);
    }
}

TEST_CASE("each camera value is dynamic by exactly that word, the field of view by a number of its own")
{
    for (uint32_t index = 0; index < camera_value_count; ++index) {
        const auto modes = [index](const std::string& type) {
            document_text text = complete_document();
            const std::string clip = clip_text(1, 0, 100);
            const size_t begin = clip.find("<v ");
            const size_t end = clip.find("</clip>");
            text.records[14]
                = "<track>" + clip.substr(0, begin) + values_with(9, index, type) + clip.substr(end) + "</track>";
            const reading r(text);
            std::string result;
            for (const uint8_t mode : r.d.timeline->layers[0][0].camera_mode)
                result += static_cast<char>('0' + mode);
            return result;
        };
        std::string expected(8, '0');
        for (const char* word : other_words)
            CHECK(modes(word) == expected);
        CHECK(modes("orthographic") == expected);
        expected[index] = index == camera_fov ? '2' : '1';
        CHECK(modes("dynamic") == expected);
        expected[index] = index == camera_fov ? '1' : '0';
        CHECK(modes("ortographic") == expected);
    }
}

TEST_CASE("each value of a material is constant by exactly that word, and no other with it")
{
    const char* const names[] = {"red", "green", "blue", "alpha", "linewidth", "fogstart", "fogend"};
    for (uint32_t index = 0; index < 7; ++index) {
        const auto marks = [&](const std::string& type) {
            std::string settings;
            for (uint32_t i = 0; i < 7; ++i)
                settings
                    += std::string("<") + names[i] + " type=\"" + (i == index ? type : "static") + "\" value=\"1.5\"/>";
            document_text text = complete_document();
            text.records[11] = "<material>" + settings + "</material>";
            const reading r(text);
            const material_record& m = *table_get(r.d.material_table, 1);
            const uint8_t dynamic[] = {m.color_dynamic[0], m.color_dynamic[1], m.color_dynamic[2], m.color_dynamic[3],
                m.linewidth_dynamic, m.fogstart_dynamic, m.fogend_dynamic};
            const float values[] = {m.color[0], m.color[1], m.color[2], m.color[3], m.linewidth, m.fogstart, m.fogend};
            std::string result;
            for (uint32_t i = 0; i < 7; ++i) {
                result += dynamic[i] != 0 ? 'd' : 's';
                CHECK(values[i] == (dynamic[i] != 0 ? 1.0f : 1.5f)); // a handle is a whole number
            }
            return result;
        };
        std::string expected(7, 's');
        CHECK(marks("static") == expected);
        expected[index] = 'd';
        for (const char* word : {"dynamic", "Static", "static ", " static", "statics", "", "constant"})
            CHECK(marks(word) == expected);
    }
}
