// rvxcv gradient PHOTO -o OUT: a derivative or low-pass filter of a picture's luma, shown as a picture: derivatives
// with zero in the middle of the grey scale, or, without a filter, the length of the Sobel gradient.
#include "colour.h"
#include "command.h"
#include "derivative.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>

namespace tools {
namespace {

using Sobel = StatusCode (*)(const std::uint8_t *, std::int32_t, std::int16_t *, std::int32_t, RoiSize, MaskCode,
                             BorderKind, std::uint8_t, std::uint8_t *);
using SobelSize = StatusCode (*)(RoiSize, MaskCode, std::int32_t *);
using Scharr = StatusCode (*)(const std::uint8_t *, std::int32_t, std::int16_t *, std::int32_t, RoiSize, BorderKind,
                              std::uint8_t, std::uint8_t *);
using ScharrSize = StatusCode (*)(RoiSize, std::int32_t *);

struct Filter {
    Sobel sobel;
    SobelSize sobelSize;
    Scharr scharr = nullptr;
    ScharrSize scharrSize = nullptr;
};

const std::map<std::string, Filter> filters{
    {"sobel-vert", {rvxiFilterSobelVertBorder_8u16s_C1R, rvxiFilterSobelVertGetBufferSize_8u16s_C1R}},
    {"sobel-neg-vert", {rvxiFilterSobelNegVertBorder_8u16s_C1R, rvxiFilterSobelNegVertGetBufferSize_8u16s_C1R}},
    {"sobel-horiz", {rvxiFilterSobelHorizBorder_8u16s_C1R, rvxiFilterSobelHorizGetBufferSize_8u16s_C1R}},
    {"sobel-vert-second",
     {rvxiFilterSobelVertSecondBorder_8u16s_C1R, rvxiFilterSobelVertSecondGetBufferSize_8u16s_C1R}},
    {"sobel-horiz-second",
     {rvxiFilterSobelHorizSecondBorder_8u16s_C1R, rvxiFilterSobelHorizSecondGetBufferSize_8u16s_C1R}},
    {"sobel-cross", {rvxiFilterSobelCrossBorder_8u16s_C1R, rvxiFilterSobelCrossGetBufferSize_8u16s_C1R}},
    {"laplacian", {rvxiFilterLaplacianBorder_8u16s_C1R, rvxiFilterLaplacianGetBufferSize_8u16s_C1R}},
    {"scharr-vert",
     {nullptr, nullptr, rvxiFilterScharrVertBorder_8u16s_C1R, rvxiFilterScharrVertGetBufferSize_8u16s_C1R}},
    {"scharr-horiz",
     {nullptr, nullptr, rvxiFilterScharrHorizBorder_8u16s_C1R, rvxiFilterScharrHorizGetBufferSize_8u16s_C1R}},
};

struct Options {
    std::string photo, out, filter = "magnitude";
    int size = 3;
    double scale = 0;
};

} // namespace

std::vector<std::int16_t> derivative(const Image &grey, const std::string &name, int size) {
    const Filter &filter = filters.at(name);
    const MaskCode mask = size == 5 ? Mask5x5 : Mask3x3;
    std::int32_t bytes = 0;
    check(filter.sobel != nullptr ? filter.sobelSize(grey.roi(), mask, &bytes) : filter.scharrSize(grey.roi(), &bytes),
          "GetBufferSize");
    std::vector<std::uint8_t> buffer(static_cast<std::size_t>(bytes));
    std::vector<std::int16_t> result(grey.pixels.size());
    const std::int32_t step = grey.width * 2;
    check(filter.sobel != nullptr ? filter.sobel(grey.data(), grey.step(), result.data(), step, grey.roi(), mask,
                                                 BorderReplicate, 0, buffer.data())
                                  : filter.scharr(grey.data(), grey.step(), result.data(), step, grey.roi(),
                                                  BorderReplicate, 0, buffer.data()),
          name.c_str());
    return result;
}

namespace {

Image lowpass(const Image &grey, int size) {
    const MaskCode mask = size == 5 ? Mask5x5 : Mask3x3;
    std::int32_t bytes = 0;
    check(rvxiFilterLowpassGetBufferSize_8u_C1R(grey.roi(), mask, &bytes), "GetBufferSize");
    std::vector<std::uint8_t> buffer(static_cast<std::size_t>(bytes));
    Image result(grey.width, grey.height, 1);
    check(rvxiFilterLowpassBorder_8u_C1R(grey.data(), grey.step(), result.data(), result.step(), grey.roi(), mask,
                                         BorderReplicate, 0, buffer.data()),
          "FilterLowpassBorder");
    return result;
}

void run(const Options &options) {
    const Image grey = toGrey(readImage(options.photo));
    if (options.filter == "lowpass") {
        writeImage(options.out, lowpass(grey, options.size));
        return;
    }
    std::vector<float> values(grey.pixels.size());
    if (options.filter == "magnitude") {
        const auto dx = derivative(grey, "sobel-neg-vert", options.size);
        const auto dy = derivative(grey, "sobel-horiz", options.size);
        std::transform(dx.begin(), dx.end(), dy.begin(), values.begin(),
                       [](float x, float y) { return std::hypot(x, y); });
        writeImage(options.out, greyPicture(grey.roi(), values, 0, options.scale));
        return;
    }
    const auto sums = derivative(grey, options.filter, options.size);
    std::copy(sums.begin(), sums.end(), values.begin());
    writeImage(options.out, greyPicture(grey.roi(), values, 128, options.scale));
}

} // namespace

void addGradient(Program &program) {
    auto options = std::make_shared<Options>();
    Command command = program.command("gradient", "Show a derivative or low-pass filter of a picture");
    std::vector<std::string> names{"magnitude", "lowpass"};
    for (const auto &filter : filters) {
        names.push_back(filter.first);
    }
    command.option("PHOTO", options->photo, "Picture to filter").required();
    command.option("-o,--out", options->out, "Picture to write").required();
    command.option("--filter", options->filter, "Filter").oneOf(names).showDefault();
    command.option("--size", options->size, "Mask size (Scharr: 3)").oneOf({3, 5}).showDefault();
    command.option("--scale", options->scale, "Grey levels per unit; without it the largest value decides").positive();
    command.action([options] {
        if (options->size == 5 && options->filter.starts_with("scharr")) {
            throw UsageError("--size", "Scharr filters are 3x3");
        }
        run(*options);
    });
}

} // namespace tools
