// The renderer's own matrices: plain numbers, no OpenGL.
//
// Matrices are 16 floats in column-major order: row r, column c is at c * 4 + r,
// the translation at 12, 13, 14. Arithmetic is carried in extended precision and
// stored as single precision. Angles are degrees. One render state serves the
// whole program; only the render thread touches it.
#pragma once

struct matrix_state {
    float modelview[16];
    float projection[16];
    float texture_matrix[16];
    float saved_modelview[16]; // the copy that an instance's transform is undone with
    float identity[16];        // filled once, never changed
    float normal_matrix[9];    // inverse of modelview's upper 3 x 3, row by row
};

extern matrix_state matrices;

enum matrix_selector : int { select_modelview = 0, select_projection = 1, select_texture = 2 };

// Everything to the identity; once at start-up.
void init_matrices();

// modelview, or texture_matrix, = identity.
void reset_modelview();
void reset_texture_matrix();

void save_modelview();
void restore_modelview();

// projection = perspective; fov is the full vertical angle.
void set_perspective(float fov, float aspect, float near_distance, float far_distance);

// projection = orthographic.
void set_orthographic(float left, float right, float bottom, float top, float near_distance, float far_distance);

// modelview = modelview x T; and the same on texture_matrix.
void translate(float x, float y, float z);
void translate_texture(float x, float y, float z);

// M = M x R(angle) on the selected matrix.
void rotate_x(float angle, int selector);
void rotate_y(float angle, int selector);
void rotate_z(float angle, int selector);

// modelview = modelview x S.
void scale(float x, float y, float z);

// normal_matrix from modelview; the identity when modelview has no inverse.
void compute_normal_matrix();

// point = modelview x point, for a point with w = 1.
void transform_point(const float matrix[16], const float point[3], float result[3]);
