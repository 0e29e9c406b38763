#include "authoring/check/findings.h"

#include "authoring/check/lint.h"
#include "authoring/check/pack_check.h"
#include "model/sections.h"

#include <algorithm>
#include <cassert>
#include <utility>

// ---- what the looks share ---------------------------------------------------------

void add_finding(const lint_target& t, problem_severity severity, uint32_t section, uint32_t record,
    const std::string& text, const std::vector<document_part>& parts)
{
    assert(!text.empty() && text.back() == '.');
    if (record == 0 || !has_error(t.read, section, record)) // half a record tells nothing
        t.findings.push_back({severity, t.d.name, section, record, parts, text});
}

const xml_node* child_of(const xml_node* node, uint32_t index)
{
    const xml_node* child = node != nullptr ? node->first_child : nullptr;
    for (; child != nullptr && index > 0; --index)
        child = child->next_sibling;
    return child;
}

const xml_node* element_of(const read_document& read, uint32_t section, uint32_t record)
{
    assert(section >= 1 && section < no_more_sections);
    const xml_node* element = child_of(child_of(read.root, 0), section - 1);
    return record == 0 ? element : child_of(element, record - 1);
}

std::string as_seconds(uint64_t ticks)
{
    std::string text = std::to_string(ticks / 100);
    if (ticks % 100 != 0) {
        text += "." + std::to_string(ticks / 10 % 10);
        if (ticks % 10 != 0)
            text += std::to_string(ticks % 10);
    }
    return text + " s";
}

// ---- the looks ----------------------------------------------------------------------

namespace {

struct lint {
    void (*look)(const lint_target& t);
    bool whole; // only where every record was read: what a lost one names would be missing
};

} // namespace

constexpr lint lints[] = {
    {lint_swapped_sections, false},
    {lint_extra_parameters, false},
    {lint_unused_records, true},
    {lint_ping_pong, false},
    {lint_loop_behind_end, false},
    {lint_short_functions, false},
    {lint_visibility, false},
    {lint_picture_sizes, true},
    {lint_lost_alpha, false},
    {lint_target_mipmaps, false},
    {lint_colorless, false},
    {lint_transparent, false},
    {lint_one_path_programs, false},
    {lint_path_differences, false},
    {lint_fog_width, false},
    {lint_color_places, true},
    {lint_dark_lights, true},
    {lint_ripplers, false},
    {lint_still_points, true},
    {lint_fast_lakes, false},
    {lint_letters, false},
    {lint_scale, false},
    {lint_lit_meshes, false},
    {lint_scaled_normals, false},
    {lint_loose_vertices, true},
    {lint_lost_clips, true},
    {lint_early_end, true},
    {lint_short_show, true},
    {lint_targets, true},
    {lint_own_target, true},
    {lint_cameras, false},
    {lint_leftover_units, true},
    {lint_loading_time, true},
    {lint_music, true},
};

// Whether a warning of a section as a whole may be the consequence of a record that was not read.
static bool may_be_consequence(const read_document& read, const document_problem& problem)
{
    return !problem.fatal && problem.section != 0 && problem.record == 0
        && std::any_of(read.problems.begin(), read.problems.end(),
            [&problem](const document_problem& other) { return other.fatal && other.section == problem.section; });
}

static document_finding finding_of(const document_problem& problem, const char* document)
{
    return {problem.fatal ? problem_error : problem_warning, document, problem.section, problem.record, problem.parts,
        problem.text.substr(problem.place_length)};
}

static void add_count_of_the_rest(const read_document& read, finding_list& findings)
{
    const size_t kept = read.problems.size() - read.errors;
    if (read.warning_count > kept)
        findings.push_back({problem_warning, read.d.name, 0, 0, {},
            std::to_string(read.warning_count - kept) + " more warnings of the player."});
}

// What the player says of a record comes first, and what is as a whole before its parts.
static void sort_findings(finding_list& findings)
{
    std::stable_sort(findings.begin(), findings.end(), [](const document_finding& a, const document_finding& b) {
        return std::pair(a.section, a.record) < std::pair(b.section, b.record);
    });
}

