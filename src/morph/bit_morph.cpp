// Erosion and dilation of bit images, 256 pixels at a time. A solid rectangle goes the way of the rank filters: rows
// are combined down the columns first, whole bytes straight from the source, into lines of scratch; the lines get
// margins; then each line is combined along itself, doubling the reach until a few distances in bits make up the
// rectangle's width. For any other mask the lines are the source rows with margins, and a set position is a line and a
// distance.
//
// A distance in bits is two unaligned loads and two shifts. Distances are taken such that results lie in their bytes as
// the destination has them: they are stored where they belong, and the bits around the first and the last pixel of a
// row are put back.
#include "frame/api.h"

#include "kernel/checks.h"
#include "kernel/rows.h"
#include "kernel/scratch.h"
#include "kernel/vec.h"
#include "morph/bit_morph.h"
#include "morph/column_extrema.h"
#include "morph/morph_spec.h"
#include "morph/window.h"

#include <algorithm>
#include <cassert>
#include <span>

namespace rvxcv {
namespace {

// Bytes of a row whose first pixel is the bit `bit` of the first one.
std::int64_t bytesOf(std::int64_t bit, std::int64_t width) { return (bit + width + 7) >> 3; }

// The bits of a row's first and last byte that do not belong to it.
class KeptBits {
public:
    struct Bits {
        int first, last;
    };

    KeptBits(std::int64_t bit, std::int64_t width)
        : last_(bytesOf(bit, width) - 1), mask_{0xff & ~(0xff << bit),
                                                0xff & ~(0xff >> (7 - ((bit + width - 1) & 7)))} {}

    RVX_INLINE Bits read(const std::uint8_t *row) const { return {row[0] & mask_.first, row[last_] & mask_.last}; }
    RVX_INLINE void write(std::uint8_t *row, Bits bits) const {
        row[0] = static_cast<std::uint8_t>((row[0] & ~mask_.first) | bits.first);
        row[last_] = static_cast<std::uint8_t>((row[last_] & ~mask_.last) | bits.last);
    }

private:
    std::int64_t last_;
    Bits mask_;
};

// A row's bits as they lie in a row that begins at another bit of its first byte.
class RowOfBits {
public:
    RowOfBits(std::int64_t bit, std::int64_t newBit, std::int64_t width)
        : skipped_((bit - newBit) >> 3), bits_(static_cast<int>((bit - newBit) & 7)), shift_(bits_),
          end_(bytesOf(bit, width)) {}

    // 256 bits from byte x on; where they reach over an end of the row, its bytes alone are read.
    template <class Span> RVX_INLINE U8x32 load(const std::uint8_t *row, std::int64_t x, Span span) const {
        if (bits_ == 0) {
            return rvxcv::load<U8x32>(row + x, span);
        }
        const std::int64_t from = x + skipped_;
        if (from >= 0 && from + U8x32::lanes + 1 <= end_) {
            return shift_.load(row + from);
        }
        std::uint8_t copy[U8x32::lanes + 1] = {};
        const std::int64_t before = from < 0 ? 1 : 0, end = std::min<std::int64_t>(from + U8x32::lanes + 1, end_);
        std::copy(row + from + before, row + end, copy + before);
        return shift_.load(copy);
    }

private:
    std::int64_t skipped_; // bytes: none, or one that lies before the row
    int bits_;
    BitShift shift_;
    std::int64_t end_;
};

struct And {
    static RVX_INLINE U8x32 of(U8x32 a, U8x32 b) { return bitAnd(a, b); }
};
struct Or {
    static RVX_INLINE U8x32 of(U8x32 a, U8x32 b) { return bitOr(a, b); }
};

// --------------------------------------------------------------------------------------------- along the lines

// 256 pixels at a distance from a line's first byte.
struct Distance {
    std::int64_t bytes = 0;
    BitShift shift;

