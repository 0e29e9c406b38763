#include "shell/settings.h"

#include <doctest/doctest.h>

TEST_CASE("settings: a fresh run has its choices, and no show and no time yet")
{
    const player_settings settings;
    CHECK(settings.choices.use_glsl == 1);
    CHECK(settings.display.screen_width == 0);
    CHECK(settings.show.pack == nullptr);
    CHECK(settings.show.loading_timeline == nullptr);
    CHECK(settings.show.production_timeline == nullptr);
    CHECK(settings.show.loading.timeline == nullptr);
    CHECK(settings.show.production.scene_table.raw == nullptr);
    CHECK(settings.clock.production_time_ms == 0);
    CHECK(settings.clock.progress_total == 0);
}