static bool is_missing_attribute(const document_finding& finding)
{
    return finding.severity == problem_error && finding.text.starts_with("attribute \"")
        && finding.text.find("\" is missing") != std::string::npos;
}

// Where a section stands in another's place, the attributes that its records lack for that are no mistakes of their
// own: what is wrong is the place, and is an error then.
static void drop_attributes_of_swapped(finding_list& findings)
{
    for (uint32_t section = 1; section < no_more_sections; ++section) {
        const auto swapped = std::find_if(findings.begin(), findings.end(), [section](const document_finding& finding) {
            return finding.section == section && finding.text.starts_with(swapped_section_text);
        });
        const auto is_consequence = [section](const document_finding& finding) {
            return finding.section == section && is_missing_attribute(finding);
        };
        if (swapped == findings.end() || std::none_of(findings.begin(), findings.end(), is_consequence))
            continue;
        swapped->severity = problem_error;
        std::erase_if(findings, is_consequence);
    }
}

static void check_read_document(read_document& read, const pack_file* pack, const music_facts& music, finding_list& all)
{
    finding_list findings;
    for (const document_problem& problem : read.problems)
        if (!may_be_consequence(read, problem))
            findings.push_back(finding_of(problem, read.d.name));
    add_count_of_the_rest(read, findings);
    const bool is_show = std::string(read.d.name) == show_document_name;
    const lint_target target = {read, read.d, is_show, pack, music, findings};
    for (const lint& each : lints)
        if (read.root != nullptr && (!each.whole || read.errors == 0))
            each.look(target);
    drop_attributes_of_swapped(findings);
    sort_findings(findings);
    all.insert(all.end(), std::make_move_iterator(findings.begin()), std::make_move_iterator(findings.end()));
}

finding_list check_documents(const pack_file* pack, const music_facts& music, known_documents* known)
{
    finding_list findings;
    if (!looks_like_a_pack(pack)) {
        findings.push_back({problem_error, "", 0, 0, {}, "this is no pack."});
        return findings;
    }
    owned_read_document loading
        = read_packed_document(loading_document_name, pack, known != nullptr ? &known->loading : nullptr);
    check_read_document(*loading, pack, music, findings);
    owned_read_document show
        = read_packed_document(show_document_name, pack, known != nullptr ? &known->show : nullptr);
    check_read_document(*show, pack, music, findings);
    check_pack(pack, *loading, *show, findings);
    if (known != nullptr) {
        know_document(known->loading, std::move(loading));
        know_document(known->show, std::move(show));
    }
    return findings;
}

finding_list check_tree(const char* name, const xml_node* root, const pack_file* pack, const music_facts& music)
{
    finding_list findings;
    const owned_read_document read = read_document_tree(name, root, pack);
    check_read_document(*read, pack, music, findings);
    return findings;
}

std::string music_file_of(const pack_file* pack)
{
    std::string problem;
    const owned_tree tree(load_document_tree(pack, show_document_name, problem));
    const char* file = xml_get_attribute(document_music_element(tree.get()), "file");
    return file != nullptr ? file : "";
}

// ---- findings for everyone ------------------------------------------------------------

static std::string place_of(const document_finding& finding)
{
    if (finding.section == 0)
        return "";
    std::string place = section_label(finding.section);
    if (finding.record != 0)
        place += ", record " + std::to_string(finding.record);
    for (const document_part& part : finding.parts)
        place += ", " + part.name + (part.number != 0 ? " " + std::to_string(part.number) : "");
    return place;
}

problem_list findings_as_problems(const finding_list& findings, find_source_line find_line, const void* context)
{
    problem_list problems;
    for (const document_finding& finding : findings) {
        show_problem problem = {finding.severity, finding.document, 0, "", finding.text};
        if (find_line == nullptr || !find_line(context, finding, problem.file, problem.line))
            problem.where = place_of(finding);
        problems.push_back(std::move(problem));
    }
    return problems;
}
