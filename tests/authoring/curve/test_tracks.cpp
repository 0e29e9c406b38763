#include "authoring/curve/tracks.h"

#include "played_plan.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <array>

static std::vector<timed_clip> clips_of(const std::vector<std::pair<uint32_t, uint32_t>>& times)
{
    std::vector<timed_clip> clips;
    for (const auto& [from, to] : times)
        clips.push_back({from, to});
    return clips;
}

// "track: clip from+length (pause)" of each clip.
static std::string as_text(const track_plan& plan)
{
    std::string text;
    for (const placed_clip& c : plan.clips)
        text += std::to_string(c.track + 1) + ":" + (c.clip == empty_clip ? "-" : std::to_string(c.clip)) + " "
            + std::to_string(c.space_before) + "+" + std::to_string(c.length) + " ";
    return text;
}

static std::string planned(const std::vector<std::pair<uint32_t, uint32_t>>& times)
{
    const track_plan plan = plan_tracks(clips_of(times), tracks_of_show);
    CHECK(problem_texts(plan) == "");
    return as_text(plan);
}

// ---- where clips lie ----------------------------------------------------------------------

TEST_CASE("Clips that follow each other share track 1, in whatever order they are given")
{
    CHECK(planned({{0, 400}, {400, 900}}) == "1:0 0+400 1:1 0+500 ");
    CHECK(planned({{400, 900}, {0, 400}}) == "1:1 0+400 1:0 0+500 ");
}

TEST_CASE("Clips that overlap lie above each other in drawing order")
{
    CHECK(
        planned({{0, 1000}, {200, 500}, {300, 600}, {500, 700}}) == "1:0 0+1000 2:1 200+300 3:2 300+300 4:3 500+200 ");
    CHECK(planned({{0, 1000}, {200, 500}, {500, 700}}) == "1:0 0+1000 2:1 200+300 2:2 0+200 ");
}

TEST_CASE("A clip that its track would lose gets another track")
{
    // Behind 150, on the same track, 150 to 180 would be in no slot.
    // (Below them lies an empty one, since the hole is too short for it.)
    CHECK(planned({{0, 150}, {150, 180}, {180, 400}}) == "1:- 0+400 2:0 0+150 2:2 30+220 3:1 150+30 ");
    // Put before one that already lies there, it must not lose that one either.
    CHECK(planned({{0, 120}, {170, 190}, {120, 170}}).find("1:2") == std::string::npos);
}

TEST_CASE("A track holds 256 clips and the next one goes above")
{
    std::vector<timed_clip> clips;
    for (uint32_t clip = 0; clip < 257; ++clip)
        clips.push_back({clip * 50, clip * 50 + 50});
    const track_plan plan = plan_tracks(clips, tracks_of_show);
    CHECK(problem_texts(plan) == "");
    // There is no room on it for an empty one behind its end either: that lies below.
    std::array<size_t, 4> count = {};
    for (const placed_clip& c : plan.clips)
        ++count[c.track];
    CHECK(count == std::array<size_t, 4>{1, 256, 1, 0});
}

TEST_CASE("A pinned clip lies where it is pinned, and free ones go around it")
{
    std::vector<timed_clip> clips = clips_of({{0, 500}, {0, 500}, {100, 300}});
    clips[1].track = 4;
    CHECK(as_text(plan_tracks(clips, tracks_of_show)) == "1:0 0+500 5:1 0+500 6:2 100+200 ");
}

// ---- track 1 --------------------------------------------------------------------------------

TEST_CASE("Holes of track 1 are filled with empty clips while others show")
{
    CHECK(planned({{0, 200}, {100, 600}, {500, 800}}) == "1:0 0+200 1:- 0+600 2:1 100+500 3:2 500+300 ");
}

TEST_CASE("The clip behind a filled hole shows from its first tick")
{
    const std::vector<timed_clip> clips = clips_of({{0, 200}, {550, 800}, {100, 600}});
    const track_plan plan = plan_tracks(clips, tracks_of_show);
    CHECK(as_text(plan) == "1:0 0+200 1:- 0+349 1:1 1+250 2:2 100+500 ");
    const played_plan played(plan, clips);
    CHECK(played.placed(played.at(550).layers[0]).clip == 1);
    CHECK(played.at(550).layers[0].time == 0);
}

TEST_CASE("A hole too short for an empty clip lets one lie below everything")
{
    CHECK(planned({{0, 150}, {180, 400}, {100, 300}}) == "1:- 0+400 2:0 0+150 2:1 30+220 3:2 100+200 ");
}

TEST_CASE("An empty clip that would be too short goes on to the next whole second")
{
    // 400 would be 410's slot, but between 410 and 450 nothing would be cleared.
    CHECK(planned({{0, 410}, {300, 450}}) == "1:0 0+410 1:- 0+90 2:1 300+150 ");
}

