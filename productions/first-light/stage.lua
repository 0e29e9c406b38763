-- What all scenes share: pictures, shapes, the materials that many of them use, and what lies over them.

local palette = require "palette"
local letters = require "letters"
local between, shade = palette.between, palette.shade

local stage = {}

-- A wave that goes on, with a period of so many ticks.
function stage.swinging(middle, swing, period, phase)
    return loop { wave { middle = middle, swing = swing, period = period, phase = phase } }
end

-- ---- pictures ----

function stage.picture(name)
    -- a small spark stays a spark
    return image("pictures/" .. name) { filter = name == "spark.png" and "linear" or "mipmaps" }
end

-- A texture that shows its picture once instead of repeating it.
function stage.once(unit)
    if type(unit) == "string" then unit = {unit} end
    return {
        texture = stage.picture(unit[1]), combine = unit.combine, coordinates = unit.coordinates, wrap = "edge clamp",
    }
end

-- A texture in which something mirrors the dawn around it.
function stage.mirror(combine)
    return stage.once { "mirror.jpg", combine = combine, coordinates = "spheremap" }
end

-- A texture in which something mirrors the sky over the lake, or over the sea.
function stage.sky_around(place, combine)
    return {
        texture = cube_map("pictures/" .. place .. "_*.jpg"), combine = combine, coordinates = "cubemap",
        wrap = "edge clamp",
    }
end

-- Rock, whose first two smaller levels are pictures of their own.
stage.rock = image "pictures/rock.jpg" { levels = { "pictures/rock_mm1.jpg", "pictures/rock_mm2.jpg" } }

stage.white = image "pictures/white.png" { filter = "nearest" }

-- ---- shapes ----

-- A picture that stands in the world, centred, seen from +z.
stage.panel = shape {
    positions   = { {-0.5, -0.5, 0}, {0.5, -0.5, 0}, {0.5, 0.5, 0}, {-0.5, 0.5, 0} },
    coordinates = { {0, 1}, {1, 1}, {1, 0}, {0, 0} },
    triangles   = { {1, 2, 3}, {1, 3, 4} },
}

-- The whole screen in a flat scene.
stage.screen = shape {
    positions   = { {0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0} },
    coordinates = { {0, 0}, {1, 0}, {1, 1}, {0, 1} },
    triangles   = { {1, 2, 3}, {1, 3, 4} },
}

-- One wing of a bird, hinged at x = 0, its tip towards +x; a negative width makes the other.
stage.wing = shape {
    positions   = { {0, 0, -0.16}, {0, 0, 0.20}, {0.55, 0.05, -0.22}, {0.50, 0.04, 0.10}, {1.15, 0, 0.06} },
    coordinates = { {0, 0}, {0, 1}, {0.5, 0}, {0.5, 1}, {1, 0.5} },
    triangles   = { {1, 2, 4}, {1, 4, 3}, {3, 4, 5} },
}

function stage.body(name) return mesh "models/bodies.glb" { part = name } end

stage.dome = mesh "models/sky.glb" { part = "dome" }
stage.stars = mesh "models/sky.glb" { part = "stars" }

-- ---- materials ----

-- One colour all over.
function stage.plain(fields)
    fields.texture = stage.white
    return material(fields)
end

-- Light that is added to what is there; black in its picture is nothing.
function stage.glow(fields)
    fields.texture = stage.once(fields.picture or "glow.png")
    fields.picture, fields.blend = nil, "add"
    return material(fields)
end

-- What mirrors nothing but the dawn.
function stage.chrome(color)
    return material { texture = stage.sky_around "lake", color = color, normalize = true }
end

-- The edges of a shape, as lines of light.
function stage.lines(color)
    return stage.glow { picture = "white.png", color = color, wireframe = true, line_width = 1.5 }
end

-- ---- what many scenes show ----

-- The painted sky around the camera, or one sky turning into another by the `amount` of it.
function stage.sky(name, first, second, amount)
    local paint = material {
        texture = { texture = stage.picture(first), combine = "replace", wrap = "edge clamp" },
        texture2 = second and stage.once { second, combine = "interpolate with primary alpha" },
        alpha = amount, depth = false,
    }
    return scene(name) { stage.dome { material = paint } }
end

-- Where every painted sky has its sun.
stage.sun_direction = {0, 0.0499, -0.9988}

-- Glow upon glow where the sky has its sun.
function stage.sun(scene, sun)
    local height = 90 * math.tan(math.rad(sun.elevation))
    local function light(picture, color, strength, radius)
        local tone = shade(color, (sun.level or 1) * strength)
        local paint = stage.glow { picture = picture, color = tone, depth = false }
        scene:add(stage.panel { material = paint, at = {0, height, -90}, scale = radius * (sun.size or 1) })
    end
    light("glow.png", between(palette.gold, palette.rose, 0.55), 0.42, 62)
    light("glow.png", palette.gold, 0.7, 26)
    light("disc.png", palette.cream, 1.0, 3.1)
end

function stage.hill(line) return mesh "models/hills.glb" { part = line } end

