#!/usr/bin/env python3
"""Writes controls/gamma_tables.cpp, the built-in gamma tables. Run it with no arguments from anywhere.

Row k, 0 to 64, has the exponent g = trunc(4096 * 0.45 * e^(-3 (k - 32) / 64)) / 4096 and the offset a below.
For u from 0 to 1 its curve f is a straight line up to t = 0.018 and a power from there on:

    f(u) = s u                     for u < t, with s = ((1 + a) t^g - a) / t, so that the two parts meet
    f(u) = (1 + a) u^g - a         otherwise

    full range:    255 f(x / 255), rounded to nearest, clamped to 0 to 255
    studio range:  16 below x = 16, 235 from x = 235 on, 16 + 219 f((x - 16) / 219) rounded to nearest between

Row 32 of the full range, the default of every picture, stands as given.
"""
import pathlib
from decimal import ROUND_FLOOR, Decimal, getcontext

getcontext().prec = 50

OFFSETS = """
0.002 0.002 0.003 0.001 0.001 0.001 0.001 0.001 0.001 0.000 0.000 0.001 0.001 0.001 0.002 0.000 0.004 0.006 0.008
0.010 0.013 0.017 0.021 0.025 0.031 0.036 0.043 0.051 0.059 0.068 0.078 0.090 0.102 0.115 0.129 0.145 0.161 0.179
0.198 0.219 0.241 0.264 0.289 0.315 0.344 0.373 0.405 0.438 0.474 0.512 0.551 0.592 0.638 0.683 0.731 0.781 0.836
0.896 0.953 1.016 1.080 1.150 1.226 1.298 1.382
"""

DEFAULT_ROW = """
0 4 9 13 18 22 26 30 33 36 39 42 45 48 50 53 55 57 59 61 63 65 67 69 71 73 75 76 78 80 81 83 84 86 88 89 90 92
93 95 96 98 99 100 101 103 104 105 107 108 109 110 111 113 114 115 116 117 118 119 121 122 123 124 125 126 127
128 129 130 131 132 133 134 135 136 137 138 139 140 141 142 143 144 145 145 146 147 148 149 150 151 152 153
153 154 155 156 157 158 158 159 160 161 162 163 163 164 165 166 167 167 168 169 170 170 171 172 173 173 174
175 176 176 177 178 179 179 180 181 182 182 183 184 184 185 186 186 187 188 189 189 190 191 191 192 193 193
194 195 195 196 197 197 198 199 199 200 201 201 202 202 203 204 204 205 206 206 207 208 208 209 209 210 211
211 212 212 213 214 214 215 215 216 217 217 218 218 219 220 220 221 221 222 222 223 224 224 225 225 226 226
227 228 228 229 229 230 230 231 232 232 233 233 234 234 235 235 236 236 237 237 238 239 239 240 240 241 241
242 242 243 243 244 244 245 245 246 246 247 247 248 248 249 249 250 250 251 252 252 253 253 254 254 255 255
"""

T = Decimal("0.018")


def curve(u, g, a):
    if u < T:
        return ((1 + a) * T**g - a) / T * u
    return (1 + a) * u**g - a


def nearest(x):
    return min(255, max(0, int((x + Decimal("0.5")).to_integral_value(ROUND_FLOOR))))


def full_range(g, a):
    return [nearest(255 * curve(Decimal(x) / 255, g, a)) for x in range(256)]


def studio_range(g, a):
    middle = [nearest(16 + 219 * curve(Decimal(x - 16) / 219, g, a)) for x in range(16, 235)]
    return [16] * 16 + middle + [235] * 21


def lines(values):
    for i in range(0, len(values), 16):
        yield "     " + " ".join(f"{v}," for v in values[i : i + 16])


def block(name, rows):
    out = [f"uint8_t gamma_tables{name}[kGammaRows][256] = {{"]
    for row in rows:
        body = list(lines(row))
        body[0] = "    {" + body[0].lstrip()
        body[-1] = body[-1].rstrip(",") + "},"
        out += body
    return out + ["};"]


def main():
    offsets = [Decimal(a) for a in OFFSETS.split()]
    assert len(offsets) == 65
    values = [int(Decimal(4096) * Decimal("0.45") * (Decimal(-3 * (k - 32)) / 64).exp()) for k in range(65)]
    exponents = [Decimal(v) / 4096 for v in values]
    full = [full_range(g, a) for g, a in zip(exponents, offsets)]
    full[32] = [int(x) for x in DEFAULT_ROW.split()]
    studio = [studio_range(g, a) for g, a in zip(exponents, offsets)]
    assert all(len(row) == 256 for row in full + studio)
    text = [
        "// Written by controls/generate_gamma_tables.py, which tells the rule. Not to be edited.",
        '#include "controls/gamma_tables.h"',
        "",
        "namespace ppl {",
        "",
        "// clang-format off",
        "const uint16_t kGammaValues[kGammaRows] = {",
        *lines(values),
        "};",
        "",
        *block("65x256", full),
        "",
        *block("65x256_16_235", studio),
        "// clang-format on",
        "",
        "}  // namespace ppl",
        "",
    ]
    pathlib.Path(__file__).with_name("gamma_tables.cpp").write_text("\n".join(text))


main()