TEST_CASE("A hole in which nothing else shows stays a pause")
{
    CHECK(as_text(plan_tracks(clips_of({{0, 200}, {600, 800}}), tracks_of_loading)) == "1:0 0+200 1:1 400+200 ");
}

// ---- what is told -----------------------------------------------------------------------------

static std::string told(const std::vector<timed_clip>& clips, track_rules rules = tracks_of_show)
{
    return problem_texts(plan_tracks(clips, rules));
}

TEST_CASE("A moment in which nothing is shown is told at the clip behind it")
{
    CHECK(told(clips_of({{0, 400}, {600, 900}}))
        == "1 is never seen: nothing is shown between 4s and 6s, and the show ends there; begin earlier, or let "
           "something show in between\n");
    CHECK(told(clips_of({{0, 350}, {425, 900}})).find("between 3.5s and 4.25s") != std::string::npos);
    CHECK(told(clips_of({{200, 900}}))
        == "0 is never seen: nothing is shown before 2s, and so the show ends at once; let something show from 0s\n");
    CHECK(told(clips_of({{0, 400}, {600, 900}}), tracks_of_loading) == "");
}

TEST_CASE("A clip without a scene does not keep a show alive")
{
    std::vector<timed_clip> clips = clips_of({{0, 400}, {400, 600}, {600, 900}});
    clips[1].draws = false;
    CHECK(told(clips).find("2 is never seen: nothing is shown between 4s and 6s") == 0);
    clips[1].draws = true;
    CHECK(told(clips) == "");
    clips = {{.from = 0, .to = 100, .draws = false}};
    CHECK(told(clips) == "-1 No clip shows a scene, and so the show ends at once: put a scene on a track.\n");
    CHECK(told({}) == "-1 No clip shows a scene, and so the show ends at once: put a scene on a track.\n");
}

TEST_CASE("A whole second between two clips that leave a tick out is dark")
{
    CHECK(told(clips_of({{0, 300}, {301, 500}})).find("between 3s and 3.01s") != std::string::npos);
    CHECK(told(clips_of({{0, 250}, {251, 500}})) == ""); // 250 is the first one's last tick
}

TEST_CASE("Clips that cannot be are told and left out")
{
    const std::vector<timed_clip> clips = clips_of({{0, 400}, {100, 100}, {300, 200}, {0, 30000}});
    const track_plan plan = plan_tracks(clips, tracks_of_show);
    CHECK(problem_texts(plan)
        == "1 ends where it begins, at 1s: let it end later\n"
           "2 ends at 2s, before it begins at 3s\n"
           "3 ends at 300s, and a show lasts 256s at most\n");
    CHECK(as_text(plan) == "1:0 0+400 ");
}

TEST_CASE("More than 32 clips at a time are told")
{
    std::vector<timed_clip> clips(33, {100, 400});
    clips[0].from = 0;
    CHECK(told(clips) == "32 finds no track from 1s to 4s: the 32 tracks are taken; let fewer clips show at a time\n");
}

TEST_CASE("Clips that are pinned where they cannot lie are told")
{
    std::vector<timed_clip> clips = clips_of({{0, 400}, {300, 600}, {600, 700}});
    clips[0].track = clips[1].track = 0;
    CHECK(told(clips).find("1 lies on track 1, where another clip shows from 0s to 4s: give it a track of its own, or "
                           "none\n")
        == 0);
    clips = clips_of({{0, 150}, {150, 180}, {0, 500}});
    clips[0].track = clips[1].track = 0;
    CHECK(told(clips).find("1 lies on track 1 from 1.5s to 1.8s, within a second that") == 0);
    clips[0].track = clips[1].track = 32;
    CHECK(told(clips).find("0 lies on track 33, and there are 32\n") == 0);
    clips = clips_of({{0, 400}, {0, 400}});
    clips[1].track = 0;
    CHECK(told(clips).find("0 finds no track from 0s to 4s: a clip that is drawn over it lies on track 1; pin that one "
                           "higher, or not at all")
        == 0);
}

TEST_CASE("A hole of track 1 that pins keep open is told")
{
    std::vector<timed_clip> clips = clips_of({{0, 150}, {180, 400}, {100, 300}});
    for (timed_clip& c : clips)
        c.track = 0;
    clips[2].track = 1;
    CHECK(told(clips)
        == "-1 Track 1 shows nothing from 1.5s to 1.8s, so that the screen is not cleared there: let a clip of it "
           "show.\n");
}

