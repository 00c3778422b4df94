// Compound morphology and bit images against the definitions, one pixel at a time, in guarded memory.
#include "morph/plain_morph.h"
#include "support/counted_alloc.h"
#include "support/guarded.h"
#include "support/status_table.h"

#include "rvxcore.h"
#include "rvxcv.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <thread>

namespace {

using namespace support;

// --------------------------------------------------------------------------------------------------- reference

// A picture by coordinates; what lies outside a side that is not in memory is the nearest pixel inside.
struct View {
    std::function<double(std::int64_t, std::int64_t)> pixel; // x in elements of one channel
    std::int64_t width, height;
    BorderKind border;

    Sides sides() const { return Sides::of(border); }
    double at(std::int64_t x, std::int64_t y) const {
        return pixel(clampSide(x, width, sides().left, sides().right),
                     clampSide(y, height, sides().top, sides().bottom));
    }
};

double step(const View &view, const std::vector<Offset> &offsets, bool dilate, std::int64_t x, std::int64_t y) {
    if (offsets.empty()) {
        return view.at(x, y);
    }
    double result = dilate ? -std::numeric_limits<double>::infinity() : std::numeric_limits<double>::infinity();
    for (const Offset &offset : offsets) {
        const double v = view.at(x + offset.x, y + offset.y);
        result = dilate ? std::max(result, v) : std::min(result, v);
    }
    return result;
}

enum class Op { open, close, tophat, blackhat, gradient };
constexpr Op allOps[] = {Op::open, Op::close, Op::tophat, Op::blackhat, Op::gradient};

// The result of one channel as a plane of width x height.
std::vector<double> compound(const View &src, const Mask &mask, Op op, const std::function<double(double)> &saturate) {
    std::vector<double> out(static_cast<std::size_t>(src.width * src.height));
    const auto at = [&](std::int64_t x, std::int64_t y) -> double & {
        return out[static_cast<std::size_t>(y * src.width + x)];
    };
    const std::vector<Offset> offsets = mask.offsets();
    std::vector<Offset> turned;
    for (const Offset &offset : offsets) {
        turned.push_back({-offset.x, -offset.y});
    }
    const Sides sides = src.sides();
    const bool dilateFirst = op == Op::close || op == Op::blackhat;
    const Point2i before = mask.centre(); // what a mask reaches to the left and above, turned to the right and below
    const std::int64_t left = sides.left ? mask.size.width - 1 - before.x : 0, right = sides.right ? before.x : 0;
    const std::int64_t top = sides.top ? mask.size.height - 1 - before.y : 0, bottom = sides.bottom ? before.y : 0;
    const std::int64_t w = src.width + left + right, h = src.height + top + bottom;
    std::vector<double> between(static_cast<std::size_t>(w * h));
    const View outer{[&](std::int64_t x, std::int64_t y) { return src.pixel(x - left, y - top); }, w, h, src.border};
    for (std::int64_t y = 0; y < h; ++y) {
        for (std::int64_t x = 0; x < w; ++x) {
            between[static_cast<std::size_t>(y * w + x)] = step(outer, offsets, dilateFirst, x, y);
        }
    }
    const View inner{
        [&](std::int64_t x, std::int64_t y) { return between[static_cast<std::size_t>((y + top) * w + x + left)]; },
        src.width, src.height, src.border};
    for (std::int64_t y = 0; y < src.height; ++y) {
        for (std::int64_t x = 0; x < src.width; ++x) {
            if (op == Op::gradient) {
                at(x, y) = saturate(step(src, offsets, true, x, y) - step(src, offsets, false, x, y));
                continue;
            }
            const double result = step(inner, turned, !dilateFirst, x, y);
            at(x, y) = op == Op::tophat     ? saturate(src.pixel(x, y) - result)
                       : op == Op::blackhat ? saturate(result - src.pixel(x, y))
                                            : result;
        }
    }
    return out;
}

Mask randomMask(Rng &rng, int width, int height) {
    return support::randomMask({width, height}, rng() % 4 == 0 ? 100 : 67, rng);
}

Mask solidMask(int width, int height, RoiSize inside) {
    return maskOf({width, height}, [=](auto i, auto j) { return i < inside.width && j < inside.height; });
}

// ----------------------------------------------------------------------------------------------------- members

template <class T> struct Functions {
    using Operation = StatusCode (*)(const T *, std::int32_t, T *, std::int32_t, RoiSize, BorderKind, T,
                                     const MorphAdvSpec *, std::uint8_t *);
    int channels;
    StatusCode (*sizes)(RoiSize, RoiSize, std::int32_t *, std::int32_t *);
    StatusCode (*init)(RoiSize, const std::uint8_t *, RoiSize, MorphAdvSpec *, std::uint8_t *);
    Operation operations[5]; // in the order of Op
};

#define MEMBERS(T, CHANNELS, SUFFIX)                                                                                   \
    Functions<T> {                                                                                                     \
        CHANNELS, rvxiMorphAdvGetSize_##SUFFIX, rvxiMorphAdvInit_##SUFFIX, {                                           \
            rvxiMorphOpenBorder_##SUFFIX, rvxiMorphCloseBorder_##SUFFIX, rvxiMorphTophatBorder_##SUFFIX,               \
                rvxiMorphBlackhatBorder_##SUFFIX, rvxiMorphGradientBorder_##SUFFIX                                     \
        }                                                                                                              \
    }

