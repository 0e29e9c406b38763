// brimlow-pages: writes what is made from the tables of brimlow-make, brimlow-render, brimlow-preview and the language
// of shows into the files of the repository.
//
//     brimlow-pages [--check] ROOT
//
// With --check nothing is written: status 1 tells that a file is out of date.

#include "language_page.h"

#include "tools/common/words.h"
#include "tools/make/option_pages.h"
#include "tools/preview/preview_option_pages.h"
#include "tools/render/option_pages.h"

#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

constexpr const char options_begin[] = ".\\\" ---- from here on written by brimlow-pages ----\n";
constexpr const char options_end[] = ".\\\" ---- up to here ----\n";

static std::string read_text(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// The manual page with its options anew; empty when it has no place for them.
static std::string manual_page(const std::string& page, const std::string& options)
{
    const size_t begin = page.find(options_begin);
    const size_t end = page.find(options_end);
    if (begin == std::string::npos || end == std::string::npos || end < begin)
        return "";
    return page.substr(0, begin) + options_begin + options + page.substr(end);
}

// False: the file is out of date and stays so.
static bool bring_up_to_date(const std::string& path, const std::string& text, bool writes)
{
    if (!text.empty() && read_text(path) == text)
        return true;
    if (!writes || text.empty()) {
        say(path
            + (text.empty() ? " has lost the two lines that the options stand between."
                            : " is not what the program's table says: run brimlow-pages."));
        return false;
    }
    std::ofstream file(path, std::ios::binary);
    file << text << std::flush;
    say((file ? "Wrote " : "Cannot write ") + path + ".");
    return file.good();
}

// The manual page and the completion of a program.
static bool bring_program_up_to_date(const std::string& docs, const char* program, const std::string& options,
    const std::string& completion, bool writes)
{
    const std::string manual = docs + "man/" + program + ".1";
    const bool page = bring_up_to_date(manual, manual_page(read_text(manual), options), writes);
    return bring_up_to_date(docs + "completion/" + program + ".bash", completion, writes) && page;
}

// The reference of the language and its annotations.
static bool bring_language_up_to_date(const std::string& root, bool writes)
{
    const std::string chapters = root + "/share/brimlow/reference/language.md";
    std::string fault;
    const std::string page = language_page(read_text(chapters), fault);
    if (!fault.empty()) {
        say(chapters + ": " + fault + ".");
        return false;
    }
    const bool reference = bring_up_to_date(root + "/docs/language.md", page, writes);
    const std::string annotations = root + "/share/brimlow/library/annotations.lua";
    return bring_up_to_date(annotations, language_annotations(), writes) && reference;
}

int main(int argc, char** argv)
{
    const bool checks = argc == 3 && std::strcmp(argv[1], "--check") == 0;
    if (argc != 2 && !checks) {
        say("usage: brimlow-pages [--check] ROOT");
        return 2;
    }
    const std::string root = argv[argc - 1];
    const std::string docs = root + "/docs/";
    const bool make
        = bring_program_up_to_date(docs, "brimlow-make", make_manual_commands(), make_bash_completion(), !checks);
    const bool render = bring_program_up_to_date(docs, "brimlow-render", manual_options(), bash_completion(), !checks);
    const bool preview = bring_program_up_to_date(
        docs, "brimlow-preview", preview_manual_options(), preview_bash_completion(), !checks);
    const bool language = bring_language_up_to_date(root, !checks);
    return make && render && preview && language ? 0 : 1;
}
