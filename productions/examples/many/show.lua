-- One thing many times: a row, a grid, on every vertex of a mesh; and a rippler, which bends what it is given.

local solids = require "solids"

show { title = "Many of one" }

local lamp = light { at = { -10, 20, 25 }, ambient = "#303048", diffuse = "#fff4e0" }
local function paint(color) return material { color = color, light = lamp } end

local box, ball, ring = solids.box(), solids.ball(12), solids.ring(0.3)
local open = wave { middle = 1.1, swing = 0.25, period = "4s", length = "8s" }
local turn = linear(0, 180, "8s")

local field = scene "field" {
    -- A spiral stair: each step higher, further turned and smaller than the one before.
    box { material = paint "#f4a261", at = { -9, -4, 0 }, scale = { 1.6, 0.15, 0.5 }, rotation = { 0, turn, 0 },
        manipulators = { row(24, { step = { 0, 0.38, 0 }, turn = { 0, 15, 0 }, grow = { -0.04, 0, 0 } }) } },
    -- A block of five by five by five that breathes.
    box { material = paint "#2a9d8f", at = { -2.2, -2.2, -2.2 }, scale = 0.35,
        manipulators = { grid({ 5, 5, 5 }, { step = { open, open, open } }) } },
    -- A ball on every corner of a ring.
    ball { material = paint "#e76f91", at = { 9, 0.5, 0 }, scale = 0.22,
        manipulators = { on_vertices(solids.ring(0.5, 16), { scale = 2.6, rotation = { 70, turn, 0 } }) } },
    -- The catalogue's own words take the parameters by their names, all of them.
    ring { material = paint "#e9c46a", at = { -14, -6.5, -4 }, scale = 0.9, rotation = { 60, turn, 0 },
        manipulators = { x_multiplier { x_number = 12, position_x_step = 2.6, rotate_y_step = 30 } } },
    ball { material = paint "#8ecae6", at = { -14, 6.6, -4 }, scale = 0.5,
        manipulators = { xyz_multiplier { x_number = 15, y_number = 2, z_number = 1, position_x_step = 2, position_y_step = 1.2 } } },
}

-- What a rippler does to a mesh adds up from frame to frame: small amplitudes.
local cloth = scene "cloth" {
    solids.floor(24) { material = material { color = "#264653", wireframe = true }, at = { 0, -8, -12 }, scale = { 26, 4, 16 },
        manipulators = { rippler { time = linear(0, 40, "8s"), amplitude = 0.0012, wavelength = 9 } } },
    ball { material = paint "#ffffff", at = { 0, -6, -20 }, scale = 0.3,
        manipulators = { model_placer { model = box, scale_x = 12, scale_y = 1, scale_z = 4 } } },
}

track {
    from = "0s", to = "8s", camera = { at = { 0, 3, 21 }, look_at = { 0, 0, 0 }, fov = 45 },
    cloth { clear = "#151b26" },
    field { mode = "link with previous" },
}
