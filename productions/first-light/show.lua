-- First Light: a show of dawn, in seven scenes.

show { title = "First Light", music = "first-light.ogg", bpm = 75, beats_per_bar = 4 }

local palette = require "palette"
local stage = require "stage"
require "loading"

local bar, beat = ticks "1 bar", ticks "1 beat"

-- Each scene, and the colour that covers the cut at its end. No cut falls on a whole second: then everything
-- changes over at the same tick.
local scenes = {
    { "night",   bars = 4, cut = { color = palette.ink,   before = beat,     after = beat } },
    { "lake",    bars = 5, cut = { color = palette.peach, before = beat / 2, after = beat } },
    { "stones",  bars = 4, cut = { color = palette.ink,   before = beat / 2, after = beat } },
    { "temple",  bars = 4, cut = { color = palette.ink,   before = beat / 2, after = beat } },
    { "windows", bars = 4, cut = { color = palette.cream, before = beat / 4, after = 2 * beat } },
    { "bloom",   bars = 3, cut = { color = palette.cream, before = beat,     after = 2 * beat } },
    { "morning", bars = 4, cut = { color = palette.cream, before = 2 * beat, stays = 20 } },
}

local now, covers = 0, { stage.cover(0, { color = "black", after = 3 * beat }) }
for _, scene in ipairs(scenes) do
    local from, to = now, now + scene.bars * bar
    require(scene[1])(from, to)
    table.insert(covers, stage.cover(to, scene.cut))
    now = to
end
stage.vignette(0, now)
track(covers)
