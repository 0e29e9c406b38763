// What is shown when, for how long, and into what.
#include "finding_lines.h"

#include <doctest/doctest.h>

static std::string all_findings_of_tracks(const std::string& tracks)
{
    document_text text = quiet_show();
    text.records[14] = tracks;
    return findings_in(text);
}

// The one picture of the quiet show is its target here, too, and its cube shows it.
static std::string findings_of_tracks(const std::string& tracks)
{
    return lines_without(all_findings_of_tracks(tracks), "it shows the texture that it draws into");
}

static std::string track(const std::string& clips)
{
    return "<track>" + clips + "</track>";
}

static std::string clip_of_mode(int mode, int rtex, int length)
{
    return with(clip_text(1, 0, length), "type=\"0\"",
        "type=\"" + std::to_string(mode) + "\" rtex=\"" + std::to_string(rtex) + "\"");
}

TEST_CASE("a clip behind a lost one is told when its time begins")
{
    const std::string lost = "the clip is never shown: it begins within a second and ends before the next one.\n";
    CHECK(findings_of_tracks(track(clip_text(1, 0, 130) + clip_text(1, 0, 20) + clip_text(1, 0, 200)))
        == "warning 14/1/clip 2: " + lost
            + "warning 14/1/clip 3: the clip before it is never shown, so its pause and the time of its functions "
              "begin at tick 0 and not at tick 150.\n");
    CHECK(findings_of_tracks(track(clip_text(1, 0, 130) + clip_text(1, 0, 70) + clip_text(1, 0, 200))) == "");
    // Pauses are no loss.
    CHECK(findings_of_tracks(track(clip_text(1, 0, 400)) + track(clip_text(1, 50, 80) + clip_text(1, 0, 270))) == "");
}

TEST_CASE("a show that is over before its last clip says where, and why")
{
    CHECK(findings_of_tracks(track(clip_text(1, 0, 300)) + track(clip_text(1, 0, 500)))
        == "warning 14/0: the show is over at tick 400, where track 1 has no clip any more: what would follow, up to "
           "tick 500, is never shown.\n");
    CHECK(findings_of_tracks(track(clip_text(1, 0, 300) + clip_text(1, 50, 250)))
        == "warning 14/0: the show is over at tick 300, where no track draws a scene: what would follow, up to tick "
           "600, is never shown.\n");
    CHECK(findings_of_tracks(track(clip_text(1, 0, 300)) + track(clip_text(1, 100, 200))) == "");
    CHECK(findings_of_tracks(track(clip_text(1, 0, 300) + clip_text(1, 50, 250)) + track(clip_text(1, 0, 600))) == "");
}

TEST_CASE("the longest show there is lasts to its end")
{
    CHECK(findings_of_tracks(track(clip_text(1, 0, 25600))) == "");
}

TEST_CASE("a loading screen is not over when it draws nothing")
{
    document_text text = quiet_show();
    text.records[14] = track(clip_text(1, 0, 40) + clip_text(1, 20, 60));
    CHECK(findings_in(text, complete_pack(), "loading.xmlz").find("the show is over") == std::string::npos);
}

TEST_CASE("a show under two seconds is told how short it is")
{
    CHECK(findings_of_tracks(track(clip_text(1, 0, 12)))
        == "note 14/0: the whole show lasts 12 ticks, which are 0.12 s: a second has 100.\n");
    CHECK(findings_of_tracks(track(clip_text(1, 0, 200))) == "");
}

static std::string quiet_of_tracks(const std::string& tracks)
{
    return without_own_targets(findings_of_tracks(tracks));
}

TEST_CASE("a target that nobody copies, and a mode that has none, are told of")
{
    CHECK(quiet_of_tracks(track(clip_text(1, 0, 300)) + track(clip_of_mode(5, 1, 300)))
        == "warning 14/2/clip 1: from tick 0 on its picture does not reach its texture: no clip on a later track draws "
           "to the screen or into another texture.\n");
    CHECK(quiet_of_tracks(track(clip_of_mode(5, 1, 300)) + track(clip_text(1, 0, 300))) == "");
    // A linked clip makes no copy.
    CHECK(quiet_of_tracks(track(clip_of_mode(5, 1, 300)) + track(clip_of_mode(2, 0, 300)))
        == "warning 14/1/clip 1: from tick 0 on its picture does not reach its texture: no clip on a later track draws "
           "to the screen or into another texture.\n");
    // Only where the later clip has ended.
    CHECK(quiet_of_tracks(track(clip_of_mode(5, 1, 300)) + track(clip_text(1, 0, 250)))
        == "warning 14/1/clip 1: from tick 251 on its picture does not reach its texture: no clip on a later track "
           "draws to the screen or into another texture.\n");
    // What other tracks do meanwhile does not matter, and a few ticks do not either.
    CHECK(quiet_of_tracks(track(clip_of_mode(5, 1, 300)) + track(clip_text(1, 0, 200) + clip_text(1, 15, 85))
              + track(with(clip_text(1, 207, 93), "type=\"0\"", "type=\"2\"")))
        == "warning 14/1/clip 1: from tick 200 on its picture does not reach its texture: no clip on a later track "
           "draws to the screen or into another texture.\n");
    CHECK(quiet_of_tracks(track(clip_of_mode(5, 1, 300)) + track(clip_text(1, 0, 200) + clip_text(1, 5, 95))) == "");
    CHECK(quiet_of_tracks(track(clip_of_mode(1, 0, 300)) + track(clip_text(1, 0, 300)))
        == "warning 14/1/clip 1: its mode draws into a texture, and rtex is 0: what it draws is left wherever the clip "
           "before drew.\n");
}

