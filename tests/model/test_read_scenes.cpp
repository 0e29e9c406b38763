#include "document_text.h"

#include <cstring>
#include <doctest/doctest.h>

// The complete document with other scenes, and no clip that shows them.
static document_text scenes_text(const std::string& scenes)
{
    document_text text = complete_document();
    text.records[13] = scenes;
    text.records[14] = "";
    return text;
}

static reading scene_of(const std::string& objects)
{
    return reading(scenes_text("<scene>" + objects + "</scene>"));
}

static const scene_object& object_of(const reading& r, uint32_t index = 0)
{
    const auto* scene = table_get(r.d.scene_table, 1);
    REQUIRE(scene != nullptr);
    REQUIRE(index < scene->object_count);
    return scene->objects[index];
}

static const std::string plain = scene_object_text(0, 1, 1, 1, "");
static const std::string object_error = "Error: demo.xmlz: section 13 (scenes), record 1, object 1";
static const std::string object_warning = "Warning: demo.xmlz: section 13 (scenes), record 1, object 1";

// ---- mesh effects -------------------------------------------------------------------

TEST_CASE("an effect has its kind and the functions of its parameters")
{
    document_text text;
    text.records[4] = repeated(function_text(), 2);
    text.records[12] = "<e type=\"2\" name=\"swirl\"><p>2</p><p>0</p><q/><p>1</p></e><e type=\"4\"/>";
    const reading r(text);
    CHECK(fatal_line(r) == "");
    const auto* effect = table_get(r.d.effect_table, 1);
    CHECK(effect->type == mesh_effect_swirl);
    CHECK(std::strcmp(effect->name, "swirl") == 0);
    CHECK(effect->functions[0] == 2);
    CHECK(effect->functions[1] == 0);
    CHECK(effect->functions[2] == 0);
    CHECK(effect->state == nullptr);
    CHECK(table_get(r.d.effect_table, 2)->name[0] == 0);
}

TEST_CASE("an effect's kind outside the catalogue is an error")
{
    for (const char* type : {"-1", "5", "256"}) {
        document_text text;
        text.records[12] = std::string("<e type=\"") + type + "\"/>";
        CHECK(joined(reading(text))
            == std::string("Error: demo.xmlz: section 12 (mesh effects), record 1: type ") + type + " is no effect.\n");
    }
}

TEST_CASE("an effect may be of every kind in the catalogue")
{
    document_text text;
    for (const char* type : {"0", "1", "2", "3", "4"})
        text.records[12] += std::string("<e type=\"") + type + "\"/>";
    const reading r(text);
    CHECK(fatal_line(r) == "");
    for (uint32_t type = 0; type < 5; ++type)
        CHECK(table_get(r.d.effect_table, type + 1)->type == type);
}

TEST_CASE("an effect warns of functions that do not exist, but not of 0")
{
    document_text text;
    text.records[12] = "<e type=\"2\"><p>0</p><p>3</p></e>";
    CHECK(dangling_lines(reading(text))
        == "Warning: demo.xmlz: section 12 (mesh effects), record 1, p 2: function 3 does not exist.\n");
    text.records[12] = "<e type=\"2\">" + repeated("<p>0</p>", 20) + "</e>";
    CHECK(fatal_line(reading(text)) == "");
}

// ---- scenes ---------------------------------------------------------------------------

TEST_CASE("a scene's name is optional and cut to 31 bytes")
{
    const std::string name = "abcdefghijklmnopqrstuvwxyz0123456789";
    const reading r(scenes_text("<s/><s name=\"" + name + "\"/>"));
    CHECK(fatal_line(r) == "");
    CHECK(table_get(r.d.scene_table, 1)->name[0] == 0);
    CHECK(table_get(r.d.scene_table, 1)->objects == nullptr);
    CHECK(table_get(r.d.scene_table, 1)->object_count == 0);
    CHECK(table_get(r.d.scene_table, 2)->name == name.substr(0, 31));
}

