// The means of the gradient covariance as plain passes over whole planes: derivatives, products, block means. What the
// corner measure, the eigenvectors, the Harris measure and line suppression are tested against.
#pragma once

#include "support/guarded.h"

#include <algorithm>
#include <cmath>

namespace support {

struct PlainPlane {
    std::int64_t width, height;
    std::vector<float> values;

    PlainPlane(std::int64_t w, std::int64_t h) : width(w), height(h), values(static_cast<std::size_t>(w * h)) {}
    float &at(std::int64_t x, std::int64_t y) { return values[static_cast<std::size_t>(y * width + x)]; }
    float at(std::int64_t x, std::int64_t y) const { return values[static_cast<std::size_t>(y * width + x)]; }
    float replicated(std::int64_t x, std::int64_t y) const {
        return at(std::clamp<std::int64_t>(x, 0, width - 1), std::clamp<std::int64_t>(y, 0, height - 1));
    }
};

using PlainKernel = std::vector<float>;

// The first tap's product, every further tap fused on; of five taps of a difference the mirrored ones are subtracted
// first. Two taps are those of a central difference, and a single one is a pixel as it is.
template <class Tap> float sumOfTaps(const PlainKernel &kernel, const Tap &tap) {
    if (kernel == PlainKernel{-1, -2, 0, 2, 1}) {
        return std::fma(0.0f, tap(2), std::fma(2.0f, tap(3) - tap(1), tap(4) - tap(0)));
    }
    if (kernel.size() == 2) {
        return tap(2) - tap(0);
    }
    float sum = kernel[0] * tap(0);
    for (int i = 1; i < static_cast<int>(kernel.size()); ++i) {
        sum = std::fma(kernel[static_cast<std::size_t>(i)], tap(i), sum);
    }
    return sum;
}

inline PlainPlane separable(const PlainPlane &src, const PlainKernel &row, const PlainKernel &column,
                            float factor = 1.0f) {
    const auto reach = [](const PlainKernel &kernel) { return static_cast<int>(kernel.size()) / 2; };
    PlainPlane rows(src.width, src.height), result(src.width, src.height);
    for (std::int64_t y = 0; y < src.height; ++y) {
        for (std::int64_t x = 0; x < src.width; ++x) {
            rows.at(x, y) = sumOfTaps(row, [&](int i) { return src.replicated(x + i - reach(row), y); });
        }
    }
    for (std::int64_t y = 0; y < src.height; ++y) {
        for (std::int64_t x = 0; x < src.width; ++x) {
            result.at(x, y) =
                sumOfTaps(column, [&](int i) { return rows.replicated(x, y + i - reach(column)); }) * factor;
        }
    }
    return result;
}

enum class PlainDerivative { sobel3, sobel5, scharr, central };

struct PlainCovariance {
    PlainPlane a, b, c;
    float scale;

    template <class T>
    PlainCovariance(const GuardedImage<T> &image, PlainDerivative kind, int block)
        : a(image.width(), image.height()), b(a), c(a) {
        PlainPlane src = a;
        for (std::int64_t y = 0; y < src.height; ++y) {
            for (std::int64_t x = 0; x < src.width; ++x) {
                src.at(x, y) = static_cast<float>(image.at(x, y));
            }
        }
        const bool five = kind == PlainDerivative::sobel5, central = kind == PlainDerivative::central;
        const bool scharr = kind == PlainDerivative::scharr;
        const PlainKernel derive = five ? PlainKernel{-1, -2, 0, 2, 1} : PlainKernel{-1, 0, 1};
        const PlainKernel smooth = five     ? PlainKernel{1, 4, 6, 4, 1}
                                   : scharr ? PlainKernel{3, 10, 3}
                                            : PlainKernel{1, 2, 1};
        scale = central ? 1.0f / 255.0f : five ? 1.0f / 65280.0f : 1.0f / 4080.0f;
        scale *= scharr ? 0.6125f : 1.0f;
        const PlainPlane dx = central ? separable(src, {-1, 1}, {1}) : separable(src, derive, smooth);
        const PlainPlane dy = central ? separable(src, {1}, {-1, 1}) : separable(src, smooth, derive);
        const PlainKernel box(static_cast<std::size_t>(block), 1.0f);
        const auto mean = [&](const PlainPlane &p, const PlainPlane &q) {
            PlainPlane product = p;
            for (std::size_t i = 0; i < p.values.size(); ++i) {
                product.values[i] *= q.values[i];
            }
            return separable(product, box, box, 1.0f / static_cast<float>(block * block));
        };
        a = mean(dx, dx), b = mean(dy, dy), c = mean(dx, dy);
    }

    float difference(std::int64_t x, std::int64_t y) const { return a.at(x, y) - b.at(x, y); }
    float trace(std::int64_t x, std::int64_t y) const { return a.at(x, y) + b.at(x, y); }
    // The root of the discriminant.
    float root(std::int64_t x, std::int64_t y) const {
        const float square = c.at(x, y) * c.at(x, y);
        return std::sqrt(std::fma(difference(x, y), difference(x, y), 4.0f * square));
    }
};

} // namespace support
