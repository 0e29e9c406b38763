-- IV. Temple: a hall whose every surface is computed: bricks, marble, tiles and a window of coloured glass.

local palette = require "palette"
local stage = require "stage"
local flight = require "flight"
local shade, swinging = palette.shade, stage.swinging

local half, height, depth = 6.5, 9, 47 -- of the hall

local function part(name) return mesh "models/temple.glb" { part = name } end

-- All six generators and all fourteen operations, worked into five surfaces.
local function surfaces()
    local sand = texture.color { color = {0.86, 0.76, 0.70} }

    -- grain, twice softened, with a second copy of itself from elsewhere
    local soft = texture.noise { color = "white", random_seed = 77 }:blur():blur()
    local grain = soft:maximum(soft:offset(91, -37), 1, 1)

    -- the wall: courses in relief, worn by grain and by large stains
    local courses = texture.bricks {
        brick_color = {0.86, 0.78, 0.74}, wall_color = {0.66, 0.57, 0.57}, horizontal_number = 8, vertical_number = 4,
        horizontal_margin = 2, vertical_margin = 2, second_line_offset = 32,
    }
    local clouds = texture.maze { color = "white", maze_size = 5, maze_field = 9, maze_fullness = 0.62 }
    local stains = clouds:multiply(0.9):add(sand, 0.22, 0.80):blur()
    local wall = courses:emboss(1):blur():multiply(grain, 1 / 180):multiply(stains, 1 / 205)

    -- marble: a plasma bent twice, dark where it is turned inside out
    local plasma = texture.sinus_plasma { plasma_color = {0.95, 0.86, 0.84}, repeat_x = 2, repeat_y = 3 }
    local bent = plasma:ripple(0.07, 0.05, 2, 1):ripple(0.02, 0.02, 4, 3)
    local dark = bent:invert():multiply(0.80)
    local marble = bent:minimum(grain:multiply(1.35), 1, 1):add(dark, 0.52, 0.62):multiply(sand, 1 / 150)

    -- the floor: marble cut into tiles, not too bright
    local tiles = texture.bricks {
        brick_color = {0.86, 0.80, 0.80}, wall_color = {0.46, 0.38, 0.44}, horizontal_number = 4, vertical_number = 4,
        horizontal_margin = 2, vertical_margin = 2, second_line_offset = 0,
    }
    local floor = marble:multiply(tiles, 1 / 190):minimum(texture.color { color = {0.92, 0.86, 0.84} }, 1, 1)

    -- coloured glass: a rose of light with cells in it; the leads lie on it in circles
    local rose = texture.radial_colors {
        center_color = {1.0, 0.86, 0.54}, margin_color = {0.56, 0.10, 0.38}, inverse_radian = 1, color_offset = 10,
    }
    local cells = texture.maze { color = {0.45, 0.75, 1.0}, maze_size = 5, maze_field = 21, maze_fullness = 0.5 }
    local glass = rose:maximum(cells, 0.96, 0.46)
    local leads = texture.bricks {
        brick_color = "white", wall_color = {0.10, 0.05, 0.10}, horizontal_number = 5, vertical_number = 16,
        horizontal_margin = 3, vertical_margin = 1, second_line_offset = 8,
    }

    return {
        wall = wall:texture { name = "wall" },
        marble = marble:texture { name = "marble" },
        floor = floor:texture { name = "floor" },
        glass = glass:texture { name = "glass" },
        leads = leads:texture { name = "leads" },
    }
end

-- The lantern flies ahead along the hall: its place.
local function lantern_flight(length)
    local function along(f)
        local points = {}
        for k = 0, 8 do points[k + 1] = {math.floor(length * k / 8 + 0.5), f(k / 8)} end
        return spline(points)
    end
    return {
        along(function(u) return 2.2 * math.sin(u * 9) end),
        along(function(u) return 2.4 + 0.9 * math.sin(u * 14 + 1) end),
        along(function(u) return -3 - 27 * u end),
    }
end

local function add_walls(hall, surface)
    local bricks, ceiling = surface("wall"), surface("marble", {0.62, 0.56, 0.66})
    hall:add(
        part "side" { material = bricks, at = {-half, 0, 12}, rotation = {0, 90, 0} },
        part "side" { material = bricks, at = {half, 0, -depth}, rotation = {0, -90, 0} },
        part "end" { material = bricks, at = {-half, 0, -depth} },
        part "floor" { material = surface("floor"), at = {-half, 0, 12}, rotation = {-90, 0, 0} },
        part "floor" { material = ceiling, at = {-half, height, -depth}, rotation = {90, 0, 0} }
    )
end

