#include "place.h"

#include <array>
#include <initializer_list>
#include <utility>

namespace ref {
namespace {

using bytes16 = std::array<uint8_t, 16>;
using bytes32 = std::array<uint8_t, 32>;

// Which interpolation passes follow a row pair at double size.
struct passes {
  bool inner = false, outer = false, last_copy = false;
};

// One walk over the tiles of a picture; the formats below share the geometry and the look at the planes.
struct walk {
  const finished& f;
  const placing& how;
  canvas& out;
  int tiles, row_pairs, d;
  bool h;

  walk(const finished& picture, const placing& placing_, canvas& out_)
      : f(picture),
        how(placing_),
        out(out_),
        tiles(picture.width / 16),
        row_pairs(picture.height / 2),
        d(placing_.plan.decimation),
        h(placing_.plan.h_mirror) {}

  uint8_t luma(int row, int column) const { return f.y[size_t(row) * size_t(f.width) + size_t(column)]; }
  uint8_t offset_u(int row, int word) const {
    return uint8_t(f.u[size_t(row) * size_t(f.width / 2) + size_t(word)] + 128);
  }
  uint8_t offset_v(int row, int word) const {
    return uint8_t(f.v[size_t(row) * size_t(f.width / 2) + size_t(word)] + 128);
  }

  // Row pairs of the main row stage: 1 .. first_bottom - 1. The stages round it run even in small frames.
  int first_bottom() const {
    int bottom_stages = 0;
    switch (how.quality) {
      case 0:
        bottom_stages = how.medium_filter ? 3 : 2;
        break;
      case 1:
        bottom_stages = how.medium_filter ? 3 : 2;
        break;
      case 2:
        bottom_stages = how.medium_filter ? 2 : 1;
        break;
      case 10:
      case 11:
        bottom_stages = 2;
        break;
      case 12:
        bottom_stages = 1;
        break;
      default:
        bottom_stages = 3;
        break;
    }
    return row_pairs - bottom_stages;
  }

  passes passes_of(int p) const {
    passes run;
    if (d >= 0) return run;
    const bool full_filters = how.quality <= 2 || how.quality == 15;
    const bool main_stage = p >= 1 && p < first_bottom();
    const bool last = p == row_pairs - 1;
    switch (how.kind) {
      case format::rgb32:
        return run;
      case format::rgb24:
        run = {true, p > 0, last};
        break;
      case format::i420:
      case format::uyvy:
        if (full_filters) run = {true, p > 0, last};
        break;
      case format::yuyv:
        if (full_filters) run = {true, p > 0, last};
        if (main_stage && (how.quality == 15 || (how.quality == 2 && how.medium_filter))) run = {};
        break;
    }
    // These stages copy a last row that the stage after them replaces.
    if (how.kind == format::rgb24 && p > 0 && !main_stage && !last) {
      const bool copies = how.quality == 15 || (how.quality == 2 && how.medium_filter);
      run.last_copy = run.last_copy || copies;
    }
    return run;
  }

  template <size_t n>
  void put(int64_t at, const std::array<uint8_t, n>& block) {
    for (size_t i = 0; i < n; ++i) out.store(at + int64_t(i), block[i]);
  }

  // 16 luma samples widened to 32. The neighbour of column 0 is itself, or 0 in a mirrored row.
  bytes32 widened_luma(int row, int tile) const {
    bytes32 wide{};
    for (int i = 0; i < 16; ++i) {
      const int c = 16 * tile + (h ? 15 - i : i);
      const int left = c > 0 ? luma(row, c - 1) : h ? 0 : luma(row, c);
      wide[size_t(2 * i)] = mean(left, luma(row, c));
      wide[size_t(2 * i + 1)] = luma(row, c);
    }
    return wide;
  }

