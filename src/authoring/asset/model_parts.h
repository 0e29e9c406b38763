// Parts of a model by their names. Pure.
#pragma once

#include "authoring/asset/model_scene.h"

#include <string>
#include <vector>

// The pieces that the name means: of a node and all below it, of a mesh; where there is neither, of a material. All of
// them for the empty name.
std::vector<const model_piece*> pieces_of_part(const model_scene& scene, const std::string& part);

// The line about a name that means nothing, to be put behind the file's name: "has no part "whel": did you mean
// "wheel"? It has "body", "wheel"".
std::string unknown_part(const model_scene& scene, const std::string& part);
