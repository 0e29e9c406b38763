-- Words of the language that are made of others. They are known to every show; read them, and write your own in
-- the same way.

-- The whole of a flat scene: (0, 0) is its top left corner, (1, 1) its bottom right one.
local sheet

-- A rectangle over the screen, or a part of it: screen { material = m }. Shown with a picture, it shows all of it.
function screen(placing)
    sheet = sheet or shape {
        name = "screen",
        positions = { { 0, 0, 0 }, { 1, 0, 0 }, { 1, 1, 0 }, { 0, 1, 0 } },
        coordinates = { { 0, 0 }, { 1, 0 }, { 1, 1 }, { 0, 1 } },
        normals = { { 0, 0, 1 }, { 0, 0, 1 }, { 0, 0, 1 }, { 0, 0, 1 } },
        triangles = { { 1, 3, 2 }, { 1, 4, 3 } },
    }
    return placing and sheet(placing) or sheet
end

-- What `options` has of `names`, and a line about what it has beside them.
local function take(word, options, names)
    if type(options) ~= "table" then
        error(word .. " wants fields: " .. word .. " { " .. names[1] .. " = ... }.", 3)
    end
    local known = {}
    for _, name in ipairs(names) do known[name] = true end
    for name in pairs(options) do
        if not known[name] then
            error(word .. ' has no field "' .. tostring(name) .. '": there are ' .. table.concat(names, ", ") .. ".", 3)
        end
    end
    return options
end

local function length_of(word, options)
    for _, name in ipairs { "from", "to" } do
        if options[name] == nil then
            error(word .. ' lacks "' .. name .. '": write ' .. name .. ' = "4s".', 3)
        end
    end
    return ticks(options.to) - ticks(options.from)
end

-- A clip that covers the screen with a colour: it comes with `to_color`, and goes with `from_color`.
--     fade { from = "11.5s", to = "12s", to_color = "black" }
function fade(options)
    local o = take("fade", options, { "from", "to", "to_color", "from_color", "ease" })
    if (o.to_color == nil) == (o.from_color == nil) then
        error("fade wants to_color or from_color: the colour in which it ends, or begins.", 2)
    end
    local length = length_of("fade", o)
    local alpha = o.to_color and ease(o.ease or "linear", 0, 1, length) or ease(o.ease or "linear", 1, 0, length)
    local cover = material { color = o.to_color or o.from_color, alpha = alpha, blend = "alpha" }
    return scene "fade" { screen { material = cover } } { from = o.from, to = o.to, flat = true }
end

-- A clip in which an edge of colour moves over the screen: to the "right", "left", "down" or "up". It covers what is
-- there with `to_color`, and lays it open with `from_color`.
--     wipe { from = "4s", to = "5s", to_color = "#102030", towards = "right" }
function wipe(options)
    local o = take("wipe", options, { "from", "to", "to_color", "from_color", "towards", "ease" })
    if (o.to_color == nil) == (o.from_color == nil) then
        error("wipe wants to_color or from_color: the colour in which it ends, or begins.", 2)
    end
    local length = length_of("wipe", o)
    local sides = { right = { 1, 0 }, left = { -1, 0 }, down = { 0, 1 }, up = { 0, -1 } }
    local side = sides[o.towards or "right"]
    if not side then error('wipe: towards is "right", "left", "down" or "up".', 2) end
    local begin = o.to_color and -1 or 0
    local moved = function(way)
        if way == 0 then return 0 end
        return ease(o.ease or "in out sine", begin * way, (begin + 1) * way, length)
    end
    local cover = material { color = o.to_color or o.from_color }
    return scene "wipe" { screen { material = cover, at = { moved(side[1]), moved(side[2]), 0 } } }
        { from = o.from, to = o.to, flat = true }
end

-- Two clips: `scene` is drawn into a picture, and the picture is shown on a part of the screen.
--     picture_in_picture { cage, from = "4s", to = "8s", at = { 0.6, 0.1 }, size = { 0.3, 0.3 }, camera = camera { ... } }
-- The first of them is drawn before what it lies on, the second behind it, so both stand where they belong:
--     local small, shown = picture_in_picture { ... }
--     track { small, walk { ... }, shown }
function picture_in_picture(options)
    local o = {}
    for name, value in pairs(options) do if name ~= 1 then o[name] = value end end
    take("picture_in_picture", o, { "from", "to", "camera", "at", "size", "clear", "picture", "blend", "alpha" })
    if options[1] == nil then error("picture_in_picture wants a scene as its first entry.", 2) end
    local picture = o.picture or target { width = 512, height = 512 }
    local at, size = o.at or { 0.65, 0.05 }, o.size or { 0.3, 0.3 }
    local show_it = material { texture = picture, blend = o.blend or "replace", alpha = o.alpha or 1 }
    local small = options[1] { from = o.from, to = o.to, into = picture, camera = o.camera, clear = o.clear,
        mode = "render to quarter screen texture" }
    local shown = scene "picture in picture" {
        screen { material = show_it, at = { at[1], at[2], 0 }, scale = { size[1], size[2], 1 } },
    } { from = o.from, to = o.to, flat = true }
    return small, shown
end

-- A flat scene of one picture that fills the screen, or a part of it.
--     picture("title", image "title.png" { filter = "linear" }, { at = { 0.1, 0.1 }, size = { 0.8, 0.3 } })
function picture(name, what, options)
    local o = take("picture", options or {}, { "at", "size", "blend", "color", "alpha" })
    local at, size = o.at or { 0, 0 }, o.size or { 1, 1 }
    local show_it = material { texture = { texture = what, wrap = "edge clamp" }, blend = o.blend or "replace",
        color = o.color or "white", alpha = o.alpha or 1 }
    return scene(name) { screen { material = show_it, at = { at[1], at[2], 0 }, scale = { size[1], size[2], 1 } } }
end
