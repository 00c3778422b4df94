// The fast march with a sorted list: times, and the order of acceptance.
#pragma once

#include "segment/shapes.h"

#include <rvxcv.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>
#include <utility>

namespace support {

struct PlainMarch {
    std::vector<float> time;
    std::vector<std::int64_t> order;
};

// What is set in the picture waits.
inline PlainMarch plainMarch(const Picture &picture) {
    constexpr float none = std::numeric_limits<float>::infinity();
    const std::int64_t width = picture.width, height = picture.height;
    std::vector<float> accepted(picture.set.size(), none), value = accepted;
    std::set<std::pair<float, std::int64_t>> waiting;
    PlainMarch march;
    const auto inside = [&](std::int64_t x, std::int64_t y) { return x >= 0 && x < width && y >= 0 && y < height; };
    const auto at = [&](std::int64_t x, std::int64_t y) {
        return inside(x, y) ? accepted[static_cast<std::size_t>(y * width + x)] : none;
    };
    const auto reach = [&](std::int64_t x, std::int64_t y) {
        const auto p = static_cast<std::size_t>(y * width + x);
        if (!inside(x, y) || accepted[p] < none) {
            return;
        }
        const float a = std::fmin(at(x - 1, y), at(x + 1, y)), b = std::fmin(at(x, y - 1), at(x, y + 1)), d = a - b;
        float t = std::fmin(a, b) + 1.0f;
        if (std::fabs(d) < 1) {
            const float square = d * d;
            t = std::fmax(0.5f * ((a + b) + std::sqrt(2.0f - square)), std::fmax(a, b));
        }
        if (t < value[p]) {
            waiting.erase({value[p], y * width + x});
            waiting.emplace(value[p] = t, y * width + x);
        }
    };
    const auto spread = [&](std::int64_t p) {
        for (const auto &[dx, dy] : {std::pair{-1, 0}, {1, 0}, {0, -1}, {0, 1}}) {
            reach(p % width + dx, p / width + dy);
        }
    };
    const auto zero = [](char set) { return set != 0 ? none : 0; };
    std::transform(picture.set.begin(), picture.set.end(), accepted.begin(), zero);
    for (std::int64_t p = 0; p < width * height; ++p) {
        if (!picture.at(p % width, p / width)) {
            spread(p);
        }
    }
    while (!waiting.empty()) {
        const auto [time, p] = *waiting.begin();
        waiting.erase(waiting.begin());
        accepted[static_cast<std::size_t>(p)] = time;
        march.order.push_back(p);
        spread(p);
    }
    march.time = accepted;
    return march;
}

// Arguments of inpainting; a march alone has some of them.
template <class T> struct MarchCall {
    const T *src;
    std::int32_t srcStep;
    const std::uint8_t *mask;
    std::int32_t maskStep;
    T *dst;
    std::int32_t dstStep;
    RoiSize roi;
    std::int32_t radius, method;
    std::uint8_t *buffer;
};

} // namespace support