template <class T> double saturated(double v) {
    if constexpr (std::is_same_v<T, float>) {
        return std::max(static_cast<double>(static_cast<float>(v)), 0.0);
    } else {
        return std::clamp<double>(v, std::is_signed_v<T> ? std::numeric_limits<T>::min() : 0,
                                  std::numeric_limits<T>::max());
    }
}

template <class T>
void checkOperation(const Functions<T> &f, Op op, const Mask &mask, RoiSize initRoi, RoiSize roi, BorderKind border,
                    Rng &rng) {
    const std::int64_t steps = op == Op::gradient ? 1 : 2; // that read beyond the region
    const std::int64_t reachX = steps * mask.size.width, reachY = steps * mask.size.height;
    const Sides sides = Sides::of(border);
    const int c = f.channels;
    GuardedImage<T> src(std::int64_t{roi.width} * c, roi.height,
                        {.padding = static_cast<std::int64_t>(sizeof(T)) * (roi.width % 3),
                         .guard = roi.height % 2 != 0 ? Guard::behind : Guard::before,
                         .left = sides.left ? reachX * c : 0,
                         .top = sides.top ? reachY : 0,
                         .right = sides.right ? reachX * c : 0,
                         .bottom = sides.bottom ? reachY : 0});
    src.fill(rng, rng() % 4 == 0 ? Contents::nearMax : Contents::random);
    if (std::is_same_v<T, float> && rng() % 3 == 0) { // an infinite area: infinity minus infinity stays NaN
        const auto value = static_cast<T>(rng() % 2 != 0 ? INFINITY : -INFINITY);
        for (std::int64_t y = sides.top ? -reachY : 0; y < roi.height + (sides.bottom ? reachY : 0); ++y) {
            for (std::int64_t x = sides.left ? -reachX * c : 0; x < roi.width / 2 * c; ++x) {
                src.set(x, y, value);
            }
        }
    }
    GuardedImage<T> dst(std::int64_t{roi.width} * c, roi.height, {.padding = static_cast<std::int64_t>(sizeof(T)) * 5});
    std::int32_t specSize = 0, bufferSize = 0;
    ASSERT_EQ(f.sizes(initRoi, mask.size, &specSize, &bufferSize), StatusOk);
    GuardedBuffer spec(specSize), initBuffer(bufferSize), buffer(bufferSize, src.guard());
    auto *record = reinterpret_cast<MorphAdvSpec *>(spec.data());
    ASSERT_EQ(f.init(initRoi, mask.bytes.data(), mask.size, record, initBuffer.data()), StatusOk);
    buffer.spoil();
    initBuffer.spoil(); // no operation needs it
    ASSERT_EQ(f.operations[static_cast<int>(op)](src.data(), src.step(), dst.data(), dst.step(), roi, border, T{},
                                                 record, buffer.data()),
              StatusOk);
    for (int channel = 0; channel < c; ++channel) {
        const View view{[&](std::int64_t x, std::int64_t y) { return static_cast<double>(src.at(x * c + channel, y)); },
                        roi.width, roi.height, border};
        const auto want = compound(view, mask, op, saturated<T>);
        for (std::int64_t y = 0; y < roi.height; ++y) {
            for (std::int64_t x = 0; x < roi.width; ++x) {
                ASSERT_TRUE(sameValue(static_cast<double>(dst.at(x * c + channel, y)) + 0.0,
                                      want[static_cast<std::size_t>(y * roi.width + x)] + 0.0))
                    << "(" << x << ", " << y << ") channel " << channel << " of " << roi.width << "x" << roi.height
                    << " op " << static_cast<int>(op) << " mask " << mask.size.width << "x" << mask.size.height
                    << " border " << border;
            }
        }
    }
    ASSERT_TRUE(dst.paddingIntact());
}

