// Scales of bytes as whole numbers: what an operation multiplies with in real numbers and truncates, a fast kernel
// multiplies and shifts, and gets the same byte for every operand.
//
// A scale is single precision, so that its product with a byte, or with the product of two, is exact in double. Not
// every scale has a form in whole numbers (negative ones, what overflows, what is no number): `exists` is then false,
// and the kernel does it in double.
#pragma once

#include <cstdint>

// min(truncate(byte * scale), 255) = min(byte * whole + byte * part / 65536, 255), for all 256 bytes.
struct byte_scale {
    uint16_t whole; // 0..255
    uint16_t part;  // of 65,536
    bool exists;
};

byte_scale make_byte_scale(float scale);

// min(truncate(product * scale), 255) = min(product * (upper_part * 65536 + lower_part) / 2^32 / 2^shift, 255) for all
// products 0..65,025 of two bytes.
struct product_scale {
    uint16_t upper_part;
    uint16_t lower_part;
    uint16_t shift; // 0..7; 0 of scales from 1/512
    bool exists;
};

// Of scales below 1; of a greater one there is no form.
product_scale make_product_scale(float scale);

// Two scales as sums of an upper and a lower number: floor(a * scale1 + b * scale2) =
// (a * upper1 + b * upper2 + (a * lower1 + b * lower2) / 32768) >> shift, for all pairs of bytes.
struct sum_scale {
    int16_t upper1;
    int16_t upper2;
    int16_t lower1; // 0..32,767
    int16_t lower2;
    int32_t shift; // 0..23
    bool exists;
};

sum_scale make_sum_scale(float scale1, float scale2);
