// Numbers that move: see curve.h.