TEST_CASE("an object's children go into its fields in order")
{
    const reading r = scene_of("<o type=\"1\" object=\"1\" material=\"1\" font=\"0\" text=\"ab\">"
        + animated("static", "1.5") + animated("dynamic", "1") + repeated(animated("static", "3"), 7)
        + "<v value=\"1\"/><t value=\"-2.75\"/><c value=\"1\"/><m/><ignored/></o>");
    CHECK(fatal_line(r) == "");
    const scene_object& object = object_of(r);
    CHECK(object.type == object_genmesh);
    CHECK(object.object == 1);
    CHECK(object.material == 1);
    CHECK(object.font == 0);
    CHECK(std::memcmp(object.text, "ab\0", 3) == 0);
    CHECK(object.values[0].value == 1.5f);
    CHECK(object.values[0].dynamic == 0);
    CHECK(object.values[1].value == 1.0f);
    CHECK(object.values[1].dynamic == 1);
    CHECK(object.values[8].value == 3.0f);
    CHECK(object.visibility == 1);
    CHECK(object.time_offset == -2.75f);
    CHECK(object.manipulator_count == 0);
    CHECK(table_get(r.d.scene_table, 1)->camera_facing[0] == 128);
}

TEST_CASE("the neighbours of the time offset are whole numbers")
{
    std::string object = with(plain, "<visibility value=\"0\"/>", "<visibility value=\"1.9\"/>");
    object = with(object, "<facing value=\"0\"/>", "<facing value=\"1.9\"/>");
    const reading r = scene_of(object);
    CHECK(object_of(r).visibility == 1);
    CHECK(table_get(r.d.scene_table, 1)->camera_facing[0] == 128);
}

TEST_CASE("only the value 1 turns an object to the camera")
{
    std::string objects;
    for (const char* value : {"0", "1", "2", "-1", "1", "256", "257", "0", "1", "0"})
        objects += with(plain, "<facing value=\"0\"/>", std::string("<facing value=\"") + value + "\"/>");
    const reading r = scene_of(objects);
    const auto* scene = table_get(r.d.scene_table, 1);
    CHECK(scene->object_count == 10);
    CHECK(scene->camera_facing[0] == (64 | 8)); // objects 1 and 4
    CHECK(scene->camera_facing[1] == 128);      // object 8
}

TEST_CASE("every object has a camera-facing bit of its own, the highest of a byte first")
{
    const std::string facing = with(plain, "<facing value=\"0\"/>", "<facing value=\"1\"/>");
    std::string objects;
    for (int object = 0; object < 17; ++object)
        objects += object == 0 || object == 7 || object == 8 || object == 14 || object == 16 ? facing : plain;
    const reading r = scene_of(objects);
    const auto* scene = table_get(r.d.scene_table, 1);
    REQUIRE(scene != nullptr);
    CHECK(scene->camera_facing[0] == 0x81); // objects 0 and 7
    CHECK(scene->camera_facing[1] == 0x82); // 8 and 14
    CHECK(scene->camera_facing[2] == 0x80); // 16
    CHECK(scene->camera_facing[3] == 0);
}

TEST_CASE("a text of 32 bytes has no terminator, and longer ones are cut")
{
    const std::string text = "0123456789abcdefghijklmnopqrstuvwxyz";
    const reading r = scene_of(scene_object_text(2, 0, 1, 1, text) + scene_object_text(2, 0, 1, 1, text.substr(0, 31))
        + scene_object_text(2, 0, 1, 1, ""));
    CHECK(std::string(object_of(r, 0).text, 32) == text.substr(0, 32));
    CHECK(std::string(object_of(r, 1).text) == text.substr(0, 31));
    CHECK(object_of(r, 2).text[0] == 0);
}

TEST_CASE("128 objects are read, 129 are too many")
{
    const reading full = scene_of(repeated(plain, 128));
    CHECK(joined(full) == "");
    CHECK(table_get(full.d.scene_table, 1)->object_count == 128);
    const reading over = scene_of(repeated(plain, 129));
    CHECK(joined(over) == "Error: demo.xmlz: section 13 (scenes), record 1: more than 128 objects.\n");
}

TEST_CASE("an object needs its attributes and thirteen children")
{
    for (const char* name : {"type", "object", "material", "font", "text"}) {
        const reading r(scenes_text("<s/><s>" + repeated(plain, 4) + without_attribute(plain, name) + "</s>"));
        CHECK(joined(r)
            == std::string("Error: demo.xmlz: section 13 (scenes), record 2, object 5: attribute \"") + name
                + "\" is missing.\n");
    }
    const reading few = scene_of(with(plain, "<manipulators></manipulators>", ""));
    CHECK(joined(few) == object_error + ": too few children: 12 of 13.\n");
    CHECK(joined(scene_of(with(plain, "<visibility value=\"0\"/>", "<visibility/>")))
        == object_error + ", visibility: attribute \"value\" is missing.\n");
    CHECK(joined(scene_of(with(plain, "<offset value=\"0\"/>", "<offset/>")))
        == object_error + ", time offset: attribute \"value\" is missing.\n");
    CHECK(joined(scene_of(with(plain, "<facing value=\"0\"/>", "<facing/>")))
        == object_error + ", camera facing: attribute \"value\" is missing.\n");
    CHECK(joined(scene_of(with(plain, animated("static", "0"), "<v value=\"0\"/>")))
        == object_error + ", value 1: attribute \"type\" is missing.\n");
}