TEST_CASE("a clip that shows the texture that it draws into is told of")
{
    const std::string own = "note 14/1/clip 1: it shows the texture that it draws into: what is seen there is the "
                            "picture of the frame before; show another one, unless trails are meant.\n";
    const std::string shown = track(clip_text(1, 0, 300));
    CHECK(all_findings_of_tracks(track(clip_of_mode(5, 1, 300)) + shown) == own);
    CHECK(all_findings_of_tracks(shown) == "");
    // Another scene is drawn into it, and another mode has no target.
    document_text text = quiet_show();
    text.records[13] += "<scene name=\"second\">" + scene_object_text(2, 0, 0, 1, "Hello") + "</scene>";
    text.records[14] = track(with(clip_of_mode(5, 1, 300), "id=\"1\"", "id=\"2\"")) + shown;
    CHECK(findings_in(text) == "");
    text.records[14] = track(with(clip_of_mode(2, 1, 300), "id=\"1\"", "id=\"2\"")) + track(clip_of_mode(2, 1, 300));
    CHECK(findings_in(text) == "");
}

TEST_CASE("a camera that can see nothing is told of, unless the clip keeps another one's or shows nothing")
{
    const std::string angle = animated("static", "60");
    const std::string far_plane = animated("static", "100");
    const std::string senseless = ": nothing that makes sense is seen.\n";
    CHECK(findings_of_tracks(track(with(clip_text(1, 0, 300), angle, animated("static", "180"))))
        == "warning 14/1/clip 1: its field of view has to lie between 0 and 180 degrees" + senseless);
    CHECK(findings_of_tracks(track(with(clip_text(1, 0, 300), far_plane, animated("static", "0.1"))))
        == "warning 14/1/clip 1: its far plane does not lie behind the near one, which is 0.1 away" + senseless);
    CHECK(findings_of_tracks(track(with(clip_text(1, 0, 300), angle, animated("ortographic", "0")))) == "");
    CHECK(findings_of_tracks(
              track(clip_text(1, 0, 300)) + track(with(clip_of_mode(2, 0, 300), angle, animated("static", "0"))))
        == "");
    CHECK(findings_of_tracks(
              track(clip_text(1, 0, 300)) + track(with(clip_text(0, 0, 300), far_plane, animated("static", "0"))))
        == "");
}

TEST_CASE("a loading screen's clips lie within its hundred ticks")
{
    document_text text = quiet_show();
    const auto of_loading = [&text](const std::string& tracks) {
        text.records[14] = tracks;
        return findings_in(text, complete_pack(), "loading.xmlz");
    };
    CHECK(of_loading(track(clip_text(1, 0, 100))) == "");
    CHECK(of_loading(track(clip_text(1, 0, 100) + clip_text(1, 0, 400))) == "");
    CHECK(of_loading(track(clip_text(1, 0, 100) + clip_text(1, 1, 400)))
        == "warning 14/1/clip 2: it begins at tick 101 and is never shown: the loading screen's time is how much is "
           "loaded, from 0 to 100.\n");
    CHECK(of_loading(track(clip_text(1, 0, 4)))
        == "note 14/0: its last clip ends at tick 4: from there to 100, when all is loaded, the loading screen is not "
           "drawn.\n");
}

TEST_CASE("the music is there, can be played, and is as long as the show")
{
    document_text text = quiet_show();
    text.music_attributes = " file=\"tune.ogg\"";
    const auto with_music = [&text](const music_facts& music, const char* name = "demo.xmlz") {
        return findings_in(text, complete_pack(), name, music);
    };
    CHECK(with_music({}) == "");
    CHECK(with_music({true, true, true, 4.9}) == "");
    CHECK(with_music({true, true, true, 1.1}) == "");
    CHECK(with_music({true, false, false, 0})
        == "warning 15/0: \"tune.ogg\" lies neither beside the pack nor in its folder \"music\": the show plays "
           "without "
           "music.\n");
    CHECK(
        with_music({true, true, false, 0}) == "warning 15/0: \"tune.ogg\" is no Ogg Vorbis: the show plays silent.\n");
    CHECK(with_music({true, true, true, 63.01})
        == "note 15/0: \"tune.ogg\" goes on for 60 s behind the end of the show.\n");
    CHECK(with_music({true, true, true, 0.51})
        == "note 15/0: the last 2.5 s of the show are silent: \"tune.ogg\" has ended.\n");
    text.records[14] = track(clip_text(1, 0, 100));
    CHECK(with_music({}, "loading.xmlz")
        == "warning 15/0: the loading screen's music is not played: only demo.xmlz has music.\n");
}