  void i420();
  void packed();
  void rgb24();
  void rgb32();
  void rgb24_doubled(int64_t at, int row, int tile);
};

template <size_t n>
std::array<uint8_t, n> reversed(const std::array<uint8_t, n>& block) {
  std::array<uint8_t, n> back{};
  for (size_t i = 0; i < n; ++i) back[i] = block[n - 1 - i];
  return back;
}

bytes32 repeated(const bytes16& block) {
  bytes32 twice{};
  for (size_t i = 0; i < 32; ++i) twice[i] = block[i / 2];
  return twice;
}

void walk::i420() {
  const tile_walk luma_plan = luma_walk(how.plan), chroma_plan = chroma_walk(how.plan);
  const int64_t W = how.plan.width, to_v = how.plan.out_quarter_pixels;
  int64_t l = luma_plan.start, c = how.plan.out_pixels + chroma_plan.start;
  // A mirrored tile of 32 bytes begins 16 bytes before its pointer.
  const int64_t back = d < 0 && h ? 16 : 0;

  const auto put_chroma = [&](const bytes16& u, const bytes16& v) {
    const bytes16 uu = h ? reversed(u) : u, vv = h ? reversed(v) : v;
    if (d < 0) {
      put(c - back, repeated(uu));
      put(c - back + to_v, repeated(vv));
    } else {
      put(c, uu);
      put(c + to_v, vv);
    }
    c += chroma_plan.tile_step;
  };

  for (int p = 0; p < row_pairs; ++p) {
    const int row = 2 * p;
    for (int t = 0; t < tiles; ++t) {
      const bool odd = t % 2 == 1;
      if (d == 0) {
        for (int k = 0; k < 2; ++k) {
          bytes16 y{};
          for (int i = 0; i < 16; ++i) y[size_t(i)] = luma(row + k, 16 * t + i);
          put(l + k * luma_plan.row_pitch, h ? reversed(y) : y);
        }
        l += luma_plan.tile_step;
      } else if (d < 0) {
        for (int k = 0; k < 2; ++k) put(l - back + k * 2 * luma_plan.row_pitch, widened_luma(row + k, t));
        l += luma_plan.tile_step;
      } else if (odd) {
        bytes16 y{};
        for (int i = 0; i < 16; ++i) y[size_t(i)] = luma(row, 16 * (t - 1) + 2 * i);
        put(l, h ? reversed(y) : y);
        l += luma_plan.tile_step;
      }
      if (d <= 0 && odd) {
        bytes16 u{}, v{};
        for (int i = 0; i < 16; ++i) {
          u[size_t(i)] = offset_u(row, 8 * (t - 1) + i);
          v[size_t(i)] = offset_v(row, 8 * (t - 1) + i);
        }
        put_chroma(u, v);
      }
      if (d > 0 && t % 4 == 3 && p % 2 == 1) {
        bytes16 u{}, v{};
        for (int i = 0; i < 16; ++i) {
          u[size_t(i)] = offset_u(row, 8 * (t - 3) + 2 * i);
          v[size_t(i)] = offset_v(row, 8 * (t - 3) + 2 * i);
        }
        put_chroma(u, v);
      }
    }
    l += luma_plan.row_step;
    if (d <= 0 || p % 2 == 1) c += chroma_plan.row_step;

    // Passes over whole rows, counted back from the first row of the next row pair, four rows of luma and two of chroma
    // on. A mirrored row ends 16 bytes behind the pointer of its first tile.
    const passes run = passes_of(p);
    const auto between = [&](int64_t row_start, int64_t length) {
      for (int64_t i = 0; i < length; ++i) {
        const int64_t at = row_start + i;
        out.mean_of(at, at - length, at + length);
      }
    };
    const auto copy = [&](int64_t target, int64_t source, int64_t length) {
      for (int64_t i = 0; i < length; ++i) out.copy(target + i, source + i);
    };
    const int64_t l_row = h ? l + 16 - W : l;
    const int64_t c_row = h ? c + 16 - W / 2 : c;
    const int64_t l_pitch = luma_plan.row_pitch, c_pitch = chroma_plan.row_pitch;
    if (run.inner) between(l_row - 3 * l_pitch, W);
    if (run.outer) {
      between(l_row - 5 * l_pitch, W);
      between(c_row - 3 * c_pitch, W / 2);
      between(c_row - 3 * c_pitch + to_v, W / 2);
    }
    if (run.last_copy) {
      copy(l_row - l_pitch, l_row - 2 * l_pitch, W);
      copy(c_row - c_pitch, c_row - 2 * c_pitch, W / 2);
      copy(c_row - c_pitch + to_v, c_row - 2 * c_pitch + to_v, W / 2);
    }
  }
}

void walk::packed() {
  const tile_walk plan = packed_walk(how.plan);
  int64_t at = plan.start;
  const int64_t row_bytes = 2 * int64_t(how.plan.width);
  const int64_t back = d < 0 && h ? 32 : 0;
  const bool luma_first = how.kind == format::yuyv;

  // n luma bytes and n / 2 words of chroma, in output order.
  const auto interleave = [&](int64_t to, const uint8_t* y, const uint8_t* c, int n) {
    for (int i = 0; i < n; ++i) {
      out.store(to + 2 * i, luma_first ? y[i] : c[i]);
      out.store(to + 2 * i + 1, luma_first ? c[i] : y[i]);
    }
  };

  for (int p = 0; p < row_pairs; ++p) {
    const int row = 2 * p;
    for (int t = 0; t < tiles; ++t) {
      if (d > 0) {
        if (t % 2 == 0) continue;
        uint8_t y[16], c[16];
        for (int i = 0; i < 16; ++i) y[h ? 15 - i : i] = luma(row, 16 * (t - 1) + 2 * i);
        for (int w = 0; w < 8; ++w) {
          const int place_ = h ? 7 - w : w;
          c[2 * place_] = offset_u(row, 8 * (t - 1) + 2 * w);
          c[2 * place_ + 1] = offset_v(row, 8 * (t - 1) + 2 * w);
        }
        interleave(at, y, c, 16);
        at += plan.tile_step;
        continue;
      }
      for (int k = 0; k < 2; ++k) {
        uint8_t c[32];
        if (d == 0) {
          uint8_t y[16];
          for (int i = 0; i < 16; ++i) y[h ? 15 - i : i] = luma(row + k, 16 * t + i);
          for (int w = 0; w < 8; ++w) {
            const int place_ = h ? 7 - w : w;
            c[2 * place_] = offset_u(row + k, 8 * t + w);
            c[2 * place_ + 1] = offset_v(row + k, 8 * t + w);
          }
          interleave(at + k * plan.row_pitch, y, c, 16);
        } else {
          const bytes32 y = widened_luma(row + k, t);
          for (int w = 0; w < 16; ++w) {
            const int word = h ? 7 - w / 2 : w / 2;
            c[2 * w] = offset_u(row + k, 8 * t + word);
            c[2 * w + 1] = offset_v(row + k, 8 * t + word);
          }
          interleave(at - back + k * 2 * plan.row_pitch, y.data(), c, 32);
        }
      }
      at += plan.tile_step;
    }
    at += plan.row_step;

    const passes run = passes_of(p);
    // Groups of 64 bytes of the rows at the lower and the higher address; the second half of a group takes the
    // second block's mean in the place of the higher row.
    const auto between = [&](int64_t row_start) {
      for (int64_t group = 0; group < row_bytes; group += 64) {
        for (int64_t i = 0; i < 16; ++i) {
          const int64_t g = row_start + group + i;
          out.mean_of(g, g + row_bytes, g - row_bytes);
          out.mean_of(g + 16, g + 16 + row_bytes, g + 16 - row_bytes);
          out.mean_of(g + 32, g + 16, g + 32 - row_bytes);
          out.mean_of(g + 48, g + 16, g + 48 - row_bytes);
        }
      }
    };
    const int64_t row_start = h ? at + 32 - row_bytes : at;
    if (run.inner) between(row_start - 3 * plan.row_pitch);
    if (run.outer) between(row_start - 5 * plan.row_pitch);
    if (run.last_copy)
      for (int64_t i = 0; i < row_bytes; ++i)
        out.copy(row_start - plan.row_pitch + i, row_start - 2 * plan.row_pitch + i);
  }
}

// 96 bytes: each plane widened with the neighbour read back from the output.
void walk::rgb24_doubled(int64_t at, int row, int tile) {
  const bool unconverted = how.quality == 15;
  const std::vector<uint8_t>* planes[3] = {unconverted ? &f.raw_b : &f.b, unconverted ? &f.raw_g : &f.g,
                                           unconverted ? &f.raw_r : &f.r};
  for (int colour = 0; colour < 3; ++colour) {
    int P[16];
    for (int i = 0; i < 16; ++i)
      P[h ? 15 - i : i] = (*planes[colour])[size_t(row) * size_t(f.width) + size_t(16 * tile + i)];
    const int64_t beside_at = h ? at + 96 + colour : at - 3 + colour;
    const int neighbour = tile == 0 ? (h ? P[15] : P[0]) : out.load(beside_at);
    const bool neighbour_known = tile == 0 || out.known(beside_at);
    for (int i = 0; i < 16; ++i) {
      const int beside = h ? (i < 15 ? P[i + 1] : neighbour) : (i > 0 ? P[i - 1] : neighbour);
      const bool read_back = h ? i == 15 : i == 0;
      out.store(at + 6 * i + colour, mean(beside, P[i]), !read_back || neighbour_known);
      out.store(at + 6 * i + 3 + colour, uint8_t(P[i]));
    }
  }
}

void walk::rgb24() {
  const tile_walk plan = rgb24_walk(how.plan);
  int64_t at = plan.start;
  const int64_t row_bytes = 3 * int64_t(how.plan.width);

  struct tile_planes {
    bytes16 b{}, g{}, r{};
  };
  const auto tile_of = [&](int row, int tile) {
    tile_planes planes;
    for (int i = 0; i < 16; ++i) {
      const size_t index = size_t(row) * size_t(f.width) + size_t(16 * tile + i);
      planes.b[size_t(i)] = f.b[index];
      planes.g[size_t(i)] = f.g[index];
      planes.r[size_t(i)] = f.r[index];
    }
    return planes;
  };
  const auto pack = [&](int64_t to, const bytes16& b, const bytes16& g, const bytes16& r) {
    for (int i = 0; i < 16; ++i) {
      const size_t from = size_t(h ? 15 - i : i);
      out.store(to + 3 * i, b[from]);
      out.store(to + 3 * i + 1, g[from]);
      out.store(to + 3 * i + 2, r[from]);
    }
  };
  tile_planes held;  // quality 15: the first tile of a pair

  for (int p = 0; p < row_pairs; ++p) {
    const int row = 2 * p;
    for (int t = 0; t < tiles; ++t) {
      if (d == 0) {
        for (int k = 0; k < 2; ++k) {
          const tile_planes planes = tile_of(row + k, t);
          pack(at + k * plan.row_pitch, planes.b, planes.g, planes.r);
        }
      } else if (d < 0) {
        for (int k = 0; k < 2; ++k) rgb24_doubled(at + k * 2 * plan.row_pitch, row + k, t);
      } else {
        // A pair's second tile is known by where its pair would begin.
        const int64_t to = h ? at : at - plan.tile_step;
        const tile_planes now = tile_of(row, t);
        if (to % 16 != 0) {
          if (how.quality == 15) held = now;
        } else {
          tile_planes before;
          if (how.quality == 15) {
            before = held;
          } else if (t > 0) {
            before = tile_of(row, t - 1);
          } else if (p > 0) {
            before = tile_of(row - 1, tiles - 1);
          }
          const auto evens = [](const bytes16& first, const bytes16& second) {
            bytes16 picked{};
            for (size_t i = 0; i < 8; ++i) {
              picked[i] = first[2 * i];
              picked[8 + i] = second[2 * i];
            }
            return picked;
          };
          pack(to, evens(before.b, now.b), evens(before.g, now.g), evens(before.r, now.r));
        }
      }
      if (t < tiles - 1) at += plan.tile_step;
    }
    at += plan.row_step;

    const passes run = passes_of(p);
    // The pointer of a mirrored row stands at its last 96 bytes.
    const int64_t row_start = h ? at + 96 - row_bytes : at;
    const auto between = [&](int64_t start_) {
      for (int64_t i = 0; i < row_bytes; ++i)
        out.mean_of(start_ + i, start_ + i - row_bytes, start_ + i + row_bytes);
    };
    if (run.inner) between(row_start - 3 * plan.row_pitch);
    if (run.outer) between(row_start - 5 * plan.row_pitch);
    if (run.last_copy)
      for (int64_t i = 0; i < row_bytes; ++i)
        out.copy(row_start - plan.row_pitch + i, row_start - 2 * plan.row_pitch + i);
  }
}

void walk::rgb32() {
  const tile_walk plan = rgb32_walk(how.plan);
  int64_t at = plan.start;
  const auto pixel = [&](int64_t to, int row, int column) {
    const size_t index = size_t(row) * size_t(f.width) + size_t(column);
    out.store(to, f.b[index]);
    out.store(to + 1, f.g[index]);
    out.store(to + 2, f.r[index]);
    out.store(to + 3, 0);
  };
  for (int p = 0; p < row_pairs; ++p) {
    const int row = 2 * p;
    for (int t = 0; t < tiles; ++t) {
      if (d == 0) {
        for (int k = 0; k < 2; ++k)
          for (int i = 0; i < 16; ++i)
            pixel(at + k * plan.row_pitch + 4 * i, row + k, 16 * t + (h ? 15 - i : i));
      } else if (d < 0) {
        const int64_t rgb24_pitch = rgb24_walk(how.plan).row_pitch;
        for (int k = 0; k < 2; ++k) rgb24_doubled(at + k * 2 * rgb24_pitch, row + k, t);
      } else {
        // Reversed before the even places are taken, so that a mirrored tile shows its odd columns.
        for (int i = 0; i < 8; ++i) pixel(at + 4 * i, row, 16 * t + (h ? 15 - 2 * i : 2 * i));
      }
      if (t < tiles - 1) at += plan.tile_step;
    }
    at += plan.row_step;
  }
}

}  // namespace

void place(const finished& picture, const placing& how, canvas& out) {
  walk w(picture, how, out);
  switch (how.kind) {
    case format::i420:
      w.i420();
      break;
    case format::yuyv:
    case format::uyvy:
      w.packed();
      break;
    case format::rgb24:
      w.rgb24();
      break;
    case format::rgb32:
      w.rgb32();
      break;
  }
}

}  // namespace ref
