-- A show. "brimlow-make build" makes demo.dpk of it, and "brimlow" plays that.

show { title = "A new show", bpm = 120 }

local sun = light { at = {3, 4, 5}, ambient = "#404860", diffuse = "#fff2d9" }
local stone = material { texture = image "gem.png" { filter = "mipmaps" }, light = sun, cull = true }
local ink = material { color = "#ffe6b3", blend = "alpha" }

local gem = mesh "gem.obj" { fit = 2, normals = "flat" }
local letters = font "DejaVuSans.ttf" { height = 0.12 }
local turn = loop { linear(0, 360, "4s") }

-- A stone that turns, and a ring of small ones around it.
local stones = scene "stones" {
    gem { material = stone, rotation = {15, turn, 0} },
}
for i = 1, 12 do
    local angle = math.rad(i * 30)
    stones:add(gem {
        material = stone,
        at = {3 * math.sin(angle), 0.5 * math.sin(3 * angle), 3 * math.cos(angle)},
        rotation = {0, turn, i * 30},
        scale = 0.3,
    })
end

-- A flat scene is one wide and one high, whatever the shape of the screen.
local hello = scene "hello" {
    letters "Hello!" { material = ink, at = {0.5, 0.5, 0}, align = "center" },
}

-- The eye goes around them while it looks at the middle.
local flight = path { {"0b", {0, 1, 6}}, {"8b", {6, 2, 0}}, {"16b", {0, 3, -6}} }

track { stones { from = "0b", to = "16b", camera = flight:look_at {0, 0, 0}, clear = "#101828" } }
track { hello { from = "12b", to = "16b", flat = true } }
