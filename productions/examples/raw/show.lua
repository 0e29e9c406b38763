-- The document's own words: records as they stand in it, references, formulas with their own numbers, files that no
-- other word brings. Who knows documents (docs/documents.md) can write everything that they can hold.

local solids = require "solids"

show { title = "Raw records" }

-- A record of a section, as it stands in the document. What uses it names it as it would name a material { }.
local glass = raw("materials", [[<material>
    <blend_function value="1"/> <depth_test value="0"/>
    <red type="static" value="0.03"/> <green type="static" value="0.07"/> <blue type="static" value="0.11"/>
    <alpha type="static" value="1"/>
</material>]])

-- The entry of the objects section that leads to a texture or a mesh: two materials may share it, or have one each.
local bricks = texture.bricks { brick_color = "#8a5fbf", wall_color = "#e8dff5", horizontal_number = 6, vertical_number = 6,
    horizontal_margin = 4, vertical_margin = 4, second_line_offset = 21 }
local stone = material { texture = reference(bricks:texture { filter = "linear" }) }
local box = reference(solids.box())

-- A formula with its own numbers, in ticks: 40 * sin(x * 0.0157) + 20. An animation is a function record by itself; loop
-- is the document's number: 0 off, 1 loop, 2 ping-pong.
local swing = animation { segment("Sinus", "4s", { 40, 0.01570796, 0, 20 }), loop = 1, from = 0, to = "4s" }

local things = scene "things" { box { material = stone, rotation = { 25, swing, 0 }, scale = 0.9 } }
for n = 1, 6 do
    things:add(solids.ball() { material = glass, scale = 0.9 + 0.17 * n })
end

entry "about.txt" { name = "readme.txt" } -- into the pack as it is

track {
    things { from = "0s", to = "4s", camera = { at = { 0, 0, 6 }, fov = 45 }, clear = "#123040" },
    pause { from = "1s", to = "3s" }, -- a clip that shows nothing
}
