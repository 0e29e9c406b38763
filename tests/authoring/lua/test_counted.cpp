#include "authoring/counted.h"

#include <doctest/doctest.h>

TEST_CASE("one thing is one, and no things are several")
{
    CHECK(counted(1, "frame") == "1 frame");
    CHECK(counted(0, "frame") == "0 frames");
    CHECK(counted(12, "frame") == "12 frames");
    CHECK(counted(1, "mesh", "meshes") == "1 mesh");
    CHECK(counted(0, "mesh", "meshes") == "0 meshes");
    CHECK(counted(4294967296, "mesh", "meshes") == "4294967296 meshes");
}
