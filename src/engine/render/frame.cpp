#include "render/frame.h"

#include "content/matrix.h"

void clear_advanced(frame& f)
{
    f.placements.clear();
    f.vertices.clear();
    f.pixels.clear();
    f.moved.clear();
    f.pictures.clear();
    f.numbers.clear();
    f.meshes.clear();
}

void clear_planned(frame& f)
{
    f.commands.clear();
    f.texture_copies.clear();
    f.recreations.clear();
    f.viewports.clear();
    f.clears.clear();
    f.uploads.clear();
    f.vertex_uploads.clear();
    f.line_uploads.clear();
    f.draws.clear();
    f.views.clear();
    f.materials.clear();
    f.programs.clear();
    f.copies.clear();
}

standing_state initial_standing_state()
{
    standing_state standing = {};
    copy_matrix(identity, standing.projection);
    standing.material.depth_test = true;
    standing.material.blending = blend_none;
    copy_matrix(identity, standing.material.light_view);
    return standing;
}
