// The fast march with a sorted list: times, and the order of acceptance.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>
#include <set>
#include <utility>
#include <vector>

namespace support {

struct PlainMarch {
    std::vector<float> time;
    std::vector<std::int64_t> order;
};

template <class Waits> PlainMarch plainMarch(std::int64_t width, std::int64_t height, const Waits &waits) {
    constexpr float none = std::numeric_limits<float>::infinity();
    const auto pixels = static_cast<std::size_t>(width * height);
    PlainMarch march{std::vector<float>(pixels, none), {}};
    std::vector<char> accepted(pixels);
    std::set<std::pair<float, std::int64_t>> waiting;
    const auto timeAt = [&](std::int64_t x, std::int64_t y) {
        const bool inside = x >= 0 && x < width && y >= 0 && y < height;
        const auto i = static_cast<std::size_t>(y * width + x);
        return inside && accepted[i] != 0 ? march.time[i] : none;
    };
    const auto reach = [&](std::int64_t x, std::int64_t y) {
        const auto i = static_cast<std::size_t>(y * width + x);
        if (x < 0 || x >= width || y < 0 || y >= height || accepted[i] != 0) {
            return;
        }
        const float a = std::fmin(timeAt(x - 1, y), timeAt(x + 1, y));
        const float b = std::fmin(timeAt(x, y - 1), timeAt(x, y + 1));
        const float d = a - b;
        float t = std::fmin(a, b) + 1.0f;
        if (std::isfinite(a) && std::isfinite(b) && std::fabs(d) < 1) {
            const float square = d * d;
            t = std::fmax(0.5f * ((a + b) + std::sqrt(2.0f - square)), std::fmax(a, b));
        }
        if (t < march.time[i]) {
            waiting.erase({march.time[i], y * width + x});
            march.time[i] = t;
            waiting.insert({t, y * width + x});
        }
    };
    const auto accept = [&](std::int64_t i) {
        for (const auto &[dx, dy] : {std::pair{-1, 0}, {1, 0}, {0, -1}, {0, 1}}) {
            reach(i % width + dx, i / width + dy);
        }
    };
    for (std::int64_t i = 0; i < width * height; ++i) {
        if (!waits(i)) {
            march.time[static_cast<std::size_t>(i)] = 0;
            accepted[static_cast<std::size_t>(i)] = 1;
        }
    }
    for (std::int64_t i = 0; i < width * height; ++i) {
        if (!waits(i)) {
            accept(i);
        }
    }
    while (!waiting.empty()) {
        const std::int64_t i = waiting.begin()->second;
        waiting.erase(waiting.begin());
        accepted[static_cast<std::size_t>(i)] = 1;
        march.order.push_back(i);
        accept(i);
    }
    return march;
}

} // namespace support
