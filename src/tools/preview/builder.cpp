#include "tools/preview/builder.h"

#include "authoring/lua/source.h"
#include "content/file_bytes.h"

#include <filesystem>

static build_wish pending;

void builder_ask(builder& b, const build_wish& wish)
{
    pending = wish;
    ++b.asked;
}

std::optional<show_build> builder_poll(builder& b)
{
    if (b.asked == b.answered)
        return {};
    b.answered = b.asked;
    built_show built;
    build_source({pending.folder + "/", pending.file}, built);
    show_build result;
    result.number = b.asked;
    result.can_play = !has_errors(built.problems);
    result.folder = pending.folder;
    result.file = pending.file;
    result.from_source = true;
    result.problems = built.problems;
    result.files = built.files_taken;
    if (!built.music.empty())
        result.music = pending.folder + "/" + built.music;
    if (result.can_play)
        result.pack = pack_bytes(built.entries);
    return result;
}

int builder_descriptor(const builder&)
{
    return -1;
}

void builder_close(builder&) { }

int run_builder(int)
{
    return 0;
}

show_build build_of_pack(const std::string&)
{
    return {};
}
