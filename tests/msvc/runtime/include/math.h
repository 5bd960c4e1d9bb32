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
template <typename T>
bool isfinite(T x) noexcept { return __builtin_isfinite(x); }
template <typename T>
bool isinf(T x) noexcept { return __builtin_isinf(x); }
template <typename T>
bool isnan(T x) noexcept { return __builtin_isnan(x); }
template <typename T>
bool isnormal(T x) noexcept { return __builtin_isnormal(x); }
template <typename T>
bool signbit(T x) noexcept { return __builtin_signbit(x); }
template <typename T, typename U>
bool isgreater(T x, U y) noexcept { return __builtin_isgreater(x, y); }
template <typename T, typename U>
bool isgreaterequal(T x, U y) noexcept { return __builtin_isgreaterequal(x, y); }
template <typename T, typename U>
bool isless(T x, U y) noexcept { return __builtin_isless(x, y); }
template <typename T, typename U>
bool islessequal(T x, U y) noexcept { return __builtin_islessequal(x, y); }
template <typename T, typename U>
bool islessgreater(T x, U y) noexcept { return __builtin_islessgreater(x, y); }
template <typename T, typename U>
bool isunordered(T x, U y) noexcept { return __builtin_isunordered(x, y); }
}
#endif
