// YUV4MPEG2: uncompressed video as a stream of frames, which every encoder reads.
//
// Y'CbCr with 8 bits in the limited range (luma 16..235, chroma 16..240), rounded to
// the nearest. Matrices: ITU-R BT.601 (Kr 0.299, Kb 0.114) and BT.709 (Kr 0.2126,
// Kb 0.0722). The format has no place for the matrix; players guess it from the size,
// and matrix_for_size guesses alike.
#pragma once

#include "tools/frames/frame_rate.h"
#include "tools/frames/picture.h"

#include <cstdint>
#include <string>
#include <vector>

enum yuv_matrix : int32_t { yuv_bt601, yuv_bt709 };

// BT.709 from 1280 pixels of width or 577 of height, else BT.601.
yuv_matrix matrix_for_size(uint32_t width, uint32_t height);

// The stream's first line: size, rate, progressive, square pixels, 4:2:0 (420jpeg: chroma
// in the middle of its four pixels) and limited range; with its line end.
std::string y4m_header(uint32_t width, uint32_t height, frame_rate rate);

// Bytes of one frame with its "FRAME" line.
uint64_t y4m_frame_size(uint32_t width, uint32_t height);

// Replaces `bytes` by one frame: "FRAME\n", then the planes Y, Cb, Cr. Each chroma
// sample is of the mean of its 2 x 2 pixels (fewer at odd borders). Nothing for a picture
// that is not whole.
void y4m_frame(const picture& p, yuv_matrix matrix, std::vector<uint8_t>& bytes);
