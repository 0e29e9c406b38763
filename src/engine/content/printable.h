// Names as they may be shown: what a terminal would act on is spelled out.
#pragma once

#include <string>
#include <string_view>

// `text` with every control character (0 to 31, 127, and U+0080 to U+009F) and every
// byte that is no UTF-8 as \xNN, in capitals. All other letters stay as they are, the
// backslash too, so a text of plain letters comes back unchanged.
std::string printable(std::string_view text);
