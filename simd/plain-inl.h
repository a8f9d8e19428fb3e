// Every operation in plain C++, on the compiler's own vector types, without intrinsics. By itself this is the back-end
// of every processor without a file of its own, and of tools that see through plain code only. A processor's file
// states again what its instructions do in fewer steps; its overloads, for the widths that it has, are preferred to
// these templates. A part of simd/simd-inl.h, which has the conventions.
//
// What x86 leaves to these templates takes no more instructions than intrinsics would, counted at every level: logic,
// sums, differences, products, comparisons, broadcasts, loads, stores and most shuffles within 16 bytes. It states
// again what compilers do not find (saturation, rounded means, high halves of products, packing with a clamp,
// selection by a mask in one step, whatever crosses 16 bytes) or find with copies of registers around it (minima,
// maxima, shifts).
#pragma once

namespace ppl::PPL_LEVEL {

template <int N>
struct vec {
  static constexpr int size = N;
  typename native<N>::type v;
};

// One decision per lane of kBits bits: all ones in the lanes where it holds.
template <int N, int kBits>
struct mask {
  vec<N> v;
};
template <int N>
using mask8 = mask<N, 8>;
template <int N>
using mask16 = mask<N, 16>;

// ---- lanes

template <class T>
PPL_INLINE vec<int{sizeof(T)}> of(T any_lanes) {
  return {(typename native<int{sizeof(T)}>::type)any_lanes};
}
template <int N>
PPL_INLINE typename lanes<N>::u8 u8(vec<N> a) {
  return (typename lanes<N>::u8)a.v;
}
template <int N>
PPL_INLINE typename lanes<N>::s8 s8(vec<N> a) {
  return (typename lanes<N>::s8)a.v;
}
template <int N>
PPL_INLINE typename lanes<N>::u16 u16(vec<N> a) {
  return (typename lanes<N>::u16)a.v;
}
template <int N>
PPL_INLINE typename lanes<N>::s16 s16(vec<N> a) {
  return (typename lanes<N>::s16)a.v;
}
template <int N>
PPL_INLINE typename lanes<N>::u32 u32(vec<N> a) {
  return (typename lanes<N>::u32)a.v;
}
template <int N>
PPL_INLINE typename lanes<N>::s32 s32(vec<N> a) {
  return (typename lanes<N>::s32)a.v;
}
template <int N>
PPL_INLINE typename lanes<N>::u64 u64(vec<N> a) {
  return (typename lanes<N>::u64)a.v;
}

// ---- memory: load() and store() at multiples of the vector's size, loadu() and storeu() anywhere

template <class V>
PPL_INLINE V load(const void* p) {
  return of(*static_cast<const typename lanes<V::size>::aligned*>(p));
}
template <class V>
PPL_INLINE V loadu(const void* p) {
  return of(*static_cast<const typename lanes<V::size>::anywhere*>(p));
}
template <int N>
PPL_INLINE void store(void* p, vec<N> a) {
  *static_cast<typename lanes<N>::aligned*>(p) = u8(a);
}
template <int N>
PPL_INLINE void storeu(void* p, vec<N> a) {
  *static_cast<typename lanes<N>::anywhere*>(p) = u8(a);
}
// The first half of a vector to one place, the second to another.
template <int N>
PPL_INLINE void store_halves(void* first, void* second, vec<N> a) {
  __builtin_memcpy(first, &a, N / 2);
  __builtin_memcpy(second, reinterpret_cast<const char*>(&a) + N / 2, N / 2);
}
// The first half alone.
template <int N>
PPL_INLINE void store_half(void* p, vec<N> a) {
  __builtin_memcpy(p, &a, N / 2);
}
// 16 bytes each from a place of its own: at(0), at(1) ...
template <class At>
PPL_INLINE void load_16s_to(vec<16>& d, At&& at) {
  d = loadu<vec<16>>(at(0));
}
template <class V, class At>
PPL_INLINE V load_16s(At&& at) {
  V d;
  load_16s_to(d, at);
  return d;
}
// The first 16 of every 32 bytes.
template <class V>
PPL_INLINE void load_every_second_16_to(V& d, const uint8_t* p) {
  d = load_16s<V>([=](int i) { return p + 32 * i; });
}
template <class V>
PPL_INLINE V load_every_second_16(const uint8_t* p) {
  V d;
  load_every_second_16_to(d, p);
  return d;
}
// 16 bytes, repeated over the whole vector.
PPL_INLINE void repeat16_to(vec<16>& d, const void* p) {
  d = loadu<vec<16>>(p);
}
template <class V>
PPL_INLINE V repeat16(const void* p) {
  V d;
  repeat16_to(d, p);
  return d;
}
// Eight 16-bit lanes from eight places: at(0) ... at(7).
template <int N, class At>
PPL_INLINE void gather_words_to(vec<N>& d, At&& at) {
  uint16_t words[N / 2];
  for (int i = 0; i < N / 2; ++i) __builtin_memcpy(&words[i], at(i), 2);
  d = loadu<vec<N>>(words);
}
template <class At>
PPL_INLINE vec<16> gather_words(At&& at) {
  vec<16> d;
  gather_words_to(d, at);
  return d;
}

// ---- one value in every lane

template <class V>
PPL_INLINE V zero() {
  return of(typename lanes<V::size>::u8{});
}
template <class V>
PPL_INLINE V set8(int x) {
  return of(typename lanes<V::size>::u8{} + static_cast<uint8_t>(x));
}
template <class V>
PPL_INLINE V set16(int x) {
  return of(typename lanes<V::size>::u16{} + static_cast<uint16_t>(x));
}
template <class V>
PPL_INLINE V set32(int x) {
  return of(typename lanes<V::size>::u32{} + static_cast<uint32_t>(x));
}

// ---- logic

template <int N>
PPL_INLINE vec<N> operator&(vec<N> a, vec<N> b) {
  return {a.v & b.v};
}
template <int N>
PPL_INLINE vec<N> operator|(vec<N> a, vec<N> b) {
  return {a.v | b.v};
}
template <int N>
PPL_INLINE vec<N> operator^(vec<N> a, vec<N> b) {
  return {a.v ^ b.v};
}
// ~a & b
template <int N>
PPL_INLINE vec<N> andnot(vec<N> a, vec<N> b) {
  return {~a.v & b.v};
}

// ---- bytes

template <int N>
PPL_INLINE vec<N> add8(vec<N> a, vec<N> b) {
  return of(u8(a) + u8(b));
}
template <int N>
PPL_INLINE vec<N> sub8(vec<N> a, vec<N> b) {
  return of(u8(a) - u8(b));
}
template <int N>
PPL_INLINE vec<N> min_u8(vec<N> a, vec<N> b) {
  return of(u8(a) < u8(b) ? u8(a) : u8(b));
}
template <int N>
PPL_INLINE vec<N> max_u8(vec<N> a, vec<N> b) {
  return of(u8(a) > u8(b) ? u8(a) : u8(b));
}
template <int N>
PPL_INLINE vec<N> min_s8(vec<N> a, vec<N> b) {
  return of(s8(a) < s8(b) ? s8(a) : s8(b));
}
template <int N>
PPL_INLINE vec<N> max_s8(vec<N> a, vec<N> b) {
  return of(s8(a) > s8(b) ? s8(a) : s8(b));
}
// Saturated: the sums and differences of lanes that leave their range stay at its end.
template <int N>
PPL_INLINE vec<N> adds_u8(vec<N> a, vec<N> b) {
  return add8(min_u8(a, of(~u8(b))), b);
}
template <int N>
PPL_INLINE vec<N> subs_u8(vec<N> a, vec<N> b) {
  return sub8(max_u8(a, b), b);
}
template <int N>
PPL_INLINE vec<N> adds_s8(vec<N> a, vec<N> b) {
  const auto end = (s8(a) >> 7) ^ static_cast<int8_t>(127);  // of a's sign
  const auto sum = s8(add8(a, b));
  return of(((s8(a) ^ sum) & (s8(b) ^ sum)) < 0 ? end : sum);
}
template <int N>
PPL_INLINE vec<N> subs_s8(vec<N> a, vec<N> b) {
  const auto end = (s8(a) >> 7) ^ static_cast<int8_t>(127);
  const auto difference = s8(sub8(a, b));
  return of(((s8(a) ^ s8(b)) & (s8(a) ^ difference)) < 0 ? end : difference);
}
// Means, rounded up and rounded down.
template <int N>
PPL_INLINE vec<N> avg8(vec<N> a, vec<N> b) {
  return of((u8(a) | u8(b)) - ((u8(a) ^ u8(b)) >> 1));
}
template <int N>
PPL_INLINE vec<N> avg_down8(vec<N> a, vec<N> b) {
  return sub8(avg8(a, b), (a ^ b) & set8<vec<N>>(1));
}
template <int N>
PPL_INLINE vec<N> absdiff_u8(vec<N> a, vec<N> b) {
  return subs_u8(a, b) | subs_u8(b, a);
}

// ---- 16-bit and 32-bit lanes

template <int N>
PPL_INLINE vec<N> add16(vec<N> a, vec<N> b) {
  return of(u16(a) + u16(b));
}
template <int N>
PPL_INLINE vec<N> sub16(vec<N> a, vec<N> b) {
  return of(u16(a) - u16(b));
}
template <int N>
PPL_INLINE vec<N> adds_s16(vec<N> a, vec<N> b) {
  const auto end = (s16(a) >> 15) ^ static_cast<int16_t>(32767);
  const auto sum = s16(add16(a, b));
  return of(((s16(a) ^ sum) & (s16(b) ^ sum)) < 0 ? end : sum);
}
template <int N>
PPL_INLINE vec<N> subs_s16(vec<N> a, vec<N> b) {
  const auto end = (s16(a) >> 15) ^ static_cast<int16_t>(32767);
  const auto difference = s16(sub16(a, b));
  return of(((s16(a) ^ s16(b)) & (s16(a) ^ difference)) < 0 ? end : difference);
}
template <int N>
PPL_INLINE vec<N> subs_u16(vec<N> a, vec<N> b) {
  return of((u16(a) > u16(b) ? u16(a) : u16(b)) - u16(b));
}
template <int N>
PPL_INLINE vec<N> min_s16(vec<N> a, vec<N> b) {
  return of(s16(a) < s16(b) ? s16(a) : s16(b));
}
template <int N>
PPL_INLINE vec<N> max_s16(vec<N> a, vec<N> b) {
  return of(s16(a) > s16(b) ? s16(a) : s16(b));
}
template <int N>
PPL_INLINE vec<N> abs16(vec<N> a) {
  return max_s16(a, of(-u16(a)));
}
template <int N>
PPL_INLINE vec<N> mullo16(vec<N> a, vec<N> b) {
  return of(u16(a) * u16(b));
}
// For a factor of mullo16(): hides its value from the compiler where a processor's file says so. gcc turns a
// multiplication by known lanes into shifts and additions, up to five for the one.
template <int N>
PPL_INLINE vec<N> unseen(vec<N> a) {
  return a;
}
template <class V>
PPL_INLINE V factor16(int x) {
  return unseen(set16<V>(x));
}
// a * b >> 16.
template <int N>
PPL_INLINE vec<N> mulhi_s16(vec<N> a, vec<N> b) {
  typename lanes<N>::s16 high;
  for (int i = 0; i < N / 2; ++i) high[i] = static_cast<int16_t>(s16(a)[i] * s16(b)[i] >> 16);
  return of(high);
}
template <int S, int N>
PPL_INLINE vec<N> sra16(vec<N> a) {
  return of(s16(a) >> S);
}
template <int S, int N>
PPL_INLINE vec<N> srl16(vec<N> a) {
  return of(u16(a) >> S);
}
template <int S, int N>
PPL_INLINE vec<N> sll16(vec<N> a) {
  return of(u16(a) << S);
}
template <int N>
PPL_INLINE vec<N> add32(vec<N> a, vec<N> b) {
  return of(u32(a) + u32(b));
}
template <int S, int N>
PPL_INLINE vec<N> srl32(vec<N> a) {
  return of(u32(a) >> S);
}
template <int S, int N>
PPL_INLINE vec<N> sll32(vec<N> a) {
  return of(u32(a) << S);
}

// ---- comparisons and masks

template <int N>
PPL_INLINE mask8<N> eq8(vec<N> a, vec<N> b) {
  return {of(u8(a) == u8(b))};
}
template <int N>
PPL_INLINE mask8<N> le_u8(vec<N> a, vec<N> b) {
  return {of(u8(a) <= u8(b))};
}
template <int N>
PPL_INLINE mask8<N> gt_s8(vec<N> a, vec<N> b) {
  return {of(s8(a) > s8(b))};
}
template <int N>
PPL_INLINE mask16<N> eq16(vec<N> a, vec<N> b) {
  return {of(u16(a) == u16(b))};
}
template <int N>
PPL_INLINE mask16<N> gt_s16(vec<N> a, vec<N> b) {
  return {of(s16(a) > s16(b))};
}
template <int N, int kBits>
PPL_INLINE mask<N, kBits> operator&(mask<N, kBits> a, mask<N, kBits> b) {
  return {a.v & b.v};
}
template <int N, int kBits>
PPL_INLINE mask<N, kBits> operator|(mask<N, kBits> a, mask<N, kBits> b) {
  return {a.v | b.v};
}
template <int N, int kBits>
PPL_INLINE vec<N> select(mask<N, kBits> m, vec<N> a, vec<N> b) {
  return {(m.v.v & a.v) | (~m.v.v & b.v)};
}
// a in the bytes whose top bit is set in m, else b.
template <int N>
PPL_INLINE vec<N> select_by_top_bit(vec<N> m, vec<N> a, vec<N> b) {
  return select(gt_s8(zero<vec<N>>(), m), a, b);
}
// a where the mask holds, 0 elsewhere
template <int N, int kBits>
PPL_INLINE vec<N> keep(mask<N, kBits> m, vec<N> a) {
  return m.v & a;
}
// The mask as a vector, and back.
template <int N, int kBits>
PPL_INLINE vec<N> to_vec(mask<N, kBits> m) {
  return m.v;
}
template <int N>
PPL_INLINE mask8<N> to_mask8(vec<N> a) {
  return {a};
}
template <int N>
PPL_INLINE mask16<N> to_mask16(vec<N> a) {
  return {a};
}
// Whether any bit is set.
template <int N>
PPL_INLINE bool any(vec<N> a) {
  uint64_t bits = 0;
  for (int i = 0; i < N / 8; ++i) bits |= u64(a)[i];
  return bits != 0;
}

// ---- even and odd bytes

// Even bytes from a, odd bytes from b.
template <int N>
PPL_INLINE vec<N> even_odd(vec<N> a, vec<N> b) {
  const vec<N> low = set16<vec<N>>(0x00ff);
  return (low & a) | andnot(low, b);
}
// Even and odd bytes as unsigned 16-bit lanes.
template <int N>
PPL_INLINE vec<N> even(vec<N> a) {
  return a & set16<vec<N>>(0x00ff);
}
template <int N>
PPL_INLINE vec<N> odd(vec<N> a) {
  return srl16<8>(a);
}
// The means of the even (odd) bytes of a and b, rounded down, as 16-bit lanes.
template <int N>
PPL_INLINE vec<N> even_mean_down(vec<N> a, vec<N> b) {
  return srl16<1>(add16(even(a), even(b)));
}
template <int N>
PPL_INLINE vec<N> odd_mean_down(vec<N> a, vec<N> b) {
  return srl16<1>(add16(odd(a), odd(b)));
}
template <int N>
PPL_INLINE vec<N> even_minus_odd(vec<N> a) {
  return sub16(even(a), odd(a));
}
template <int N>
PPL_INLINE vec<N> swap_bytes(vec<N> a) {
  return sll16<8>(a) | srl16<8>(a);
}
// The even (odd) byte of each pair, twice.
template <int N>
PPL_INLINE vec<N> twice_even(vec<N> a) {
  return even(a) | sll16<8>(a);
}
template <int N>
PPL_INLINE vec<N> twice_odd(vec<N> a) {
  return even_odd(odd(a), a);
}
// Signed 16-bit lanes clamped to 0..255.
template <int N>
PPL_INLINE vec<N> clamp_u8_16(vec<N> a) {
  return min_s16(max_s16(a, zero<vec<N>>()), set16<vec<N>>(255));
}
// Lanes already within 0..255, joined to bytes: e at even places, o at odd ones.
template <int N>
PPL_INLINE vec<N> join8(vec<N> e, vec<N> o) {
  return e | sll16<8>(o);
}
// Signed lanes, clamped to 0..255 and joined likewise; and such lanes >> S.
template <int N>
PPL_INLINE vec<N> join_clamp8(vec<N> e, vec<N> o) {
  return join8(clamp_u8_16(e), clamp_u8_16(o));
}
template <int S, int N>
PPL_INLINE vec<N> join_shifted8(vec<N> e, vec<N> o) {
  return join_clamp8(sra16<S>(e), sra16<S>(o));
}
// The high bytes of e's and of o's lanes, joined likewise.
template <int N>
PPL_INLINE vec<N> join_high8(vec<N> e, vec<N> o) {
  return odd(e) | andnot(set16<vec<N>>(0x00ff), o);
}
// kEven times the even byte and kOdd times the odd one, added.
template <int kEven, int kOdd, int N>
PPL_INLINE vec<N> weigh_bytes(vec<N> a) {
  const vec<N> of_even = mullo16(even(a), factor16<vec<N>>(kEven));
  return kOdd == 0 ? of_even : add16(of_even, mullo16(odd(a), factor16<vec<N>>(kOdd)));
}

// ---- shuffles

template <int... I>
struct sequence {};
#if defined(__clang__)
template <class T, T... I>
struct sequence_of {
  using type = sequence<I...>;
};
template <int N>
using count_to = typename __make_integer_seq<sequence_of, int, N>::type;
#else
template <int N>
using count_to = sequence<__integer_pack(N)...>;
#endif

// Lane i of the result is lane order(i) of those of a, then of b.
template <class T, class Order, int... I>
PPL_INLINE T picked(T a, T b, Order, sequence<I...>) {
  return __builtin_shufflevector(a, b, Order{}(I)...);
}
template <int N, class Order>
PPL_INLINE vec<N> pick8(vec<N> a, vec<N> b, Order order) {
  return of(picked(u8(a), u8(b), order, count_to<N>()));
}
template <int N, class Order>
PPL_INLINE vec<N> pick16(vec<N> a, vec<N> b, Order order) {
  return of(picked(u16(a), u16(b), order, count_to<N / 2>()));
}
template <int N, class Order>
PPL_INLINE vec<N> pick32(vec<N> a, vec<N> b, Order order) {
  return of(picked(u32(a), u32(b), order, count_to<N / 4>()));
}
// The same within each 16 bytes: an order of their lanes in a, then in b.
template <int N, int kLanes, class Order>
struct each_16 {
  constexpr int operator()(int i) const {
    const int at = Order{}(i % kLanes), from = i / kLanes * kLanes;
    return at < kLanes ? from + at : kLanes * N / 16 + from + at - kLanes;
  }
};
template <int N, class Order>
PPL_INLINE vec<N> pick8_in_16s(vec<N> a, vec<N> b, Order) {
  return pick8(a, b, each_16<N, 16, Order>());
}
template <int N, class Order>
PPL_INLINE vec<N> pick16_in_16s(vec<N> a, vec<N> b, Order) {
  return pick16(a, b, each_16<N, 8, Order>());
}
template <int N, class Order>
PPL_INLINE vec<N> pick32_in_16s(vec<N> a, vec<N> b, Order) {
  return pick32(a, b, each_16<N, 4, Order>());
}
// Lanes by number: of a from 0 on, of b from 4 on.
template <int I0, int I1, int I2, int I3>
PPL_INLINE vec<16> pick32(vec<16> a, vec<16> b) {
  return of(__builtin_shufflevector(u32(a), u32(b), I0, I1, I2, I3));
}

// Within each 16 bytes: lanes of a and b in turn, from their lower (upper) halves.
template <int N>
PPL_INLINE vec<N> lower8(vec<N> a, vec<N> b) {
  return pick8_in_16s(a, b, [](int i) { return i / 2 + i % 2 * 16; });
}
template <int N>
PPL_INLINE vec<N> upper8(vec<N> a, vec<N> b) {
  return pick8_in_16s(a, b, [](int i) { return 8 + i / 2 + i % 2 * 16; });
}
template <int N>
PPL_INLINE vec<N> lower16(vec<N> a, vec<N> b) {
  return pick16_in_16s(a, b, [](int i) { return i / 2 + i % 2 * 8; });
}
template <int N>
PPL_INLINE vec<N> upper16(vec<N> a, vec<N> b) {
  return pick16_in_16s(a, b, [](int i) { return 4 + i / 2 + i % 2 * 8; });
}
template <int N>
PPL_INLINE vec<N> lower32(vec<N> a, vec<N> b) {
  return pick32_in_16s(a, b, [](int i) { return i / 2 + i % 2 * 4; });
}
template <int N>
PPL_INLINE vec<N> upper32(vec<N> a, vec<N> b) {
  return pick32_in_16s(a, b, [](int i) { return 2 + i / 2 + i % 2 * 4; });
}
template <int N>
PPL_INLINE vec<N> upper64(vec<N> a, vec<N> b) {
  return pick32_in_16s(a, b, [](int i) { return 2 + i % 2 + i / 2 * 4; });
}
// The even 32-bit lanes of a, then those of b; the lower (upper) 16 bits of the 32-bit lanes of a, then those of b.
template <int N>
PPL_INLINE vec<N> even32_in_16s(vec<N> a, vec<N> b) {
  return pick32_in_16s(a, b, [](int i) { return 2 * i; });
}
template <int N>
PPL_INLINE vec<N> lower_words(vec<N> a, vec<N> b) {
  return pick16_in_16s(a, b, [](int i) { return 2 * i; });
}
template <int N>
PPL_INLINE vec<N> upper_words(vec<N> a, vec<N> b) {
  return pick16_in_16s(a, b, [](int i) { return 2 * i + 1; });
}
// The halves exchanged, and the halves of each half.
template <int N>
PPL_INLINE vec<N> swap_halves(vec<N> a) {
  return pick32_in_16s(a, a, [](int i) { return i ^ 2; });
}
// The even bytes, then the odd ones.
template <int N>
PPL_INLINE vec<N> even_then_odd(vec<N> a) {
  return pick8_in_16s(a, a, [](int i) { return i < 8 ? 2 * i : 2 * i - 15; });
}
// Bytes by number; where the top bit of `at` is set, 0.
template <int N>
PPL_INLINE vec<N> shuffle8(vec<N> a, vec<N> at) {
  typename lanes<N>::u8 d;
  for (int i = 0; i < N; ++i) d[i] = u8(at)[i] > 127 ? uint8_t{0} : u8(a)[(i & ~15) + (u8(at)[i] & 15)];
  return of(d);
}

// Across 16 bytes. in_order(): of eight bytes of one kind, eight of another, and so on, those of the first kind, then
// the others. halves_in_order(): of the run of 16 bytes of lo, 16 of hi, and so on, the first and the second half.
template <int N>
PPL_INLINE vec<N> in_order(vec<N> a) {
  return pick32(a, a, [](int i) { return (i * 2 & ~3) % (N / 4) + i % 2 + (i >= N / 8 ? 2 : 0); });
}
template <int N>
PPL_INLINE void halves_in_order(vec<N> lo, vec<N> hi, vec<N>& first, vec<N>& second) {
  const auto lane = [](int i) { return i / 8 * 4 + i % 4 + (i & 4 ? N / 4 : 0); };
  first = pick32(lo, hi, lane);
  second = pick32(lo, hi, [](int i) { return decltype(lane){}(i + N / 4); });
}
// a0 b0 a1 b1 ... by bytes, 16-bit and 32-bit lanes: the first and the second half of the interleaved run.
template <int N>
PPL_INLINE void interleave8(vec<N> a, vec<N> b, vec<N>& first, vec<N>& second) {
  halves_in_order(lower8(a, b), upper8(a, b), first, second);
}
template <int N>
PPL_INLINE void interleave16(vec<N> a, vec<N> b, vec<N>& first, vec<N>& second) {
  halves_in_order(lower16(a, b), upper16(a, b), first, second);
}
template <int N>
PPL_INLINE void interleave32(vec<N> a, vec<N> b, vec<N>& first, vec<N>& second) {
  halves_in_order(lower32(a, b), upper32(a, b), first, second);
}
// The even (odd) 32-bit lanes of a, then those of b.
template <int N>
PPL_INLINE vec<N> even32(vec<N> a, vec<N> b) {
  return pick32(a, b, [](int i) { return 2 * i; });
}
template <int N>
PPL_INLINE vec<N> odd32(vec<N> a, vec<N> b) {
  return pick32(a, b, [](int i) { return 2 * i + 1; });
}
template <int N>
PPL_INLINE vec<N> reverse8(vec<N> a) {
  return pick8(a, a, [](int i) { return N - 1 - i; });
}
template <int N>
PPL_INLINE vec<N> reverse16(vec<N> a) {
  return pick16(a, a, [](int i) { return N / 2 - 1 - i; });
}
// The bytes or 16-bit lanes of a run, moved up by one: the first comes from the end of `before`. Moved down: the last
// comes from the start of `after`.
template <int N>
PPL_INLINE vec<N> move_up8(vec<N> before, vec<N> a) {
  return pick8(before, a, [](int i) { return i + N - 1; });
}
template <int N>
PPL_INLINE vec<N> move_up16(vec<N> before, vec<N> a) {
  return pick8(before, a, [](int i) { return i + N - 2; });
}
template <int N>
PPL_INLINE vec<N> move_down16(vec<N> a, vec<N> after) {
  return pick8(a, after, [](int i) { return i + 2; });
}

// ---- widening and narrowing

// Bytes as 16-bit lanes in two vectors, in an order that differs with the width and that narrow() undoes.
template <int N>
PPL_INLINE void widen(vec<N> a, vec<N>& lo, vec<N>& hi) {
  lo = lower8(a, zero<vec<N>>());
  hi = upper8(a, zero<vec<N>>());
}
// Byte pairs a0 b0 a1 b1 ... as 16-bit lanes, in that order.
template <int N>
PPL_INLINE void widen_pairs(vec<N> a, vec<N> b, vec<N>& lo, vec<N>& hi) {
  lo = lower8(a, b);
  hi = upper8(a, b);
}
// kTimes (1, 2, 4) the sums of the bytes of a and b, in that order.
template <int kTimes, int N>
PPL_INLINE void widen_sum(vec<N> a, vec<N> b, vec<N>& lo, vec<N>& hi) {
  vec<N> a_lo, a_hi, b_lo, b_hi;
  widen(a, a_lo, a_hi);
  widen(b, b_lo, b_hi);
  lo = sll16<kTimes / 2>(add16(a_lo, b_lo));
  hi = sll16<kTimes / 2>(add16(a_hi, b_hi));
}
// Signed lanes clamped to 0..255; to -128..127.
template <int N>
PPL_INLINE vec<N> narrow(vec<N> lo, vec<N> hi) {
  return pick8_in_16s(clamp_u8_16(lo), clamp_u8_16(hi), [](int i) { return 2 * i; });
}
template <int N>
PPL_INLINE vec<N> narrow_s8(vec<N> lo, vec<N> hi) {
  const auto clamp = [](vec<N> a) { return max_s16(min_s16(a, set16<vec<N>>(127)), set16<vec<N>>(-128)); };
  return pick8_in_16s(clamp(lo), clamp(hi), [](int i) { return 2 * i; });
}
// Signed 16-bit lanes of lo, then of hi, clamped to 0..255 and to -128..127, in memory order.
template <int N>
PPL_INLINE vec<N> pack_u8(vec<N> lo, vec<N> hi) {
  return in_order(narrow(lo, hi));
}
template <int N>
PPL_INLINE vec<N> pack_s8(vec<N> lo, vec<N> hi) {
  return in_order(narrow_s8(lo, hi));
}
// The even (odd) bytes of a, then those of b, in memory order.
template <int N>
PPL_INLINE vec<N> even_bytes(vec<N> a, vec<N> b) {
  return pack_u8(even(a), even(b));
}
template <int N>
PPL_INLINE vec<N> odd_bytes(vec<N> a, vec<N> b) {
  return pack_u8(odd(a), odd(b));
}
// Within each 16 bytes, in 32-bit lanes: the sums of the lower and of the upper eight bytes of a, then those of b.
template <int N>
PPL_INLINE vec<N> sum_eights(vec<N> a, vec<N> b) {
  typename lanes<N>::u32 sums{};
  for (int i = 0; i < N; ++i) {
    const int lane = i / 16 * 4 + i % 16 / 8;
    sums[lane] += u8(a)[i];
    sums[lane + 2] += u8(b)[i];
  }
  return of(sums);
}

// ---- products of bytes

// Bytes times signed 16-bit factors with 13 fraction bits, clamped to 0..255. Both from anywhere in memory.
template <class V>
PPL_INLINE void times_factors_to(V& d, const uint8_t* bytes, const uint16_t* factors) {
  // (x << 3) * f >> 16 is x * f >> 13: x << 3 stays below 2041, so the signed high product is exact.
  V lo, hi;
  widen(loadu<V>(bytes), lo, hi);
  const auto every_second_16 = [&](int from) {
    return load_16s<V>([=](int i) { return reinterpret_cast<const uint8_t*>(factors + from + 16 * i); });
  };
  d = narrow(mulhi_s16(every_second_16(0), sll16<3>(lo)), mulhi_s16(every_second_16(8), sll16<3>(hi)));
}
template <class V>
PPL_INLINE V times_factors(const uint8_t* bytes, const uint16_t* factors) {
  V d;
  times_factors_to(d, bytes, factors);
  return d;
}
// Bytes of u, unsigned, times bytes of s, signed; the sums of two neighbours, saturated, as 16-bit lanes.
template <int N>
PPL_INLINE vec<N> madd8(vec<N> u, vec<N> s) {
  return adds_s16(mullo16(even(u), sra16<8>(sll16<8>(s))), mullo16(odd(u), sra16<8>(s)));
}
// (a * wa + b * wb + 128) >> 8 of byte pairs (a, b), as 16-bit lanes; the weights likewise, none of them 0, wa + wb
// 256.
template <int N>
PPL_INLINE vec<N> blend_pairs(vec<N> pairs, vec<N> weights) {
  const vec<N> a = mullo16(even(pairs), even(weights)), b = mullo16(odd(pairs), odd(weights));
  return srl16<8>(add16(add16(a, b), set16<vec<N>>(128)));
}
// (a * (256 - f) + b * f + 128) >> 8 of bytes, f from 1 to 255. As a + ((b - a) * f + 128 >> 8) in bytes that wrap: the
// bits 8 to 15 of the product are right, whatever is lost above them.
template <int N>
PPL_INLINE vec<N> blend8(vec<N> a, vec<N> b, int f) {
  const vec<N> half = set16<vec<N>>(128), weight = set16<vec<N>>(f);
  const vec<N> e = add16(mullo16(sub16(even(b), even(a)), weight), half);
  const vec<N> o = add16(mullo16(sub16(odd(b), odd(a)), weight), half);
  return add8(a, join_high8(e, o));
}

}  // namespace ppl::PPL_LEVEL