-- Two rows of fluted columns: one model, multiplied along the hall.
local function add_columns(hall, marble)
    local along_the_hall = grid({1, 1, 11}, { step = {0, 0, -5.2} })
    for _, x in ipairs {-4, 4} do
        for _, name in ipairs { "column", "foot and head" } do
            hall:add(part(name) { material = marble, at = {x, 0, 2}, manipulators = {along_the_hall} })
        end
    end
end

-- A basin in the floor; rings run outward from its middle.
local function add_pool(hall, length, haze)
    local waves = effect "Centerwave water" { time = linear(0, length * 0.055, length) }
    local water = material {
        texture = stage.mirror "multiply color", color = {1.0, 0.94, 0.94}, normalize = true,
        fog = { from = 14, to = 90, color = haze },
    }
    local stone = material { texture = stage.rock, color = {0.62, 0.50, 0.50} }
    local size = 0.185
    hall:add(
        waves { material = water, at = {-14.5 * size, 0.16, -34 - 14.5 * size}, scale = {size, 0.045, size} },
        part "rim" { material = stone, at = {0, 0, -34}, scale = 14.6 * size }
    )
end

-- A sheet of light from the window down to the floor of the hall.
local sheet = shape {
    positions   = { {-1.6, 1.6, 0}, {1.6, 1.6, 0}, {3.2, -4.9, 17}, {-3.2, -4.9, 17} },
    coordinates = { {0.1, 0.5}, {0.9, 0.5}, {1, 1}, {0, 1} },
    triangles   = { {1, 2, 3}, {1, 3, 4} },
}

-- The window, brighter on every other beat, and what its light does.
local function add_window(hall, made, ring)
    local two_beats = ticks "2 beats"
    local function kindled(c) return loop { ease("out quad", c, 0, two_beats) } end
    local glass = material {
        texture = { texture = made.glass, combine = "add color" },
        texture2 = { texture = made.leads, combine = "multiply previous" },
        color = {kindled(0.26), kindled(0.16), kindled(0.08)},
    }
    local glow = stage.glow { color = shade(palette.rose, 0.26), depth = false }
    hall:add(
        part "rose window" { material = glass, at = {0, 4.9, -depth + 0.1}, scale = 3.6 },
        stage.body "ring" { material = ring, at = {0, 4.9, -depth + 0.12}, scale = 3.65 },
        stage.panel { material = glow, at = {0, 4.9, -depth + 1.2}, scale = 24 }
    )
    local beam = stage.glow { color = shade(palette.peach, 0.26), depth = false }
    for k = 0, 2 do
        hall:add(sheet {
            material = beam, at = {(k - 1) * 0.9, 5.2, -depth + 1}, rotation = {0, 0, (k - 1) * 10},
            scale = {swinging(1, 0.12, 330, k / 3), 1, 1},
        })
    end
end

return function(from, to)
    local length = to - from
    local view = flight {
        { 0,             {-2.6, 1.2, 5},  {0.6, 4.6, -30}, roll = 3 },
        { 0.4 * length,  {-1.2, 1.7, -7}, {0, 4.0, -44},   roll = 1 },
        { 0.72 * length, {0.9, 2.6, -17}, {0, 3.2, -44},   roll = -1 },
        { length,        {0, 4.2, -26},   {0, 4.9, -58} },
        length = length, fov = 60, far = 200,
    }
    local made, lantern = surfaces(), lantern_flight(length)
    local window = light { at = {0, 7.5, -depth + 9}, ambient = {0.17, 0.15, 0.30}, diffuse = {1.0, 0.74, 0.54} }
    local flame = light { at = lantern, ambient = {0.05, 0.04, 0.05}, diffuse = {0.46, 0.30, 0.18} }
    local haze = {0.78, 0.48, 0.48}
    local function surface(name, color)
        return material {
            texture = made[name], color = color, light = window, light2 = flame,
            fog = { from = 18, to = 105, color = haze },
        }
    end

    local hall = scene "temple" {}
    add_walls(hall, surface)
    add_columns(hall, surface("marble"))
    add_pool(hall, length, haze)
    add_window(hall, made, surface("marble", {0.8, 0.7, 0.7}))
    local glow = stage.glow { color = {1.0, 0.66, 0.32} }
    local spark = stage.glow { picture = "spark.png", color = palette.cream }
    hall:add(
        stage.panel { material = glow, at = lantern, scale = 1.5, facing = true },
        stage.panel { material = spark, at = lantern, scale = 0.8, facing = true }
    )

    track { hall { from = from, to = to, camera = view.world } }
    stage.caption(from + ticks "0.5 beats", "IV / TEMPLE")
end
