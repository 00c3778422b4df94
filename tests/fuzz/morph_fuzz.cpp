// Morphology: rank filters, flat, compound and grey operations, reconstruction.
#include "planes.h"

#include <algorithm>

namespace {

using namespace fuzz;

constexpr std::initializer_list<StatusCode> morphStatuses = {
    StatusBadArgument, StatusBadBorder, StatusBadContext, StatusBadAnchor,
    StatusBadMaskSize, StatusNoMemory,  StatusOutOfRange, StatusInPlaceNotSupported};

// The bytes of a mask; nothing where a side is nonsense.
std::int64_t area(RoiSize mask) {
    if (mask.width > 512 || mask.height > 512) {
        throw Abandon();
    }
    return mask.width < 1 || mask.height < 1 ? 0 : mask.width * mask.height;
}

template <class T>
void rankFilter(Call &call,
                StatusCode (*member)(const T *, std::int32_t, T *, std::int32_t, RoiSize, RoiSize, Point2i,
                                     std::uint8_t *),
                StatusCode (*sizeQuery)(std::int32_t, RoiSize, std::int32_t *)) {
    call.documented(morphStatuses);
    const std::int32_t channels = channelsOf(member);
    const RoiSize roi = call.in.roi(), mask = call.in.mask();
    area(mask);
    const auto inside = [&](std::int32_t n) { return call.in.within(0, std::clamp(n, 1, 40) - 1); };
    const std::int32_t x = inside(mask.width), y = inside(mask.height);
    Image<const T> src(call.in, roi, channels);
    Image<T> dst(call.in, roi, channels);
    Scratch buffer(call.in, call.size(sizeQuery, roi.width, mask));
    call.run(member, src, dst, roi, mask, Point2i{x, y}, buffer);
}

// What a mask with its anchor at the centre reaches.
Margin centred(RoiSize mask) {
    const std::int64_t x = (std::max(mask.width, 1) - 1) >> 1, y = (std::max(mask.height, 1) - 1) >> 1;
    return {x, y, std::max(mask.width, 1) - 1 - x, std::max(mask.height, 1) - 1 - y};
}

// Steps are checked against one element a pixel, whatever the channels: rows may overlap.
template <class T> Shape overlapping(RoiSize roi, std::int64_t channels, Margin margin = {}) {
    return {roi, channels, margin, std::max(roi.width, 0) * static_cast<std::int64_t>(sizeof(T))};
}

// The region that a record is made for: mostly the one it serves.
std::int32_t recordWidth(Call &call, std::int32_t width) {
    const std::uint8_t choice = call.in.byte();
    return choice < 160   ? width
           : choice < 240 ? std::min(width, 1 << 16) + choice % 8 - 2
                          : call.in.any<std::int32_t>();
}

// ----------------------------------------------------------------------------------------------------- erosion,
// dilation

using WidthSizes = StatusCode (*)(std::int32_t, RoiSize, std::int32_t *, std::int32_t *);
using RegionSizes = StatusCode (*)(RoiSize, RoiSize, std::int32_t *, std::int32_t *);

// Runs a function whose record is made already, on images of bytes or larger elements.
template <class T, class V, class Spec, class S>
void runFlat(Call &call,
             StatusCode (*member)(const T *, std::int32_t, T *, std::int32_t, RoiSize, BorderKind, V, const Spec *,
                                  std::uint8_t *),
             RoiSize roi, Margin reach, S &spec, Scratch &buffer) {
    const std::int32_t channels = channelsOf(member);
    const BorderKind border = call.in.border({BorderReplicate, BorderInMemory});
    Image<const T> src(call.in, overlapping<T>(roi, channels, Margin::of(border, reach)));
    Image<T> dst(call.in, overlapping<T>(roi, channels));
    call.run(member, src, dst, roi, border, V{}, spec, buffer);
}

// The same on bit images. A region that begins at a bit offset begins in the byte of that bit.
template <class Spec, class S>
void runFlat(Call &call,
             StatusCode (*member)(const std::uint8_t *, std::int32_t, std::int32_t, std::uint8_t *, std::int32_t,
                                  std::int32_t, RoiSize, BorderKind, std::uint8_t, const Spec *, std::uint8_t *),
             RoiSize roi, Margin reach, S &spec, Scratch &buffer) {
    const BorderKind border = call.in.border({BorderReplicate, BorderInMemory});
    const auto shape = [&](std::int64_t offset, Margin margin) {
        if (offset > 4096) {
            throw Abandon();
        }
        call.refuse(offset < 0);
        const std::int64_t begin = std::max<std::int64_t>(offset, 0), width = std::max(roi.width, 0);
        const std::int64_t before = begin < margin.left ? (margin.left - begin + 7) / 8 : 0;
        const std::int64_t row = (begin + width + 7) / 8, all = (begin + width + margin.right + 7) / 8;
        const RoiSize bytes = {roi.width < 1 ? roi.width : static_cast<std::int32_t>(row), roi.height};
        return Shape{bytes, 1, {before, margin.top, all - row, margin.bottom}, (width + 7) / 8};
    };
    const std::int32_t srcOffset = call.in.within(0, 20), dstOffset = call.in.within(0, 20);
    Image<const std::uint8_t> src(call.in, shape(srcOffset, Margin::of(border, reach)));
    Image<std::uint8_t> dst(call.in, shape(dstOffset, {}));
    call.run(member, src, srcOffset, dst, dstOffset, roi, border, std::uint8_t{0}, spec, buffer);
}

template <class F>
void flat(Call &call, F member, WidthSizes sizeQuery,
          StatusCode (*init)(std::int32_t, const std::uint8_t *, RoiSize, MorphSpec *, std::uint8_t *)) {
    call.documented(morphStatuses);
    const RoiSize roi = call.in.roi(), mask = call.in.mask();
    const std::int32_t width = recordWidth(call, roi.width);
    Array<const std::uint8_t> maskBytes(call.in, area(mask));
    const auto sizes = call.sizes(sizeQuery, width, mask);
    Record<MorphSpec> spec(sizes.record);
    Scratch buffer(call.in, sizes.buffer);
    if (call.run(init, width, maskBytes, mask, spec, buffer) >= 0) {
        runFlat(call, member, roi, centred(mask), std::as_const(spec), buffer);
    }
}

// The older interface: once with a state in memory of the caller's, once with one of the library's.
template <class T>
void replicated(Call &call,
                StatusCode (*member)(const T *, std::int32_t, T *, std::int32_t, RoiSize, BorderKind, MorphState *),
                StatusCode (*sizeQuery)(std::int32_t, const std::uint8_t *, RoiSize, std::int32_t *),
                StatusCode (*init)(std::int32_t, const std::uint8_t *, RoiSize, Point2i, MorphState *),
                StatusCode (*initAlloc)(std::int32_t, const std::uint8_t *, RoiSize, Point2i, MorphState **)) {
    call.documented(morphStatuses);
    const std::int32_t channels = channelsOf(member);
    const RoiSize roi = call.in.roi(), mask = call.in.mask();
    const std::int32_t width = recordWidth(call, roi.width);
    const std::int32_t x = call.in.within(0, std::clamp(mask.width, 1, 40) - 1);
    const Point2i anchor = {x, call.in.within(0, std::clamp(mask.height, 1, 40) - 1)};
    Array<const std::uint8_t> maskBytes(call.in, area(mask));
    Record<MorphState> state(call.size(sizeQuery, width, maskBytes, mask));
    const BorderKind border = call.in.oneOf<BorderKind>({BorderReplicate});
    Image<const T> src(call.in, overlapping<T>(roi, channels));
    Image<T> dst(call.in, overlapping<T>(roi, channels));
    if (call.run(init, width, maskBytes, mask, anchor, state) >= 0) {
        call.failuresWrite(); // the state is no output
        call.run(member, src, dst, roi, border, state);
    }
    Record<MorphState *> made(sizeof(MorphState *));
    if (call.run(initAlloc, width, maskBytes, mask, anchor, made) >= 0) {
        call.run(member, src, dst, roi, border, *made.data());
        rvxiMorphologyFree(*made.data());
    }
}

void stateFree(Call &call, decltype(&rvxiMorphologyFree) member) {
    MorphState *state = nullptr;
    const std::uint8_t mask[9] = {1, 1, 1, 1, 1, 1, 1, 1, 1};
    if (rvxiMorphologyInitAlloc_8u_C1R(20, mask, RoiSize{3, 3}, Point2i{1, 1}, &state) == StatusOk) {
        if (call.run(member, state) < 0) {
            member(state); // the pointer was made null
        }
    }
}

// ------------------------------------------------------------------------------------------------------------
// compounds

using AdvInit = StatusCode (*)(RoiSize, const std::uint8_t *, RoiSize, MorphAdvSpec *, std::uint8_t *);
using AdvInitAlloc = StatusCode (*)(MorphAdvSpec **, RoiSize, const std::uint8_t *, RoiSize);

template <class F>
void compound(Call &call, F member, RegionSizes sizeQuery, AdvInit init, AdvInitAlloc initAlloc = nullptr) {
    call.documented(morphStatuses);
    const RoiSize roi = call.in.roi(), mask = call.in.mask();
    const std::uint8_t choice = call.in.byte();
    const RoiSize made = choice < 160   ? roi
                         : choice < 240 ? RoiSize{recordWidth(call, roi.width), roi.height}
                                        : call.in.roi();
    Array<const std::uint8_t> maskBytes(call.in, area(mask));
    const auto sizes = call.sizes(sizeQuery, made, mask);
    Record<MorphAdvSpec> spec(sizes.record);
    Scratch buffer(call.in, sizes.buffer);
    // The first step reaches as far outside the region as the second one reads; a gradient has one step.
    const Margin once = centred(mask), twice = {once.left + once.right, once.top + once.bottom, once.left + once.right,
                                                once.top + once.bottom};
    const Margin reach = std::string_view(nameOf(member)).starts_with("rvxiMorphGradient") ? once : twice;
    if (call.run(init, made, maskBytes, mask, spec, buffer) >= 0) {
        runFlat(call, member, roi, reach, std::as_const(spec), buffer);
    }
    if (initAlloc != nullptr) {
        Record<MorphAdvSpec *> allocated(sizeof(MorphAdvSpec *));
        if (call.run(initAlloc, allocated, made, maskBytes, mask) >= 0) {
            struct Guard {
                MorphAdvSpec *spec;
                ~Guard() { rvxiMorphAdvFree(spec); }
            } const guard{*allocated.data()};
            runFlat(call, member, roi, reach, guard.spec, buffer);
        }
    }
}

void advFree(Call &call, decltype(&rvxiMorphAdvFree) member) {
    MorphAdvSpec *spec = nullptr;
    const std::uint8_t mask[9] = {1, 1, 1, 1, 1, 1, 1, 1, 1};
    if (rvxiMorphAdvInitAlloc_8u_C1R(&spec, RoiSize{20, 9}, mask, RoiSize{3, 3}) == StatusOk) {
        if (call.run(member, spec) < 0) {
            member(spec); // the pointer was made null
        }
    }
}

// -----------------------------------------------------------------------------------------------------------------
// grey

template <class T, class K>
void grey(Call &call,
          StatusCode (*member)(const T *, std::int32_t, T *, std::int32_t, RoiSize, BorderKind, T,
                               const GrayMorphSpec *, std::uint8_t *),
          WidthSizes sizeQuery, StatusCode (*init)(std::int32_t, const K *, RoiSize, GrayMorphSpec *)) {
    call.documented(morphStatuses);
    const RoiSize roi = call.in.roi(), mask = call.in.mask();
    const std::int32_t width = recordWidth(call, roi.width);
    Array<const K> values(call.in, area(mask));
    const auto sizes = call.sizes(sizeQuery, width, mask);
    Record<GrayMorphSpec> spec(sizes.record);
    Scratch buffer(call.in, sizes.buffer);
    call.failuresWrite(); // a record that was refused is none
    if (call.run(init, width, values, mask, spec) < 0) {
        return;
    }
    call.failuresWrite(false);
    const BorderKind border = call.in.border({BorderReplicate, BorderConstant, BorderInMemory});
    Image<const T> src(call.in, Shape{roi, 1, Margin::of(border, centred(mask))});
    Image<T> dst(call.in, roi);
    call.run(member, src, dst, roi, border, call.in.any<T>(), std::as_const(spec), buffer);
}

} // namespace

