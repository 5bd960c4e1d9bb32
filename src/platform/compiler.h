#pragma once
// The uses of compilers' extensions, each with a form in standard C++ for compilers that lack it.
// VESK_STANDARD_ONLY selects the standard forms, to test them. No other file of the library, except
// those for Linux alone, uses an extension.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__GNUC__) && !defined(_MSC_VER) && !defined(VESK_STANDARD_ONLY)
#define VESK_GNU_EXTENSIONS 1
#else
#define VESK_GNU_EXTENSIONS 0
#endif

#if VESK_GNU_EXTENSIONS && defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace platform {

#if VESK_GNU_EXTENSIONS

// 16 bytes. Operators apply to each byte, and a comparison sets all bits of a byte or none.
using Bytes [[gnu::vector_size(16)]] = unsigned char;
using Truths [[gnu::vector_size(16)]] = signed char;

inline Bytes bytesOf(Truths truths) { return reinterpret_cast<Bytes>(truths); }

#else

// 16 bytes, with the same operators.
template <typename Byte>
class Vector {
 public:
  // Sets each byte to that of `value`.
  static Vector filled(int value) {
    Vector result;
    for (Byte& byte : result.bytes_) byte = static_cast<Byte>(value);
    return result;
  }

  friend Vector operator&(Vector a, Vector b) {
    return a.combined<Byte>(b, [](Byte x, Byte y) { return x & y; });
  }
  friend Vector operator|(Vector a, Vector b) {
    return a.combined<Byte>(b, [](Byte x, Byte y) { return x | y; });
  }
  friend Vector operator&(Vector a, int b) { return a & filled(b); }
  friend Vector operator|(Vector a, int b) { return a | filled(b); }
  friend Vector<signed char> operator==(Vector a, int b) {
    return a.combined<signed char>(filled(b), [](Byte x, Byte y) { return x == y ? -1 : 0; });
  }
  friend Vector<signed char> operator<(Vector a, int b) {
    return a.combined<signed char>(filled(b), [](Byte x, Byte y) { return x < y ? -1 : 0; });
  }

 private:
  template <typename Other>
  friend class Vector;

  // Returns the results of `operation` on each byte and that of `other` at the same place.
  template <typename Result, typename Operation>
  Vector<Result> combined(const Vector& other, Operation operation) const {
    Vector<Result> result;
    for (std::size_t i = 0; i < sizeof(bytes_); ++i) {
      result.bytes_[i] = static_cast<Result>(operation(bytes_[i], other.bytes_[i]));
    }
    return result;
  }

  Byte bytes_[16];
};

using Bytes = Vector<unsigned char>;
using Truths = Vector<signed char>;

inline Bytes bytesOf(Truths truths) { return std::bit_cast<Bytes>(truths); }

#endif

// Returns one bit for each byte, the lowest for the first.
inline std::uint64_t bitsOf(Truths truths) {
#if VESK_GNU_EXTENSIONS && defined(__SSE2__)
  return static_cast<unsigned>(_mm_movemask_epi8(reinterpret_cast<__m128i>(truths)));
#else
  signed char bytes[sizeof(truths)];
  std::memcpy(bytes, &truths, sizeof(bytes));
  std::uint64_t bits = 0;
  for (std::size_t i = 0; i < sizeof(bytes); ++i) bits |= std::uint64_t{bytes[i] != 0} << i;
  return bits;
#endif
}

}  // namespace platform