template <class T> void checkMember(const Functions<T> &f, const char *name) {
    SCOPED_TRACE(name);
    Rng rng = makeRng(name);
    for (const Op op : allOps) {
        for (BorderKind flags = 0; flags < 256; flags += 16) {
            const RoiSize roi{static_cast<int>(uniform(rng, 1, 24)), static_cast<int>(uniform(rng, 1, 9))};
            checkOperation(f, op,
                           randomMask(rng, static_cast<int>(uniform(rng, 1, 6)), static_cast<int>(uniform(rng, 1, 5))),
                           roi, roi, BorderReplicate | flags, rng);
        }
        checkOperation(f, op, randomMask(rng, 5, 3), {70, 40}, {70, 40}, BorderInMemory, rng);
        checkOperation(f, op, randomMask(rng, 3, 3), {67, 150}, {67, 150}, BorderReplicate, rng);
        checkOperation(f, op, randomMask(rng, 12, 9), {5, 4}, {5, 4}, BorderReplicate, rng); // larger than the image
        checkOperation(f, op, randomMask(rng, 12, 9), {5, 4}, {4, 3}, BorderInMemory, rng);  // a smaller region
        for (const int side : {3, 5, 7}) { // differences are then part of the second step
            const Mask square = solidMask(side, side, {side, side});
            const auto flags = static_cast<BorderKind>(uniform(rng, 0, 15) << 4);
            checkOperation(f, op, square, {97, 81}, {97, 81}, BorderReplicate, rng);
            checkOperation(f, op, square, {529, 5}, {529, 5}, BorderReplicate | flags, rng);
            checkOperation(f, op, square, {uniform(rng, 0, 1) != 0 ? 64 : 75, 40}, {64, 40}, BorderReplicate | flags,
                           rng);
        }
        checkOperation(f, op, Mask{{3, 2}, std::vector<std::uint8_t>(6)}, {9, 5}, {9, 5}, BorderReplicate, rng);
    }
    checkOperation(f, Op::gradient, randomMask(rng, 5, 3), {20, 6}, {24, 30}, BorderReplicate, rng); // wider and taller
}

TEST(Compound, EveryTypeOperationAndBorder) {
    checkMember(MEMBERS(std::uint8_t, 1, 8u_C1R), "8u_C1R");
    checkMember(MEMBERS(std::uint8_t, 3, 8u_C3R), "8u_C3R");
    checkMember(MEMBERS(std::uint8_t, 4, 8u_C4R), "8u_C4R");
    checkMember(MEMBERS(std::uint16_t, 1, 16u_C1R), "16u_C1R");
    checkMember(MEMBERS(std::int16_t, 1, 16s_C1R), "16s_C1R");
    checkMember(MEMBERS(float, 1, 32f_C1R), "32f_C1R");
    checkMember(MEMBERS(float, 3, 32f_C3R), "32f_C3R");
    checkMember(MEMBERS(float, 4, 32f_C4R), "32f_C4R");
}

// Steps need not count channels: rows that overlap are as if they were written one after another.
template <class T> void checkStepsOfOneChannel(const Functions<T> &f) {
    Rng rng = makeRng("compound short steps", sizeof(T) + static_cast<unsigned>(f.channels));
    constexpr std::int32_t width = 41, height = 19;
    constexpr std::int32_t step = width * static_cast<std::int32_t>(sizeof(T));
    for (const Mask &mask : {solidMask(3, 3, {3, 3}), solidMask(6, 2, {6, 2}), randomMask(rng, 5, 5)}) {
        std::int32_t specSize = 0, bufferSize = 0;
        ASSERT_EQ(f.sizes({width, height}, mask.size, &specSize, &bufferSize), StatusOk);
        GuardedBuffer spec(specSize), buffer(bufferSize);
        auto *record = reinterpret_cast<MorphAdvSpec *>(spec.data());
        ASSERT_EQ(f.init({width, height}, mask.bytes.data(), mask.size, record, buffer.data()), StatusOk);
        for (const auto operation : f.operations) {
            GuardedImage<T> src(width * (height - 1 + f.channels), 1), dst(src.width(), 1);
            GuardedImage<T> srcApart(width * f.channels, height), dstApart(srcApart.width(), height);
            src.fill(rng, Contents::random);
            for (std::int64_t i = 0; i < height * srcApart.width(); ++i) {
                const std::int64_t x = i % srcApart.width(), y = i / srcApart.width();
                srcApart.set(x, y, src.at(y * width + x, 0));
            }
            ASSERT_EQ(operation(srcApart.data(), srcApart.step(), dstApart.data(), dstApart.step(), {width, height},
                                BorderReplicate, T{}, record, buffer.data()),
                      StatusOk);
            ASSERT_EQ(operation(src.data(), step, dst.data(), step, {width, height}, BorderReplicate, T{}, record,
                                buffer.data()),
                      StatusOk);
            ASSERT_TRUE(imageIs(dst,
                                [&](std::int64_t i, auto) {
                                    const std::int64_t y =
                                        std::min<std::int64_t>(i / width, height - 1); // the last row that holds it
                                    return dstApart.at(i - y * width, y);
                                }))
                << "channels " << f.channels;
        }
    }
}