    Distance() = default;
    explicit Distance(std::int64_t bits) : bytes(bits >> 3), shift(static_cast<int>(bits & 7)) {}
};

// dst = the pixels at some distances, combined; `proceed` from what dst holds. Reads whole vectors and a byte behind.
template <class Op, int count> struct CombineDistances {
    Distance distances[count];
    const std::uint8_t *line;
    std::uint8_t *dst;
    bool proceed;

    template <int vectors, class Span> RVX_INLINE void run(std::int64_t x, Span span) const {
        for (int v = 0; v < vectors; ++v, x += U8x32::lanes) {
            U8x32 all = distances[0].shift.load(line + distances[0].bytes + x);
            for (int k = 1; k < count; ++k) {
                all = Op::of(all, distances[k].shift.load(line + distances[k].bytes + x));
            }
            store(dst + x, proceed ? Op::of(all, load<U8x32>(dst + x, span)) : all, span);
        }
    }
};

constexpr int mostDistances = 6;

// ------------------------------------------------------------------------------------------------------- lines

// Rows in scratch with margins: of every row the pixels left .. width - 1 + right, counted from the region's first one.
// A line keeps the bytes of its source row as they stand.
class Lines {
public:
    Lines(const BitTask &task, std::int64_t left, std::int64_t right, std::uint8_t *memory)
        : task_(task), interval_(task.border, task.roi.width, left, task.roi.width - 1 + right),
          source_(task.src.at(interval_.from, 0)), memory_(memory) {
        pixels_ = 8 * roundUp((interval_.before + 14) / 8, marginStep) + source_.bit;
        firstResult_ = pixels_ - interval_.before - task.dst.bit;
        behind_ = pixels_ + interval_.columns;
        lineBytes_ = ((behind_ + interval_.behind) >> 3) + 1 + marginStep;
    }

    // How many lines fit, each with a pointer to its row and `pointers` more.
    std::int64_t fitting(std::int64_t bytes, std::int64_t pointers) const {
        constexpr auto pointerBytes = static_cast<std::int64_t>(sizeof(void *));
        return (bytes - slack - pointerBytes * (pointers + 1)) / (lineBytes_ + pointerBytes);
    }

    std::int64_t lineBytes() const { return lineBytes_; }
    // The distance of the first pixel that the first result takes part of; results lie as in dst.
    std::int64_t firstResult() const { return firstResult_; }

    // Where a source row's bytes go, and how many they are.
    const std::uint8_t *sourceRow(std::int64_t y) const {
        return source_.row(borderRow(task_.border, y, task_.roi.height).index);
    }
    void sourceRows(const std::uint8_t **rows, std::int64_t first, std::int64_t count) const {
        collectRows(rows, {source_.base, source_.step}, task_.border, task_.roi.height, first, count);
    }
    std::uint8_t *row(std::int64_t line) const { return memory_ + line * lineBytes_ + (pixels_ >> 3); }
    std::int64_t rowBytes() const { return bytesOf(source_.bit, interval_.columns); }

    // Repeats the first and the last pixel of a line; lines in ascending order, for one may touch the next one's
    // margin.
    void setMargins(std::int64_t line) const {
        std::uint8_t *const bytes = memory_ + line * lineBytes_;
        std::uint8_t *byte = bytes + (pixels_ >> 3);
        std::int64_t bit = pixels_ & 7;
        int keep = 0xff << bit;
        std::uint64_t value = repeated(*byte, bit);
        *byte = static_cast<std::uint8_t>((*byte & keep) | (value & static_cast<std::uint64_t>(~keep)));
        for (std::int64_t done = 0; done < interval_.before; done += 8 * marginStep) {
            byte -= marginStep;
            std::memcpy(byte, &value, sizeof value);
        }
        byte = bytes + ((behind_ - 1) >> 3);
        bit = (behind_ - 1) & 7;
        keep = 0xff >> (7 - bit);
        value = repeated(*byte, bit);
        *byte = static_cast<std::uint8_t>((*byte & keep) | (value & static_cast<std::uint64_t>(~keep)));
        for (std::int64_t done = 0; done < interval_.behind; done += 8 * marginStep) {
            std::memcpy(byte + 1, &value, sizeof value);
            byte += marginStep;
        }
    }

