// The derivative and low-pass members behind one signature, with the plain description of each filter.
#pragma once

#include "support/bordered.h"

#include "rvxcv.h"

#include <functional>
#include <string>
#include <vector>

namespace derivative {

using Kernel = std::vector<int>;

// A sum of separable filters; the 5x5 kernels are empty where there is no such mask.
struct Separation {
    Kernel row3, column3, row5, column5;

    const Kernel &row(MaskCode mask) const { return mask == Mask5x5 ? row5 : row3; }
    const Kernel &column(MaskCode mask) const { return mask == Mask5x5 ? column5 : column3; }
};
using Description = std::vector<Separation>;

template <class T, class D> struct Args {
    const T *src;
    std::int32_t srcStep;
    D *dst;
    std::int32_t dstStep;
    RoiSize roi;
    MaskCode mask;
    BorderKind border;
    T value;
    std::int32_t divisor;
    std::uint8_t *buffer;
};

template <class T, class D> struct Member {
    std::string name;
    Description filter;
    std::function<StatusCode(const Args<T, D> &)> run;
    std::function<StatusCode(RoiSize, MaskCode, std::int32_t *)> size;
    bool hasMask = true;

    std::vector<MaskCode> masks() const { return hasMask ? std::vector<MaskCode>{33, 55} : std::vector<MaskCode>{33}; }
};

inline const Kernel smooth3{1, 2, 1}, smooth5{1, 4, 6, 4, 1}, scharr3{3, 10, 3};
inline const Kernel minusSmooth3{-1, -2, -1}, minusSmooth5{-1, -4, -6, -4, -1};
inline const Kernel dx3{-1, 0, 1}, dx5{-1, -2, 0, 2, 1}, dxNeg3{1, 0, -1}, dxNeg5{1, 2, 0, -2, -1};
inline const Kernel second3{1, -2, 1}, second5{1, 0, -2, 0, 1}, box3{1, 1, 1}, box5{1, 1, 1, 1, 1};

inline const Description sobelVert{{dxNeg3, smooth3, dxNeg5, smooth5}};
inline const Description sobelNegVert{{dxNeg3, minusSmooth3, dxNeg5, minusSmooth5}};
inline const Description sobelHoriz{{smooth3, dx3, smooth5, dx5}};
inline const Description sobelVertSecond{{second3, smooth3, second5, smooth5}};
inline const Description sobelHorizSecond{{smooth3, second3, smooth5, second5}};
inline const Description sobelCross{{dxNeg3, dx3, dxNeg5, dx5}};
inline const Description scharrVert{{dx3, scharr3, {}, {}}};
inline const Description scharrHoriz{{scharr3, dx3, {}, {}}};
inline const Description laplacian{sobelVertSecond[0], sobelHorizSecond[0]};
inline const Description lowpass{{box3, box3, box5, box5}};

// The three shapes of working functions and the two of queries.
template <class T, class D, class F, class Q> Member<T, D> member(const char *name, const Description &d, F f, Q q) {
    using A = Args<T, D>;
    Member<T, D> m{name, d, {}, {}};
    if constexpr (std::is_invocable_v<Q, RoiSize, MaskCode, std::int32_t *>) {
        m.size = q;
    } else {
        m.hasMask = false;
        m.size = [q](RoiSize roi, MaskCode, std::int32_t *size) { return q(roi, size); };
    }
    if constexpr (std::is_same_v<D, std::int8_t>) {
        if constexpr (std::is_invocable_v<Q, RoiSize, MaskCode, std::int32_t *>) {
            m.run = [f](const A &a) {
                return f(a.src, a.srcStep, a.dst, a.dstStep, a.roi, a.mask, a.border, a.value, a.divisor, a.buffer);
            };
        } else {
            m.run = [f](const A &a) {
                return f(a.src, a.srcStep, a.dst, a.dstStep, a.roi, a.border, a.value, a.divisor, a.buffer);
            };
        }
    } else if constexpr (std::is_invocable_v<Q, RoiSize, MaskCode, std::int32_t *>) {
        m.run = [f](const A &a) {
            return f(a.src, a.srcStep, a.dst, a.dstStep, a.roi, a.mask, a.border, a.value, a.buffer);
        };
    } else {
        m.run = [f](const A &a) { return f(a.src, a.srcStep, a.dst, a.dstStep, a.roi, a.border, a.value, a.buffer); };
    }
    return m;
}

#define MEMBER(T, D, filter, operation, suffix)                                                                        \
    member<T, D>(#operation "_" #suffix, filter, rvxiFilter##operation##Border_##suffix##_C1R,                         \
                 rvxiFilter##operation##GetBufferSize_##suffix##_C1R)

#define DERIVATIVES(T, D, suffix)                                                                                      \
    MEMBER(T, D, sobelVert, SobelVert, suffix), MEMBER(T, D, sobelHoriz, SobelHoriz, suffix),                          \
        MEMBER(T, D, sobelVertSecond, SobelVertSecond, suffix),                                                        \
        MEMBER(T, D, sobelHorizSecond, SobelHorizSecond, suffix), MEMBER(T, D, sobelNegVert, SobelNegVert, suffix),    \
        MEMBER(T, D, sobelCross, SobelCross, suffix), MEMBER(T, D, scharrVert, ScharrVert, suffix),                    \
        MEMBER(T, D, scharrHoriz, ScharrHoriz, suffix), MEMBER(T, D, laplacian, Laplacian, suffix)

template <class T, class D> std::vector<Member<T, D>> members() {
    if constexpr (std::is_same_v<D, std::int8_t>) {
        return {DERIVATIVES(T, D, 8u8s)};
    } else if constexpr (std::is_same_v<D, std::int16_t>) {
        return {DERIVATIVES(T, D, 8u16s)};
    } else if constexpr (std::is_same_v<D, float>) {
        return {DERIVATIVES(T, D, 32f), MEMBER(T, D, lowpass, Lowpass, 32f)};
    } else {
        return {MEMBER(T, D, lowpass, Lowpass, 8u)};
    }
}

#undef DERIVATIVES
#undef MEMBER

} // namespace derivative
