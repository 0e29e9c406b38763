// A small show to try the looks on, and what they say of it.
#pragma once

#include "authoring/check/findings.h"
#include "content/pack.h"
#include "document_text.h"
#include "model/records.h"

#include <algorithm>
#include <string>

// A material with these settings in front of four that every one of ours has: blending, red, green and blue.
inline std::string material_text(const std::string& settings, int blend_function = 2)
{
    return "<material>" + settings + "<blend_function value=\"" + std::to_string(blend_function)
        + "\"/><red type=\"static\" value=\"1\"/><green type=\"static\" value=\"0.5\"/><blue type=\"static\" "
          "value=\"0.5\"/></material>";
}

// A light or colour of nine times 0.5.
inline std::string values_text()
{
    return "<v><values>" + repeated(animated("static", "0.5"), 9) + "</values></v>";
}

// A show of three seconds of which nothing is said: a lit cube, and a title. Sections 1, 2, 6, 8 and 12 are empty.
//
//   meshes     1 cube.mesh            values     1 a light
//   functions  1 constant 1           images     1 rock.tga (4 x 8)      objects  1 image 1
//   fonts      1 all letters          materials  1 lit, with the image   2 red, blends by alpha
//   scenes     1 cube, title          timeline   track 1: clip 1, ticks 0 to 300
inline document_text quiet_show()
{
    document_text text;
    text.records[3] = "<mesh filename=\"cube.mesh\"/>";
    text.records[4] = function_text();
    text.records[5] = values_text();
    text.records[7] = "<i filename=\"rock.tga\" texture_format=\"0\" texture_filter=\"1\"/>";
    text.records[9] = "<font>"
        + repeated("<g model=\"1\" material=\"2\" bitmap=\"0\" offset=\"0\" width=\"1\"/>", glyph_count) + "</font>";
    text.records[10] = "<o type=\"1\" id=\"1\"/>";
    text.records[11] = material_text("<light1 value=\"1\"/><texture1 value=\"1\" wrapmode=\"0\" cgenmode=\"0\" "
                                     "rotation=\"0\" function=\"0\"/>")
        + material_text("<alpha type=\"dynamic\" value=\"1\"/>", 0);
    text.records[13] = "<scene name=\"first\">" + scene_object_text(0, 1, 1, 0, "")
        + scene_object_text(2, 0, 0, 1, "Hello") + "</scene>";
    text.records[14] = "<track>" + clip_text(1, 0, 300) + "</track>";
    return text;
}

// Every finding as "note 11/2/part 1: text", each with a newline.
inline std::string lines_of(const finding_list& findings)
{
    static constexpr const char* severities[] = {"error", "warning", "note"};
    std::string lines;
    for (const document_finding& finding : findings) {
        lines += std::string(severities[finding.severity]) + " " + std::to_string(finding.section) + "/"
            + std::to_string(finding.record);
        for (const document_part& part : finding.parts)
            lines += "/" + part.name + " " + std::to_string(part.number);
        lines += ": " + finding.text + "\n";
    }
    return lines;
}

// The lines that do not say `text`.
inline std::string lines_without(const std::string& lines, const std::string& text)
{
    std::string rest;
    for (size_t at = 0; at < lines.size();) {
        const size_t end = std::min(lines.find('\n', at), lines.size() - 1) + 1;
        const std::string line = lines.substr(at, end - at);
        rest += line.find(text) == std::string::npos ? line : "";
        at = end;
    }
    return rest;
}

// What is found in a document; it is called "demo.xmlz" where nothing else is said.
inline std::string findings_in(const document_text& text, const std::vector<pack_content>& entries = complete_pack(),
    const char* name = "demo.xmlz", const music_facts& music = {})
{
    const owned_tree root(xml_parse(to_text(text).c_str()));
    const owned_pack pack(open_pack(entries));
    return lines_of(check_tree(name, root.get(), pack.get(), music));
}

// The lines without the notes on clips that show the texture that they draw into, as those of small documents do.
inline std::string without_own_targets(std::string lines)
{
    for (size_t found = lines.find("it shows the texture that it draws"); found != std::string::npos;
         found = lines.find("it shows the texture that it draws")) {
        const size_t begin = lines.rfind('\n', found) == std::string::npos ? 0 : lines.rfind('\n', found) + 1;
        lines.erase(begin, lines.find('\n', found) + 1 - begin);
    }
    return lines;
}
