// Rank filters, erosion and dilation, compound operations, grey morphology and reconstruction.
#include "contract/contract.h"

#include <limits>

namespace contract {
namespace {

// Of floats: which of a NaN and a number is the smaller, and the sign of a zero, are not fixed.
ImageOptions ordered(int channels, std::function<Margin()> margin = {}) {
    return {
        .channels = channels, .contents = finite, .margin = std::move(margin), .zeroSign = false, .stepChannels = 1};
}

// ------------------------------------------------------------------------------------------------------ rank filters

struct Rectangle {
    RoiSize size;
    Point2i anchor;
};
const std::vector<RoiSize> queryMasks = {{1, 1}, {3, 3}, {5, 2}, {31, 17}, {0, 1}, {3, 0}, {-1, -1}, {40000, 50000}};
using WidthQuery = StatusCode (*)(std::int32_t, RoiSize, std::int32_t *);

void rankSize(Run &run, WidthQuery query) { sizes(run, query, queryWidths(), queryMasks); }

template <class T>
void rankFilter(Run &run,
                StatusCode (*f)(const T *, std::int32_t, T *, std::int32_t, RoiSize, RoiSize, Point2i, std::uint8_t *),
                int channels, WidthQuery query) {
    Sweep sweep(run);
    Choice<Rectangle> mask(
        sweep,
        {{{3, 3}, {1, 1}}, {{1, 1}, {0, 0}}, {{5, 2}, {4, 0}}, {{2, 7}, {0, 6}}, {{12, 5}, {3, 2}}, {{1, 9}, {0, 4}}},
        {{{0, 3}, {0, 0}}, {{3, -1}, {0, 0}}, {{3, 3}, {3, 0}}, {{3, 3}, {0, -1}}});
    Image<const T> src(sweep, {.channels = channels, .contents = finite});
    Image<T> dst(sweep, {.channels = channels, .zeroSign = false});
    Region roi(sweep);
    Bytes buffer(sweep);
    sweep.before = [&] {
        std::int32_t size = 0;
        query(sweep.roi().width, mask.value().size, &size);
        buffer.size(size);
    };
    sweep.run([&] { return f(src, src.step, dst, dst.step, roi, mask.value().size, mask.value().anchor, buffer); });
}

// --------------------------------------------------------------------------------------------- flat masks and records

struct FlatMask {
    RoiSize size;
    const char *rows; // '#' is part of the mask
    std::vector<std::uint8_t> bytes() const {
        std::vector<std::uint8_t> all;
        for (const char *c = rows; *c != 0; ++c) {
            all.push_back(*c == '#' ? 1 + static_cast<std::uint8_t>(all.size()) : 0);
        }
        return all;
    }
    Point2i anchor() const { return {(size.width - 1) >> 1, (size.height - 1) >> 1}; }
};
// Rectangles, also beside the anchor; ellipses; anything; nothing.
const std::vector<FlatMask> flatMasks = {{{3, 3}, "#########"},
                                         {{1, 1}, "#"},
                                         {{3, 3}, ".#.###.#."},
                                         {{5, 4}, "##...#.#.#..#..#...#"},
                                         {{4, 3}, "......##..##"},
                                         {{3, 2}, "......"},
                                         {{6, 2}, "############"},
                                         {{5, 5}, ".###.#####..#..#####.###."},
                                         {{9, 3}, "...###...#########..#####.."}};

template <class Extent> Extent extentOf(RoiSize roi) {
    if constexpr (std::is_same_v<Extent, RoiSize>) {
        return roi;
    } else {
        return roi.width;
    }
}

// The fields of a record, and what its tables hold: all documented.
void digestRecord(Digest &digest, const MorphSpec *spec) {
    const bool bits = spec->typeCode == PixelType1u;
    const std::int64_t positions = static_cast<std::int64_t>(spec->maskWidth) * spec->maskHeight;
    digest.bytes(spec->maskCopy, positions);
    for (const std::uint8_t *table : {spec->neutralMin, spec->neutralMax}) {
        digest.number(table != nullptr);
        if (table != nullptr) {
            digest.bytes(table, positions * (bits ? 1 : 16));
        }
    }
    digest.number(spec->reserved == nullptr);
    digest.numbers({spec->maskWidth, spec->maskHeight, spec->anchorX, spec->anchorY, spec->rightExtent,
                    spec->bottomExtent, spec->rowBufferBytes, spec->zero, spec->typeCode, spec->channels,
                    spec->roiWidth, spec->marker, spec->shape});
    if (bits) {
        return;
    }
    digest.numbers({spec->rectangleWidth, spec->rectangleHeight, spec->rectangleAnchorX, spec->rectangleAnchorY,
                    spec->rectangleZero[0], spec->rectangleZero[1], spec->runCount});
    digest.number(spec->runsTable != nullptr);
    if (spec->runsTable != nullptr) {
        digest.bytes(spec->runsTable, spec->runCount * static_cast<std::int64_t>(sizeof(RowRun)));
    }
}

void digestRecord(Digest &digest, const MorphAdvSpec *spec) {
    digestRecord(digest, spec->forward);
    digestRecord(digest, spec->reflected);
    digest.numbers({spec->intermediateBytes, spec->basicBufferBytes});
}

template <class Spec, class Extent> struct RecordFunctions {
    StatusCode (*size)(Extent, RoiSize, std::int32_t *, std::int32_t *);
    StatusCode (*init)(Extent, const std::uint8_t *, RoiSize, Spec *, std::uint8_t *);
};

// A record and buffer for the sweep's region, and a record for a narrower one.
template <class Spec, class Extent> class Records {
public:
    Records(Sweep &sweep, RecordFunctions<Spec, Extent> functions)
        : mask(sweep, flatMasks), buffer(sweep), sweep_(sweep), functions_(functions), spec_(sweep, 8),
          narrow_(sweep, 8, false), isNarrow_(sweep, {false}, {true}) {
        sweep.before = [this] {
            if (sweep_.roi().width > 1) {
                init(narrow_, {sweep_.roi().width - 1, sweep_.roi().height});
            }
            init(spec_, sweep_.roi());
        };
    }
    const Spec *spec() const { return isNarrow_ && spec_ != nullptr ? narrow_.as<Spec>() : spec_.as<Spec>(); }
    // Pixels around the region that one step reads, or one step and another with the turned mask.
    Margin reach(BorderKind border, bool twice) const {
        const FlatMask &m = mask.value();
        const Point2i a = m.anchor();
        const std::int32_t right = m.size.width - 1, bottom = m.size.height - 1;
        return twice ? inMemory(border, {right, bottom, right, bottom})
                     : inMemory(border, {a.x, a.y, right - a.x, bottom - a.y});
    }

    Choice<FlatMask> mask;
    Bytes buffer;

private:
    void init(Bytes &record, RoiSize roi) {
        const auto extent = extentOf<Extent>(roi);
        std::int32_t specSize = 0, bufferSize = 0;
        functions_.size(extent, mask.value().size, &specSize, &bufferSize);
        record.size(specSize);
        buffer.size(bufferSize);
        functions_.init(extent, mask.value().bytes().data(), mask.value().size, record.as<Spec>(), buffer);
    }

    Sweep &sweep_;
    RecordFunctions<Spec, Extent> functions_;
    Bytes spec_, narrow_;
    Choice<bool> isNarrow_;
};

const std::vector<BorderKind> badBorders = {BorderConstant, BorderMirror, 7};

// Erosion, dilation and what is made of them.
template <class T, class Spec, class Extent>
void flat(Run &run,
          StatusCode (*f)(const T *, std::int32_t, T *, std::int32_t, RoiSize, BorderKind, T, const Spec *,
                          std::uint8_t *),
          int channels, StatusCode (*size)(Extent, RoiSize, std::int32_t *, std::int32_t *),
          StatusCode (*init)(Extent, const std::uint8_t *, RoiSize, Spec *, std::uint8_t *)) {
    Sweep sweep(run);
    Choice<BorderKind> border(sweep, bordersOf({BorderReplicate}), badBorders);
    Records<Spec, Extent> records(sweep, {size, init});
    Image<const T> src(sweep,
                       ordered(channels, [&] { return records.reach(border, std::is_same_v<Spec, MorphAdvSpec>); }));
    Image<T> dst(sweep, ordered(channels));
    Region roi(sweep);
    sweep.run([&] { return f(src, src.step, dst, dst.step, roi, border, T{5}, records.spec(), records.buffer); });
}

// The same of bit images: rows of bytes, in which the region begins at any bit.
template <class Spec, class Extent>
void flatBits(Run &run,
              StatusCode (*f)(const std::uint8_t *, std::int32_t, std::int32_t, std::uint8_t *, std::int32_t,
                              std::int32_t, RoiSize, BorderKind, std::uint8_t, const Spec *, std::uint8_t *),
              StatusCode (*size)(Extent, RoiSize, std::int32_t *, std::int32_t *),
              StatusCode (*init)(Extent, const std::uint8_t *, RoiSize, Spec *, std::uint8_t *)) {
    Sweep sweep(run);
    const auto rowBytes = [](std::int32_t offset) {
        return [offset](RoiSize roi) { return RoiSize{(roi.width + offset + 7) / 8, roi.height}; };
    };
    Choice<BorderKind> border(sweep, bordersOf({BorderReplicate}), badBorders);
    Choice<std::int32_t> srcOffset(sweep, {0, 3, 13}, {-1}), dstOffset(sweep, {0, 7, 10}, {-8});
    Choice<bool> inPlace(sweep, {false}, {true});
    Records<Spec, Extent> records(sweep, {size, init});
    Image<const std::uint8_t> src(
        sweep, {.size = [&](RoiSize r) { return rowBytes(srcOffset)(r); },
                .margin =
                    [&] {
                        const Margin bits = records.reach(border, true);
                        return Margin{(bits.left + 7) / 8, bits.top, (bits.right + 7) / 8, bits.bottom};
                    }});
    Image<std::uint8_t> dst(sweep, {.size = [&](RoiSize r) { return rowBytes(dstOffset)(r); }});
    Region roi(sweep);
    sweep.run([&] {
        return f(src, src.step, srcOffset, inPlace && src != nullptr ? const_cast<std::uint8_t *>(+src) : dst, dst.step,
                 dstOffset, roi, border, 0, records.spec(), records.buffer);
    });
}

const std::vector<RoiSize> initRegions = {{1, 1}, {19, 4}, {70, 2}, {0, 3}, {5, -1}};
const RoiSize badMask = {3, 0};

template <class Extent>
void recordSizes(Run &run, StatusCode (*query)(Extent, RoiSize, std::int32_t *, std::int32_t *)) {
    if constexpr (std::is_same_v<Extent, RoiSize>) {
        twoSizes(run, query, queryRegions(), queryMasks);
    } else {
        twoSizes(run, query, queryWidths(), queryMasks);
    }
}

template <class Spec, class Extent>
void recordInit(Run &run, StatusCode (*init)(Extent, const std::uint8_t *, RoiSize, Spec *, std::uint8_t *),
                StatusCode (*size)(Extent, RoiSize, std::int32_t *, std::int32_t *)) {
    forEach(
        [&](RoiSize roi, const FlatMask &mask) {
            const auto extent = extentOf<Extent>(roi);
            std::int32_t specSize = 256, bufferSize = 16;
            size(extent, mask.size, &specSize, &bufferSize);
            Memory record, scratch;
            auto *const spec = reinterpret_cast<Spec *>(record.place((specSize + 7) / 8 * 8, 0, false));
            std::uint8_t *const buffer = scratch.place(bufferSize, 0, false);
            const std::vector<std::uint8_t> bytes = mask.bytes();
            run.digest.numbers(
                {init(extent, nullptr, mask.size, spec, buffer), init(extent, bytes.data(), mask.size, nullptr, buffer),
                 init(extent, bytes.data(), mask.size, spec, nullptr),
                 init(extent, bytes.data(), badMask, spec, buffer), init(extent, nullptr, badMask, spec, buffer)});
            const StatusCode status = init(extent, bytes.data(), mask.size, spec, buffer);
            run.digest.number(status);
            if (status == StatusOk) {
                digestRecord(run.digest, spec);
            } else {
                run.digest.bytes(spec, specSize);
            }
        },
        initRegions, flatMasks);
}

void advancedInitAlloc(Run &run, StatusCode (*init)(MorphAdvSpec **, RoiSize, const std::uint8_t *, RoiSize)) {
    forEach(
        [&](RoiSize roi, const FlatMask &mask) {
            const std::vector<std::uint8_t> bytes = mask.bytes();
            MorphAdvSpec *spec = nullptr;
            run.digest.numbers({init(nullptr, roi, bytes.data(), mask.size), init(&spec, roi, nullptr, mask.size),
                                init(&spec, roi, bytes.data(), badMask), init(nullptr, roi, nullptr, badMask)});
            run.digest.number(spec == nullptr);
            run.digest.number(init(&spec, roi, bytes.data(), mask.size));
            run.digest.number(spec == nullptr);
            if (spec != nullptr) {
                digestRecord(run.digest, spec);
                run.digest.number(rvxiMorphAdvFree(spec));
            }
        },
        initRegions, flatMasks);
}

void advancedFree(Run &run, StatusCode (*free)(MorphAdvSpec *)) {
    MorphAdvSpec *spec = nullptr;
    run.digest.numbers(
        {free(nullptr), rvxiMorphAdvInitAlloc_8u_C1R(&spec, {9, 4}, flatMasks[0].bytes().data(), {3, 3}), free(spec)});
}

// ------------------------------------------------------------------------------------------------ the older interface

struct AnchoredMask {
    FlatMask mask;
    Point2i anchor;
};
const std::vector<AnchoredMask> anchoredMasks = {{flatMasks[0], {1, 1}}, {flatMasks[1], {0, 0}},
                                                 {flatMasks[2], {0, 2}}, {flatMasks[3], {4, 3}},
                                                 {flatMasks[4], {0, 1}}, {flatMasks[5], {2, 0}}};

void stateSize(Run &run, StatusCode (*query)(std::int32_t, const std::uint8_t *, RoiSize, std::int32_t *)) {
    const std::vector<std::uint8_t> ones(31 * 17, 1);
    const std::vector<RoiSize> masks = {{1, 1}, {3, 3}, {5, 2}, {31, 17}, {0, 1}, {3, 0}};
    sizes(
        run,
        [&](std::int32_t width, RoiSize mask, bool noMask, std::int32_t *size) {
            return query(width, noMask ? nullptr : ones.data(), mask, size);
        },
        queryWidths(), masks, std::vector<bool>{false, true});
}

template <class T>
using Older = StatusCode (*)(const T *, std::int32_t, T *, std::int32_t, RoiSize, BorderKind, MorphState *);
using StateInit = StatusCode (*)(std::int32_t, const std::uint8_t *, RoiSize, Point2i, MorphState *);
using StateQuery = StatusCode (*)(std::int32_t, const std::uint8_t *, RoiSize, std::int32_t *);

template <class T> void older(Run &run, Older<T> f, int channels, StateQuery query, StateInit init) {
    Sweep sweep(run);
    Choice<AnchoredMask> mask(sweep, anchoredMasks);
    Choice<bool> narrow(sweep, {false}, {true});
    Choice<BorderKind> border(sweep, {BorderReplicate},
                              {BorderConstant, BorderInMemory, BorderReplicate | BorderInMemoryTop});
    Image<const T> src(sweep, ordered(channels));
    Image<T> dst(sweep, ordered(channels));
    Region roi(sweep);
    Bytes state(sweep, 8), narrowState(sweep, 8, false);
    const auto make = [&](Bytes &record, std::int32_t width) {
        const AnchoredMask &m = mask.value();
        const std::vector<std::uint8_t> bytes = m.mask.bytes();
        std::int32_t size = 0;
        query(width, bytes.data(), m.mask.size, &size);
        record.size(size);
        init(width, bytes.data(), m.mask.size, m.anchor, record.as<MorphState>());
    };
    sweep.before = [&] {
        make(state, sweep.roi().width);
        make(narrowState, std::max(sweep.roi().width - 1, 1));
    };
    sweep.run([&] {
        return f(src, src.step, dst, dst.step, roi, border,
                 narrow && state != nullptr ? narrowState.as<MorphState>() : state.as<MorphState>());
    });
}

// What a state does to an image.
template <class T> void digestState(Run &run, Older<T> f, int channels, MorphState *state, std::int32_t width) {
    const RoiSize roi = {std::min(width, 23), 5};
    const std::int32_t step = roi.width * channels * static_cast<std::int32_t>(sizeof(T));
    const auto count = static_cast<std::size_t>(roi.width) * 5 * static_cast<std::size_t>(channels);
    std::vector<T> src(count), dst(count);
    for (std::size_t i = 0; i < count; ++i) {
        src[i] = static_cast<T>(hills(static_cast<std::int64_t>(i) * 7, static_cast<std::int64_t>(i) / 11, 5));
    }
    run.digest.number(f(src.data(), step, dst.data(), step, roi, BorderReplicate, state));
    for (const T value : dst) {
        run.digest.number(value);
    }
}

template <class Call> void forEachState(const Call &call) {
    forEach(
        [&](std::int32_t width, const AnchoredMask &mask) {
            const std::vector<std::uint8_t> bytes = mask.mask.bytes();
            const RoiSize size = mask.mask.size;
            call(width, nullptr, size, mask.anchor);
            call(width, bytes.data(), badMask, mask.anchor);
            call(width, bytes.data(), size, Point2i{size.width, 0});
            call(width, bytes.data(), size, Point2i{0, -1});
            call(width, bytes.data(), RoiSize{0, 1}, Point2i{-1, -1});
            call(width, bytes.data(), size, mask.anchor);
        },
        std::vector<std::int32_t>{1, 19, 70, 0, -5}, anchoredMasks);
}

template <class T> void stateInit(Run &run, StateInit init, int channels, StateQuery query, Older<T> use) {
    forEachState([&](std::int32_t width, const std::uint8_t *mask, RoiSize size, Point2i anchor) {
        std::int32_t bytes = static_cast<std::int32_t>(sizeof(MorphState));
        query(width, mask, size, &bytes);
        Memory memory;
        auto *const state = reinterpret_cast<MorphState *>(memory.place((bytes + 7) / 8 * 8, 0, false));
        const StatusCode status = init(width, mask, size, anchor, state);
        run.digest.numbers({status, init(width, mask, size, anchor, nullptr)});
        if (status == StatusOk) {
            digestRecord(run.digest, &state->spec);
            digestState(run, use, channels, state, width);
        }
    });
}

template <class T>
void stateInitAlloc(Run &run, StatusCode (*init)(std::int32_t, const std::uint8_t *, RoiSize, Point2i, MorphState **),
                    int channels, Older<T> use) {
    forEachState([&](std::int32_t width, const std::uint8_t *mask, RoiSize size, Point2i anchor) {
        MorphState *state = nullptr;
        run.digest.numbers({init(width, mask, size, anchor, &state), init(width, mask, size, anchor, nullptr)});
        run.digest.number(state != nullptr);
        if (state != nullptr) {
            digestRecord(run.digest, &state->spec);
            digestState(run, use, channels, state, width);
            run.digest.number(rvxiMorphologyFree(state));
        }
    });
}

void stateFree(Run &run, StatusCode (*free)(MorphState *)) {
    MorphState *state = nullptr;
    run.digest.numbers({free(nullptr),
                        rvxiMorphologyInitAlloc_32f_C3R(9, flatMasks[0].bytes().data(), {3, 3}, {0, 1}, &state),
                        free(state)});
}

// ---------------------------------------------------------------------------------------------------- grey morphology

template <class V> V absent() {
    return std::is_integral_v<V> ? std::numeric_limits<V>::min() : -std::numeric_limits<V>::infinity();
}

// Values of a structuring function, the n-th position left out where `part` says so.
template <class V> std::vector<V> surface(RoiSize mask, int kind) {
    std::vector<V> values;
    for (int i = 0; i < mask.width * mask.height; ++i) {
        const bool part = kind == 0 || (kind == 1 ? i % 3 != 0 : false);
        values.push_back(part ? static_cast<V>(i * 37 % 101 - 60) : absent<V>());
    }
    return values;
}

struct Surface {
    RoiSize mask;
    int kind; // everything, two thirds, nothing
};
const std::vector<Surface> surfaces = {{{3, 3}, 0}, {{1, 1}, 0}, {{5, 4}, 1}, {{2, 6}, 0}, {{4, 3}, 2}};

template <class T, class V>
void gray(Run &run,
          StatusCode (*f)(const T *, std::int32_t, T *, std::int32_t, RoiSize, BorderKind, T, const GrayMorphSpec *,
                          std::uint8_t *),
          StatusCode (*size)(std::int32_t, RoiSize, std::int32_t *, std::int32_t *),
          StatusCode (*init)(std::int32_t, const V *, RoiSize, GrayMorphSpec *)) {
    Sweep sweep(run);
    Choice<BorderKind> border(sweep, bordersOf({BorderConstant, BorderReplicate}), {BorderMirror, BorderWrap, 7});
    Choice<Surface> shape(sweep, surfaces);
    // A record without its tag, one of the other type, one for a narrower region; the source as the destination.
    Choice<int> damage(sweep, {0}, {1, 2, 3, 4});
    Image<const T> src(sweep, ordered(1, [&] {
                           const RoiSize m = shape.value().mask;
                           const std::int32_t x = (m.width - 1) >> 1, y = (m.height - 1) >> 1;
                           return inMemory(border, {x, y, m.width - 1 - x, m.height - 1 - y});
                       }));
    Image<T> dst(sweep, ordered(1));
    Region roi(sweep);
    Bytes record(sweep, 8), buffer(sweep);
    sweep.before = [&] {
        const Surface s = shape;
        std::int32_t specSize = 0, bufferSize = 0;
        size(sweep.roi().width, s.mask, &specSize, &bufferSize);
        record.size(specSize);
        buffer.size(bufferSize);
        init(sweep.roi().width, surface<V>(s.mask, s.kind).data(), s.mask, record.as<GrayMorphSpec>());
    };
    sweep.run([&] {
        auto *const spec = record.as<GrayMorphSpec>();
        GrayMorphSpec kept{};
        if (spec != nullptr) {
            kept = *spec;
            spec->tag ^= damage == 1 ? 1 : 0;
            spec->type = damage == 2 ? PixelType16u : spec->type;
            spec->roiWidth -= damage == 3 ? 1 : 0;
        }
        const StatusCode status = f(src, src.step, damage == 4 && src != nullptr ? const_cast<T *>(+src) : dst,
                                    dst.step, roi, border, T{9}, spec, buffer);
        if (spec != nullptr) {
            *spec = kept;
        }
        return status;
    });
}

template <class V>
void grayInit(Run &run, StatusCode (*init)(std::int32_t, const V *, RoiSize, GrayMorphSpec *),
              StatusCode (*size)(std::int32_t, RoiSize, std::int32_t *, std::int32_t *)) {
    const auto digested = [&](std::int32_t width, RoiSize mask, const V *values) {
        std::int32_t specSize = 64, bufferSize = 0;
        size(width, mask, &specSize, &bufferSize);
        Memory memory;
        auto *const spec = reinterpret_cast<GrayMorphSpec *>(memory.place((specSize + 7) / 8 * 8, 0, false));
        const StatusCode status = init(width, values, mask, spec);
        run.digest.numbers({status, init(width, values, mask, nullptr)});
        if (status == StatusOk) {
            run.digest.numbers({spec->tag, spec->type, spec->roiWidth, spec->maskWidth, spec->maskHeight, spec->anchorX,
                                spec->anchorY, spec->count});
            run.digest.bytes(spec + 1, spec->count * static_cast<std::int64_t>(sizeof(GrayMorphEntry)));
        }
    };
    forEach(
        [&](std::int32_t width, const Surface &s) {
            std::vector<V> values = surface<V>(s.mask, s.kind);
            digested(width, s.mask, values.data());
            digested(width, s.mask, nullptr);
            digested(width, {0, 2}, values.data());
            values.back() = static_cast<V>(1000); // 8u values are clamped
            digested(width, s.mask, values.data());
            if constexpr (std::is_floating_point_v<V>) {
                for (const V bad : {std::numeric_limits<V>::infinity(), std::numeric_limits<V>::quiet_NaN()}) {
                    values.back() = bad;
                    digested(width, s.mask, values.data());
                    digested(0, s.mask, values.data());
                }
            }
        },
        std::vector<std::int32_t>{1, 19, 70, 0}, surfaces);
}

// ----------------------------------------------------------------------------------------------------- reconstruction

void regionSize(Run &run, StatusCode (*query)(RoiSize, std::int32_t *)) { sizes(run, query, queryRegions()); }

template <class T>
void reconstruct(Run &run,
                 StatusCode (*f)(const T *, std::int32_t, T *, std::int32_t, RoiSize, NormKind, std::uint8_t *)) {
    Sweep sweep(run);
    Choice<NormKind> norm(sweep, {NormInf, NormL1}, {NormL2, -1});
    Choice<bool> same(sweep, {false, false, true});
    Image<const T> mask(sweep,
                        {.contents = finite, .picture = run.next() % 2 != 0 ? hills : blocks, .zeroSign = false});
    Image<T> marker(sweep, {.contents = finite, .zeroSign = false});
    Region roi(sweep);
    Bytes buffer(sweep);
    sweep.before = [&] {
        std::int32_t size = 0;
        rvxiMorphReconstructGetBufferSize_32f_C1R(sweep.roi(), &size);
        buffer.size(size);
    };
    sweep.run([&] {
        return same ? f(marker, marker.step, marker, marker.step, roi, norm, buffer)
                    : f(mask, mask.step, marker, marker.step, roi, norm, buffer);
    });
}

} // namespace

void addMorph(Members &members) {
    const Member table[] = {
        MEMBER(rvxiFilterMinGetBufferSize_8u_C1R, rankSize),
        MEMBER(rvxiFilterMinGetBufferSize_8u_C3R, rankSize),
        MEMBER(rvxiFilterMinGetBufferSize_8u_C4R, rankSize),
        MEMBER(rvxiFilterMinGetBufferSize_32f_C1R, rankSize),
        MEMBER(rvxiFilterMinGetBufferSize_32f_C3R, rankSize),
        MEMBER(rvxiFilterMinGetBufferSize_32f_C4R, rankSize),
        MEMBER(rvxiFilterMaxGetBufferSize_8u_C1R, rankSize),
        MEMBER(rvxiFilterMaxGetBufferSize_8u_C3R, rankSize),
        MEMBER(rvxiFilterMaxGetBufferSize_8u_C4R, rankSize),
        MEMBER(rvxiFilterMaxGetBufferSize_32f_C1R, rankSize),
        MEMBER(rvxiFilterMaxGetBufferSize_32f_C3R, rankSize),
        MEMBER(rvxiFilterMaxGetBufferSize_32f_C4R, rankSize),
        MEMBER(rvxiFilterMinBorderReplicate_8u_C1R, rankFilter, 1, rvxiFilterMinGetBufferSize_8u_C1R),
        MEMBER(rvxiFilterMinBorderReplicate_8u_C3R, rankFilter, 3, rvxiFilterMinGetBufferSize_8u_C3R),
        MEMBER(rvxiFilterMinBorderReplicate_8u_C4R, rankFilter, 4, rvxiFilterMinGetBufferSize_8u_C4R),
        MEMBER(rvxiFilterMinBorderReplicate_32f_C1R, rankFilter, 1, rvxiFilterMinGetBufferSize_32f_C1R),
        MEMBER(rvxiFilterMinBorderReplicate_32f_C3R, rankFilter, 3, rvxiFilterMinGetBufferSize_32f_C3R),
        MEMBER(rvxiFilterMinBorderReplicate_32f_C4R, rankFilter, 4, rvxiFilterMinGetBufferSize_32f_C4R),
        MEMBER(rvxiFilterMaxBorderReplicate_8u_C1R, rankFilter, 1, rvxiFilterMaxGetBufferSize_8u_C1R),
        MEMBER(rvxiFilterMaxBorderReplicate_8u_C3R, rankFilter, 3, rvxiFilterMaxGetBufferSize_8u_C3R),
        MEMBER(rvxiFilterMaxBorderReplicate_8u_C4R, rankFilter, 4, rvxiFilterMaxGetBufferSize_8u_C4R),
        MEMBER(rvxiFilterMaxBorderReplicate_32f_C1R, rankFilter, 1, rvxiFilterMaxGetBufferSize_32f_C1R),
        MEMBER(rvxiFilterMaxBorderReplicate_32f_C3R, rankFilter, 3, rvxiFilterMaxGetBufferSize_32f_C3R),
        MEMBER(rvxiFilterMaxBorderReplicate_32f_C4R, rankFilter, 4, rvxiFilterMaxGetBufferSize_32f_C4R),
        MEMBER(rvxiErodeBorder_1u_C1R, flatBits, rvxiMorphologyBorderGetSize_1u_C1R, rvxiMorphologyBorderInit_1u_C1R),
        MEMBER(rvxiDilateBorder_1u_C1R, flatBits, rvxiMorphologyBorderGetSize_1u_C1R, rvxiMorphologyBorderInit_1u_C1R),
        MEMBER(rvxiMorphologyBorderGetSize_8u_C1R, recordSizes),
        MEMBER(rvxiMorphologyBorderGetSize_8u_C3R, recordSizes),
        MEMBER(rvxiMorphologyBorderGetSize_8u_C4R, recordSizes),
        MEMBER(rvxiMorphologyBorderGetSize_16u_C1R, recordSizes),
        MEMBER(rvxiMorphologyBorderGetSize_16s_C1R, recordSizes),
        MEMBER(rvxiMorphologyBorderGetSize_32f_C1R, recordSizes),
        MEMBER(rvxiMorphologyBorderGetSize_32f_C3R, recordSizes),
        MEMBER(rvxiMorphologyBorderGetSize_32f_C4R, recordSizes),
        MEMBER(rvxiMorphologyBorderGetSize_1u_C1R, recordSizes),
        MEMBER(rvxiMorphologyBorderInit_8u_C1R, recordInit, rvxiMorphologyBorderGetSize_8u_C1R),
        MEMBER(rvxiMorphologyBorderInit_8u_C3R, recordInit, rvxiMorphologyBorderGetSize_8u_C3R),
        MEMBER(rvxiMorphologyBorderInit_8u_C4R, recordInit, rvxiMorphologyBorderGetSize_8u_C4R),
        MEMBER(rvxiMorphologyBorderInit_16u_C1R, recordInit, rvxiMorphologyBorderGetSize_16u_C1R),
        MEMBER(rvxiMorphologyBorderInit_16s_C1R, recordInit, rvxiMorphologyBorderGetSize_16s_C1R),
        MEMBER(rvxiMorphologyBorderInit_32f_C1R, recordInit, rvxiMorphologyBorderGetSize_32f_C1R),
        MEMBER(rvxiMorphologyBorderInit_32f_C3R, recordInit, rvxiMorphologyBorderGetSize_32f_C3R),
        MEMBER(rvxiMorphologyBorderInit_32f_C4R, recordInit, rvxiMorphologyBorderGetSize_32f_C4R),
        MEMBER(rvxiMorphologyBorderInit_1u_C1R, recordInit, rvxiMorphologyBorderGetSize_1u_C1R),
        MEMBER(rvxiMorphologyGetSize_8u_C1R, stateSize),
        MEMBER(rvxiMorphologyGetSize_8u_C3R, stateSize),
        MEMBER(rvxiMorphologyGetSize_8u_C4R, stateSize),
        MEMBER(rvxiMorphologyGetSize_32f_C1R, stateSize),
        MEMBER(rvxiMorphologyGetSize_32f_C3R, stateSize),
        MEMBER(rvxiMorphologyGetSize_32f_C4R, stateSize),
        MEMBER(rvxiMorphologyInit_8u_C1R, stateInit, 1, rvxiMorphologyGetSize_8u_C1R, rvxiErodeBorderReplicate_8u_C1R),
        MEMBER(rvxiMorphologyInit_8u_C3R, stateInit, 3, rvxiMorphologyGetSize_8u_C3R, rvxiErodeBorderReplicate_8u_C3R),
        MEMBER(rvxiMorphologyInit_8u_C4R, stateInit, 4, rvxiMorphologyGetSize_8u_C4R, rvxiErodeBorderReplicate_8u_C4R),
        MEMBER(rvxiMorphologyInit_32f_C1R, stateInit, 1, rvxiMorphologyGetSize_32f_C1R,
               rvxiErodeBorderReplicate_32f_C1R),
        MEMBER(rvxiMorphologyInit_32f_C3R, stateInit, 3, rvxiMorphologyGetSize_32f_C3R,
               rvxiErodeBorderReplicate_32f_C3R),
        MEMBER(rvxiMorphologyInit_32f_C4R, stateInit, 4, rvxiMorphologyGetSize_32f_C4R,
               rvxiErodeBorderReplicate_32f_C4R),
        MEMBER(rvxiMorphologyInitAlloc_8u_C1R, stateInitAlloc, 1, rvxiDilateBorderReplicate_8u_C1R),
        MEMBER(rvxiMorphologyInitAlloc_8u_C3R, stateInitAlloc, 3, rvxiDilateBorderReplicate_8u_C3R),
        MEMBER(rvxiMorphologyInitAlloc_8u_C4R, stateInitAlloc, 4, rvxiDilateBorderReplicate_8u_C4R),
        MEMBER(rvxiMorphologyInitAlloc_32f_C1R, stateInitAlloc, 1, rvxiDilateBorderReplicate_32f_C1R),
        MEMBER(rvxiMorphologyInitAlloc_32f_C3R, stateInitAlloc, 3, rvxiDilateBorderReplicate_32f_C3R),
        MEMBER(rvxiMorphologyInitAlloc_32f_C4R, stateInitAlloc, 4, rvxiDilateBorderReplicate_32f_C4R),
        MEMBER(rvxiMorphologyFree, stateFree),
        MEMBER(rvxiErodeBorder_8u_C1R, flat, 1, rvxiMorphologyBorderGetSize_8u_C1R, rvxiMorphologyBorderInit_8u_C1R),
        MEMBER(rvxiErodeBorder_8u_C3R, flat, 3, rvxiMorphologyBorderGetSize_8u_C3R, rvxiMorphologyBorderInit_8u_C3R),
        MEMBER(rvxiErodeBorder_8u_C4R, flat, 4, rvxiMorphologyBorderGetSize_8u_C4R, rvxiMorphologyBorderInit_8u_C4R),
        MEMBER(rvxiErodeBorder_16u_C1R, flat, 1, rvxiMorphologyBorderGetSize_16u_C1R, rvxiMorphologyBorderInit_16u_C1R),
        MEMBER(rvxiErodeBorder_16s_C1R, flat, 1, rvxiMorphologyBorderGetSize_16s_C1R, rvxiMorphologyBorderInit_16s_C1R),
        MEMBER(rvxiErodeBorder_32f_C1R, flat, 1, rvxiMorphologyBorderGetSize_32f_C1R, rvxiMorphologyBorderInit_32f_C1R),
        MEMBER(rvxiErodeBorder_32f_C3R, flat, 3, rvxiMorphologyBorderGetSize_32f_C3R, rvxiMorphologyBorderInit_32f_C3R),
        MEMBER(rvxiErodeBorder_32f_C4R, flat, 4, rvxiMorphologyBorderGetSize_32f_C4R, rvxiMorphologyBorderInit_32f_C4R),
        MEMBER(rvxiDilateBorder_8u_C1R, flat, 1, rvxiMorphologyBorderGetSize_8u_C1R, rvxiMorphologyBorderInit_8u_C1R),
        MEMBER(rvxiDilateBorder_8u_C3R, flat, 3, rvxiMorphologyBorderGetSize_8u_C3R, rvxiMorphologyBorderInit_8u_C3R),
        MEMBER(rvxiDilateBorder_8u_C4R, flat, 4, rvxiMorphologyBorderGetSize_8u_C4R, rvxiMorphologyBorderInit_8u_C4R),
        MEMBER(rvxiDilateBorder_16u_C1R, flat, 1, rvxiMorphologyBorderGetSize_16u_C1R,
               rvxiMorphologyBorderInit_16u_C1R),
        MEMBER(rvxiDilateBorder_16s_C1R, flat, 1, rvxiMorphologyBorderGetSize_16s_C1R,
               rvxiMorphologyBorderInit_16s_C1R),
        MEMBER(rvxiDilateBorder_32f_C1R, flat, 1, rvxiMorphologyBorderGetSize_32f_C1R,
               rvxiMorphologyBorderInit_32f_C1R),
        MEMBER(rvxiDilateBorder_32f_C3R, flat, 3, rvxiMorphologyBorderGetSize_32f_C3R,
               rvxiMorphologyBorderInit_32f_C3R),
        MEMBER(rvxiDilateBorder_32f_C4R, flat, 4, rvxiMorphologyBorderGetSize_32f_C4R,
               rvxiMorphologyBorderInit_32f_C4R),
        MEMBER(rvxiErodeBorderReplicate_8u_C1R, older, 1, rvxiMorphologyGetSize_8u_C1R, rvxiMorphologyInit_8u_C1R),
        MEMBER(rvxiErodeBorderReplicate_8u_C3R, older, 3, rvxiMorphologyGetSize_8u_C3R, rvxiMorphologyInit_8u_C3R),
        MEMBER(rvxiErodeBorderReplicate_8u_C4R, older, 4, rvxiMorphologyGetSize_8u_C4R, rvxiMorphologyInit_8u_C4R),
        MEMBER(rvxiErodeBorderReplicate_32f_C1R, older, 1, rvxiMorphologyGetSize_32f_C1R, rvxiMorphologyInit_32f_C1R),
        MEMBER(rvxiErodeBorderReplicate_32f_C3R, older, 3, rvxiMorphologyGetSize_32f_C3R, rvxiMorphologyInit_32f_C3R),
        MEMBER(rvxiErodeBorderReplicate_32f_C4R, older, 4, rvxiMorphologyGetSize_32f_C4R, rvxiMorphologyInit_32f_C4R),
        MEMBER(rvxiDilateBorderReplicate_8u_C1R, older, 1, rvxiMorphologyGetSize_8u_C1R, rvxiMorphologyInit_8u_C1R),
        MEMBER(rvxiDilateBorderReplicate_8u_C3R, older, 3, rvxiMorphologyGetSize_8u_C3R, rvxiMorphologyInit_8u_C3R),
        MEMBER(rvxiDilateBorderReplicate_8u_C4R, older, 4, rvxiMorphologyGetSize_8u_C4R, rvxiMorphologyInit_8u_C4R),
        MEMBER(rvxiDilateBorderReplicate_32f_C1R, older, 1, rvxiMorphologyGetSize_32f_C1R, rvxiMorphologyInit_32f_C1R),
        MEMBER(rvxiDilateBorderReplicate_32f_C3R, older, 3, rvxiMorphologyGetSize_32f_C3R, rvxiMorphologyInit_32f_C3R),
        MEMBER(rvxiDilateBorderReplicate_32f_C4R, older, 4, rvxiMorphologyGetSize_32f_C4R, rvxiMorphologyInit_32f_C4R),
        MEMBER(rvxiMorphAdvGetSize_8u_C1R, recordSizes),
        MEMBER(rvxiMorphAdvGetSize_8u_C3R, recordSizes),
        MEMBER(rvxiMorphAdvGetSize_8u_C4R, recordSizes),
        MEMBER(rvxiMorphAdvGetSize_16u_C1R, recordSizes),
        MEMBER(rvxiMorphAdvGetSize_16s_C1R, recordSizes),
        MEMBER(rvxiMorphAdvGetSize_32f_C1R, recordSizes),
        MEMBER(rvxiMorphAdvGetSize_32f_C3R, recordSizes),
        MEMBER(rvxiMorphAdvGetSize_32f_C4R, recordSizes),
        MEMBER(rvxiMorphAdvGetSize_1u_C1R, recordSizes),
        MEMBER(rvxiMorphAdvInit_8u_C1R, recordInit, rvxiMorphAdvGetSize_8u_C1R),
        MEMBER(rvxiMorphAdvInit_8u_C3R, recordInit, rvxiMorphAdvGetSize_8u_C3R),
        MEMBER(rvxiMorphAdvInit_8u_C4R, recordInit, rvxiMorphAdvGetSize_8u_C4R),
        MEMBER(rvxiMorphAdvInit_16u_C1R, recordInit, rvxiMorphAdvGetSize_16u_C1R),
        MEMBER(rvxiMorphAdvInit_16s_C1R, recordInit, rvxiMorphAdvGetSize_16s_C1R),
        MEMBER(rvxiMorphAdvInit_32f_C1R, recordInit, rvxiMorphAdvGetSize_32f_C1R),
        MEMBER(rvxiMorphAdvInit_32f_C3R, recordInit, rvxiMorphAdvGetSize_32f_C3R),
        MEMBER(rvxiMorphAdvInit_32f_C4R, recordInit, rvxiMorphAdvGetSize_32f_C4R),
        MEMBER(rvxiMorphAdvInit_1u_C1R, recordInit, rvxiMorphAdvGetSize_1u_C1R),
        MEMBER(rvxiMorphAdvInitAlloc_8u_C1R, advancedInitAlloc),
        MEMBER(rvxiMorphAdvInitAlloc_8u_C3R, advancedInitAlloc),
        MEMBER(rvxiMorphAdvInitAlloc_8u_C4R, advancedInitAlloc),
        MEMBER(rvxiMorphAdvInitAlloc_32f_C1R, advancedInitAlloc),
        MEMBER(rvxiMorphAdvInitAlloc_32f_C3R, advancedInitAlloc),
        MEMBER(rvxiMorphAdvInitAlloc_32f_C4R, advancedInitAlloc),
        MEMBER(rvxiMorphAdvFree, advancedFree),
        MEMBER(rvxiMorphOpenBorder_8u_C1R, flat, 1, rvxiMorphAdvGetSize_8u_C1R, rvxiMorphAdvInit_8u_C1R),
        MEMBER(rvxiMorphOpenBorder_8u_C3R, flat, 3, rvxiMorphAdvGetSize_8u_C3R, rvxiMorphAdvInit_8u_C3R),
        MEMBER(rvxiMorphOpenBorder_8u_C4R, flat, 4, rvxiMorphAdvGetSize_8u_C4R, rvxiMorphAdvInit_8u_C4R),
        MEMBER(rvxiMorphOpenBorder_16u_C1R, flat, 1, rvxiMorphAdvGetSize_16u_C1R, rvxiMorphAdvInit_16u_C1R),
        MEMBER(rvxiMorphOpenBorder_16s_C1R, flat, 1, rvxiMorphAdvGetSize_16s_C1R, rvxiMorphAdvInit_16s_C1R),
        MEMBER(rvxiMorphOpenBorder_32f_C1R, flat, 1, rvxiMorphAdvGetSize_32f_C1R, rvxiMorphAdvInit_32f_C1R),
        MEMBER(rvxiMorphOpenBorder_32f_C3R, flat, 3, rvxiMorphAdvGetSize_32f_C3R, rvxiMorphAdvInit_32f_C3R),
        MEMBER(rvxiMorphOpenBorder_32f_C4R, flat, 4, rvxiMorphAdvGetSize_32f_C4R, rvxiMorphAdvInit_32f_C4R),
        MEMBER(rvxiMorphOpenBorder_1u_C1R, flatBits, rvxiMorphAdvGetSize_1u_C1R, rvxiMorphAdvInit_1u_C1R),
        MEMBER(rvxiMorphCloseBorder_8u_C1R, flat, 1, rvxiMorphAdvGetSize_8u_C1R, rvxiMorphAdvInit_8u_C1R),
        MEMBER(rvxiMorphCloseBorder_8u_C3R, flat, 3, rvxiMorphAdvGetSize_8u_C3R, rvxiMorphAdvInit_8u_C3R),
        MEMBER(rvxiMorphCloseBorder_8u_C4R, flat, 4, rvxiMorphAdvGetSize_8u_C4R, rvxiMorphAdvInit_8u_C4R),
        MEMBER(rvxiMorphCloseBorder_16u_C1R, flat, 1, rvxiMorphAdvGetSize_16u_C1R, rvxiMorphAdvInit_16u_C1R),
        MEMBER(rvxiMorphCloseBorder_16s_C1R, flat, 1, rvxiMorphAdvGetSize_16s_C1R, rvxiMorphAdvInit_16s_C1R),
        MEMBER(rvxiMorphCloseBorder_32f_C1R, flat, 1, rvxiMorphAdvGetSize_32f_C1R, rvxiMorphAdvInit_32f_C1R),
        MEMBER(rvxiMorphCloseBorder_32f_C3R, flat, 3, rvxiMorphAdvGetSize_32f_C3R, rvxiMorphAdvInit_32f_C3R),
        MEMBER(rvxiMorphCloseBorder_32f_C4R, flat, 4, rvxiMorphAdvGetSize_32f_C4R, rvxiMorphAdvInit_32f_C4R),
        MEMBER(rvxiMorphCloseBorder_1u_C1R, flatBits, rvxiMorphAdvGetSize_1u_C1R, rvxiMorphAdvInit_1u_C1R),
        MEMBER(rvxiMorphTophatBorder_8u_C1R, flat, 1, rvxiMorphAdvGetSize_8u_C1R, rvxiMorphAdvInit_8u_C1R),
        MEMBER(rvxiMorphTophatBorder_8u_C3R, flat, 3, rvxiMorphAdvGetSize_8u_C3R, rvxiMorphAdvInit_8u_C3R),
        MEMBER(rvxiMorphTophatBorder_8u_C4R, flat, 4, rvxiMorphAdvGetSize_8u_C4R, rvxiMorphAdvInit_8u_C4R),
        MEMBER(rvxiMorphTophatBorder_16u_C1R, flat, 1, rvxiMorphAdvGetSize_16u_C1R, rvxiMorphAdvInit_16u_C1R),
        MEMBER(rvxiMorphTophatBorder_16s_C1R, flat, 1, rvxiMorphAdvGetSize_16s_C1R, rvxiMorphAdvInit_16s_C1R),
        MEMBER(rvxiMorphTophatBorder_32f_C1R, flat, 1, rvxiMorphAdvGetSize_32f_C1R, rvxiMorphAdvInit_32f_C1R),
        MEMBER(rvxiMorphTophatBorder_32f_C3R, flat, 3, rvxiMorphAdvGetSize_32f_C3R, rvxiMorphAdvInit_32f_C3R),
        MEMBER(rvxiMorphTophatBorder_32f_C4R, flat, 4, rvxiMorphAdvGetSize_32f_C4R, rvxiMorphAdvInit_32f_C4R),
        MEMBER(rvxiMorphTophatBorder_1u_C1R, flatBits, rvxiMorphAdvGetSize_1u_C1R, rvxiMorphAdvInit_1u_C1R),
        MEMBER(rvxiMorphBlackhatBorder_8u_C1R, flat, 1, rvxiMorphAdvGetSize_8u_C1R, rvxiMorphAdvInit_8u_C1R),
        MEMBER(rvxiMorphBlackhatBorder_8u_C3R, flat, 3, rvxiMorphAdvGetSize_8u_C3R, rvxiMorphAdvInit_8u_C3R),
        MEMBER(rvxiMorphBlackhatBorder_8u_C4R, flat, 4, rvxiMorphAdvGetSize_8u_C4R, rvxiMorphAdvInit_8u_C4R),
        MEMBER(rvxiMorphBlackhatBorder_16u_C1R, flat, 1, rvxiMorphAdvGetSize_16u_C1R, rvxiMorphAdvInit_16u_C1R),
        MEMBER(rvxiMorphBlackhatBorder_16s_C1R, flat, 1, rvxiMorphAdvGetSize_16s_C1R, rvxiMorphAdvInit_16s_C1R),
        MEMBER(rvxiMorphBlackhatBorder_32f_C1R, flat, 1, rvxiMorphAdvGetSize_32f_C1R, rvxiMorphAdvInit_32f_C1R),
        MEMBER(rvxiMorphBlackhatBorder_32f_C3R, flat, 3, rvxiMorphAdvGetSize_32f_C3R, rvxiMorphAdvInit_32f_C3R),
        MEMBER(rvxiMorphBlackhatBorder_32f_C4R, flat, 4, rvxiMorphAdvGetSize_32f_C4R, rvxiMorphAdvInit_32f_C4R),
        MEMBER(rvxiMorphBlackhatBorder_1u_C1R, flatBits, rvxiMorphAdvGetSize_1u_C1R, rvxiMorphAdvInit_1u_C1R),
        MEMBER(rvxiMorphGradientBorder_8u_C1R, flat, 1, rvxiMorphAdvGetSize_8u_C1R, rvxiMorphAdvInit_8u_C1R),
        MEMBER(rvxiMorphGradientBorder_8u_C3R, flat, 3, rvxiMorphAdvGetSize_8u_C3R, rvxiMorphAdvInit_8u_C3R),
        MEMBER(rvxiMorphGradientBorder_8u_C4R, flat, 4, rvxiMorphAdvGetSize_8u_C4R, rvxiMorphAdvInit_8u_C4R),
        MEMBER(rvxiMorphGradientBorder_16u_C1R, flat, 1, rvxiMorphAdvGetSize_16u_C1R, rvxiMorphAdvInit_16u_C1R),
        MEMBER(rvxiMorphGradientBorder_16s_C1R, flat, 1, rvxiMorphAdvGetSize_16s_C1R, rvxiMorphAdvInit_16s_C1R),
        MEMBER(rvxiMorphGradientBorder_32f_C1R, flat, 1, rvxiMorphAdvGetSize_32f_C1R, rvxiMorphAdvInit_32f_C1R),
        MEMBER(rvxiMorphGradientBorder_32f_C3R, flat, 3, rvxiMorphAdvGetSize_32f_C3R, rvxiMorphAdvInit_32f_C3R),
        MEMBER(rvxiMorphGradientBorder_32f_C4R, flat, 4, rvxiMorphAdvGetSize_32f_C4R, rvxiMorphAdvInit_32f_C4R),
        MEMBER(rvxiMorphGradientBorder_1u_C1R, flatBits, rvxiMorphAdvGetSize_1u_C1R, rvxiMorphAdvInit_1u_C1R),
        MEMBER(rvxiGrayMorphologyGetSize_8u_C1R, recordSizes),
        MEMBER(rvxiGrayMorphologyGetSize_32f_C1R, recordSizes),
        MEMBER(rvxiGrayMorphologyInit_8u_C1R, grayInit, rvxiGrayMorphologyGetSize_8u_C1R),
        MEMBER(rvxiGrayMorphologyInit_32f_C1R, grayInit, rvxiGrayMorphologyGetSize_32f_C1R),
        MEMBER(rvxiGrayErodeBorder_8u_C1R, gray, rvxiGrayMorphologyGetSize_8u_C1R, rvxiGrayMorphologyInit_8u_C1R),
        MEMBER(rvxiGrayErodeBorder_32f_C1R, gray, rvxiGrayMorphologyGetSize_32f_C1R, rvxiGrayMorphologyInit_32f_C1R),
        MEMBER(rvxiGrayDilateBorder_8u_C1R, gray, rvxiGrayMorphologyGetSize_8u_C1R, rvxiGrayMorphologyInit_8u_C1R),
        MEMBER(rvxiGrayDilateBorder_32f_C1R, gray, rvxiGrayMorphologyGetSize_32f_C1R, rvxiGrayMorphologyInit_32f_C1R),
        MEMBER(rvxiMorphReconstructDilate_8u_C1IR, reconstruct),
        MEMBER(rvxiMorphReconstructDilate_16u_C1IR, reconstruct),
        MEMBER(rvxiMorphReconstructDilate_32f_C1IR, reconstruct),
        MEMBER(rvxiMorphReconstructErode_8u_C1IR, reconstruct),
        MEMBER(rvxiMorphReconstructErode_16u_C1IR, reconstruct),
        MEMBER(rvxiMorphReconstructErode_32f_C1IR, reconstruct),
        MEMBER(rvxiMorphReconstructGetBufferSize_8u_C1R, regionSize),
        MEMBER(rvxiMorphReconstructGetBufferSize_16u_C1R, regionSize),
        MEMBER(rvxiMorphReconstructGetBufferSize_32f_C1R, regionSize),
    };
    members.insert(members.end(), std::begin(table), std::end(table));
}

} // namespace contract