TEST_CASE("Clips as given keep their tracks, their order and even what is never shown")
{
    std::vector<timed_clip> clips = clips_of({{0, 150}, {150, 180}, {200, 200}, {200, 400}, {50, 300}});
    for (timed_clip& c : clips)
        c.track = 0;
    clips[4].track = 2;
    const track_plan plan = plan_tracks(clips, tracks_as_given);
    CHECK(as_text(plan) == "1:0 0+150 1:1 0+30 1:2 20+0 1:3 0+200 3:4 50+250 ");
    CHECK(problem_texts(plan)
        == "1 is never shown: the clip before it ends at 1.5s, and it does not reach the next whole second; let it end "
           "at 2s\n");
    CHECK(plan.problems[0].severity == problem_warning);
}

TEST_CASE("Times are said in seconds")
{
    CHECK(ticks_text(0) == "0s");
    CHECK(ticks_text(400) == "4s");
    CHECK(ticks_text(305) == "3.05s");
    CHECK(ticks_text(350) == "3.5s");
    CHECK(ticks_text(351) == "3.51s");
}

// ---- the player as the judge --------------------------------------------------------------------

// Every clip shows at each tick between its ends, and nothing else does; in drawing order; at its own time; on a
// cleared screen.
static void check_tick(const played_plan& played, const std::vector<timed_clip>& clips, uint32_t tick)
{
    const frame_layers frame = played.at(tick);
    std::vector<bool> shown(clips.size());
    int32_t last = -1;
    for (uint32_t index = 0; index < frame.layer_count; ++index) {
        const layer_plan& layer = frame.layers[index];
        const int32_t clip = played.placed(layer).clip;
        if (clip == empty_clip)
            continue;
        const timed_clip& c = clips[static_cast<size_t>(clip)];
        REQUIRE(c.from <= tick);
        REQUIRE(tick <= c.to);
        REQUIRE(layer.time == tick - c.from);
        // Two that only meet at this tick have no order.
        if (last >= 0 && last > clip)
            REQUIRE((clips[static_cast<size_t>(last)].to == tick || c.from == tick || c.to == tick
                || clips[static_cast<size_t>(last)].from == tick));
        last = clip;
        shown[static_cast<size_t>(clip)] = true;
    }
    bool is_wanted = false;
    for (size_t clip = 0; clip < clips.size(); ++clip) {
        is_wanted = is_wanted || (clips[clip].from <= tick && tick < clips[clip].to);
        if (clips[clip].from < tick && tick < clips[clip].to)
            REQUIRE(shown[clip]);
    }
    if (is_wanted) {
        REQUIRE(frame.drawn > 0);
        REQUIRE(frame.layers[0].track == 0);
    }
}

static std::vector<timed_clip> any_clips(std::mt19937& random, uint32_t duration)
{
    std::vector<timed_clip> clips;
    for (uint32_t count = 1 + random_below(random, 14); count > 0; --count) {
        const uint32_t a = random_tick(random, duration + 1);
        const uint32_t b
            = random_below(random, 3) == 0 ? a + 1 + random_below(random, 120) : random_tick(random, duration + 1);
        if (a != b && std::max(a, b) <= max_track_end)
            clips.push_back({std::min(a, b), std::max(a, b)});
    }
    return clips;
}

TEST_CASE("Between two ticks of change the tracks show the same")
{
    std::mt19937 random(7);
    for (uint32_t round = 0; round < 60; ++round) {
        CAPTURE(round);
        const uint32_t duration = round % 10 == 0 ? max_track_end : 300 + random_below(random, 2500);
        const track_plan plan = plan_tracks(any_clips(random, duration), tracks_of_show);
        const shown_clips shown = show_plan(plan);
        const uint32_t last = std::min(duration + 200, max_track_end - 1);
        const std::vector<uint32_t> changes = change_ticks(plan, last);
        REQUIRE(changes.front() == 0);
        REQUIRE(changes.back() <= last);
        REQUIRE(std::is_sorted(changes.begin(), changes.end()));
        std::vector<size_t> places;
        std::vector<size_t> standing;
        for (uint32_t tick = 0; tick <= last; ++tick) {
            clips_at(shown, tick, places);
            if (std::binary_search(changes.begin(), changes.end(), tick))
                standing = places;
            REQUIRE(places == standing);
        }
    }
}

TEST_CASE("What is planned of any clips is what the player shows at every tick")
{
    std::mt19937 random(20090);
    for (uint32_t round = 0; round < 150; ++round) {
        CAPTURE(round);
        const uint32_t duration = round % 10 == 0 ? max_track_end : 300 + random_below(random, 2500);
        const std::vector<timed_clip> clips = any_clips(random, duration);
        const track_plan plan = plan_tracks(clips, tracks_of_show);
        for (const track_problem& problem : plan.problems)
            REQUIRE(problem.text.find("nothing is shown") != std::string::npos);
        const played_plan played(plan, clips);
        for (uint32_t tick = 0; tick < std::min(duration + 200, max_track_end); ++tick)
            check_tick(played, clips, tick);
    }
}
