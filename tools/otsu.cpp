// N. Otsu, "A Threshold Selection Method from Gray-Level Histograms", IEEE SMC 9(1), 1979.
#include "otsu.h"

#include <algorithm>
#include <array>

namespace tools {
namespace {

constexpr int bins = 256;
using Histogram = std::array<double, bins>;

// The first bin of the upper class: the split that maximises the variance between the two classes.
int split(const Histogram &histogram) {
    double count = 0, sum = 0;
    for (int i = 0; i < bins; ++i) {
        count += histogram[static_cast<std::size_t>(i)];
        sum += i * histogram[static_cast<std::size_t>(i)];
    }
    double below = 0, sumBelow = 0, best = -1;
    int result = 0;
    for (int i = 0; i + 1 < bins; ++i) {
        below += histogram[static_cast<std::size_t>(i)];
        sumBelow += i * histogram[static_cast<std::size_t>(i)];
        const double above = count - below;
        if (below > 0 && above > 0) {
            const double distance = sumBelow / below - (sum - sumBelow) / above;
            const double variance = below * above * distance * distance;
            if (variance > best) {
                best = variance;
                result = i + 1;
            }
        }
    }
    return result;
}

} // namespace

float separation(const std::vector<float> &values) {
    const float largest = *std::max_element(values.begin(), values.end());
    if (largest <= 0) {
        return 0;
    }
    Histogram histogram{};
    for (const float v : values) {
        ++histogram[static_cast<std::size_t>(v / largest * (bins - 1))];
    }
    return static_cast<float>(split(histogram)) / (bins - 1) * largest;
}

int separation(const Image &grey) {
    Histogram histogram{};
    for (const std::uint8_t v : grey.pixels) {
        ++histogram[v];
    }
    return split(histogram);
}

} // namespace tools