TEST(Compound, StepsOfOneChannel) {
    checkStepsOfOneChannel(MEMBERS(std::uint8_t, 3, 8u_C3R));
    checkStepsOfOneChannel(MEMBERS(std::uint8_t, 4, 8u_C4R));
    checkStepsOfOneChannel(MEMBERS(float, 3, 32f_C3R));
    checkStepsOfOneChannel(MEMBERS(float, 4, 32f_C4R));
}

// ------------------------------------------------------------------------------------------------- bit images

// Rows of bits at any offset, with or without surroundings in memory; the last byte of the last row ends at the guard.
// Rows without surroundings may share bytes with their neighbours.
struct BitImage {
    std::int64_t width, height, left, top, offset, rowBytes, step;
    GuardedBuffer bytes;

    BitImage(std::int64_t w, std::int64_t h, std::int64_t bitOffset, std::int64_t marginX, std::int64_t marginY,
             Rng &rng)
        : width(w), height(h), left(marginX), top(marginY), offset(bitOffset),
          rowBytes((marginX + bitOffset + w + marginX + 7) / 8),
          step(marginX == 0 && rng() % 3 == 0 ? (w + 7) / 8 : rowBytes),
          bytes((h + 2 * marginY - 1) * step + rowBytes) {
        // Half of the bits, one of 32, all but one of 32: large masks would see nothing but the same in the first.
        const auto density = rng() % 3;
        for (std::int64_t i = 0; i < bytes.size(); ++i) {
            const auto few = rng() & rng() & rng() & rng() & rng();
            bytes.data()[i] = static_cast<std::uint8_t>(density == 0 ? rng() : density == 1 ? few : ~few);
        }
    }
    std::uint8_t *data() { return bytes.data() + top * step + (left >> 3); }
    std::int32_t bitOffset() const { return static_cast<std::int32_t>((left & 7) + offset); }
    bool at(std::int64_t x, std::int64_t y) const {
        const std::int64_t k = left + offset + x;
        return (bytes.data()[(y + top) * step + (k >> 3)] >> (k & 7) & 1) != 0;
    }
};

using BitStep = StatusCode (*)(const std::uint8_t *, std::int32_t, std::int32_t, std::uint8_t *, std::int32_t,
                               std::int32_t, RoiSize, BorderKind, std::uint8_t, const MorphSpec *, std::uint8_t *);
using BitCompound = StatusCode (*)(const std::uint8_t *, std::int32_t, std::int32_t, std::uint8_t *, std::int32_t,
                                   std::int32_t, RoiSize, BorderKind, std::uint8_t, const MorphAdvSpec *,
                                   std::uint8_t *);
constexpr BitCompound bitOperations[] = {rvxiMorphOpenBorder_1u_C1R, rvxiMorphCloseBorder_1u_C1R,
                                         rvxiMorphTophatBorder_1u_C1R, rvxiMorphBlackhatBorder_1u_C1R,
                                         rvxiMorphGradientBorder_1u_C1R};

