// The driver of most families: one to four images of one region, then parameters, results and scratch.
#pragma once

#include "call.h"

namespace fuzz {

// Channels of a function's i-th image of n: of masks, and of what colour is reduced to, one.
template <class... P> int channelsOf(StatusCode (*function)(P...), int i, int n) {
    const std::string_view name = nameOf(function);
    const bool mask = name.ends_with("CMR") && i == n - 1;
    const bool reduced = name.find("C3C1") != std::string_view::npos && i > 0;
    return mask || reduced ? 1 : channelsOf(function);
}

// An argument behind the region: a number, three elements, a single result, or scratch (of so many bytes).
template <class P> auto parameter(Call &call, std::int64_t scratch) {
    if constexpr (std::is_same_v<P, std::uint8_t *>) {
        return Scratch(call.in, scratch);
    } else if constexpr (std::is_pointer_v<P>) {
        using T = std::remove_pointer_t<P>;
        if constexpr (std::is_const_v<T>) {
            return Array<T>(call.in, 3);
        } else {
            return Record<T>(sizeof(T));
        }
    } else if constexpr (std::is_same_v<P, std::int32_t>) {
        return call.in.oneOf<std::int32_t>({1, 2, 0, 3, 50, 200});
    } else if constexpr (std::is_same_v<P, float>) {
        return call.in.byte() % 2 == 0 ? call.in.real(0, 255) : call.in.any<float>();
    } else {
        return call.in.any<P>();
    }
}

struct NoScratch {
    std::int64_t operator()(Call &, RoiSize) const { return 0; }
};
// The scratch that a query of the region tells.
struct ScratchOf {
    StatusCode (*query)(RoiSize, std::int32_t *);
    std::int64_t operator()(Call &call, RoiSize roi) const { return call.size(query, roi); }
};

constexpr std::initializer_list<StatusCode> planeStatuses = {StatusBadArgument, StatusBadChannel, StatusOutOfRange,
                                                             StatusBadNormKind};

template <class A, class... P, class Size = NoScratch>
void planes(Call &call, StatusCode (*member)(A *, std::int32_t, RoiSize, P...), Size size = {}) {
    call.documented(planeStatuses);
    const RoiSize roi = call.in.roi();
    Image<A> a(call.in, roi, channelsOf(member, 0, 1));
    const std::int64_t scratch = size(call, roi);
    [&](auto &&...each) { call.run(member, a, roi, each...); }(parameter<P>(call, scratch)...);
}

template <class A, class B, class... P, class Size = NoScratch>
void planes(Call &call, StatusCode (*member)(A *, std::int32_t, B *, std::int32_t, RoiSize, P...), Size size = {}) {
    call.documented(planeStatuses);
    const RoiSize roi = call.in.roi();
    Image<A> a(call.in, roi, channelsOf(member, 0, 2));
    Image<B> b(call.in, roi, channelsOf(member, 1, 2));
    const std::int64_t scratch = size(call, roi);
    [&](auto &&...each) { call.run(member, a, b, roi, each...); }(parameter<P>(call, scratch)...);
}

template <class A, class B, class C, class... P, class Size = NoScratch>
void planes(Call &call, StatusCode (*member)(A *, std::int32_t, B *, std::int32_t, C *, std::int32_t, RoiSize, P...),
            Size size = {}) {
    call.documented(planeStatuses);
    const RoiSize roi = call.in.roi();
    Image<A> a(call.in, roi, channelsOf(member, 0, 3));
    Image<B> b(call.in, roi, channelsOf(member, 1, 3));
    Image<C> c(call.in, roi, channelsOf(member, 2, 3));
    const std::int64_t scratch = size(call, roi);
    [&](auto &&...each) { call.run(member, a, b, c, roi, each...); }(parameter<P>(call, scratch)...);
}

template <class A, class B, class C, class D, class... P>
void planes(Call &call, StatusCode (*member)(A *, std::int32_t, B *, std::int32_t, C *, std::int32_t, D *, std::int32_t,
                                             RoiSize, P...)) {
    call.documented(planeStatuses);
    const RoiSize roi = call.in.roi();
    Image<A> a(call.in, roi, channelsOf(member, 0, 4));
    Image<B> b(call.in, roi, channelsOf(member, 1, 4));
    Image<C> c(call.in, roi, channelsOf(member, 2, 4));
    Image<D> d(call.in, roi, channelsOf(member, 3, 4));
    [&](auto &&...each) { call.run(member, a, b, c, d, roi, each...); }(parameter<P>(call, 0)...);
}

} // namespace fuzz
