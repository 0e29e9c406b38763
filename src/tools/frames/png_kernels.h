// Kernels of PNG files: rows of three bytes a pixel, of any length from one pixel on, at any address.
#pragma once

#include <cstddef>
#include <cstdint>

// What Paeth's filter leaves of a row: each byte less the one of those to the left, above, and above to the left that
// is nearest to left + above - corner (the first of them where two are as near); outside the picture there are zeros.
// `above` is the row before, or zeros; `out` overlaps neither.
void filter_row_by_paeth(const uint8_t* row, const uint8_t* above, uint8_t* out, size_t count);
