// Points and turns in doubles, written apart from the renderer's matrices: what tests work
// their expected places out with. Angles are degrees, counter-clockwise about an axis that
// points at the viewer.
#pragma once

struct vector {
    double x, y, z;
};

vector turned_x(const vector& v, double degrees);
vector turned_y(const vector& v, double degrees);
vector turned_z(const vector& v, double degrees);
vector unit_length(const vector& v);

// A point of the world before a camera that is turned about z, then x, then y, and moved.
vector seen(const vector& world, const vector& rotation, const vector& translation);

// Where the wide camera shows a point before it, in pixels of the window; row 0 is the lowest.
struct spot {
    int x, y;
};
spot spot_of(const vector& eye);