// op: 0 erosion, 1 dilation, 2 + Op. Offsets in bits are random unless one is given, for both images or for each;
// margins are whole bytes, so that it holds with them too.
void checkBits(int op, const Mask &mask, RoiSize roi, BorderKind border, Rng &rng, std::int64_t offset = -1,
               std::int64_t dstOffset = -1) {
    const bool inMemory = border != BorderReplicate;
    BitImage src(roi.width, roi.height, offset < 0 ? uniform(rng, 0, 11) : offset, inMemory ? 8 * mask.size.width : 0,
                 inMemory ? 2 * mask.size.height : 0, rng);
    BitImage dst(roi.width, roi.height,
                 dstOffset >= 0 ? dstOffset
                 : offset < 0   ? uniform(rng, 0, 11)
                                : offset,
                 0, 0, rng);
    std::vector<std::uint8_t> expected(dst.bytes.data(), dst.bytes.data() + dst.bytes.size());
    const Guard guard = rng() % 2 != 0 ? Guard::behind : Guard::before;
    const View view{[&](std::int64_t x, std::int64_t y) { return src.at(x, y) ? 1.0 : 0.0; }, roi.width, roi.height,
                    border};
    const auto srcStep = static_cast<std::int32_t>(src.step), dstStep = static_cast<std::int32_t>(dst.step);
    std::int32_t specSize = 0, bufferSize = 0;
    std::vector<double> want;
    if (op < 2) {
        ASSERT_EQ(rvxiMorphologyBorderGetSize_1u_C1R(roi.width, mask.size, &specSize, &bufferSize), StatusOk);
        GuardedBuffer spec(specSize), buffer(bufferSize, guard);
        auto *record = reinterpret_cast<MorphSpec *>(spec.data());
        ASSERT_EQ(rvxiMorphologyBorderInit_1u_C1R(roi.width, mask.bytes.data(), mask.size, record, buffer.data()),
                  StatusOk);
        buffer.spoil();
        const BitStep run = op == 0 ? rvxiErodeBorder_1u_C1R : rvxiDilateBorder_1u_C1R;
        ASSERT_EQ(run(src.data(), srcStep, src.bitOffset(), dst.data(), dstStep, dst.bitOffset(), roi, border, 0,
                      record, buffer.data()),
                  StatusOk);
        const std::vector<Offset> offsets = mask.offsets();
        for (int y = 0; y < roi.height; ++y) {
            for (int x = 0; x < roi.width; ++x) {
                want.push_back(step(view, offsets, op == 1, x, y));
            }
        }
    } else {
        ASSERT_EQ(rvxiMorphAdvGetSize_1u_C1R(roi, mask.size, &specSize, &bufferSize), StatusOk);
        GuardedBuffer spec(specSize), buffer(bufferSize, guard);
        auto *record = reinterpret_cast<MorphAdvSpec *>(spec.data());
        ASSERT_EQ(rvxiMorphAdvInit_1u_C1R(roi, mask.bytes.data(), mask.size, record, buffer.data()), StatusOk);
        buffer.spoil();
        ASSERT_EQ(bitOperations[op - 2](src.data(), srcStep, src.bitOffset(), dst.data(), dstStep, dst.bitOffset(), roi,
                                        border, 0, record, buffer.data()),
                  StatusOk);
        want = compound(view, mask, static_cast<Op>(op - 2), [](double v) { return std::max(v, 0.0); });
    }
    for (std::int64_t i = 0; i < std::int64_t{roi.width} * roi.height; ++i) {
        const std::int64_t k = i / roi.width * dst.step * 8 + dst.offset + i % roi.width;
        std::uint8_t &byte = expected[static_cast<std::size_t>(k >> 3)];
        byte =
            static_cast<std::uint8_t>((byte & ~(1 << (k & 7))) | (want[static_cast<std::size_t>(i)] != 0) << (k & 7));
    }
    const auto different = std::mismatch(expected.begin(), expected.end(), dst.bytes.data()).first - expected.begin();
    ASSERT_EQ(different, dst.bytes.size())
        << "the first different byte; " << roi.width << "x" << roi.height << " op " << op << " mask " << mask.size.width
        << "x" << mask.size.height << " border " << border << " offsets " << src.bitOffset() << ", " << dst.bitOffset();
}

TEST(BitMorphology, Every3x3Mask) {
    Rng rng = makeRng("bits 3x3");
    for (int code = 0; code < 512; ++code) {
        Mask mask{{3, 3}, {}};
        for (int i = 0; i < 9; ++i) {
            mask.bytes.push_back(static_cast<std::uint8_t>(code >> i & 1));
        }
        for (const int op : {0, 1}) {
            checkBits(op, mask, {static_cast<int>(uniform(rng, 1, 40)), 4},
                      code % 2 != 0 ? BorderReplicate : BorderInMemory, rng);
        }
    }
}

