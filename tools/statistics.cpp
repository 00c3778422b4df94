#include "statistics.h"

#include <algorithm>
#include <cstdio>

namespace tools {
namespace {

using Bytes = const std::uint8_t *;
using NormC1 = StatusCode (*)(Bytes, std::int32_t, Bytes, std::int32_t, RoiSize, double *);
using NormC3 = StatusCode (*)(Bytes, std::int32_t, Bytes, std::int32_t, RoiSize, std::int32_t, double *);
using PairC1 = StatusCode (*)(Bytes, std::int32_t, Bytes, std::int32_t, Bytes, std::int32_t, RoiSize, double *);
using PairC3 = StatusCode (*)(Bytes, std::int32_t, Bytes, std::int32_t, Bytes, std::int32_t, RoiSize, std::int32_t,
                              double *);

double norm(NormC1 one, NormC3 ofThree, const Image &a, const Image &mask, int channel) {
    double result = 0;
    check(a.channels == 1 ? one(a.data(), a.step(), mask.data(), mask.step(), a.roi(), &result)
                          : ofThree(a.data(), a.step(), mask.data(), mask.step(), a.roi(), channel + 1, &result),
          "Norm");
    return result;
}

double norm(PairC1 one, PairC3 ofThree, const Image &a, const Image &b, const Image &mask, int channel) {
    double result = 0;
    check(a.channels == 1 ? one(a.data(), a.step(), b.data(), b.step(), mask.data(), mask.step(), a.roi(), &result)
                          : ofThree(a.data(), a.step(), b.data(), b.step(), mask.data(), mask.step(), a.roi(),
                                    channel + 1, &result),
          "NormDiff");
    return result;
}

void extrema(const Image &a, const Image &mask, int channel, Extremum *least, Extremum *most) {
    check(a.channels == 1 ? rvxiMinMaxIndx_8u_C1MR(a.data(), a.step(), mask.data(), mask.step(), a.roi(), &least->value,
                                                   &most->value, &least->at, &most->at)
                          : rvxiMinMaxIndx_8u_C3CMR(a.data(), a.step(), mask.data(), mask.step(), a.roi(), channel + 1,
                                                    &least->value, &most->value, &least->at, &most->at),
          "MinMaxIndx");
}

} // namespace

Image readMask(const std::string &path, const Image &image) {
    if (path.empty()) {
        Image all(image.width, image.height, 1);
        std::fill(all.pixels.begin(), all.pixels.end(), std::uint8_t{255});
        return all;
    }
    Image mask = toGrey(readImage(path));
    checkSameSize("the picture", image, path, mask);
    return mask;
}

std::size_t selectedPixels(const Image &mask) {
    return mask.pixels.size() -
           static_cast<std::size_t>(std::count(mask.pixels.begin(), mask.pixels.end(), std::uint8_t{0}));
}

const char *channelName(const Image &image, int channel) {
    constexpr const char *names[] = {"red", "green", "blue"};
    return image.channels == 1 ? "grey" : names[channel];
}

std::string place(Point2i at) {
    char text[40] = "-";
    if (at.x >= 0) {
        std::snprintf(text, sizeof text, "(%d, %d)", at.x, at.y);
    }
    return text;
}

ChannelStatistics statisticsOf(const Image &image, const Image &mask, int channel) {
    ChannelStatistics result;
    check(image.channels == 1 ? rvxiMean_StdDev_8u_C1MR(image.data(), image.step(), mask.data(), mask.step(),
                                                        image.roi(), &result.mean, &result.deviation)
                              : rvxiMean_StdDev_8u_C3CMR(image.data(), image.step(), mask.data(), mask.step(),
                                                         image.roi(), channel + 1, &result.mean, &result.deviation),
          "Mean_StdDev");
    extrema(image, mask, channel, &result.least, &result.most);
    result.l1 = norm(rvxiNorm_L1_8u_C1MR, rvxiNorm_L1_8u_C3CMR, image, mask, channel);
    result.l2 = norm(rvxiNorm_L2_8u_C1MR, rvxiNorm_L2_8u_C3CMR, image, mask, channel);
    return result;
}

ChannelDifference differenceOf(const Image &a, const Image &b, const Image &mask, int channel) {
    ChannelDifference result;
    result.inf = norm(rvxiNormDiff_Inf_8u_C1MR, rvxiNormDiff_Inf_8u_C3CMR, a, b, mask, channel);
    result.l1 = norm(rvxiNormDiff_L1_8u_C1MR, rvxiNormDiff_L1_8u_C3CMR, a, b, mask, channel);
    result.l2 = norm(rvxiNormDiff_L2_8u_C1MR, rvxiNormDiff_L2_8u_C3CMR, a, b, mask, channel);
    result.relativeInf = norm(rvxiNormRel_Inf_8u_C1MR, rvxiNormRel_Inf_8u_C3CMR, a, b, mask, channel);
    result.relativeL1 = norm(rvxiNormRel_L1_8u_C1MR, rvxiNormRel_L1_8u_C3CMR, a, b, mask, channel);
    result.relativeL2 = norm(rvxiNormRel_L2_8u_C1MR, rvxiNormRel_L2_8u_C3CMR, a, b, mask, channel);
    Image difference(a.width, a.height, a.channels);
    check((a.channels == 3 ? rvxiAbsDiff_8u_C3R : rvxiAbsDiff_8u_C1R)(a.data(), a.step(), b.data(), b.step(),
                                                                      difference.data(), difference.step(), a.roi()),
          "AbsDiff");
    Extremum least;
    extrema(difference, mask, channel, &least, &result.most);
    return result;
}

} // namespace tools