TEST_CASE("object kinds that do not exist are kept")
{
    const reading r = scene_of(scene_object_text(9, 4000, 1, 1, "") + scene_object_text(-2, 4000, 1, 1, ""));
    CHECK(fatal_line(r) == "");
    CHECK(object_of(r, 0).type == 9);
    CHECK(object_of(r, 1).type == -2);
}

// ---- references -------------------------------------------------------------------------

TEST_CASE("what an object names and does not exist is warned about")
{
    const reading r = scene_of(
        with(scene_object_text(0, 12, 13, 14, ""), "<visibility value=\"0\"/>", "<visibility value=\"15\"/>"));
    CHECK_FALSE(r.failed);
    CHECK(joined(r)
        == object_warning + ": object 12 does not exist.\n" + object_warning + ": material 13 does not exist.\n"
            + object_warning + ": font 14 does not exist.\n" + object_warning + ": visibility 15 does not exist.\n");
    CHECK(joined(scene_of(scene_object_text(0, 0, 0, 0, "") + scene_object_text(1, 0, 0, 0, ""))) == "");
    CHECK(joined(scene_of(scene_object_text(2, 999, 1, 1, "a"))) == ""); // a text has no object
}

TEST_CASE("an object is looked for where its number leads")
{
    // Reference 4 is a model with the id 1; a fifth model reference leads to nothing.
    document_text text = scenes_text("<s>" + scene_object_text(0, 4, 1, 1, "") + scene_object_text(0, 6, 1, 1, "")
        + scene_object_text(1, 1, 1, 1, "") + scene_object_text(1, 7, 1, 1, "") + "</s>");
    text.records[10] += "<o type=\"0\" id=\"77\"/><o type=\"1\" id=\"1\"/>";
    CHECK(joined(reading(text))
        == "Warning: demo.xmlz: section 13 (scenes), record 1, object 2: object 6 does not exist.\n");
}

TEST_CASE("a dynamic placement value without its function is warned about")
{
    CHECK(joined(scene_of(with(plain, animated("static", "0") + animated("static", "1"),
              animated("dynamic", "0") + animated("dynamic", "12"))))
        == object_warning + ", value 6: function 0 does not exist.\n" + object_warning
            + ", value 7: function 12 does not exist.\n");
}

// ---- manipulators -----------------------------------------------------------------------

TEST_CASE("a manipulator has its kind and its parameters in order")
{
    const reading r = scene_of(scene_object_text(0, 1, 1, 1, "",
        "<m type=\"1\">" + animated("static", "3") + animated("dynamic", "1") + animated("x", "0.5")
            + "</m><m type=\"0\"/>"));
    CHECK(fatal_line(r) == "");
    const scene_object& object = object_of(r);
    CHECK(object.manipulator_count == 2);
    const manipulator_record& m = object.manipulators[0];
    CHECK(m.type == manipulator_x_multiplier);
    CHECK(m.model == 0);
    CHECK(m.params[0].value == 3.0f);
    CHECK(m.params[0].dynamic == 0);
    CHECK(m.params[1].value == 1.0f);
    CHECK(m.params[1].dynamic == 1);
    CHECK(m.params[2].value == 0.5f);
    CHECK(m.params[3].value == 0.0f);
}

TEST_CASE("a nested manipulator element counts only as the first child, its numbers truncated")
{
    const std::string nested = "<manipulator type=\"0.9\" model=\"1.9\"/>";
    const reading r
        = scene_of(scene_object_text(0, 1, 1, 1, "", "<m type=\"3\">" + nested + animated("static", "5") + "</m>"));
    CHECK(fatal_line(r) == "");
    const manipulator_record& m = object_of(r).manipulators[0];
    CHECK(m.model_type == 0);
    CHECK(m.model == 1);
    CHECK(m.params[0].value == 5.0f);
    // Anywhere else it is a parameter, and lacks what parameters need.
    CHECK(fatal_line(
              scene_of(scene_object_text(0, 1, 1, 1, "", "<m type=\"3\">" + animated("static", "5") + nested + "</m>")))
        == object_error + ", manipulator 1, parameter 2: attribute \"value\" is missing.\n");
    CHECK(fatal_line(
              scene_of(scene_object_text(0, 1, 1, 1, "", "<m type=\"3\"><manipulators type=\"0\" model=\"1\"/></m>")))
        == object_error + ", manipulator 1, parameter 1: attribute \"value\" is missing.\n");
}

