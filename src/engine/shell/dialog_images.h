// The dialog's six pictures, as the BMP files that artwork/ holds. They are part of
// the program; nothing is read from disk and nothing is to be freed.
#pragma once

#include "shell/dialog_logic.h"

#include <cstdint>
#include <span>

// The whole BMP file of a picture; empty for a number outside the list.
std::span<const uint8_t> dialog_image_file(dialog_image image);