const std::vector<fuzz::Member> fuzz::members = {
    MEMBER(query, rvxiFilterMinGetBufferSize_8u_C1R),
    MEMBER(query, rvxiFilterMinGetBufferSize_8u_C3R),
    MEMBER(query, rvxiFilterMinGetBufferSize_8u_C4R),
    MEMBER(query, rvxiFilterMinGetBufferSize_32f_C1R),
    MEMBER(query, rvxiFilterMinGetBufferSize_32f_C3R),
    MEMBER(query, rvxiFilterMinGetBufferSize_32f_C4R),
    MEMBER(query, rvxiFilterMaxGetBufferSize_8u_C1R),
    MEMBER(query, rvxiFilterMaxGetBufferSize_8u_C3R),
    MEMBER(query, rvxiFilterMaxGetBufferSize_8u_C4R),
    MEMBER(query, rvxiFilterMaxGetBufferSize_32f_C1R),
    MEMBER(query, rvxiFilterMaxGetBufferSize_32f_C3R),
    MEMBER(query, rvxiFilterMaxGetBufferSize_32f_C4R),
    MEMBER(rankFilter, rvxiFilterMinBorderReplicate_8u_C1R, rvxiFilterMinGetBufferSize_8u_C1R),
    MEMBER(rankFilter, rvxiFilterMinBorderReplicate_8u_C3R, rvxiFilterMinGetBufferSize_8u_C3R),
    MEMBER(rankFilter, rvxiFilterMinBorderReplicate_8u_C4R, rvxiFilterMinGetBufferSize_8u_C4R),
    MEMBER(rankFilter, rvxiFilterMinBorderReplicate_32f_C1R, rvxiFilterMinGetBufferSize_32f_C1R),
    MEMBER(rankFilter, rvxiFilterMinBorderReplicate_32f_C3R, rvxiFilterMinGetBufferSize_32f_C3R),
    MEMBER(rankFilter, rvxiFilterMinBorderReplicate_32f_C4R, rvxiFilterMinGetBufferSize_32f_C4R),
    MEMBER(rankFilter, rvxiFilterMaxBorderReplicate_8u_C1R, rvxiFilterMaxGetBufferSize_8u_C1R),
    MEMBER(rankFilter, rvxiFilterMaxBorderReplicate_8u_C3R, rvxiFilterMaxGetBufferSize_8u_C3R),
    MEMBER(rankFilter, rvxiFilterMaxBorderReplicate_8u_C4R, rvxiFilterMaxGetBufferSize_8u_C4R),
    MEMBER(rankFilter, rvxiFilterMaxBorderReplicate_32f_C1R, rvxiFilterMaxGetBufferSize_32f_C1R),
    MEMBER(rankFilter, rvxiFilterMaxBorderReplicate_32f_C3R, rvxiFilterMaxGetBufferSize_32f_C3R),
    MEMBER(rankFilter, rvxiFilterMaxBorderReplicate_32f_C4R, rvxiFilterMaxGetBufferSize_32f_C4R),
    MEMBER(flat, rvxiErodeBorder_1u_C1R, rvxiMorphologyBorderGetSize_1u_C1R, rvxiMorphologyBorderInit_1u_C1R),
    MEMBER(flat, rvxiDilateBorder_1u_C1R, rvxiMorphologyBorderGetSize_1u_C1R, rvxiMorphologyBorderInit_1u_C1R),
    MEMBER(stateFree, rvxiMorphologyFree),
    MEMBER(flat, rvxiErodeBorder_8u_C1R, rvxiMorphologyBorderGetSize_8u_C1R, rvxiMorphologyBorderInit_8u_C1R),
    MEMBER(flat, rvxiErodeBorder_8u_C3R, rvxiMorphologyBorderGetSize_8u_C3R, rvxiMorphologyBorderInit_8u_C3R),
    MEMBER(flat, rvxiErodeBorder_8u_C4R, rvxiMorphologyBorderGetSize_8u_C4R, rvxiMorphologyBorderInit_8u_C4R),
    MEMBER(flat, rvxiErodeBorder_16u_C1R, rvxiMorphologyBorderGetSize_16u_C1R, rvxiMorphologyBorderInit_16u_C1R),
    MEMBER(flat, rvxiErodeBorder_16s_C1R, rvxiMorphologyBorderGetSize_16s_C1R, rvxiMorphologyBorderInit_16s_C1R),
    MEMBER(flat, rvxiErodeBorder_32f_C1R, rvxiMorphologyBorderGetSize_32f_C1R, rvxiMorphologyBorderInit_32f_C1R),
    MEMBER(flat, rvxiErodeBorder_32f_C3R, rvxiMorphologyBorderGetSize_32f_C3R, rvxiMorphologyBorderInit_32f_C3R),
    MEMBER(flat, rvxiErodeBorder_32f_C4R, rvxiMorphologyBorderGetSize_32f_C4R, rvxiMorphologyBorderInit_32f_C4R),
    MEMBER(flat, rvxiDilateBorder_8u_C1R, rvxiMorphologyBorderGetSize_8u_C1R, rvxiMorphologyBorderInit_8u_C1R),
    MEMBER(flat, rvxiDilateBorder_8u_C3R, rvxiMorphologyBorderGetSize_8u_C3R, rvxiMorphologyBorderInit_8u_C3R),
    MEMBER(flat, rvxiDilateBorder_8u_C4R, rvxiMorphologyBorderGetSize_8u_C4R, rvxiMorphologyBorderInit_8u_C4R),
    MEMBER(flat, rvxiDilateBorder_16u_C1R, rvxiMorphologyBorderGetSize_16u_C1R, rvxiMorphologyBorderInit_16u_C1R),
    MEMBER(flat, rvxiDilateBorder_16s_C1R, rvxiMorphologyBorderGetSize_16s_C1R, rvxiMorphologyBorderInit_16s_C1R),
    MEMBER(flat, rvxiDilateBorder_32f_C1R, rvxiMorphologyBorderGetSize_32f_C1R, rvxiMorphologyBorderInit_32f_C1R),
    MEMBER(flat, rvxiDilateBorder_32f_C3R, rvxiMorphologyBorderGetSize_32f_C3R, rvxiMorphologyBorderInit_32f_C3R),
    MEMBER(flat, rvxiDilateBorder_32f_C4R, rvxiMorphologyBorderGetSize_32f_C4R, rvxiMorphologyBorderInit_32f_C4R),
    MEMBER(replicated, rvxiErodeBorderReplicate_8u_C1R, rvxiMorphologyGetSize_8u_C1R, rvxiMorphologyInit_8u_C1R,
           rvxiMorphologyInitAlloc_8u_C1R),
    MEMBER(replicated, rvxiErodeBorderReplicate_8u_C3R, rvxiMorphologyGetSize_8u_C3R, rvxiMorphologyInit_8u_C3R,
           rvxiMorphologyInitAlloc_8u_C3R),
    MEMBER(replicated, rvxiErodeBorderReplicate_8u_C4R, rvxiMorphologyGetSize_8u_C4R, rvxiMorphologyInit_8u_C4R,
           rvxiMorphologyInitAlloc_8u_C4R),
    MEMBER(replicated, rvxiErodeBorderReplicate_32f_C1R, rvxiMorphologyGetSize_32f_C1R, rvxiMorphologyInit_32f_C1R,
           rvxiMorphologyInitAlloc_32f_C1R),
    MEMBER(replicated, rvxiErodeBorderReplicate_32f_C3R, rvxiMorphologyGetSize_32f_C3R, rvxiMorphologyInit_32f_C3R,
           rvxiMorphologyInitAlloc_32f_C3R),
    MEMBER(replicated, rvxiErodeBorderReplicate_32f_C4R, rvxiMorphologyGetSize_32f_C4R, rvxiMorphologyInit_32f_C4R,
           rvxiMorphologyInitAlloc_32f_C4R),
    MEMBER(replicated, rvxiDilateBorderReplicate_8u_C1R, rvxiMorphologyGetSize_8u_C1R, rvxiMorphologyInit_8u_C1R,
           rvxiMorphologyInitAlloc_8u_C1R),
    MEMBER(replicated, rvxiDilateBorderReplicate_8u_C3R, rvxiMorphologyGetSize_8u_C3R, rvxiMorphologyInit_8u_C3R,
           rvxiMorphologyInitAlloc_8u_C3R),
    MEMBER(replicated, rvxiDilateBorderReplicate_8u_C4R, rvxiMorphologyGetSize_8u_C4R, rvxiMorphologyInit_8u_C4R,
           rvxiMorphologyInitAlloc_8u_C4R),
    MEMBER(replicated, rvxiDilateBorderReplicate_32f_C1R, rvxiMorphologyGetSize_32f_C1R, rvxiMorphologyInit_32f_C1R,
           rvxiMorphologyInitAlloc_32f_C1R),
    MEMBER(replicated, rvxiDilateBorderReplicate_32f_C3R, rvxiMorphologyGetSize_32f_C3R, rvxiMorphologyInit_32f_C3R,
           rvxiMorphologyInitAlloc_32f_C3R),
    MEMBER(replicated, rvxiDilateBorderReplicate_32f_C4R, rvxiMorphologyGetSize_32f_C4R, rvxiMorphologyInit_32f_C4R,
           rvxiMorphologyInitAlloc_32f_C4R),
    MEMBER(advFree, rvxiMorphAdvFree),
    MEMBER(compound, rvxiMorphOpenBorder_8u_C1R, rvxiMorphAdvGetSize_8u_C1R, rvxiMorphAdvInit_8u_C1R,
           rvxiMorphAdvInitAlloc_8u_C1R),
    MEMBER(compound, rvxiMorphOpenBorder_8u_C3R, rvxiMorphAdvGetSize_8u_C3R, rvxiMorphAdvInit_8u_C3R,
           rvxiMorphAdvInitAlloc_8u_C3R),
    MEMBER(compound, rvxiMorphOpenBorder_8u_C4R, rvxiMorphAdvGetSize_8u_C4R, rvxiMorphAdvInit_8u_C4R,
           rvxiMorphAdvInitAlloc_8u_C4R),
    MEMBER(compound, rvxiMorphOpenBorder_16u_C1R, rvxiMorphAdvGetSize_16u_C1R, rvxiMorphAdvInit_16u_C1R),
    MEMBER(compound, rvxiMorphOpenBorder_16s_C1R, rvxiMorphAdvGetSize_16s_C1R, rvxiMorphAdvInit_16s_C1R),
    MEMBER(compound, rvxiMorphOpenBorder_32f_C1R, rvxiMorphAdvGetSize_32f_C1R, rvxiMorphAdvInit_32f_C1R,
           rvxiMorphAdvInitAlloc_32f_C1R),
    MEMBER(compound, rvxiMorphOpenBorder_32f_C3R, rvxiMorphAdvGetSize_32f_C3R, rvxiMorphAdvInit_32f_C3R,
           rvxiMorphAdvInitAlloc_32f_C3R),
    MEMBER(compound, rvxiMorphOpenBorder_32f_C4R, rvxiMorphAdvGetSize_32f_C4R, rvxiMorphAdvInit_32f_C4R,
           rvxiMorphAdvInitAlloc_32f_C4R),
    MEMBER(compound, rvxiMorphOpenBorder_1u_C1R, rvxiMorphAdvGetSize_1u_C1R, rvxiMorphAdvInit_1u_C1R),
    MEMBER(compound, rvxiMorphCloseBorder_8u_C1R, rvxiMorphAdvGetSize_8u_C1R, rvxiMorphAdvInit_8u_C1R,
           rvxiMorphAdvInitAlloc_8u_C1R),
    MEMBER(compound, rvxiMorphCloseBorder_8u_C3R, rvxiMorphAdvGetSize_8u_C3R, rvxiMorphAdvInit_8u_C3R,
           rvxiMorphAdvInitAlloc_8u_C3R),
    MEMBER(compound, rvxiMorphCloseBorder_8u_C4R, rvxiMorphAdvGetSize_8u_C4R, rvxiMorphAdvInit_8u_C4R,
           rvxiMorphAdvInitAlloc_8u_C4R),
    MEMBER(compound, rvxiMorphCloseBorder_16u_C1R, rvxiMorphAdvGetSize_16u_C1R, rvxiMorphAdvInit_16u_C1R),
    MEMBER(compound, rvxiMorphCloseBorder_16s_C1R, rvxiMorphAdvGetSize_16s_C1R, rvxiMorphAdvInit_16s_C1R),
    MEMBER(compound, rvxiMorphCloseBorder_32f_C1R, rvxiMorphAdvGetSize_32f_C1R, rvxiMorphAdvInit_32f_C1R,
           rvxiMorphAdvInitAlloc_32f_C1R),
    MEMBER(compound, rvxiMorphCloseBorder_32f_C3R, rvxiMorphAdvGetSize_32f_C3R, rvxiMorphAdvInit_32f_C3R,
           rvxiMorphAdvInitAlloc_32f_C3R),
    MEMBER(compound, rvxiMorphCloseBorder_32f_C4R, rvxiMorphAdvGetSize_32f_C4R, rvxiMorphAdvInit_32f_C4R,
           rvxiMorphAdvInitAlloc_32f_C4R),
    MEMBER(compound, rvxiMorphCloseBorder_1u_C1R, rvxiMorphAdvGetSize_1u_C1R, rvxiMorphAdvInit_1u_C1R),
    MEMBER(compound, rvxiMorphTophatBorder_8u_C1R, rvxiMorphAdvGetSize_8u_C1R, rvxiMorphAdvInit_8u_C1R,
           rvxiMorphAdvInitAlloc_8u_C1R),
    MEMBER(compound, rvxiMorphTophatBorder_8u_C3R, rvxiMorphAdvGetSize_8u_C3R, rvxiMorphAdvInit_8u_C3R,
           rvxiMorphAdvInitAlloc_8u_C3R),
    MEMBER(compound, rvxiMorphTophatBorder_8u_C4R, rvxiMorphAdvGetSize_8u_C4R, rvxiMorphAdvInit_8u_C4R,
           rvxiMorphAdvInitAlloc_8u_C4R),
    MEMBER(compound, rvxiMorphTophatBorder_16u_C1R, rvxiMorphAdvGetSize_16u_C1R, rvxiMorphAdvInit_16u_C1R),
    MEMBER(compound, rvxiMorphTophatBorder_16s_C1R, rvxiMorphAdvGetSize_16s_C1R, rvxiMorphAdvInit_16s_C1R),
    MEMBER(compound, rvxiMorphTophatBorder_32f_C1R, rvxiMorphAdvGetSize_32f_C1R, rvxiMorphAdvInit_32f_C1R,
           rvxiMorphAdvInitAlloc_32f_C1R),
    MEMBER(compound, rvxiMorphTophatBorder_32f_C3R, rvxiMorphAdvGetSize_32f_C3R, rvxiMorphAdvInit_32f_C3R,
           rvxiMorphAdvInitAlloc_32f_C3R),
    MEMBER(compound, rvxiMorphTophatBorder_32f_C4R, rvxiMorphAdvGetSize_32f_C4R, rvxiMorphAdvInit_32f_C4R,
           rvxiMorphAdvInitAlloc_32f_C4R),
    MEMBER(compound, rvxiMorphTophatBorder_1u_C1R, rvxiMorphAdvGetSize_1u_C1R, rvxiMorphAdvInit_1u_C1R),
    MEMBER(compound, rvxiMorphBlackhatBorder_8u_C1R, rvxiMorphAdvGetSize_8u_C1R, rvxiMorphAdvInit_8u_C1R,
           rvxiMorphAdvInitAlloc_8u_C1R),
    MEMBER(compound, rvxiMorphBlackhatBorder_8u_C3R, rvxiMorphAdvGetSize_8u_C3R, rvxiMorphAdvInit_8u_C3R,
           rvxiMorphAdvInitAlloc_8u_C3R),
    MEMBER(compound, rvxiMorphBlackhatBorder_8u_C4R, rvxiMorphAdvGetSize_8u_C4R, rvxiMorphAdvInit_8u_C4R,
           rvxiMorphAdvInitAlloc_8u_C4R),
    MEMBER(compound, rvxiMorphBlackhatBorder_16u_C1R, rvxiMorphAdvGetSize_16u_C1R, rvxiMorphAdvInit_16u_C1R),
    MEMBER(compound, rvxiMorphBlackhatBorder_16s_C1R, rvxiMorphAdvGetSize_16s_C1R, rvxiMorphAdvInit_16s_C1R),
    MEMBER(compound, rvxiMorphBlackhatBorder_32f_C1R, rvxiMorphAdvGetSize_32f_C1R, rvxiMorphAdvInit_32f_C1R,
           rvxiMorphAdvInitAlloc_32f_C1R),
    MEMBER(compound, rvxiMorphBlackhatBorder_32f_C3R, rvxiMorphAdvGetSize_32f_C3R, rvxiMorphAdvInit_32f_C3R,
           rvxiMorphAdvInitAlloc_32f_C3R),
    MEMBER(compound, rvxiMorphBlackhatBorder_32f_C4R, rvxiMorphAdvGetSize_32f_C4R, rvxiMorphAdvInit_32f_C4R,
           rvxiMorphAdvInitAlloc_32f_C4R),
    MEMBER(compound, rvxiMorphBlackhatBorder_1u_C1R, rvxiMorphAdvGetSize_1u_C1R, rvxiMorphAdvInit_1u_C1R),
    MEMBER(compound, rvxiMorphGradientBorder_8u_C1R, rvxiMorphAdvGetSize_8u_C1R, rvxiMorphAdvInit_8u_C1R,
           rvxiMorphAdvInitAlloc_8u_C1R),
    MEMBER(compound, rvxiMorphGradientBorder_8u_C3R, rvxiMorphAdvGetSize_8u_C3R, rvxiMorphAdvInit_8u_C3R,
           rvxiMorphAdvInitAlloc_8u_C3R),
    MEMBER(compound, rvxiMorphGradientBorder_8u_C4R, rvxiMorphAdvGetSize_8u_C4R, rvxiMorphAdvInit_8u_C4R,
           rvxiMorphAdvInitAlloc_8u_C4R),
    MEMBER(compound, rvxiMorphGradientBorder_16u_C1R, rvxiMorphAdvGetSize_16u_C1R, rvxiMorphAdvInit_16u_C1R),
    MEMBER(compound, rvxiMorphGradientBorder_16s_C1R, rvxiMorphAdvGetSize_16s_C1R, rvxiMorphAdvInit_16s_C1R),
    MEMBER(compound, rvxiMorphGradientBorder_32f_C1R, rvxiMorphAdvGetSize_32f_C1R, rvxiMorphAdvInit_32f_C1R,
           rvxiMorphAdvInitAlloc_32f_C1R),
    MEMBER(compound, rvxiMorphGradientBorder_32f_C3R, rvxiMorphAdvGetSize_32f_C3R, rvxiMorphAdvInit_32f_C3R,
           rvxiMorphAdvInitAlloc_32f_C3R),
    MEMBER(compound, rvxiMorphGradientBorder_32f_C4R, rvxiMorphAdvGetSize_32f_C4R, rvxiMorphAdvInit_32f_C4R,
           rvxiMorphAdvInitAlloc_32f_C4R),
    MEMBER(compound, rvxiMorphGradientBorder_1u_C1R, rvxiMorphAdvGetSize_1u_C1R, rvxiMorphAdvInit_1u_C1R),
    MEMBER(grey, rvxiGrayErodeBorder_8u_C1R, rvxiGrayMorphologyGetSize_8u_C1R, rvxiGrayMorphologyInit_8u_C1R),
    MEMBER(grey, rvxiGrayErodeBorder_32f_C1R, rvxiGrayMorphologyGetSize_32f_C1R, rvxiGrayMorphologyInit_32f_C1R),
    MEMBER(grey, rvxiGrayDilateBorder_8u_C1R, rvxiGrayMorphologyGetSize_8u_C1R, rvxiGrayMorphologyInit_8u_C1R),
    MEMBER(grey, rvxiGrayDilateBorder_32f_C1R, rvxiGrayMorphologyGetSize_32f_C1R, rvxiGrayMorphologyInit_32f_C1R),
    MEMBER(planes, rvxiMorphReconstructDilate_8u_C1IR, fuzz::ScratchOf{rvxiMorphReconstructGetBufferSize_8u_C1R}),
    MEMBER(planes, rvxiMorphReconstructDilate_16u_C1IR, fuzz::ScratchOf{rvxiMorphReconstructGetBufferSize_16u_C1R}),
    MEMBER(planes, rvxiMorphReconstructDilate_32f_C1IR, fuzz::ScratchOf{rvxiMorphReconstructGetBufferSize_32f_C1R}),
    MEMBER(planes, rvxiMorphReconstructErode_8u_C1IR, fuzz::ScratchOf{rvxiMorphReconstructGetBufferSize_8u_C1R}),
    MEMBER(planes, rvxiMorphReconstructErode_16u_C1IR, fuzz::ScratchOf{rvxiMorphReconstructGetBufferSize_16u_C1R}),
    MEMBER(planes, rvxiMorphReconstructErode_32f_C1IR, fuzz::ScratchOf{rvxiMorphReconstructGetBufferSize_32f_C1R}),
    MEMBER(query, rvxiMorphReconstructGetBufferSize_8u_C1R),
    MEMBER(query, rvxiMorphReconstructGetBufferSize_16u_C1R),
    MEMBER(query, rvxiMorphReconstructGetBufferSize_32f_C1R),
};