TEST_CASE("a nested manipulator needs both attributes")
{
    CHECK(joined(scene_of(scene_object_text(0, 1, 1, 1, "", "<m type=\"3\"><manipulator type=\"0\"/></m>")))
        == object_error + ", manipulator 1, manipulator: attribute \"model\" is missing.\n");
    CHECK(joined(scene_of(scene_object_text(0, 1, 1, 1, "", "<m type=\"3\"><manipulator model=\"0\"/></m>")))
        == object_error + ", manipulator 1, manipulator: attribute \"type\" is missing.\n");
}

TEST_CASE("twelve parameters of a manipulator are kept, more are read and dropped")
{
    const reading r = scene_of(scene_object_text(0, 1, 1, 1, "",
        "<m type=\"0\">" + repeated(animated("static", "1"), 11) + animated("static", "2")
            + repeated(animated("static", "3"), 9) + "</m><m type=\"2\"/>"));
    CHECK(fatal_line(r) == "");
    CHECK(object_of(r).manipulators[0].params[11].value == 2.0f);
    CHECK(object_of(r).manipulators[1].type == manipulator_rippler);
}

TEST_CASE("seven manipulators are read, eight are too many")
{
    CHECK(
        object_of(scene_of(scene_object_text(0, 1, 1, 1, "", repeated("<m type=\"2\"/>", 7)))).manipulator_count == 7);
    CHECK(fatal_line(scene_of(scene_object_text(0, 1, 1, 1, "", repeated("<m type=\"2\"/>", 8))))
        == object_error + ", manipulator 8: more than 7 manipulators.\n");
}

TEST_CASE("a manipulator may be of every kind in the catalogue")
{
    static_assert(manipulator_kind_count <= max_manipulators); // more need a second object
    std::string manipulators;
    for (int32_t type = 0; type < manipulator_kind_count; ++type)
        manipulators += "<m type=\"" + std::to_string(type) + "\"/>";
    const reading r = scene_of(scene_object_text(0, 1, 1, 1, "", manipulators));
    REQUIRE(object_of(r).manipulator_count == manipulator_kind_count);
    for (int32_t type = 0; type < manipulator_kind_count; ++type)
        CHECK(object_of(r).manipulators[type].type == type);
}

TEST_CASE("a manipulator's kind outside the catalogue is an error")
{
    for (const std::string& type : {std::string("-1"), std::to_string(manipulator_kind_count)})
        CHECK(fatal_line(scene_of(scene_object_text(0, 1, 1, 1, "", "<m type=\"0\"/><m type=\"" + type + "\"/>")))
            == object_error + ", manipulator 2: type " + type + " is no manipulator.\n");
    CHECK(fatal_line(scene_of(scene_object_text(0, 1, 1, 1, "", "<m/>")))
        == object_error + ", manipulator 1: attribute \"type\" is missing.\n");
}

TEST_CASE("a manipulator's model and functions that do not exist are warned about")
{
    const auto lines = [](const char* type, const char* model) {
        return dangling_lines(scene_of(scene_object_text(0, 1, 1, 1, "",
            std::string("<m type=\"3\"><manipulator type=\"") + type + "\" model=\"" + model + "\"/></m>")));
    };
    CHECK(lines("0", "1") == "");
    CHECK(lines("0", "0") == "");
    CHECK(lines("1", "1") == "");
    CHECK(lines("0", "5") == object_warning + ", manipulator 1: model 5 does not exist.\n");
    CHECK(lines("1", "6") == object_warning + ", manipulator 1: model 6 does not exist.\n");
    CHECK(lines("2", "7") == ""); // no kind of model
    CHECK(lines("0", "1e99") == object_warning + ", manipulator 1: model -2147483648 does not exist.\n");
    CHECK(dangling_lines(
              scene_of(scene_object_text(0, 1, 1, 1, "", "<m type=\"0\">" + animated("dynamic", "8") + "</m>")))
        == object_warning + ", manipulator 1, parameter 1: function 8 does not exist.\n");
}
