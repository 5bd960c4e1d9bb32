#pragma once
// Declares the functions of operator new and delete, as the standard does.

#include <vcruntime.h>

extern "C++" {
#pragma push_macro("new")
#undef new

namespace std {
struct nothrow_t {
  explicit nothrow_t() = default;
};
extern const nothrow_t nothrow;
enum class align_val_t : size_t {};
}  // namespace std

[[nodiscard]] void* operator new(size_t);
[[nodiscard]] void* operator new(size_t, const std::nothrow_t&) noexcept;
[[nodiscard]] void* operator new(size_t, std::align_val_t);
[[nodiscard]] void* operator new(size_t, std::align_val_t, const std::nothrow_t&) noexcept;
[[nodiscard]] void* operator new[](size_t);
[[nodiscard]] void* operator new[](size_t, const std::nothrow_t&) noexcept;
[[nodiscard]] void* operator new[](size_t, std::align_val_t);
[[nodiscard]] void* operator new[](size_t, std::align_val_t, const std::nothrow_t&) noexcept;
void operator delete(void*) noexcept;
void operator delete(void*, size_t) noexcept;
void operator delete(void*, const std::nothrow_t&) noexcept;
void operator delete(void*, std::align_val_t) noexcept;
void operator delete(void*, size_t, std::align_val_t) noexcept;
void operator delete(void*, std::align_val_t, const std::nothrow_t&) noexcept;
void operator delete[](void*) noexcept;
void operator delete[](void*, size_t) noexcept;
void operator delete[](void*, const std::nothrow_t&) noexcept;
void operator delete[](void*, std::align_val_t) noexcept;
void operator delete[](void*, size_t, std::align_val_t) noexcept;
void operator delete[](void*, std::align_val_t, const std::nothrow_t&) noexcept;

[[nodiscard]] inline void* operator new(size_t, void* place) noexcept { return place; }
[[nodiscard]] inline void* operator new[](size_t, void* place) noexcept { return place; }
inline void operator delete(void*, void*) noexcept {}
inline void operator delete[](void*, void*) noexcept {}

#pragma pop_macro("new")
}
