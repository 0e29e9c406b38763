// Matrices: plain numbers that are passed, without OpenGL.
//
// A 4 x 4 matrix is 16 floats in column-major order: row r, column c is at c * 4 + r, the
// translation at 12, 13, 14. Arithmetic is carried in extended precision and stored as
// single precision. Angles are degrees. Each function changes the matrix that it is given
// and nothing else.
#pragma once

constexpr float identity[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

void copy_matrix(const float from[16], float to[16]);

// A perspective projection; fov is the full vertical angle. With n and d the near and far
// distance: f / aspect, f, (d + n) / (n - d), 2 d n / (n - d), where f = 1 / tan(fov / 2).
void set_perspective(float matrix[16], float fov, float aspect, float near_distance, float far_distance);

// An orthographic projection.
void set_orthographic(
    float matrix[16], float left, float right, float bottom, float top, float near_distance, float far_distance);

// M = M x T.
void translate(float matrix[16], float x, float y, float z);

// The last column of M x T(position), M as it was: where the origin of what stands there comes to.
void transform_origin(const float matrix[16], const float position[3], float column[4]);

// M = M x R(angle) about an axis.
void rotate_x(float matrix[16], float angle);
void rotate_y(float matrix[16], float angle);
void rotate_z(float matrix[16], float angle);

// M = M x S.
void scale(float matrix[16], float x, float y, float z);

// M = M x R(x) x R(y) x R(z) x S: the four above, one after the other, to the last bit.
void turn_and_scale(float matrix[16], const float rotation[3], const float factors[3]);

// The inverse of the upper left 3 x 3 of a modelview matrix, row by row (a program reads it
// by columns: the inverse transpose, which turns normals); the identity where there is none.
void compute_normal_matrix(const float modelview[16], float normal_matrix[9]);

// result = matrix x point, for a point with w = 1.
void transform_point(const float matrix[16], const float point[3], float result[3]);
