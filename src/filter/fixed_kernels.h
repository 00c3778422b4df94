// The named one-dimensional kernels that the derivative and low-pass filters are built from, in correlation order (tap
// j multiplies the pixel j - reach to the right of the output pixel, or the row j - reach below it).
#pragma once

#include "kernel/base.h"

namespace rvxcv {

template <class T, int n> struct FixedKernel {
    static constexpr int taps = n, reach = n / 2;
    T coefficients[n];

    constexpr T operator[](int tap) const { return coefficients[tap]; }
    constexpr FixedKernel operator-() const {
        FixedKernel result{};
        for (int i = 0; i < n; ++i) {
            result.coefficients[i] = static_cast<T>(-coefficients[i]);
        }
        return result;
    }
    // The coefficients' sum: what the kernel makes of a constant 1.
    constexpr T sum() const {
        T result = 0;
        for (const T c : coefficients) {
            result = static_cast<T>(result + c);
        }
        return result;
    }
};

template <int n> using FixedKernel16s = FixedKernel<std::int16_t, n>;
template <int n> using FixedKernel32f = FixedKernel<float, n>;

// Smoothing.
inline constexpr FixedKernel16s<3> kerSobel_3_16s{{1, 2, 1}};
inline constexpr FixedKernel32f<3> kerSobel_3_32f{{1, 2, 1}};
inline constexpr FixedKernel16s<5> kerSobel_5_16s{{1, 4, 6, 4, 1}};
inline constexpr FixedKernel32f<5> kerSobel_5_32f{{1, 4, 6, 4, 1}};
inline constexpr FixedKernel32f<3> kerSobelNeg_3_32f = -kerSobel_3_32f;
inline constexpr FixedKernel32f<5> kerSobelNeg_5_32f = -kerSobel_5_32f;
inline constexpr FixedKernel16s<3> kerScharr_3_16s{{3, 10, 3}};
inline constexpr FixedKernel32f<3> kerScharr_3_32f{{3, 10, 3}};
inline constexpr FixedKernel16s<3> kerAvr_3_16s{{1, 1, 1}};
inline constexpr FixedKernel32f<3> kerAvr_3_32f{{1, 1, 1}};
inline constexpr FixedKernel16s<5> kerAvr_5_16s{{1, 1, 1, 1, 1}};
inline constexpr FixedKernel32f<5> kerAvr_5_32f{{1, 1, 1, 1, 1}};

// First derivative: what comes later minus what comes earlier, and its negative.
inline constexpr FixedKernel16s<3> kerDx_3_16s{{-1, 0, 1}};
inline constexpr FixedKernel32f<3> kerDx_3_32f{{-1, 0, 1}};
inline constexpr FixedKernel16s<5> kerDx_5_16s{{-1, -2, 0, 2, 1}};
inline constexpr FixedKernel32f<5> kerDx_5_32f{{-1, -2, 0, 2, 1}};
inline constexpr FixedKernel16s<3> kerDxNeg_3_16s{{1, 0, -1}};
inline constexpr FixedKernel32f<3> kerDxNeg_3_32f{{1, 0, -1}};
inline constexpr FixedKernel16s<5> kerDxNeg_5_16s{{1, 2, 0, -2, -1}};
inline constexpr FixedKernel32f<5> kerDxNeg_5_32f{{1, 2, 0, -2, -1}};

// kerDx_5_32f for sums that must vanish on constant images whatever the constant. Taken in order, five taps round 3 * c
// on the way, and what is left of c need not be zero; mirrored taps that are subtracted first leave exactly nothing.
struct MirroredDifference : FixedKernel32f<5> {};
inline constexpr MirroredDifference kerDxMirrored_5_32f{{{-1, -2, 0, 2, 1}}};

// One difference or one pixel, whatever lies under the zero taps: there NaN and infinity do not spread.
struct CentralDifference : FixedKernel32f<3> {};
inline constexpr CentralDifference kerCentral_3_32f{{{-1, 0, 1}}};
struct MiddleTap : FixedKernel32f<3> {};
inline constexpr MiddleTap kerMiddle_3_32f{{{0, 1, 0}}};

// Second derivative, and the neighbours' sum that the 3x3 Laplacian needs.
inline constexpr FixedKernel16s<3> kerD2x_3_16s{{1, -2, 1}};
inline constexpr FixedKernel32f<3> kerD2x_3_32f{{1, -2, 1}};
inline constexpr FixedKernel16s<5> kerD2x_5_16s{{1, 0, -2, 0, 1}};
inline constexpr FixedKernel32f<5> kerD2x_5_32f{{1, 0, -2, 0, 1}};
inline constexpr FixedKernel16s<3> kerLap_3_16s{{1, 0, 1}};

} // namespace rvxcv
