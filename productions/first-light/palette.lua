-- The palette: from ink over plum and rose to peach, gold and cream.

local palette = {
    ink   = {0.035, 0.045, 0.13},
    plum  = {0.30, 0.20, 0.40},
    rose  = {0.86, 0.46, 0.52},
    peach = {1.0, 0.68, 0.46},
    gold  = {1.0, 0.82, 0.52},
    cream = {1.0, 0.95, 0.86},
}

-- A colour with less of its light.
function palette.shade(color, level)
    return {color[1] * level, color[2] * level, color[3] * level}
end

-- A colour on the way from one to another.
function palette.between(a, b, share)
    return {a[1] + (b[1] - a[1]) * share, a[2] + (b[2] - a[2]) * share, a[3] + (b[3] - a[3]) * share}
end

return palette
