#pragma once
// mingw-w64's, with the overloads of C++, and in their place no macros.

#include_next <math.h>

#ifdef __cplusplus
#undef fpclassify
#undef isfinite
#undef isgreater
#undef isgreaterequal
#undef isinf
#undef isless
#undef islessequal
#undef islessgreater
#undef isnan
#undef isnormal
#undef isunordered
#undef signbit
extern "C++" {
inline long abs(long x) noexcept { return __builtin_labs(x); }
inline long long abs(long long x) noexcept { return __builtin_llabs(x); }
template <typename T>
int fpclassify(T x) noexcept {
  return __builtin_fpclassify(FP_NAN, FP_INFINITE, FP_NORMAL, FP_SUBNORMAL, FP_ZERO, x);
}
#define VESK_OF_ONE(name)       \
  template <typename T>         \
  bool name(T x) noexcept {     \
    return __builtin_##name(x); \
  }
#define VESK_OF_TWO(name)           \
  template <typename T, typename U> \
  bool name(T x, U y) noexcept {    \
    return __builtin_##name(x, y);  \
  }
VESK_OF_ONE(isfinite)
VESK_OF_ONE(isinf)
VESK_OF_ONE(isnan)
VESK_OF_ONE(isnormal)
VESK_OF_ONE(signbit)
VESK_OF_TWO(isgreater)
VESK_OF_TWO(isgreaterequal)
VESK_OF_TWO(isless)
VESK_OF_TWO(islessequal)
VESK_OF_TWO(islessgreater)
VESK_OF_TWO(isunordered)
#undef VESK_OF_ONE
#undef VESK_OF_TWO
}
#endif