TEST(BitMorphology, SizesOffsetsBordersAndCompounds) {
    Rng rng = makeRng("bits");
    for (int op = 0; op < 7; ++op) {
        for (int width = 1; width <= 70; ++width) {
            checkBits(op, randomMask(rng, static_cast<int>(uniform(rng, 1, 17)), static_cast<int>(uniform(rng, 1, 7))),
                      {width, 3}, BorderReplicate, rng);
        }
        for (BorderKind flags = 0; flags < 256; flags += 16) {
            checkBits(op, randomMask(rng, 4, 3), {29, 5}, BorderReplicate | flags, rng);
        }
        for (const int width : {255, 256, 257, 530}) {
            checkBits(op, randomMask(rng, 5, 5), {width, 5}, BorderInMemory, rng);
            checkBits(op, solidMask(3, 3, {3, 3}), {width, 5}, BorderReplicate, rng);
        }
        checkBits(op, randomMask(rng, 60, 9), {7, 3}, BorderReplicate, rng);
        // What the scratch holds is least for narrow and tall images, and for wide ones under a single row.
        checkBits(op, solidMask(3, 3, {3, 3}), {19, 49}, BorderReplicate, rng);
        checkBits(op, solidMask(4, 7, {3, 6}), {19, 49}, BorderReplicate, rng);
        checkBits(op, Mask{{5, 1}, {1, 1, 0, 1, 1}}, {1459, 29}, BorderReplicate, rng);
    }
    // Rows of whole vectors, at other bits than the destination's: nothing is read behind the last one.
    for (std::int64_t bit = 1; bit < 8; ++bit) {
        for (const Op op : {Op::tophat, Op::blackhat}) {
            checkBits(2 + static_cast<int>(op), solidMask(2, 1, {2, 1}), {static_cast<int>(512 - bit), 2},
                      BorderReplicate, rng, bit, bit - 1);
        }
    }
}

// Small squares at all offsets and at the widths around whole vectors; wide, high and eccentric rectangles.
TEST(BitMorphology, Rectangles) {
    Rng rng = makeRng("bit rectangles");
    for (std::int64_t offset = 0; offset < 8; ++offset) {
        for (const int width : {255, 263, 264, 265, 270, 272, 280, 512, 519, 520, 521, 640}) {
            for (const int side : {3, 5}) {
                checkBits(static_cast<int>(uniform(rng, 0, 6)), solidMask(side, side, {side, side}),
                          {width, static_cast<int>(uniform(rng, 1, 7))}, BorderReplicate, rng, offset);
            }
        }
        const BorderKind rowsInMemory = BorderReplicate | BorderInMemoryTop | BorderInMemoryBottom;
        checkBits(0, solidMask(3, 3, {3, 3}), {300, 67}, rowsInMemory, rng, offset);
        checkBits(1, solidMask(5, 5, {5, 5}), {301, 70}, BorderReplicate, rng, offset);
        checkBits(1, solidMask(3, 3, {3, 3}), {290, 3}, BorderInMemory, rng, offset);
        // Many rows: few results depend on what stands beside the row.
        for (const BorderKind side : {BorderInMemoryLeft, BorderInMemoryRight}) {
            checkBits(static_cast<int>(offset % 2), solidMask(3, 3, {3, 3}), {300, 67}, BorderReplicate | side, rng,
                      offset);
        }
    }
    for (const RoiSize inside : {RoiSize{15, 15}, {31, 2}, {100, 1}, {97, 5}, {7, 40}, {1, 9}, {24, 24}}) {
        const int width = static_cast<int>(uniform(rng, 60, 150));
        const Mask centred = solidMask(inside.width, inside.height, inside);
        const Mask eccentric = solidMask(2 * inside.width + 3, 2 * inside.height + 1, inside);
        for (const int op : {0, 1}) {
            checkBits(op, centred, {width, 21}, BorderReplicate, rng);
            checkBits(op, eccentric, {width, 20}, BorderReplicate, rng);
            checkBits(op, eccentric, {width, 9}, BorderInMemory, rng);
        }
    }
}

