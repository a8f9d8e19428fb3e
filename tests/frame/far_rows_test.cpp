// Pictures of more than 2^31 bytes, as black lines make them: no offset is cut to 32 bits on its way.
#include <sys/mman.h>
#include <unistd.h>

#include <string>

#include "support/frame_fixture.h"

namespace {

using namespace engine;

// Zeroes without end, of which only those that are touched take memory, up to a page that cannot be touched.
class sparse {
 public:
  explicit sparse(size_t bytes) {
    const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    size_ = (bytes + page - 1) / page * page;
    void* const all = mmap(nullptr, size_ + page, PROT_READ | PROT_WRITE,
                           MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (all == MAP_FAILED) return;
    first_ = static_cast<uint8_t*>(all);
    mprotect(first_ + size_, page, PROT_NONE);
  }
  sparse(const sparse&) = delete;
  sparse& operator=(const sparse&) = delete;
  ~sparse() {
    if (first_ != nullptr) munmap(first_, size_ + static_cast<size_t>(sysconf(_SC_PAGESIZE)));
  }
  bool is_there() const { return first_ != nullptr; }
  uint8_t* last(size_t bytes) const { return first_ + size_ - bytes; }

 private:
  uint8_t* first_ = nullptr;
  size_t size_ = 0;
};

class far_rows : public at_level {};
ENGINE_LEVELS(far_rows);

// A picture lies at the first rows of its planes, or at the last: there are the same bytes whether a few lines are
// added to it or as many as its pixels can be counted with.
TEST_P(far_rows, lie_at_the_ends_of_their_planes) {
  if (sizeof(size_t) < 8) GTEST_SKIP() << "no memory of that size";
  constexpr size_t kMost = size_t{1} << 31;
  const sparse memory(4 * kMost);
  if (!memory.is_there()) GTEST_SKIP() << "memory is not handed out before it is used";
  constexpr int kWidth = 128, kHeight = 8;
  const bytes in = noise(kWidth * kHeight, 31);
  for (const uint32_t quality : {0u, 2u, 3u, 10u, 13u})
    for (int f = I420; f <= RGB32; ++f)
      for (int d = -1; d <= 1; ++d)
        for (int mirrors = 0; mirrors < 4; ++mirrors) {
          const size_t w = d < 0 ? 2 * kWidth : kWidth >> d, h = d < 0 ? 2 * kHeight : kHeight >> d;
          ppl_set_quality(c, quality);
          ppl_set_h_mirror(c, uint8_t(mirrors & 1));
          ppl_set_v_mirror(c, uint8_t(mirrors >> 1));
          const auto make = [&](size_t rows, uint8_t* to) {
            fenced source(in);
            ppl_new_frame_size(c, kWidth, kHeight, kWidth);
            ppl_set_decimation(c, 0, 0, 0);
            ppl_set_decimation(c, d, static_cast<int32_t>(rows - h), 0);
            EXPECT_EQ(call(f, c, source.data(), to, kWidth, kHeight), 1);
          };
          const size_t few = 2 * h + 16, many = kMost / w - 2;
          const fenced near(frame_bytes(f, w * few), 0);
          make(few, near.data());
          uint8_t* const far = memory.last(frame_bytes(f, w * many));
          make(many, far);
          // Half of a plane that is there with few lines, at either end of it with many.
          const auto compare = [&](size_t near_at, size_t far_at, size_t row) {
            const size_t half = row * few / 2;
            for (const size_t below : {size_t{0}, half}) {
              uint8_t* const part = far + far_at + (below == 0 ? 0 : row * many - half);
              ASSERT_EQ(bytes(part, part + half), near.part(near_at + below, half))
                  << "quality " << quality << " of " << kFormatNames[f] << " at " << d << ", mirrors "
                  << mirrors << (below == 0 ? ", first" : ", last") << " rows of a plane";
              std::fill_n(part, half, uint8_t{0});
            }
          };
          if (f == I420) {
            compare(0, 0, w);
            for (size_t plane = 0; plane < 2; ++plane)
              compare(w * few * (4 + plane) / 4, w * many * (4 + plane) / 4, w / 4);
          } else {
            compare(0, 0, frame_bytes(f, w));
          }
          const bool missing = quality == 13 && f != I420 && f != RGB24;
          EXPECT_EQ(near.all(0), missing);
        }
}

}  // namespace
