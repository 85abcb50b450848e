// SPDX-License-Identifier: Apache-2.0
// Two numbers at once, in a vector register where the processor has one for them.
#pragma once

#include <cstdint>
#include <cstring>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace Veskar {

/// Number of numbers in one `Lanes`.
constexpr int laneCount = 2;

#if defined(__SSE2__) || defined(__aarch64__)

/// Two doubles, with the operators that doubles have.
using Lanes = double __attribute__((vector_size(16)));
/// Two integers, or what a comparison of lanes gives: all bits set where it holds.
using IntLanes = std::int64_t __attribute__((vector_size(16)));

inline Lanes select(IntLanes mask, Lanes a, Lanes b) {
    return mask ? a : b;
}
inline IntLanes select(IntLanes mask, IntLanes a, IntLanes b) {
    return mask ? a : b;
}

#else

// Compilers keep vectors in memory where no register takes them, which costs more than it saves.
template <typename T>
struct TwoOf {
    T values[laneCount];
    T& operator[](int i) { return values[i]; }
    T operator[](int i) const { return values[i]; }
};
using Lanes = TwoOf<double>;
using IntLanes = TwoOf<std::int64_t>;

inline Lanes operator+(Lanes a, Lanes b) {
    return {{a[0] + b[0], a[1] + b[1]}};
}
inline Lanes operator-(Lanes a, Lanes b) {
    return {{a[0] - b[0], a[1] - b[1]}};
}
inline Lanes operator*(Lanes a, Lanes b) {
    return {{a[0] * b[0], a[1] * b[1]}};
}
inline Lanes operator/(Lanes a, Lanes b) {
    return {{a[0] / b[0], a[1] / b[1]}};
}
inline IntLanes operator<(Lanes a, Lanes b) {
    return {{a[0] < b[0] ? -1 : 0, a[1] < b[1] ? -1 : 0}};
}
inline IntLanes operator!=(Lanes a, Lanes b) {
    return {{a[0] != b[0] ? -1 : 0, a[1] != b[1] ? -1 : 0}};
}
inline IntLanes operator|(IntLanes a, IntLanes b) {
    return {{a[0] | b[0], a[1] | b[1]}};
}
inline IntLanes operator&(IntLanes a, IntLanes b) {
    return {{a[0] & b[0], a[1] & b[1]}};
}
inline IntLanes operator<<(IntLanes a, int count) {
    const auto shift = [count](std::int64_t x) {
        return static_cast<std::int64_t>(static_cast<std::uint64_t>(x) << count);
    };
    return {{shift(a[0]), shift(a[1])}};
}
template <typename T>
TwoOf<T> select(IntLanes mask, TwoOf<T> a, TwoOf<T> b) {
    return {{mask[0] != 0 ? a[0] : b[0], mask[1] != 0 ? a[1] : b[1]}};
}

#endif

/// @return lanes that are all equal
inline Lanes lanesOf(double x) {
    return Lanes{x, x};
}
inline IntLanes lanesOf(std::int64_t x) {
    return IntLanes{x, x};
}
/// @param from numbers, at any address
inline Lanes loadLanes(const double* from) {
    Lanes lanes;
    std::memcpy(&lanes, from, sizeof lanes);
    return lanes;
}
inline IntLanes loadLanes(const std::int64_t* from) {
    IntLanes lanes;
    std::memcpy(&lanes, from, sizeof lanes);
    return lanes;
}
inline void storeLanes(double* to, Lanes lanes) {
    std::memcpy(to, &lanes, sizeof lanes);
}
inline void storeLanes(std::int64_t* to, IntLanes lanes) {
    std::memcpy(to, &lanes, sizeof lanes);
}
/// @return the smaller ones; @p b where a number of @p a is NaN
inline Lanes minOf(Lanes a, Lanes b) {
    return select(a < b, a, b);
}
/// @return the larger ones; @p b where a number of @p a is NaN
inline Lanes maxOf(Lanes a, Lanes b) {
    return select(b < a, a, b);
}
/// @return the smallest number
inline double leastOf(Lanes a) {
    return a[0] < a[1] ? a[0] : a[1];
}
/// @return a bit for each lane in which a comparison holds, the first lane's being 1
inline unsigned bitsOf(IntLanes mask) {
#if defined(__SSE2__)
    return static_cast<unsigned>(_mm_movemask_pd(reinterpret_cast<__m128d>(mask)));
#else
    return (mask[0] != 0 ? 1U : 0U) | (mask[1] != 0 ? 2U : 0U);
#endif
}
/// @return whether a comparison holds in some lane
inline bool anyOf(IntLanes mask) {
#if defined(__SSE2__)
    return bitsOf(mask) != 0;
#else
    return (mask[0] | mask[1]) != 0;
#endif
}

}  // namespace Veskar
