// The Gaussian filter's way through an image: a strip of source rows through the row stage into a ring of intermediate
// rows, a strip of output rows from the ring through the column stage, and so on, so that rows are combined while they
// are in the cache. A member names the types, the kernels of both stages and their outputs:
//
//     Pixel      of source and destination          Patch    of extended rows in the scratch buffer
//     Ring       of intermediate rows               RowKernel<taps>, RowOutput, ColumnKernel<taps>, ColumnOutput
//
// 16u works in float throughout: its intermediate rows hold whole numbers, and the taps are divided beforehand, which
// changes no result, for the divisor is a power of two.
#pragma once

#include "filter/column_stage.h"
#include "filter/row_stage.h"
#include "kernel/checks.h"
#include "kernel/scratch.h"

#include <bit>

namespace rvxcv {

// ---------------------------------------------------------------------------------------- what becomes of a sum

// Sums of less than 2^23 divided by 2^12. Behind the exponent of 2^23 such a sum is a float, and adding a number of
// which the last place is 2^12 rounds it to nearest even there, into the low bits. 16 bits hold every quotient, so
// there is nothing to clamp; to a byte it is saturated.
template <class D> class ShiftedBy12 {
public:
    static constexpr bool truncatesLast = true;

    explicit ShiftedBy12(std::int32_t) {}

    template <class Rounding, class Span> RVX_INLINE void store(D *dst, const AlternatingSum &sum, Span span) const {
        const I32x8 even = quotient<Rounding>(sum.even), odd = quotient<Rounding>(sum.odd);
        rvxcv::store(dst, interleaveLowHalves(even, odd), span);
    }
    template <class Rounding, class Span> RVX_INLINE void store(D *dst, const InLaneSum &sum, Span span) const {
        const I32x8 low = lowHalves(quotient<Rounding>(sum.low)), high = lowHalves(quotient<Rounding>(sum.high));
        const I16x16 quotients = narrowInLane(low, high);
        if constexpr (sizeof(D) == 1) {
            storeSaturated(dst, quotients, span);
        } else {
            rvxcv::store(dst, quotients, span);
        }
    }

private:
    // In the low half of a lane; the high half is of no meaning.
    template <class Rounding> static RVX_INLINE I32x8 quotient(I32x8 sum) {
        if constexpr (std::is_same_v<Rounding, Truncated>) {
            return shiftRight<12>(sum);
        } else {
            constexpr float one = 1 << 23, magic = one * (1 << 12) * 1.5f - one;
            return asInt(add(asFloat(add(sum, splat(std::bit_cast<std::int32_t>(one)))), splat(magic)));
        }
    }
};

// Quotients of 16u as whole numbers in float, for the next stage, and as they are stored.
struct WholeFloats {
    static constexpr bool truncatesLast = true;

    explicit WholeFloats(std::int32_t) {}

    template <class Rounding, class Span> RVX_INLINE void store(float *dst, const FloatSum &quotient, Span span) const {
        storeUnit(dst, {whole<Rounding>(quotient.first), whole<Rounding>(quotient.second)}, span);
    }

private:
    template <class Rounding> static RVX_INLINE F32x8 whole(F32x8 quotient) {
        return Rounding::whole(min(quotient, splat(65535.0f)));
    }
};
struct Whole16u {
    static constexpr bool truncatesLast = true;

    explicit Whole16u(std::int32_t) {}