-- Lines of hills, the farthest first, each in its colour.
function stage.hills(scene, hills)
    for _, line in ipairs { "far", "middle", "near" } do
        if hills[line] then
            scene:add(stage.hill(line) {
                material = material { texture = stage.once "crest.png", color = hills[line] },
                at = hills.at, scale = hills.scale,
            })
        end
    end
end

local lake_water = effect "Lake water" { time = curve { linear(0, 25600 * 0.075, 25600), integer = true } }
local deep_water = texture.color { color = {0.05, 0.07, 0.17} }:texture { name = "deep water" }

-- The lake of the night and of the dawn: how much of the sky it mirrors is a colour of its own.
function stage.lake(scene, lake)
    scene:add(lake_water {
        material = material {
            texture = { texture = deep_water, combine = "replace" },
            texture2 = stage.sky_around("lake", "interpolate with primary color"),
            color = lake.mirrored, normalize = true, fog = lake.haze,
        },
        at = {-203, 0, -252}, scale = {14.0, 0.11, 3.0}, manipulators = { grid({1, 1, 3}, { step = {0, 0, 87} }) },
    })
end

-- ---- letters ----

-- A font for letters of one size: the pen moves in units of the scene, whatever the scale of the text. `solid`
-- letters have sides.
function stage.font(size, tracking, solid)
    local model = solid and "models/solid-letters.glb" or "models/letters.glb"
    local glyphs, widths = {}, {}
    for letter, is in pairs(letters) do
        widths[letter] = (is.width + tracking) * size
        if letter == " " then
            glyphs[letter] = { width = widths[letter] }
        else
            glyphs[letter] = {
                mesh = mesh(model) { part = letter }, offset = -is.bearing * size, width = widths[letter],
            }
        end
    end
    return font { glyphs = glyphs }, widths
end

-- How far the pen goes for a text.
function stage.width(widths, text)
    local sum = 0
    for letter in text:gmatch(utf8.charpattern) do sum = sum + widths[letter] end
    return sum
end

-- Letters on the screen grow downward, and a screen is wider than tall.
function stage.on_screen(size) return {size, -size / 0.75, 1} end

-- What letters are painted with that come and go within a clip of so many ticks.
function stage.fading_ink(color, alpha, length, edge)
    return stage.plain {
        color = color, blend = "alpha",
        alpha = linear(0, alpha, edge) .. constant(alpha, length - 2 * edge) .. linear(alpha, 0, edge),
    }
end

-- ---- what lies over the scenes ----

local caption_ticks = ticks "6 beats"
local caption_font = stage.font(0.0185, 0.34)

-- The name of a scene, small, in the lower left corner.
function stage.caption(from, text)
    local ink = stage.fading_ink(palette.cream, 0.85, caption_ticks, 60)
    local caption = scene "caption" {
        caption_font(text) { material = ink, at = {0.055, 0.94, 0}, scale = stage.on_screen(0.0185) },
    }
    track { caption { from = from, to = from + caption_ticks, flat = true, mode = "link with previous" } }
end

-- Shafts of light: the picture of the light, thrown outward from where the flight sees it, again and again.
function stage.rays(from, to, flight, rays)
    local across, down = flight:on_screen(rays.source)
    local function pushed(points, size)
        local moved = { length = flight.length }
        for j, point in ipairs(points) do moved[j] = {point[1], point[2] * (1 - size)} end
        return spline(moved)
    end
    local shafts, count = scene "rays" {}, 9
    for k = 1, count do
        local size = 1 + rays.spread * k
        local tone = between(palette.gold, palette.rose, k / count * 0.7)
        shafts:add(stage.screen {
            material = material {
                texture = { texture = rays.picture, wrap = "edge clamp" }, blend = "add", depth = false,
                color = shade(tone, rays.level * (1 - 0.75 * (k - 1) / count)),
            },
            at = {pushed(across, size), pushed(down, size), 0}, scale = {size, size, 1},
        })
    end
    track { shafts { from = from, to = to, flat = true, mode = "link with previous" } }
end

-- A clip that covers the screen with a colour around a cut: it comes `before` it, stays until then, goes `after` it.
function stage.cover(at, cut)
    local before, stays, after = cut.before or 0, cut.stays or 0, cut.after or 0
    local alpha = {}
    if before > 0 then table.insert(alpha, linear(0, 1, before)) end
    if stays > 0 then table.insert(alpha, constant(1, stays)) end
    if after > 0 then table.insert(alpha, ease("out quad", 1, 0, after)) end
    local paint = stage.plain { color = cut.color, alpha = curve(alpha), blend = "alpha" }
    local cover = scene "cover" { stage.screen { material = paint } }
    return cover { from = at - stays - before, to = at + after, flat = true, mode = "link with previous" }
end

-- Takes a little light away from the corners, least from the reds.
function stage.vignette(from, to)
    local dark = material {
        texture = stage.once "vignette.png", color = {0.20, 0.21, 0.17}, blend = "substract alpha",
    }
    local corners = scene "vignette" { stage.screen { material = dark } }
    track { corners { from = from, to = to, flat = true, mode = "link with previous" } }
end

return stage
