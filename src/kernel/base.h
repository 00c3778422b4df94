// What every source of the library starts from: forced inlining that debug builds can switch off, and access to scalars
// at any byte address. Images may stand at addresses that are not multiples of their element size, so a kernel never
// dereferences a typed pointer: it loads and stores through the functions here and in vec.h.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

// Instrumented kernels that are forced inline take minutes to compile: sanitized builds leave it to the compiler.
#if defined(__OPTIMIZE__) && !defined(__SANITIZE_ADDRESS__)
#define RVX_INLINE inline __attribute__((always_inline))
#else
#define RVX_INLINE inline
#endif

namespace rvxcv {

template <class T> RVX_INLINE T loadScalar(const T *p) {
    T value;
    std::memcpy(&value, p, sizeof value);
    return value;
}

template <class T> RVX_INLINE void storeScalar(T *p, T value) { std::memcpy(p, &value, sizeof value); }

// Typed pointer arithmetic in bytes; the result may be misaligned and is only ever passed to loads and stores.
template <class T> RVX_INLINE T *byteOffset(T *p, std::ptrdiff_t bytes) {
    using Byte = std::conditional_t<std::is_const_v<T>, const char, char>;
    return reinterpret_cast<T *>(reinterpret_cast<Byte *>(p) + bytes);
}

// Calls function(n as a constant), for n from 1 to `most`.
template <int most, class Function> inline void withConstant(int n, const Function &function) {
    [&]<int... i>(std::integer_sequence<int, i...>) {
        (void)((i + 1 == n && (function(std::integral_constant<int, i + 1>{}), true)) || ...);
    }
    (std::make_integer_sequence<int, most>{});
}

constexpr std::int64_t roundUp(std::int64_t n, std::int64_t multiple) {
    return (n + multiple - 1) / multiple * multiple;
}

} // namespace rvxcv
