// Bounds of segments, in place from the top to the bottom and from left to right: a pixel is compared with neighbours
// that the loop has not reached.
#include "frame/api.h"

#include "kernel/checks.h"
#include "kernel/plane.h"
#include "kernel/vec.h"

namespace rvxcv {
namespace {

template <class T, bool eight> class Bounds {
public:
    using V = Vec<T>;
    static constexpr int bytes = static_cast<int>(sizeof(T));

    explicit Bounds(T value) : value_(splat(value)) {}

    // The row and the one below, if there is one.
    template <bool isLast> RVX_INLINE void mark(T *row, const T *below, std::int64_t width) const {
        std::int64_t x = 0;
        if (width > V::lanes) {
            block<isLast, true, false>(row, below, Full{});
            for (x = V::lanes; x + V::lanes < width; x += V::lanes) {
                block<isLast, false, false>(row + x, below + x, Full{});
            }
            block<isLast, false, true>(row + x, below + x, Part{static_cast<int>(width - x)});
        } else {
            block<isLast, true, true>(row, below, Part{static_cast<int>(width)});
        }
    }

private:
    // The last block of a row has no pixel behind it: there the lanes' own pixels, which are equal to themselves, stand
    // in for neighbours. So they do before the first block.
    template <bool isLast, bool firstOfRow, bool lastOfRow, class Span>
    RVX_INLINE void block(T *p, const T *below, Span span) const {
        const V here = load<V>(p, span);
        const V right = behind<lastOfRow>(p, here, here, span);
        auto same = equal(right, here);
        if constexpr (!isLast) {
            const V under = load<V>(below, span);
            same = both(same, equal(under, here));
            if constexpr (eight) {
                const V lowerLeft = firstOfRow ? afterFirst(under, here) : load<V>(below - 1, span);
                same =
                    both(same, both(equal(lowerLeft, here), equal(behind<lastOfRow>(below, under, here, span), here)));
            }
        }
        store(p, select(same, here, value_), span);
    }

    // The pixels one on from p; in the lane of the row's last pixel that of `own`.
    template <bool lastOfRow, class Span> static RVX_INLINE V behind(const T *p, V pixels, V own, Span span) {
        if constexpr (!lastOfRow) {
            return load<V>(p + 1, span);
        } else {
            return select(lanesBelow(span.n - 1), shiftedIn<bytes>(pixels, own), own);
        }
    }
    static RVX_INLINE auto lanesBelow(int n) { return maskOfBits<V>((1u << n) - 1); }

    // The pixels one back, and in the first lane the first one of `own`.
    static RVX_INLINE V afterFirst(V pixels, V own) {
        const V moved = shiftedIn<32 - bytes>(own, pixels);
        return select(lanesBelow(1), own, moved);
    }

    template <class M> static RVX_INLINE M both(M a, M b) {
        if constexpr (std::is_same_v<M, Mask32x8>) {
            return rvxcv::both(a, b);
        } else {
            return bitAnd(a, b);
        }
    }

    V value_;
};

template <class T, bool eight> void boundRows(Plane<T> image, RoiSize roi, T value) {
    const Bounds<T, eight> bounds(value);
    for (std::int64_t y = 0; y + 1 < roi.height; ++y) {
        bounds.template mark<false>(image.row(y), image.row(y + 1), roi.width);
    }
    T *const last = image.row(std::int64_t{roi.height} - 1);
    bounds.template mark<true>(last, last, roi.width);
}

template <class T> StatusCode boundSegments(T *srcDst, std::int32_t step, RoiSize roi, T value, NormKind norm) {
    Checks checks;
    checks.pointers(srcDst).size(roi).steps(rowBytes<T>(roi.width), step).multiples(sizeof(T), step);
    checks.require(norm == NormInf || norm == NormL1, StatusBadArgument);
    if (checks.failed()) {
        return checks.status();
    }
    if (norm == NormInf) {
        boundRows<T, true>(Plane{srcDst, step}, roi, value);
    } else {
        boundRows<T, false>(Plane{srcDst, step}, roi, value);
    }
    return StatusOk;
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiBoundSegments_8u_C1IR(uint8_t *srcDst, int32_t srcDstStep, RoiSize roi, uint8_t value, NormKind norm) {
    return boundSegments(srcDst, srcDstStep, roi, value, norm);
}
StatusCode rvxiBoundSegments_16u_C1IR(uint16_t *srcDst, int32_t srcDstStep, RoiSize roi, uint16_t value,
                                      NormKind norm) {
    return boundSegments(srcDst, srcDstStep, roi, value, norm);
}
StatusCode rvxiBoundSegments_32s_C1IR(int32_t *srcDst, int32_t srcDstStep, RoiSize roi, int32_t value, NormKind norm) {
    return boundSegments(srcDst, srcDstStep, roi, value, norm);
}
