-- The loading screen: a small sun climbs out of the hills as loading goes from 0 to 100.

local palette = require "palette"
local stage = require "stage"
local between, shade = palette.between, palette.shade

local function moving(from, to) return linear(from, to, "100%") end

local function color(from, to)
    return {moving(from[1], to[1]), moving(from[2], to[2]), moving(from[3], to[3])}
end

loading(function()
    local progress = scene "progress" {
        stage.screen { material = stage.plain { color = color({0.030, 0.036, 0.11}, {0.15, 0.11, 0.27}) } },
        stage.screen {
            material = stage.glow { color = color({0.10, 0.06, 0.16}, {0.95, 0.46, 0.36}) },
            at = {-0.35, 0.10, 0}, scale = {1.7, 1.04, 1},
        },
    }
    local function add_light(picture, color, width)
        progress:add(stage.panel {
            material = stage.glow { picture = picture, color = color },
            at = {0.5, moving(0.70, 0.50), 0}, scale = {width * 0.75, width, 1},
        })
    end
    add_light("glow.png", shade(palette.peach, 0.75), 0.36)
    add_light("disc.png", palette.cream, 0.075)

    local function add_hills(part, color, top)
        progress:add(mesh "models/skylines.glb" { part = part } {
            material = stage.plain { color = color }, at = {0, top, 0},
        })
    end
    add_hills("1", between({0.11, 0.09, 0.22}, palette.rose, 0.16), 0.60)
    add_hills("2", {0.075, 0.065, 0.17}, 0.645)
    add_hills("3", {0.035, 0.04, 0.11}, 0.70)

    -- the bar: a thin dark groove that fills with light
    local groove = stage.plain { color = {0.16, 0.13, 0.26} }
    local full = stage.plain { color = {1.0, 0.78, 0.54} }
    local tip = stage.glow { color = {1.0, 0.66, 0.40} }
    progress:add(
        stage.screen { material = groove, at = {0.20, 0.860, 0}, scale = {0.60, 0.012, 1} },
        stage.screen { material = full, at = {0.20, 0.860, 0}, scale = {moving(0, 0.60), 0.012, 1} },
        stage.panel { material = tip, at = {moving(0.20, 0.80), 0.866, 0}, scale = {0.07, 0.09, 1} }
    )
    track { progress { from = 0, to = 110, flat = true } }
end)