TEST(BitMorphology, StatusesInTheOrderOfTheChecks) {
    struct Args {
        const std::uint8_t *src;
        std::uint8_t *dst, *buffer;
        const void *spec;
        std::int32_t srcStep, dstStep, srcBit, dstBit;
        RoiSize roi;
        BorderKind border;
    };
    std::vector<std::uint8_t> memory(4096), src(64), dst(64), spec(4096), advSpec(4096);
    const std::vector<std::uint8_t> mask(9, 1);
    auto *record = reinterpret_cast<MorphSpec *>(spec.data());
    auto *advRecord = reinterpret_cast<MorphAdvSpec *>(advSpec.data());
    ASSERT_EQ(rvxiMorphologyBorderInit_1u_C1R(20, mask.data(), {3, 3}, record, memory.data()), StatusOk);
    // The mask's own record is as wide as the region and the mask.
    ASSERT_EQ(rvxiMorphAdvInit_1u_C1R({18, 4}, mask.data(), {3, 3}, advRecord, memory.data()), StatusOk);
    Faults<Args> faults;
    faults.nulls(&Args::src, &Args::dst, &Args::spec, &Args::buffer);
    faults.values(StatusBadSize, &Args::srcBit, {-1}).values(StatusBadSize, &Args::dstBit, {-1}).empty(&Args::roi);
    faults.shortSteps(3, &Args::srcStep, &Args::dstStep).values(StatusBadBorder, &Args::border, {BorderConstant});
    faults.values(StatusBadSize, &Args::roi, {{21, 4}}); // wider than the records
    faults.add("in place", StatusInPlaceNotSupported, [](Args &a) { a.src = a.dst; });
    const auto expectOrder = [&](auto operation, const auto *given, std::int32_t width) {
        using Spec = decltype(given);
        expectFaultOrder<Args>(
            {src.data(), dst.data(), memory.data(), given, 3, 3, 1, 2, {width, 4}, BorderReplicate}, faults,
            [&](const Args &a) {
                return operation(a.src, a.srcStep, a.srcBit, a.dst, a.dstStep, a.dstBit, a.roi, a.border, 0,
                                 static_cast<Spec>(a.spec), a.buffer);
            },
            [&] { return dst; });
    };
    expectOrder(rvxiErodeBorder_1u_C1R, record, 20);
    expectOrder(rvxiDilateBorder_1u_C1R, record, 20);
    for (const BitCompound operation : bitOperations) {
        expectOrder(operation, advRecord, 18);
    }
}

// ------------------------------------------------------------------------------------------ sizes and statuses

TEST(Compound, SizesAreTheFormulas) {
    std::int32_t basicSpec = 0, basicBuffer = 0, spec = 0, buffer = 0;
    ASSERT_EQ(rvxiMorphologyBorderGetSize_8u_C3R(100, {5, 3}, &basicSpec, &basicBuffer), StatusOk);
    ASSERT_EQ(rvxiMorphAdvGetSize_8u_C3R({100, 50}, {5, 3}, &spec, &buffer), StatusOk);
    EXPECT_EQ(spec, 2 * basicSpec + 32);
    EXPECT_EQ(buffer, 320 * 52 + 2 * basicBuffer); // 3 * 104 = 312, aligned to 32
    ASSERT_EQ(rvxiMorphologyBorderGetSize_1u_C1R(100, {5, 3}, &basicSpec, &basicBuffer), StatusOk);
    ASSERT_EQ(rvxiMorphAdvGetSize_1u_C1R({100, 50}, {5, 3}, &spec, &buffer), StatusOk);
    EXPECT_EQ(buffer, 128 * 52 + 2 * basicBuffer);

    spec = buffer = -1;
    EXPECT_EQ(rvxiMorphAdvGetSize_8u_C1R({5, 5}, {3, 0}, &spec, &buffer), StatusBadSize);
    // Image and scratch fit alone, not together.
    EXPECT_EQ(rvxiMorphAdvGetSize_8u_C1R({30000, 40000}, {1, 130}, &spec, &buffer), StatusBadSize);
    EXPECT_EQ(spec, -1);
    EXPECT_EQ(buffer, -1);
}

TEST(Compound, StatusesInTheOrderOfTheChecks) {
    struct Args {
        const float *src;
        float *dst;
        const MorphAdvSpec *spec;
        std::uint8_t *buffer;
        std::int32_t srcStep, dstStep;
        RoiSize roi;
        BorderKind border;
    };
    const auto f = MEMBERS(float, 1, 32f_C1R);
    GuardedImage<float> src(12, 6), dst(12, 6);
    std::int32_t specSize = 0, bufferSize = 0;
    ASSERT_EQ(f.sizes({10, 6}, {3, 3}, &specSize, &bufferSize), StatusOk);
    std::vector<std::uint8_t> spec(static_cast<std::size_t>(specSize)), buffer(static_cast<std::size_t>(bufferSize));
    const std::vector<std::uint8_t> mask(9, 1);
    auto *record = reinterpret_cast<MorphAdvSpec *>(spec.data());
    ASSERT_EQ(f.init({10, 6}, mask.data(), {3, 3}, record, buffer.data()), StatusOk);
    const Args good{src.data(), dst.data(), record, buffer.data(), 48, 48, {10, 6}, BorderReplicate};
    Faults<Args> faults;
    faults.nulls(&Args::src, &Args::dst, &Args::spec, &Args::buffer).empty(&Args::roi);
    faults.shortSteps(40, &Args::srcStep, &Args::dstStep).unevenSteps(40, 4, &Args::srcStep, &Args::dstStep);
    faults.values(StatusBadBorder, &Args::border, {BorderConstant});
    for (const Op op : allOps) {
        const auto call = [&](const Args &a) {
            return f.operations[static_cast<int>(op)](a.src, a.srcStep, a.dst, a.dstStep, a.roi, a.border, 0, a.spec,
                                                      a.buffer);
        };
        expectFaultOrder<Args>(good, faults, call, [&] { return dst.bytes(); });
        Args wide = good;
        wide.roi.width = 13; // beyond the forward mask's width
        wide.srcStep = wide.dstStep = 52;
        EXPECT_EQ(call(wide), StatusBadSize);
        if (op != Op::gradient) {
            Args tall = good;
            tall.roi.height = 9; // beyond the intermediate image
            EXPECT_EQ(call(tall), StatusBadSize);
        }
    }
}

