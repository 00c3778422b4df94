// Erosion and dilation of bit images, 256 pixels at a time.
//
// Each source row is copied once, byte by byte as it stands, into a line of scratch, and its margins are set beside it.
// A mask position then is a distance in bits: two unaligned loads and two shifts give 256 pixels at that distance.
// Distances are taken such that results lie in their bytes as the destination has them, so rows are stored by copying
// bytes; the bits around the first and the last pixel are kept. Masks whose rows are all alike (rectangles above all)
// are reduced along each line once, and then across lines.
#include "frame/api.h"

#include "kernel/checks.h"
#include "kernel/vec.h"
#include "morph/bit_morph.h"
#include "morph/morph_spec.h"

#include <algorithm>

namespace rvxcv {
namespace {

// ----------------------------------------------------------------------------------------------- single bits

bool bitAt(const std::uint8_t *bytes, std::int64_t k) { return (bytes[k >> 3] >> (k & 7) & 1) != 0; }

void setBit(std::uint8_t *bytes, std::int64_t k, bool value) {
    const auto mask = static_cast<std::uint8_t>(1 << (k & 7));
    bytes[k >> 3] = static_cast<std::uint8_t>(value ? bytes[k >> 3] | mask : bytes[k >> 3] & ~mask);
}

// Bytes of a row whose first pixel is the bit `bit` of the first one.
std::int64_t bytesOf(std::int64_t bit, std::int64_t width) { return (bit + width + 7) >> 3; }

// Copies the pixels of a row that stand in `bytes` as they stand in dst; the other bits of dst are kept.
void storeRow(std::uint8_t *dst, const std::uint8_t *bytes, std::int64_t bit, std::int64_t width) {
    const std::int64_t last = bytesOf(bit, width) - 1;
    const auto merge = [&](std::int64_t at, int mask) {
        dst[at] = static_cast<std::uint8_t>((dst[at] & ~mask) | (bytes[at] & mask));
    };
    const int firstMask = 0xff << bit & 0xff, lastMask = 0xff >> (7 - (bit + width - 1) % 8);
    if (last == 0) {
        merge(0, firstMask & lastMask);
        return;
    }
    merge(0, firstMask);
    std::memcpy(dst + 1, bytes + 1, static_cast<std::size_t>(last - 1));
    merge(last, lastMask);
}

// ------------------------------------------------------------------------------------------------ operations

struct And {
    static constexpr std::uint8_t neutral = 0xff;
    static RVX_INLINE U8x32 of(U8x32 a, U8x32 b) { return bitAnd(a, b); }
};
struct Or {
    static constexpr std::uint8_t neutral = 0;
    static RVX_INLINE U8x32 of(U8x32 a, U8x32 b) { return bitOr(a, b); }
};

// ------------------------------------------------------------------------------------------------ the kernel

template <class Op> class BitFilter {
public:
    BitFilter(const BitTask &task, const MorphSpec &spec) : task_(task), spec_(spec) {
        width_ = task.roi.width;
        // Pixel 0 of a line: at the bit of its byte that it has in the source, behind room for the left margin and for
        // results that begin up to seven bits before it.
        origin_ = roundUp(std::int64_t{spec.anchorX} + 8, 8) + task.src.bit;
        resultBytes_ = roundUp(bytesOf(task.dst.bit, width_), 32);
        lineBytes_ = ((origin_ + std::int64_t{spec.maskWidth}) >> 3) + resultBytes_ + 34;
        alike_ = rowsAlike();
        lines_ = task.scratch;
        // Either a ring of lines, or a ring of reduced lines and one line; and the result.
        const std::int64_t height = spec.maskHeight;
        reduced_ = lines_ + (alike_ ? 1 : height) * lineBytes_;
        result_ = reduced_ + (alike_ ? height : 0) * resultBytes_;
        rowTakesPart_ = result_ + resultBytes_;
        for (std::int64_t j = 0; j < height; ++j) {
            rowTakesPart_[j] = !emptyRow(j);
        }
    }

    void run() {
        const std::int64_t height = spec_.maskHeight;
        std::int64_t next = task_.firstRow - spec_.anchorY; // the first source row not yet in the ring
        const std::int64_t base = next;
        for (std::int64_t y = task_.firstRow; y < task_.lastRow; ++y) {
            for (; next < y - spec_.anchorY + height; ++next) {
                prepare(next, (next - base) % height);
            }
            const std::int64_t slot = (y - task_.firstRow) % height; // of the line under the first mask row
            if (alike_) {
                combineReduced(slot);
            } else {
                combineLines(slot);
            }
            storeRow(task_.dst.row(y), result_, task_.dst.bit, width_);
        }
    }

private:
    const std::uint8_t *maskRow(std::int64_t j) const { return spec_.maskCopy + j * spec_.maskWidth; }
    bool emptyRow(std::int64_t j) const {
        return std::all_of(maskRow(j), maskRow(j + 1), [](std::uint8_t m) { return m == 0; });
    }

    // Whether all rows that are not empty have the same positions; pattern_ is the first of them.
    bool rowsAlike() {
        for (std::int64_t j = 0; j < spec_.maskHeight; ++j) {
            if (emptyRow(j)) {
                continue;
            }
            if (pattern_ < 0) {
                pattern_ = j;
            }
            if (!std::equal(maskRow(j), maskRow(j + 1), maskRow(pattern_),
                            [](std::uint8_t a, std::uint8_t b) { return (a != 0) == (b != 0); })) {
                return false;
            }
        }
        return true;
    }

    void prepare(std::int64_t y, std::int64_t slot) {
        std::uint8_t *line = lines_ + (alike_ ? 0 : slot) * lineBytes_;
        const std::uint8_t *row = task_.src.row(borderRow(task_.border, y, task_.roi.height).index);
        const std::int64_t bit = task_.src.bit;
        std::memcpy(line + (origin_ >> 3), row, static_cast<std::size_t>(bytesOf(bit, width_)));
        const auto copy = [&](std::int64_t x) {
            setBit(line, origin_ + x, bitAt(row, bit + borderColumn(task_.border, x, width_).index));
        };
        for (std::int64_t x = -std::int64_t{spec_.anchorX}; x < 0; ++x) {
            copy(x);
        }
        for (std::int64_t x = width_; x < width_ + spec_.rightExtent; ++x) {
            copy(x);
        }
        if (alike_) {
            combineLine(reduced_ + slot * resultBytes_, line, maskRow(pattern_), true);
        }
    }

    // Across the reduced lines; the ring begins at `slot`.
    void combineReduced(std::int64_t slot) const {
        const std::int64_t height = spec_.maskHeight;
        for (std::int64_t b = 0; b < resultBytes_; b += 32) {
            U8x32 all = splat(Op::neutral);
            for (std::int64_t j = 0, at = slot; j < height; ++j, at = at + 1 == height ? 0 : at + 1) {
                if (rowTakesPart_[j] != 0) {
                    all = Op::of(all, load<U8x32>(reduced_ + at * resultBytes_ + b));
                }
            }
            store(result_ + b, all);
        }
    }

    void combineLines(std::int64_t slot) const {
        bool fresh = true;
        for (std::int64_t j = 0; j < spec_.maskHeight; ++j, slot = slot + 1 == spec_.maskHeight ? 0 : slot + 1) {
            if (rowTakesPart_[j] != 0) {
                combineLine(result_, lines_ + slot * lineBytes_, maskRow(j), fresh);
                fresh = false;
            }
        }
    }

    // All positions of a mask row on one line, some at a time; `fresh` when out holds nothing yet.
    void combineLine(std::uint8_t *out, const std::uint8_t *line, const std::uint8_t *mask, bool fresh) const {
        struct Position {
            const std::uint8_t *from;
            BitShift shift;
        };
        constexpr int atOnce = 8;
        const std::int64_t first = origin_ - task_.dst.bit - spec_.anchorX;
        for (std::int64_t i = 0; i < spec_.maskWidth;) {
            Position positions[atOnce];
            int count = 0;
            for (; i < spec_.maskWidth && count < atOnce; ++i) {
                if (mask[i] != 0) {
                    positions[count++] = {line + ((first + i) >> 3), BitShift(static_cast<int>((first + i) & 7))};
                }
            }
            for (std::int64_t b = 0; count > 0 && b < resultBytes_; b += 32) {
                U8x32 all = fresh ? splat(Op::neutral) : load<U8x32>(out + b);
                for (int k = 0; k < count; ++k) {
                    all = Op::of(all, positions[k].shift.load(positions[k].from + b));
                }
                store(out + b, all);
            }
            fresh = fresh && count == 0;
        }
    }

    const BitTask &task_;
    const MorphSpec &spec_;
    std::int64_t width_, origin_, lineBytes_, resultBytes_, pattern_ = -1;
    bool alike_;
    std::uint8_t *lines_, *reduced_, *result_, *rowTakesPart_;
};

template <class Op> void filterBits(const BitTask &task, MorphSpec spec) {
    static const std::uint8_t one = 1;
    if (spec.shape == MaskEmpty) { // a copy: the mask of one position
        spec.maskCopy = const_cast<std::uint8_t *>(&one);
        spec.maskWidth = spec.maskHeight = 1;
        spec.anchorX = spec.anchorY = spec.rightExtent = spec.bottomExtent = 0;
    }
    BitFilter<Op>(task, spec).run();
}

template <void filter(const BitTask &, const MorphSpec &)>
StatusCode filterBorder(const std::uint8_t *src, std::int32_t srcStep, std::int32_t srcBit, std::uint8_t *dst,
                        std::int32_t dstStep, std::int32_t dstBit, RoiSize roi, BorderKind border,
                        const MorphSpec *spec, std::uint8_t *buffer) {
    Checks checks;
    checks.pointers(src, dst, spec, buffer).require(srcBit >= 0 && dstBit >= 0, StatusBadSize).size(roi);
    checks.steps(bytesOf(0, roi.width), srcStep, dstStep);
    checks.require((border & 15) == BorderReplicate || (border & 15) == BorderInMemory, StatusBadBorder);
    if (checks.failed()) {
        return checks.status();
    }
    MorphSpec fields{};
    std::memcpy(&fields, spec, offsetof(MorphSpec, rectangleWidth)); // a 1u record ends with the shape
    checks.require(roi.width <= fields.roiWidth, StatusBadSize).require(src != dst, StatusInPlaceNotSupported);
    if (checks.failed()) {
        return checks.status();
    }
    filter({{src, srcStep, srcBit}, {dst, dstStep, dstBit}, roi, 0, roi.height, Border(border), buffer}, fields);
    return StatusOk;
}

} // namespace

void erodeBits(const BitTask &task, const MorphSpec &spec) { filterBits<And>(task, spec); }
void dilateBits(const BitTask &task, const MorphSpec &spec) { filterBits<Or>(task, spec); }

void subtractBits(BitPlane<const std::uint8_t> a, BitPlane<const std::uint8_t> b, BitPlane<std::uint8_t> dst,
                  std::int64_t width, std::int64_t rows) {
    // Eight pixels at a time where the destination's bytes are whole; operands are gathered from two bytes each.
    const auto gather = [width](const std::uint8_t *row, std::int64_t bit, std::int64_t x) {
        const std::int64_t first = bit + x, lastByte = (bit + width - 1) >> 3, at = first >> 3;
        const int low = row[std::max<std::int64_t>(at, 0)], high = at + 1 <= lastByte ? row[at + 1] : 0;
        return at < 0 ? low << (8 - (first & 7)) : (low | high << 8) >> (first & 7);
    };
    const bool aligned = a.bit == dst.bit && b.bit == dst.bit;
    for (std::int64_t y = 0; y < rows; ++y) {
        const std::uint8_t *first = a.row(y), *second = b.row(y);
        std::uint8_t *out = dst.row(y);
        for (std::int64_t x = -dst.bit; x < width; x += 8) {
            // Rows that start at the same bit need no gathering: whole words.
            for (; aligned && x >= 0 && x + 64 <= width; x += 64) {
                const std::int64_t at = (x + dst.bit) >> 3;
                std::uint64_t from, less;
                std::memcpy(&from, first + at, sizeof from);
                std::memcpy(&less, second + at, sizeof less);
                from &= ~less;
                std::memcpy(out + at, &from, sizeof from);
            }
            if (x >= width) {
                break;
            }
            int mask = 0xff;
            mask = x < 0 ? mask << -x & 0xff : mask;
            mask = x + 8 > width ? mask & (0xff >> (x + 8 - width)) : mask;
            const int difference = gather(first, a.bit, x) & ~gather(second, b.bit, x);
            std::uint8_t &byte = out[(x + dst.bit) >> 3];
            byte = static_cast<std::uint8_t>((byte & ~mask) | (difference & mask));
        }
    }
}

} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiErodeBorder_1u_C1R(const uint8_t *src, int32_t srcStep, int32_t srcBitOffset, uint8_t *dst,
                                  int32_t dstStep, int32_t dstBitOffset, RoiSize roi, BorderKind border, uint8_t,
                                  const MorphSpec *spec, uint8_t *buffer) {
    return filterBorder<erodeBits>(src, srcStep, srcBitOffset, dst, dstStep, dstBitOffset, roi, border, spec, buffer);
}
StatusCode rvxiDilateBorder_1u_C1R(const uint8_t *src, int32_t srcStep, int32_t srcBitOffset, uint8_t *dst,
                                   int32_t dstStep, int32_t dstBitOffset, RoiSize roi, BorderKind border, uint8_t,
                                   const MorphSpec *spec, uint8_t *buffer) {
    return filterBorder<dilateBits>(src, srcStep, srcBitOffset, dst, dstStep, dstBitOffset, roi, border, spec, buffer);
}
