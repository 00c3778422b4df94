// Composable argument checks. A family spells its list out once, in the contract's order; the first failing check
// decides the status and later ones change nothing:
//
//     Checks checks;
//     checks.pointers(src, dst).size(roi).steps(rowBytes<T>(roi.width), srcStep, dstStep);
//     checks.multiples(sizeof(T), srcStep, dstStep);
//     if (checks.failed()) {
//         return checks.status();
//     }
//
// All sizes are computed in 64 bits: a width whose row bytes would wrap in 32 bits is a bad step, never a pass.
#pragma once

#include "kernel/base.h"

#include "rvxcv/types.h"

namespace rvxcv {

// Bytes of a row of `elements` elements (pixels times channels), in 64 bits.
template <class T> constexpr std::int64_t rowBytes(std::int64_t elements) {
    return elements * static_cast<std::int64_t>(sizeof(T));
}

class Checks {
public:
    // Any condition with its status; evaluated eagerly, so it must not read through unchecked pointers.
    RVX_INLINE Checks &require(bool holds, StatusCode failure) {
        if (status_ == StatusOk && !holds) {
            status_ = failure;
        }
        return *this;
    }

    template <class... P> RVX_INLINE Checks &pointers(const P *...p) {
        return require((... && (p != nullptr)), StatusNullPointer);
    }

    RVX_INLINE Checks &size(RoiSize roi) { return require(roi.width >= 1 && roi.height >= 1, StatusBadSize); }

    // Every step covers a row.
    template <class... Step> RVX_INLINE Checks &steps(std::int64_t bytes, Step... step) {
        return require((... && (step >= bytes)), StatusBadStep);
    }

    // Every step is a multiple of the element size (a power of two).
    template <class... Step> RVX_INLINE Checks &multiples(std::size_t elementSize, Step... step) {
        return require(((... | step) & static_cast<std::int32_t>(elementSize - 1)) == 0, StatusStepNotMultiple);
    }

    // None of `count` row pointers is null. The array is read only when all earlier checks passed.
    template <class T> RVX_INLINE Checks &rowPointers(T *const *rows, std::int64_t count) {
        for (std::int64_t i = 0; status_ == StatusOk && i < count; ++i) {
            require(rows[i] != nullptr, StatusNullPointer);
        }
        return *this;
    }

    RVX_INLINE bool failed() const { return status_ != StatusOk; }
    RVX_INLINE StatusCode status() const { return status_; }

private:
    StatusCode status_ = StatusOk;
};

// Products and sums of sizes (not negative) that stay at the largest 64-bit number once they do not fit: a size query
// whose formula could exceed 64 bits is refused by storeSize, never wrapped.
template <class... Factor> constexpr std::int64_t saturatedProduct(std::int64_t first, Factor... factors) {
    ((first = __builtin_mul_overflow(first, std::int64_t{factors}, &first) ? INT64_MAX : first), ...);
    return first;
}
template <class... Term> constexpr std::int64_t saturatedSum(std::int64_t first, Term... terms) {
    ((first = __builtin_add_overflow(first, std::int64_t{terms}, &first) ? INT64_MAX : first), ...);
    return first;
}

// The end of a size query: a size that does not fit in int32 is a bad size and nothing is written.
inline StatusCode storeSize(std::int64_t bytes, std::int32_t *size) {
    if (bytes > INT32_MAX) {
        return StatusBadSize;
    }
    *size = static_cast<std::int32_t>(bytes);
    return StatusOk;
}

} // namespace rvxcv