// The margin that a border declares does not exist here: copies must not read it.
TEST(Compound, EmptyMasksReadNoMargin) {
    const RoiSize roi{9, 5}, maskSize{3, 5};
    const std::vector<std::uint8_t> mask(15, 0);
    std::int32_t specSize = 0, bufferSize = 0;
    ASSERT_EQ(rvxiMorphAdvGetSize_8u_C1R(roi, maskSize, &specSize, &bufferSize), StatusOk);
    GuardedBuffer spec(specSize), buffer(bufferSize);
    auto *record = reinterpret_cast<MorphAdvSpec *>(spec.data());
    ASSERT_EQ(rvxiMorphAdvInit_8u_C1R(roi, mask.data(), maskSize, record, buffer.data()), StatusOk);
    Rng rng = makeRng("empty mask");
    for (const Guard guard : {Guard::before, Guard::behind}) {
        GuardedImage<std::uint8_t> src(roi.width, roi.height, {.guard = guard}), dst(roi.width, roi.height);
        src.fill(rng, Contents::random);
        for (const auto operation : {rvxiMorphOpenBorder_8u_C1R, rvxiMorphCloseBorder_8u_C1R}) {
            ASSERT_EQ(operation(src.data(), src.step(), dst.data(), dst.step(), roi, BorderInMemory, 0, record,
                                buffer.data()),
                      StatusOk);
            EXPECT_TRUE(imageIs(dst, [&](auto x, auto y) { return src.at(x, y); }));
        }
    }
}

TEST(Compound, LibraryRecordsServeThreads) {
    const std::vector<std::uint8_t> mask(9, 1);
    MorphAdvSpec *spec = nullptr;
    constexpr RoiSize roi{200, 100};
    ASSERT_EQ(rvxiMorphAdvInitAlloc_8u_C1R(&spec, roi, mask.data(), {3, 3}), StatusOk);
    std::int32_t specSize = 0, bufferSize = 0;
    ASSERT_EQ(rvxiMorphAdvGetSize_8u_C1R(roi, {3, 3}, &specSize, &bufferSize), StatusOk);
    Rng rng = makeRng("threads");
    GuardedImage<std::uint8_t> src(roi.width, roi.height), serial(roi.width, roi.height), a(roi.width, roi.height),
        b(roi.width, roi.height);
    src.fill(rng, Contents::random);
    const auto run = [&](GuardedImage<std::uint8_t> &dst) {
        std::vector<std::uint8_t> buffer(static_cast<std::size_t>(bufferSize));
        for (int i = 0; i < 20; ++i) {
            EXPECT_EQ(rvxiMorphGradientBorder_8u_C1R(src.data(), src.step(), dst.data(), dst.step(), roi,
                                                     BorderReplicate, 0, spec, buffer.data()),
                      StatusOk);
        }
    };
    run(serial);
    std::thread first(run, std::ref(a)), second(run, std::ref(b));
    first.join();
    second.join();
    EXPECT_TRUE(imageIs(a, [&](auto x, auto y) { return serial.at(x, y); }));
    EXPECT_TRUE(imageIs(b, [&](auto x, auto y) { return serial.at(x, y); }));
    EXPECT_EQ(rvxiMorphAdvFree(spec), StatusOk);
    EXPECT_EQ(rvxiMorphAdvFree(nullptr), StatusNullPointer);
    EXPECT_EQ(rvxiMorphAdvInitAlloc_8u_C1R(nullptr, {0, 0}, nullptr, {0, 0}), StatusNullPointer);
}

TEST(Compound, FailedAllocationsKeepNothing) {
    const std::vector<std::uint8_t> mask(9, 1);
    const auto make = [&](MorphAdvSpec **spec) {
        return rvxiMorphAdvInitAlloc_32f_C3R(spec, {20, 10}, mask.data(), {3, 3});
    };
    EXPECT_EQ(failEveryAllocation<MorphAdvSpec>(make, rvxiMorphAdvFree), 4);
}

} // namespace
