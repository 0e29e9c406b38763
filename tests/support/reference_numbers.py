#!/usr/bin/env python3
"""Reference values for tests/anim/test_animation_function.cpp and
tests/render/test_matrix.cpp: the same formulas in exact rational arithmetic
(sines and cosines to 60 digits), rounded to single precision only where the
engine stores. Prints C++ tables and a hash; they are pasted into the tests."""

import struct
from decimal import Decimal, getcontext
from fractions import Fraction

getcontext().prec = 160
PI = Fraction(Decimal("3.14159265358979323846264338327950288419716939937510582097494459230781640628620899"))


def single(value):
    """The nearest single-precision number, as an exact fraction."""
    return Fraction(struct.unpack("<f", struct.pack("<f", float(value)))[0])


def bits(value):
    return struct.unpack("<I", struct.pack("<f", float(value)))[0]


def series(x, term, index):
    """Sum of x^i / i! with alternating signs, i = index, index + 2, ..."""
    total = term
    while abs(term) > Decimal(10) ** -100:
        term = -term * x * x / ((index + 1) * (index + 2))
        index += 2
        total += term
    return Fraction(total)


def decimal(x):
    return Decimal(x.numerator) / Decimal(x.denominator)


def sine(x):
    x = decimal(x)
    return series(x, x, 1)


def cosine(x):
    return series(decimal(x), Decimal(1), 0)


# ---- animation functions -------------------------------------------------------

def spline(p, x):
    xs, ys = [Fraction(-999999), p[0] - 1], [p[1], p[1]]
    for k in range(12):
        px, py = p[2 * k], p[2 * k + 1]
        if xs[-1] + 1 > px:
            px, py = xs[-1] + 1, ys[-1]
        xs.append(px)
        ys.append(py)
    xs += [xs[-1] + 999999, Fraction(9999999)]
    ys += [ys[-1], ys[-1]]
    if x <= xs[1]:
        return ys[1]
    if x > xs[14]:
        return ys[13]
    j = next(j for j in range(2, 15) if x <= xs[j])
    w = xs[j] - xs[j - 1]

    def slope(a, b):
        return Fraction(0) if xs[a] == xs[b] else (ys[b] - ys[a]) / (xs[b] - xs[a])

    # Hermite form: the tangents of a uniform curve are half the distance of the neighbours.
    y0 = ys[j - 1] + (-slope(j - 2, j - 1)) * w
    y3 = ys[j] + slope(j, j + 1) * w
    m1, m2 = (ys[j] - y0) / 2, (y3 - ys[j - 1]) / 2
    u = (x - xs[j - 1]) / w
    return ((2 * u**3 - 3 * u**2 + 1) * ys[j - 1] + (u**3 - 2 * u**2 + u) * m1
            + (3 * u**2 - 2 * u**3) * ys[j] + (u**3 - u**2) * m2)


def value(kind, p, x):
    if kind == 1:
        return x * p[0] + p[1]
    if kind == 2:
        return (x - p[1]) ** 2 * p[0] + p[2]
    if kind == 3:
        return sine(x * p[1] - p[2]) * p[0] + p[3]
    if kind == 4:
        return spline(p, x)
    return sine(p[1] * x - p[2]) * (x * p[0] + p[4]) + p[3]


FUNCTIONS = [
    (1, [0.1, -3.7]),
    (2, [0.013, 17.3, -2.1]),
    (3, [2.5, 0.0137, 0.7, -1.25]),
    (5, [0.003, 0.021, 1.1, 0.4, -0.6]),
    (4, [10.5, 0.1, 200.25, 3.3, 200.75, 9.9, 700, -4.7, 1500.125, 2.2, 2000, 2.3,
         2400.5, -8.1, 3000, 0.7, 3600, 5.5, 4200, -5.5, 4800, 1.25, 5000, 0.3]),
    (4, [0, 0.2, 1000, 10.1]),
]


def animation_values():
    digest = 2166136261
    for number, (kind, given) in enumerate(FUNCTIONS):
        p = [single(v) for v in given] + [Fraction(0)] * (24 - len(given))
        shown = []
        for x in range(0, 6000, 37):
            b = bits(value(kind, p, Fraction(x)))
            for byte in b.to_bytes(4, "little"):
                digest = (digest ^ byte) * 16777619 & 0xFFFFFFFF
            if x in (0, 37, 1480, 2072, 4995):
                shown.append(f"0x{b:08X}u")
        print(f"    {{{', '.join(shown)}}}, // {number}, formula {kind}")
    print(f"hash 0x{digest:08X}u")


# ---- matrices --------------------------------------------------------------------

def rotate(m, first, second, angle):
    radians = single(angle) * single(0.0055555557) * PI
    c, s = cosine(radians), sine(radians)
    for r in range(4):
        a, b = m[first * 4 + r], m[second * 4 + r]
        m[first * 4 + r], m[second * 4 + r] = single(a * c + b * s), single(b * c - a * s)


def translate(m, *by):
    for r in range(3):
        m[12 + r] = single(m[12 + r] + sum(m[4 * c + r] * single(by[c]) for c in range(3)))


def show(name, m):
    print(name)
    print("    " + ", ".join(f"0x{bits(v):08X}u" for v in m))


def matrices():
    m = [Fraction(int(i % 5 == 0)) for i in range(16)]
    rotate(m, 0, 1, 33.3)       # z
    rotate(m, 1, 2, -71.7)      # x
    rotate(m, 2, 0, 128.9)      # y
    translate(m, 1.1, -2.7, 0.3)
    for c, by in enumerate((1.5, 0.7, -2.3)):
        for r in range(4):
            m[4 * c + r] = single(m[4 * c + r] * single(by))
    show("modelview", m)

    # The inverse by Cramer's rule, column of unit vectors after column.
    rows = [[m[4 * c + r] for c in range(3)] for r in range(3)]

    def det(a):
        return (a[0][0] * (a[1][1] * a[2][2] - a[1][2] * a[2][1]) - a[0][1] * (a[1][0] * a[2][2] - a[1][2] * a[2][0])
                + a[0][2] * (a[1][0] * a[2][1] - a[1][1] * a[2][0]))

    inverse = []
    for r in range(3):
        for c in range(3):
            replaced = [[(Fraction(int(i == c)) if j == r else rows[i][j]) for j in range(3)] for i in range(3)]
            inverse.append(det(replaced) / det(rows))
    show("normal matrix", inverse)

    half = single(57.3) * single(0.0027777778) * PI
    f = cosine(half) / sine(half)
    n, d, aspect = single(0.1), single(333.3), single(1.6)
    show("perspective 0, 5, 10, 14", [f / aspect, f, (d + n) / (n - d), 2 * d * n / (n - d)])


animation_values()
matrices()