    template <class Rounding, class Span>
    RVX_INLINE void store(std::uint16_t *dst, const FloatSum &quotient, Span span) const {
        const I32x8 first = Rounding::convert(quotient.first), second = Rounding::convert(quotient.second);
        rvxcv::store(dst, narrowSaturatedUnsigned(first, second), span);
    }
};

// ------------------------------------------------------------------------------------------------------ members

template <class T, int channels> struct Gaussian;

template <int c> struct Gaussian<std::uint8_t, c> {
    using Ring = std::int16_t;
    using Patch = std::int16_t;
    using Tap = std::int16_t;
    template <int taps> using RowKernel = std::conditional_t<c == 1, PairRow<c, taps>, MirroredRow<c, taps>>;
    template <int taps> using ColumnKernel = MirroredColumn<taps>;
    using RowOutput = ShiftedBy12<std::int16_t>;
    using ColumnOutput = ShiftedBy12<std::uint8_t>;
    static constexpr PixelTypeCode type = PixelType8u;
};

template <int c> struct Gaussian<std::int16_t, c> {
    using Ring = std::int16_t;
    using Patch = std::int16_t;
    using Tap = std::int16_t;
    template <int taps> using RowKernel = PairRow<c, taps>;
    template <int taps> using ColumnKernel = PairColumn<taps>;
    using RowOutput = Divided<std::int16_t>;
    using ColumnOutput = Divided<std::int16_t>;
    static constexpr PixelTypeCode type = PixelType16s;
};

template <int c> struct Gaussian<float, c> {
    using Ring = float;
    using Patch = float;
    using Tap = float;
    template <int taps> using RowKernel = ChainRow<FloatArithmetic, c, taps>;
    template <int taps> using ColumnKernel = ChainColumn<FloatArithmetic, taps>;
    using RowOutput = Undivided;
    using ColumnOutput = Undivided;
    static constexpr PixelTypeCode type = PixelType32f;
};

template <int c> struct Gaussian<std::uint16_t, c> : Gaussian<float, c> {
    using RowOutput = WholeFloats;
    using ColumnOutput = Whole16u;
    static constexpr PixelTypeCode type = PixelType16u;
};

// ------------------------------------------------------------------------------------------------- whole images

template <class T> struct GaussianCall {
    const T *src;
    std::int32_t srcStep;
    T *dst;
    std::int32_t dstStep;
    RoiSize roi;
    const T *borderValue;
};

// Intermediate rows: those of the source rows first..last-1 in turn, and one that stands for rows of the constant.
template <class Ring> class RingRows {
public:
    RingRows(Ring *base, std::int64_t pitch, std::int64_t slots, std::int64_t first)
        : base_(base), pitch_(pitch), slots_(slots), first_(first) {}

    Ring *slot(std::int64_t row) const { return base_ + (row - first_) % slots_ * pitch_; }
    Ring *constant() const { return base_ + slots_ * pitch_; }

private:
    Ring *base_;
    std::int64_t pitch_, slots_, first_;
};

template <class T, int channels, int taps>
void smooth(const GaussianCall<T> &call, const Border &border, const typename Gaussian<T, channels>::Tap *kernel,
            std::int32_t kernelSize, std::int32_t divisor, Scratch &scratch) {
    using Member = Gaussian<T, channels>;
    using Ring = typename Member::Ring;
    using Patch = typename Member::Patch;
    constexpr std::int64_t mostTogether = 4; // output rows of a strip
    const std::int64_t width = call.roi.width, height = call.roi.height, elements = width * channels;
    const std::int64_t reach = kernelSize / 2;
    const Plane<const T> src{call.src, call.srcStep};
    const Plane<T> dst{call.dst, call.dstStep};
    const typename Member::template RowKernel<taps> rowKernel(kernel, kernelSize);
    const typename Member::template ColumnKernel<taps> columnKernel(kernel, kernelSize);
    const typename Member::RowOutput rowOutput(divisor);
    const typename Member::ColumnOutput columnOutput(divisor);

    // The source rows that are read, and whether rows of the constant are needed beside them.
    const std::int64_t first = border.top ? -reach : 0, end = height + (border.bottom ? reach : 0);
    const bool constant = border.kind == BorderConstant && !(border.top && border.bottom);

    const std::int64_t most = std::min(mostTogether, height);
    auto **const rows = scratch.take<Ring *>(kernelSize - 1 + most);
    const std::int64_t capacity = roundUp(width, unit) + kernelSize - 1;
    auto *const patch = scratch.take<Patch>(capacity * channels, 32);
    // Rows are an odd number of vectors apart, so that they do not fall on the same cache sets. The ring takes what the
    // buffer has room for.
    constexpr std::int64_t vector = 32 / sizeof(Ring);
    const std::int64_t pitch = ((elements + vector - 1) / vector | 1) * vector;
    const std::int64_t room = (scratch.left() - 31) / rowBytes<Ring>(pitch) - (constant ? 1 : 0);
    const std::int64_t slots = std::min({kernelSize - 1 + most, end - first, room});
    const std::int64_t together = slots == end - first ? most : slots - (kernelSize - 1);
    const RingRows<Ring> ring(scratch.take<Ring>((slots + (constant ? 1 : 0)) * pitch, 32), pitch, slots, first);
    assert(together >= 1);

    const auto filterSource = [&](Plane<const T> source, std::int64_t count, const Border &sides) {
        const RowTask<T, Ring> task{source,          rows,  {call.roi.width, static_cast<std::int32_t>(count)},
                                    kernelSize,      reach, sides,
                                    call.borderValue};
        filterRows<channels>(task, rowKernel, rowOutput, patch, capacity);
    };

    if (constant) {
        // No row has been filtered yet: the ring lends its first slot as the source.
        auto *const values = reinterpret_cast<T *>(ring.slot(first));
        fillPixels<channels>(values, width, call.borderValue);
        rows[0] = ring.constant();
        filterSource({values, 0}, 1, Border(BorderConstant));
    }
    std::int64_t next = first;
    for (std::int64_t y = 0; y < height; y += together) {
        const std::int64_t count = std::min(together, height - y);
        const std::int64_t last = std::min(y + count + reach, end);
        if (next < last) {
            const Plane<const T> source{src.row(next), src.step};
            const std::int64_t added = last - next;
            for (std::int64_t i = 0; i < added; ++i) {
                rows[i] = ring.slot(next + i);
            }
            filterSource(source, added, border);
            next = last;
        }
        for (std::int64_t i = 0; i < count + kernelSize - 1; ++i) {
            const std::int64_t row = y - reach + i;
            const bool outside = row < first || row >= end;
            rows[i] = outside && constant ? ring.constant() : ring.slot(std::clamp(row, first, end - 1));
        }
        const ColumnTask<Ring, T> task{
            rows, {dst.row(y), dst.step}, {call.roi.width, static_cast<std::int32_t>(count)}};
        filterColumns<channels>(task, columnKernel, columnOutput);
    }
}

} // namespace rvxcv
