-- Noise that hills and meadows are made of: the same as in made/shapes.py.

local function hashed(x, y, seed)
    local n = (x * 374761393 + y * 668265263 + seed * 2147483647) & 0xFFFFFFFF
    n = ((n ~ (n >> 13)) * 1274126177) & 0xFFFFFFFF
    return ((n ~ (n >> 16)) & 0xFFFF) / 65535
end

-- Smooth noise, 0..1.
local function smooth(x, y, seed)
    local ix, iy = math.floor(x), math.floor(y)
    local u, v = x - ix, y - iy
    u, v = u * u * (3 - 2 * u), v * v * (3 - 2 * v)
    local top = hashed(ix, iy, seed) * (1 - u) + hashed(ix + 1, iy, seed) * u
    local bottom = hashed(ix, iy + 1, seed) * (1 - u) + hashed(ix + 1, iy + 1, seed) * u
    return top * (1 - v) + bottom * v
end

-- Noise upon noise, each twice as fine and half as strong, 0..1.
return function(x, y, octaves, seed)
    local total, weight, norm = 0, 1, 0
    for k = 0, octaves - 1 do
        total, norm = total + weight * smooth(x, y, seed + k), norm + weight
        x, y, weight = x * 2.03 + 11.7, y * 2.03 + 5.3, weight * 0.5
    end
    return total / norm
end
