// The Gaussian members behind one signature, and the filter in its plainest form: the kernel, the plane of intermediate
// results one pixel at a time, the results from it.
#pragma once

#include "filter/pipeline_reference.h"
#include "support/bordered.h"

#include <functional>
#include <string>
#include <vector>

namespace gauss {

using namespace support;

template <class T> struct Args {
    const T *src;
    std::int32_t srcStep;
    T *dst;
    std::int32_t dstStep;
    RoiSize roi;
    const T *value;
    const GaussianSpec *spec;
    std::uint8_t *buffer;
};

template <class T> using Run = std::function<StatusCode(const Args<T> &)>;

template <class T, class F> Run<T> withElement(F f) {
    return [f](const Args<T> &a) { return f(a.src, a.srcStep, a.dst, a.dstStep, a.roi, *a.value, a.spec, a.buffer); };
}
template <class T, class F> Run<T> withPointer(F f) {
    return [f](const Args<T> &a) { return f(a.src, a.srcStep, a.dst, a.dstStep, a.roi, a.value, a.spec, a.buffer); };
}

// Types of the intermediate rows and of the coefficients, how sums are formed, and the fixed point.
template <class T, class Ring_, class K_, class Sums_, PixelTypeCode code_, std::int32_t shift_, auto c1, auto c3>
struct Described {
    using Ring = Ring_;
    using K = K_;
    using Sums = Sums_;
    static constexpr PixelTypeCode code = code_;
    static constexpr std::int32_t shift = shift_;
    static Run<T> member(int channels) { return channels == 1 ? withElement<T>(c1) : withPointer<T>(c3); }
};
template <class T> struct Type;
template <>
struct Type<std::uint8_t> : Described<std::uint8_t, std::int16_t, std::uint16_t, pipeline::Wrapping, PixelType8u, 12,
                                      rvxiFilterGaussianBorder_8u_C1R, rvxiFilterGaussianBorder_8u_C3R> {};
template <>
struct Type<std::uint16_t> : Described<std::uint16_t, std::uint16_t, std::uint16_t, pipeline::Fused, PixelType16u, 15,
                                       rvxiFilterGaussianBorder_16u_C1R, rvxiFilterGaussianBorder_16u_C3R> {};
template <>
struct Type<std::int16_t> : Described<std::int16_t, std::int16_t, std::uint16_t, pipeline::Wrapping, PixelType16s, 15,
                                      rvxiFilterGaussianBorder_16s_C1R, rvxiFilterGaussianBorder_16s_C3R> {};
template <>
struct Type<float> : Described<float, float, float, pipeline::Fused, PixelType32f, 0, rvxiFilterGaussianBorder_32f_C1R,
                               rvxiFilterGaussianBorder_32f_C3R> {};

template <class T> std::vector<typename Type<T>::K> plainKernel(std::int32_t size, float sigma) {
    std::vector<float> g;
    float sum = 0;
    for (std::int32_t i = 0; i < size; ++i) {
        const auto x = static_cast<float>(i - size / 2);
        const float exponent = -(x * x) / (sigma * (sigma + sigma));
        g.push_back(static_cast<float>(std::exp(static_cast<double>(exponent))));
        sum += g.back();
    }
    std::vector<typename Type<T>::K> kernel;
    for (const float value : g) {
        if constexpr (std::is_same_v<T, float>) {
            kernel.push_back(value / sum);
        } else {
            const double scaled = (1 << Type<T>::shift) * static_cast<double>(value / sum);
            kernel.push_back(static_cast<typename Type<T>::K>(std::floor(0.5 + scaled)));
        }
    }
    return kernel;
}

// What every element becomes.
template <class T>
std::vector<T> plainSmooth(const GuardedImage<T> &src, int channels, const std::vector<typename Type<T>::K> &kernel,
                           BorderKind border, const std::vector<T> &values) {
    using Ring = typename Type<T>::Ring;
    using Sums = typename Type<T>::Sums;
    const std::int64_t width = src.width() / channels, height = src.height(), k = std::ssize(kernel), reach = k / 2;
    const std::int32_t divisor = 1 << Type<T>::shift;
    const auto inMemory = [&](BorderKind side) { return (border & 15) == BorderInMemory || (border & side) != 0; };
    const auto indices = [&](BorderKind before, BorderKind after, std::int64_t n) {
        std::vector<std::int64_t> at;
        for (std::int64_t i = -reach; i < n + reach; ++i) {
            at.push_back(plainBorderIndex(border & 15, inMemory(before), inMemory(after), i, n));
        }
        return at;
    };
    const auto columns = indices(BorderInMemoryLeft, BorderInMemoryRight, width);
    const auto lines = indices(BorderInMemoryTop, BorderInMemoryBottom, height);
    const auto pixel = [&](std::int64_t x, std::int64_t y, std::int64_t c) {
        const std::int64_t column = columns[static_cast<std::size_t>(x + reach)];
        const std::int64_t line = lines[static_cast<std::size_t>(y + reach)];
        const bool constant = column == -1000000 || line == -1000000;
        return constant ? values[static_cast<std::size_t>(c)] : src.at(column * channels + c, line);
    };

    std::vector<Ring> rows;
    std::vector<T> under(kernel.size());
    for (std::int64_t y = -reach; y < height + reach; ++y) {
        for (std::int64_t e = 0; e < src.width(); ++e) {
            for (std::int64_t j = 0; j < k; ++j) {
                under[static_cast<std::size_t>(j)] = pixel(e / channels + j - reach, y, e % channels);
            }
            const bool truncate = pipeline::truncates(e / channels, width);
            rows.push_back(Sums::template result<Ring>(under, kernel, divisor, truncate));
        }
    }
    std::vector<T> results;
    std::vector<Ring> column(kernel.size());
    for (std::int64_t y = 0; y < height; ++y) {
        for (std::int64_t e = 0; e < src.width(); ++e) {
            for (std::int64_t i = 0; i < k; ++i) {
                column[static_cast<std::size_t>(i)] = rows[static_cast<std::size_t>((y + i) * src.width() + e)];
            }
            const bool truncate = pipeline::truncates(e / channels, width);
            results.push_back(Sums::template result<T>(column, kernel, divisor, truncate));
        }
    }
    return results;
}

// A record of exactly the size that is asked for, set up.
template <class T> class Record {
public:
    Record(RoiSize roi, std::int32_t kernelSize, BorderKind border, int channels, float sigma, Rng *rng = nullptr)
        : memory_(bytes(roi, kernelSize, channels) +
                  (rng != nullptr ? uniform(*rng, 0, 1) * uniform(*rng, 0, 17) : 0)) {
        memory_.scribble();
        std::uint8_t untouched[1];
        status = rvxiFilterGaussianInit(roi, kernelSize, border, Type<T>::code, channels, get(), untouched, sigma);
    }
    GaussianSpec *get() { return reinterpret_cast<GaussianSpec *>(memory_.data()); }
    std::vector<std::uint8_t> contents() const { return {memory_.data(), memory_.data() + memory_.size()}; }

    StatusCode status;

    static std::int32_t bytes(RoiSize roi, std::int32_t kernelSize, int channels, bool ofBuffer = false) {
        std::int32_t spec = -1, buffer = -1;
        const StatusCode query =
            rvxiFilterGaussianGetBufferSize(roi, kernelSize, Type<T>::code, channels, &spec, &buffer);
        EXPECT_EQ(query, StatusOk);
        return ofBuffer ? buffer : spec;
    }

private:
    GuardedBuffer memory_;
};

} // namespace gauss
