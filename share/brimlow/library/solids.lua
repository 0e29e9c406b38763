-- Simple solids, for shows that need a ball and have no model of one: local solids = require "solids".
--
-- Each word makes a mesh as shape { } does: call it with a table to place it. They are about one unit in radius
-- around the origin, and have coordinates, so a picture may be laid on them.

local solids = {}

-- A grid of columns by rows bent through space: `bend(u, v)` tells where a point of it lies, { x, y, z }, for u and v
-- from 0 to 1; u is where it lies on a picture from left to right, v from top to bottom.
-- Seen from the front, u runs to the right and v downwards. Where its edges meet it is smooth.
--     local hill = solids.surface(20, 20, function(u, v) return { u, math.sin(6 * u), v } end)
function solids.surface(columns, rows, bend, name)
    local positions, coordinates, triangles = {}, {}, {}
    for row = 0, rows do
        for column = 0, columns do
            local u, v = column / columns, row / rows
            local point = bend(u, v)
            for axis = 1, 3 do -- edges that meet are not apart by a rounding
                point[axis] = math.floor(point[axis] * 1000000 + 0.5) / 1000000
            end
            positions[#positions + 1] = point
            coordinates[#coordinates + 1] = { u, v }
        end
    end
    for row = 0, rows - 1 do
        for column = 1, columns do
            local corner = row * (columns + 1) + column
            local below = corner + columns + 1
            triangles[#triangles + 1] = { corner, below, corner + 1 }
            triangles[#triangles + 1] = { corner + 1, below, below + 1 }
        end
    end
    return shape { positions = positions, coordinates = coordinates, triangles = triangles, name = name }
end

-- A number that was given, or what it is otherwise.
local function number(word, given, otherwise)
    if given ~= nil and type(given) ~= "number" then
        error("solids." .. word .. " takes numbers, or nothing: write solids." .. word .. "() { material = ... }.", 3)
    end
    return given or otherwise
end

-- A ball of radius 1.
function solids.ball(detail)
    detail = number("ball", detail, 24)
    return solids.surface(detail, detail // 2, function(u, v)
        local round, down = 2 * math.pi * u, math.pi * v
        return { math.sin(down) * math.sin(round), math.cos(down), math.sin(down) * math.cos(round) }
    end)
end

-- A ring of radius 1 that lies flat; `thick` is the radius of its rim.
function solids.ring(thick, detail)
    thick, detail = number("ring", thick, 0.35), number("ring", detail, 32)
    return solids.surface(detail, detail // 2, function(u, v)
        local round, rim = 2 * math.pi * u, 2 * math.pi * v
        local radius = 1 + thick * math.sin(rim)
        return { radius * math.sin(round), thick * math.cos(rim), radius * math.cos(round) }
    end)
end

-- A tube of radius 1 and height 2 without lids; `top` and `bottom` are its radii, so a cone is solids.tube(0, 1).
function solids.tube(top, bottom, detail)
    top, bottom, detail = number("tube", top, 1), number("tube", bottom, 1), number("tube", detail, 24)
    return solids.surface(detail, 4, function(u, v)
        local round, radius = 2 * math.pi * u, top + (bottom - top) * v
        return { radius * math.sin(round), 1 - 2 * v, radius * math.cos(round) }
    end)
end

-- A floor of side 2 that lies flat and looks up; `detail` fields to each side, for ripples.
function solids.floor(detail)
    detail = number("floor", detail, 1)
    return solids.surface(detail, detail, function(u, v) return { 2 * u - 1, 0, 2 * v - 1 } end)
end

-- A wall of side 2 that looks at the eye.
function solids.wall(detail)
    detail = number("wall", detail, 1)
    return solids.surface(detail, detail, function(u, v) return { 2 * u - 1, 1 - 2 * v, 0 } end)
end

-- A box of side 2, with the whole of a picture on each side.
function solids.box(nothing)
    number("box", nothing)
    local positions, coordinates, normals, triangles = {}, {}, {}, {}
    local sides = { { { 0, 0, 1 }, { 0, 1, 0 } }, { { 1, 0, 0 }, { 0, 1, 0 } }, { { 0, 0, -1 }, { 0, 1, 0 } },
        { { -1, 0, 0 }, { 0, 1, 0 } }, { { 0, 1, 0 }, { 0, 0, -1 } }, { { 0, -1, 0 }, { 0, 0, 1 } } }
    for _, side in ipairs(sides) do
        local n, up = side[1], side[2]
        local right = { up[2] * n[3] - up[3] * n[2], up[3] * n[1] - up[1] * n[3], up[1] * n[2] - up[2] * n[1] }
        local first = #positions
        for _, corner in ipairs { { -1, 1 }, { -1, -1 }, { 1, -1 }, { 1, 1 } } do
            local at = {}
            for axis = 1, 3 do at[axis] = n[axis] + corner[1] * right[axis] + corner[2] * up[axis] end
            positions[#positions + 1] = at
            normals[#normals + 1] = n
            coordinates[#coordinates + 1] = { (corner[1] + 1) / 2, (1 - corner[2]) / 2 }
        end
        triangles[#triangles + 1] = { first + 1, first + 2, first + 3 }
        triangles[#triangles + 1] = { first + 1, first + 3, first + 4 }
    end
    return shape { positions = positions, coordinates = coordinates, normals = normals, triangles = triangles }
end

return solids