    // Combines `reach` neighbouring pixels at a time into extrema of four times the reach, in place, all lines as one.
    template <class Op> void widen(std::int64_t lines, std::int64_t reach) const {
        const std::int64_t n = lines * lineBytes_ - 3 * reach / 8;
        const CombineDistances<Op, 4> combine{
            {Distance(0), Distance(reach), Distance(2 * reach), Distance(3 * reach)}, memory_, memory_, false};
        for (std::int64_t x = 0; x < n; x += U8x32::lanes) {
            combine.template run<1>(x, Full{});
        }
    }

    // Results to dst rows y0 .. from the lines that begin `distances` from each other's first bytes.
    template <class Op>
    void combine(std::span<const Distance> distances, std::int64_t y0, std::int64_t y1, bool proceed) const {
        const std::int64_t bit = task_.dst.bit, n = bytesOf(bit, task_.roi.width);
        const KeptBits kept(bit, task_.roi.width);
        withConstant<mostDistances>(static_cast<int>(distances.size()),
                                    [&]<int count>(std::integral_constant<int, count>) {
                                        CombineDistances<Op, count> row{{}, memory_, nullptr, proceed};
                                        std::copy_n(distances.begin(), count, row.distances);
                                        for (std::int64_t y = y0; y < y1; ++y, row.line += lineBytes_) {
                                            row.dst = task_.dst.row(y);
                                            const KeptBits::Bits old = kept.read(row.dst);
                                            sweep<U8x32::lanes, 2>(n, row);
                                            kept.write(row.dst, old);
                                        }
                                    });
    }

private:
    static constexpr std::int64_t marginStep = 8; // bytes
    static constexpr std::int64_t slack = 40;     // behind the lines, for whole vectors

    // Bit `bit` of a byte, 64 times.
    static std::uint64_t repeated(std::uint8_t byte, std::int64_t bit) {
        return ~std::uint64_t{0} * (byte >> bit & 1u);
    }

