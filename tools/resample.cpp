#include "resample.h"

#include <algorithm>
#include <cmath>

namespace tools {
namespace {

struct Tap {
    std::size_t pixel;
    float weight;
};

// The pixels along one side that one of the result's is made of.
std::vector<std::vector<Tap>> tapsOf(double begin, double length, int results, int pixels) {
    const double scale = length / results, reach = std::max(1.0, scale);
    std::vector<std::vector<Tap>> all(static_cast<std::size_t>(results));
    for (int i = 0; i < results; ++i) {
        const double centre = begin + (i + 0.5) * scale - 0.5;
        std::vector<Tap> &taps = all[static_cast<std::size_t>(i)];
        double sum = 0;
        for (double p = std::floor(centre - reach) + 1; p < centre + reach; ++p) {
            const double weight = 1 - std::fabs(p - centre) / reach;
            taps.push_back({static_cast<std::size_t>(std::clamp(p, 0.0, pixels - 1.0)), static_cast<float>(weight)});
            sum += weight;
        }
        for (Tap &tap : taps) {
            tap.weight = static_cast<float>(tap.weight / sum);
        }
    }
    return all;
}

} // namespace

Image resample(const Image &grey, Box box, RoiSize size) {
    Image result(size.width, size.height, 1);
    const auto columns = tapsOf(box.x, box.width, size.width, grey.width);
    const auto rows = tapsOf(box.y, box.height, size.height, grey.height);
    // Only the columns in reach are added up, which for a small box in a large picture are few.
    std::size_t first = static_cast<std::size_t>(grey.width), last = 0;
    for (const auto &taps : columns) {
        for (const Tap &tap : taps) {
            first = std::min(first, tap.pixel);
            last = std::max(last, tap.pixel);
        }
    }
    std::vector<float> sums(static_cast<std::size_t>(grey.width));
    for (int y = 0; y < size.height; ++y) {
        std::fill(sums.begin(), sums.end(), 0.0f);
        for (const Tap &tap : rows[static_cast<std::size_t>(y)]) {
            const std::uint8_t *row = grey.pixel(0, static_cast<int>(tap.pixel));
            for (std::size_t x = first; x <= last; ++x) {
                sums[x] += static_cast<float>(row[x]) * tap.weight;
            }
        }
        std::uint8_t *out = result.pixel(0, y);
        for (const auto &taps : columns) {
            float sum = 0.5f;
            for (const Tap &tap : taps) {
                sum += sums[tap.pixel] * tap.weight;
            }
            *out++ = static_cast<std::uint8_t>(std::clamp(sum, 0.0f, 255.0f));
        }
    }
    return result;
}

} // namespace tools
