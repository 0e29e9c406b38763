-- III. Stones: among old stones on a meadow, with the sun low behind them.

local palette = require "palette"
local stage = require "stage"
local flight = require "flight"
local noise = require "noise"

local radius = 9 -- of the circle of stones

-- The ground under the stones: the meadow of models/stones.glb.
local function meadow_height(x, z)
    local far = math.max(0, math.sqrt(x * x + z * z) - 12)
    return (noise(x * 0.06 + 30, z * 0.06 + 30, 3, 5) - 0.5) * math.min(6, 0.3 + far * 0.14)
end

-- Lies on the ground from the foot of a stone towards +z.
local shadow_shape = shape {
    positions   = { {-0.5, 0, 1}, {0.5, 0, 1}, {0.5, 0, 0}, {-0.5, 0, 0} },
    coordinates = { {0, 0}, {1, 0}, {1, 1}, {0, 1} },
    triangles   = { {1, 2, 3}, {1, 3, 4} },
}

local function add_stones(meadow, rock)
    local shadow = material {
        texture = stage.once "shadow.png", color = {0.20, 0.19, 0.13}, alpha = 0.85, blend = "substract alpha",
    }
    local tallness = {1.0, 0.86, 1.12, 0.92, 1.05}
    local shadows, stones = {}, {}
    for k = 0, 10 do
        local angle = math.rad(k * 360 / 11 + 16)
        local x, z = radius * math.sin(angle), radius * math.cos(angle)
        local ground = meadow_height(x, z)
        shadows[k + 1] = shadow_shape {
            material = shadow, at = {x, ground + 0.06, z}, scale = {2, 1, 11},
            rotation = {0, math.deg(math.atan(x, z + 150)), 0},
        }
        stones[k + 1] = mesh "models/stones.glb" { part = "stone " .. k % 3 + 1 } {
            material = rock, at = {x, ground - 0.1, z}, scale = {1, tallness[k % 5 + 1], 1},
            rotation = {0, math.deg(math.atan(x, z)) + (k * 29 % 24 - 12), 0},
        }
    end
    meadow:add(table.unpack(shadows))
    meadow:add(table.unpack(stones))
end

-- A mirror ball rises in the middle, and smaller ones go round it.
local function add_orb(meadow, length)
    local mirror = material {
        texture = stage.mirror "ignore alpha, multiply color", color = {1.0, 0.96, 0.94}, normalize = true,
    }
    local rise = ease("out quad", 0.2, 3.6, length * 3 // 4)
        .. wave { middle = 3.6, swing = 0.12, period = 300, length = length }
    meadow:add(stage.body "ball" {
        material = mirror, at = {0, rise, 0}, rotation = {0, linear(0, 160, length), 0}, scale = 1.45,
    })
    for k = 0, 4 do
        local reach = 3 + 0.25 * k
        local function orbit(height)
            local points = { length = length }
            for j = 0, 11 do
                local tick = math.floor(length * j / 11 + 0.5)
                points[j + 1] = {tick, height(j / 11 * 2.2 * math.pi + k * 2 * math.pi / 5, tick)}
            end
            return spline(points)
        end
        local x = orbit(function(a) return reach * math.sin(a) end)
        local y = orbit(function(a, tick) return 2.2 + tick / length + 0.9 * math.sin(2 * a + k) end)
        local z = orbit(function(a) return reach * math.cos(a) end)
        meadow:add(stage.body "small ball" { material = mirror, at = {x, y, z}, scale = 0.30 + 0.04 * (k % 3) })
    end
    local glow = stage.glow { color = palette.shade(palette.peach, 0.34) }
    meadow:add(stage.panel { material = glow, at = {0, rise, 0}, scale = 7.5, facing = true })
end

-- Banks of morning mist between the stones.
local function add_mist(meadow, length)
    local bank = material {
        texture = stage.picture "mist.png", color = {1.0, 0.78, 0.68}, alpha = 0.42, blend = "alpha",
    }
    local function add_bank(from, to, y, z, width)
        meadow:add(stage.panel { material = bank, at = {linear(from, to, length), y, z}, scale = {width, 3.4, 1} })
    end
    add_bank(-6, 6, 1.8, -26, 90)
    add_bank(-3, 1, 1.1, -13, 60)
    add_bank(0, -4, 0.7, -4.5, 44)
end

return function(from, to)
    local length = to - from
    local view = flight {
        { 0,             {-15.5, 1.3, 9},   {0, 2.7, -4},  roll = 2 },
        { 0.35 * length, {-6.5, 1.5, 15.5}, {0, 3.0, -8} },
        { 0.7 * length,  {0.3, 2.0, 13.6},  {0, 3.2, -14}, roll = -1 },
        { length,        {0, 3.2, 6.6},     {0, 3.8, -30} },
        length = length, fov = 54, far = 500,
    }

    local sky = stage.sky("meadow sky", "sky_dawn.jpg")
    stage.sun(sky, { size = 1.2, elevation = 6 })

    local sun = light { at = {0, 34, -150}, ambient = {0.34, 0.27, 0.34}, diffuse = {1.0, 0.66, 0.40} }
    local cool = light { at = {-40, 60, 60}, ambient = {0.12, 0.11, 0.20}, diffuse = {0.46, 0.42, 0.66} }
    local haze = { from = 16, to = 105, color = {0.95, 0.60, 0.48}, quality = "fastest" }
    local function ground(picture, color)
        return material { texture = picture, color = color, light = sun, light2 = cool, fog = haze }
    end
    local grass = ground(stage.picture "meadow.jpg", {1.0, 0.92, 0.86})
    local rock = ground(stage.rock, {1.0, 0.95, 0.92})

    local meadow = scene "stones" {}
    stage.hills(meadow, {
        far = {0.92, 0.56, 0.50}, middle = {0.68, 0.40, 0.46}, near = {0.42, 0.26, 0.36}, at = {0, -2, 0},
    })
    meadow:add(mesh "models/stones.glb" { part = "meadow" } { material = grass })
    add_stones(meadow, rock)
    add_orb(meadow, length)
    add_mist(meadow, length)

    track {
        sky    { from = from, to = to, camera = view.sky },
        meadow { from = from, to = to, camera = view.world, mode = "link with previous" },
    }
    stage.caption(from + ticks "0.5 beats", "III / STONES")
end
