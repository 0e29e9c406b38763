// A sine that is rounded once, to the nearest double, from extended precision.
//
// The C library's own double sine differs in its last bit from one processor and word size to the next, and where two
// sines cancel that bit decides between 126 and 127. Its extended one agrees everywhere, but takes ten times as long,
// and for large angles in the 32-bit player a hundred times.
#pragma once

// The same bits as sinl's value, rounded. Radians; not-a-number and infinity give not-a-number.
double rounded_sine(double angle);