    const BitTask &task_;
    Interval interval_;
    BitPlane<const std::uint8_t> source_;
    std::uint8_t *memory_;
    // In bits from a line's first one: the first pixel from the source, the first result, the end of those pixels.
    std::int64_t pixels_, firstResult_, behind_;
    std::int64_t lineBytes_;
};

// Output rows at once: as many as lines of a few kilobytes serve, or twice the mask's height.
std::int64_t rowsAtOnce(const BitTask &task, std::int64_t fitting, std::int64_t lineBytes, std::int64_t height) {
    assert(fitting >= 1);
    constexpr std::int64_t blockBytes = 8 * 1024;
    const std::int64_t wanted = std::max(blockBytes / lineBytes, 2 * height);
    return std::clamp<std::int64_t>(std::min(fitting, wanted), 1, task.lastRow - task.firstRow);
}

// ------------------------------------------------------------------------------------------------- the kernels

template <class Op> void filterRectangle(const BitTask &task, Window window) {
    window = trimmed(window, task.roi, task.border);
    const std::int64_t width = window.right - window.left + 1, height = window.bottom - window.top + 1;
    const std::int64_t group = blockHeight(height);
    Scratch areas(task.scratch, task.scratchBytes);
    auto **const rows = areas.take<const std::uint8_t *>(0);
    const std::int64_t room = areas.left();
    const Lines measured(task, window.left, window.right, nullptr);
    std::int64_t outputs = rowsAtOnce(task, measured.fitting(room, height - 1), measured.lineBytes(), height);
    outputs = std::max(outputs / group * group, std::min(outputs, group));
    const Lines lines(task, window.left, window.right, reinterpret_cast<std::uint8_t *>(rows + outputs + height - 1));

    Distance distances[mostDistances];
    int count = 0;
    std::int64_t reach = 1;
    while (width > mostDistances * reach) {
        reach *= 4;
    }
    for (std::int64_t at = 0; at < width; at += reach) {
        distances[count++] = Distance(lines.firstResult() + std::min(at, width - reach));
    }
    for (std::int64_t y0 = task.firstRow; y0 < task.lastRow; y0 += outputs) {
        const std::int64_t taken = std::min(outputs, task.lastRow - y0);
        lines.sourceRows(rows, y0 + window.top, taken + height - 1);
        for (std::int64_t k = 0; k < taken; k += group) {
            reduceColumns<std::uint8_t, Op>(rows + k, height, std::min(group, taken - k), lines.row(k),
                                            lines.lineBytes(), lines.rowBytes());
        }
        for (std::int64_t k = 0; k < taken; ++k) {
            lines.setMargins(k);
        }
        for (std::int64_t known = 1; known < reach; known *= 4) {
            lines.widen<Op>(taken, known);
        }
        lines.combine<Op>({distances, static_cast<std::size_t>(count)}, y0, y0 + taken, false);
    }
}

template <class Op> void filterPositions(const BitTask &task, const MorphSpec &spec) {
    const std::int64_t height = spec.maskHeight;
    const Lines lines(task, -std::int64_t{spec.anchorX}, spec.rightExtent, task.scratch);
    const std::int64_t outputs =
        rowsAtOnce(task, lines.fitting(task.scratchBytes, 0) - height + 1, lines.lineBytes(), height);
    for (std::int64_t y0 = task.firstRow; y0 < task.lastRow; y0 += outputs) {
        const std::int64_t y1 = std::min(y0 + outputs, task.lastRow);
        for (std::int64_t k = 0; k < y1 - y0 + height - 1; ++k) {
            std::memcpy(lines.row(k), lines.sourceRow(y0 + k - spec.anchorY),
                        static_cast<std::size_t>(lines.rowBytes()));
            lines.setMargins(k);
        }
        Distance distances[mostDistances];
        std::size_t count = 0;
        bool proceed = false;
        const auto combine = [&] {
            if (count > 0) {
                lines.combine<Op>({distances, count}, y0, y1, proceed);
                proceed = true;
                count = 0;
            }
        };
        const std::uint8_t *element = spec.maskCopy;
        for (std::int64_t j = 0; j < height; ++j) {
            for (std::int64_t i = 0; i < spec.maskWidth; ++i) {
                if (*element++ != 0) {
                    distances[count++] = Distance(8 * j * lines.lineBytes() + lines.firstResult() + i);
                    if (count == mostDistances) {
                        combine();
                    }
                }
            }
        }
        combine();
    }
}

// Squares of 3x3 and 5x5 pixels at the centre, the most frequent masks, straight from the source to a destination with
// its pixels at the same bits. Vector by vector down the rows: a source row is combined along itself, from the vector
// and the ones a byte before and behind it, and the rows above are still in registers. At the ends of a row the byte
// that is missing repeats the edge pixel.
template <class Op, int side> class SmallSquare {
public:
    // Bytes of a row from which the vectors that lack a byte see no bits from outside the row in any other one.
    static constexpr std::int64_t fewestBytes = U8x32::lanes + 2;

    explicit SmallSquare(const BitTask &task) : bytes_(bytesOf(task.src.bit, task.roi.width)) {
        const std::int64_t first = task.src.bit, last = (first + task.roi.width - 1) & 7;
        firstPixel_ = splat(static_cast<std::uint8_t>(1 << first));
        lastPixel_ = splat(static_cast<std::uint8_t>(1 << last));
        std::uint8_t outside[U8x32::lanes] = {static_cast<std::uint8_t>(~(0xff << first))};
        before_ = load<U8x32>(outside);
        outside[0] = 0;
        outside[U8x32::lanes - 1] = static_cast<std::uint8_t>(~(0xff >> (7 - last)));
        behind_ = load<U8x32>(outside);
        wholeBytes_ = first == 0 && last == 7;
    }

    // `count` output rows from count + side - 1 source rows.
    void filter(const std::uint8_t *const *rows, Plane<std::uint8_t> dst, std::int64_t count) const {
        const std::int64_t last = bytes_ - U8x32::lanes;
        downRows(dst, 0, count, before_, [&](std::int64_t k) {
            const std::uint8_t *row = rows[k];
            const U8x32 edge = repeated(splat(row[0]), firstPixel_), at = outsideTo(edge, load<U8x32>(row), before_);
            return alongRow(afterLast(edge, at), at, load<U8x32>(row + 1));
        });
        for (std::int64_t x = U8x32::lanes; x < last; x += U8x32::lanes) {
            downRows(dst, x, count, splat(std::uint8_t{0}), [&](std::int64_t k) {
                const std::uint8_t *row = rows[k] + x;
                return alongRow(load<U8x32>(row - 1), load<U8x32>(row), load<U8x32>(row + 1));
            });
        }
        downRows(dst, last, count, behind_, [&](std::int64_t k) {
            const std::uint8_t *row = rows[k] + last;
            const U8x32 edge = repeated(splat(row[U8x32::lanes - 1]), lastPixel_);
            const U8x32 at = outsideTo(edge, load<U8x32>(row), behind_);
            return alongRow(load<U8x32>(row - 1), at, beforeFirst(at, edge));
        });
    }

private:
    // A vector of every output row; combined(k) is source row k combined along itself. The bits in `kept` stay.
    template <class Row>
    RVX_INLINE void downRows(Plane<std::uint8_t> dst, std::int64_t x, std::int64_t count, U8x32 kept,
                             const Row &combined) const {
        U8x32 above[side - 1];
        for (int k = 0; k < side - 1; ++k) {
            above[k] = combined(k);
        }
        const auto storeAt = [&](std::uint8_t *to, U8x32 result) {
            store(to, wholeBytes_ ? result : mergeBits(result, load<U8x32>(to), kept));
        };
        std::uint8_t *out = dst.base + x;
        for (std::int64_t k = 0; k < count; k += 2) {
            const U8x32 next = combined(k + side - 1);
            U8x32 common = next;
            for (int i = 1; i < side - 1; ++i) {
                common = Op::of(common, above[i]);
            }
            storeAt(out, Op::of(common, above[0]));
            if (k + 1 == count) {
                return;
            }
            const U8x32 afterNext = combined(k + side);
            storeAt(out + dst.step, Op::of(common, afterNext));
            out += 2 * dst.step;
            for (int i = 0; i < side - 3; ++i) {
                above[i] = above[i + 2];
            }
            above[side - 3] = next;
            above[side - 2] = afterNext;
        }
    }

    static RVX_INLINE U8x32 alongRow(U8x32 before, U8x32 at, U8x32 behind) {
        U8x32 all = at;
        for (int k = 1; k <= side / 2; ++k) {
            all = Op::of(all, bitOr(shiftBitsLeft(at, k), shiftBitsRight(before, 8 - k)));
            all = Op::of(all, bitOr(shiftBitsRight(at, k), shiftBitsLeft(behind, 8 - k)));
        }
        return all;
    }

    // One pixel of a byte, everywhere.
    static RVX_INLINE U8x32 repeated(U8x32 byte, U8x32 pixel) { return equal(bitAnd(byte, pixel), pixel); }
    RVX_INLINE U8x32 outsideTo(U8x32 edge, U8x32 row, U8x32 outside) const {
        return wholeBytes_ ? row : mergeBits(row, edge, outside);
    }

    std::int64_t bytes_;
    U8x32 firstPixel_, lastPixel_;
    U8x32 before_, behind_; // the bits around the row in its first and in its last vector
    bool wholeBytes_;       // there are none
};

// False, and nothing is written, where the kernel does not apply.
template <class Op, int side> bool filterSquare(const BitTask &task) {
    const std::int64_t bytes = bytesOf(task.src.bit, task.roi.width);
    if (task.src.bit != task.dst.bit || bytes < SmallSquare<Op, side>::fewestBytes || task.border.left ||
        task.border.right) {
        return false;
    }
    const SmallSquare<Op, side> square(task);
    constexpr std::int64_t most = 32; // output rows at once
    for (std::int64_t y = task.firstRow; y < task.lastRow; y += most) {
        const std::int64_t count = std::min(task.lastRow - y, most);
        const std::uint8_t *rows[most + side - 1];
        collectRows(rows, {task.src.base, task.src.step}, task.border, task.roi.height, y - side / 2, count + side - 1);
        square.filter(rows, {task.dst.row(y), task.dst.step}, count);
    }
    return true;
}

// The box around the set elements, and whether they fill it.
bool solidRectangle(const MorphSpec &spec, Window &box) {
    std::int64_t set = 0;
    box = {spec.maskWidth, spec.maskHeight, -1, -1};
    const std::uint8_t *element = spec.maskCopy;
    for (std::int64_t j = 0; j < spec.maskHeight; ++j) {
        for (std::int64_t i = 0; i < spec.maskWidth; ++i) {
            if (*element++ != 0) {
                box = {std::min(box.left, i), std::min(box.top, j), std::max(box.right, i), j};
                ++set;
            }
        }
    }
    return set == (box.right - box.left + 1) * (box.bottom - box.top + 1);
}

template <class Op> void filterBits(const BitTask &task, const MorphSpec &spec) {
    Window box{}; // an empty mask copies
    if (spec.shape != MaskEmpty) {
        if (!solidRectangle(spec, box)) {
            filterPositions<Op>(task, spec);
            return;
        }
        box = {box.left - spec.anchorX, box.top - spec.anchorY, box.right - spec.anchorX, box.bottom - spec.anchorY};
    }
    const bool done = box == Window{-1, -1, 1, 1}   ? filterSquare<Op, 3>(task)
                      : box == Window{-2, -2, 2, 2} ? filterSquare<Op, 5>(task)
                                                    : false;
    if (!done) {
        filterRectangle<Op>(task, box);
    }
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
    const std::int64_t bytes =
        morphBufferBytes({PixelType1u, 1}, fields.roiWidth, {fields.maskWidth, fields.maskHeight});
    filter({{src, srcStep, srcBit}, {dst, dstStep, dstBit}, roi, 0, roi.height, Border(border), buffer, bytes}, fields);
    return StatusOk;
}

} // namespace

void erodeBits(const BitTask &task, const MorphSpec &spec) { filterBits<And>(task, spec); }
void dilateBits(const BitTask &task, const MorphSpec &spec) { filterBits<Or>(task, spec); }

void subtractBits(BitPlane<const std::uint8_t> a, BitPlane<const std::uint8_t> b, BitPlane<std::uint8_t> dst,
                  std::int64_t width, std::int64_t rows) {
    const RowOfBits first(a.bit, dst.bit, width), second(b.bit, dst.bit, width);
    const KeptBits kept(dst.bit, width);
    const std::int64_t n = bytesOf(dst.bit, width);
    for (std::int64_t y = 0; y < rows; ++y) {
        const std::uint8_t *from = a.row(y), *less = b.row(y);
        std::uint8_t *to = dst.row(y);
        const KeptBits::Bits old = kept.read(to);
        walkRow<U8x32::lanes>(n, [&](std::int64_t x, auto span) {
            store(to + x, bitAndNot(first.load(from, x, span), second.load(less, x, span)), span);
        });
        kept.write(to, old);
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
