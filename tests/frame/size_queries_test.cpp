// Every size query of the library, with sizes up to the largest: what does not fit in 32 bits is a bad size, nothing is
// written for it, and no larger size ever needs less. The names come from the list of exports, so that none is left
// out.
#include <rvxcv.h>

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <algorithm>
#include <fstream>
#include <regex>
#include <string>
#include <utility>
#include <vector>

namespace {

// One call's arguments, of which a query takes some. The side, of a mask or a kernel, is odd and at least 3.
struct Sizes {
    std::int32_t width, height, side;

    RoiSize roi() const { return {width, height}; }
    RoiSize mask() const { return {side, side}; }
};

template <class... Argument> StatusCode invoke(void *query, Argument... argument) {
    return reinterpret_cast<StatusCode (*)(Argument...)>(query)(argument...);
}

// The queries whose names start with a prefix share their arguments: what is asked for, and one or two places `a`, `b`
// for the answer. The longest prefix decides.
struct Shape {
    const char *prefix;
    StatusCode (*call)(void *query, const Sizes &s, std::int32_t *a, std::int32_t *b);
    bool takesHeight = true;
    bool truncates = false; // to 32 bits, by contract
};

using Place = std::int32_t *;
StatusCode roiOnly(void *f, const Sizes &s, Place a, Place) { return invoke(f, s.roi(), a); }
StatusCode widthOnly(void *f, const Sizes &s, Place a, Place) { return invoke(f, s.width, a); }
StatusCode roiAndKernel(void *f, const Sizes &s, Place a, Place) { return invoke(f, s.roi(), s.side, a); }
StatusCode roiAndCode(void *f, const Sizes &s, Place a, Place) { return invoke(f, s.roi(), Mask5x5, a); }
StatusCode floatsOfWidth(void *f, const Sizes &s, Place a, Place) { return invoke(f, s.width, PixelType32f, 3, a); }
StatusCode widthAndMask(void *f, const Sizes &s, Place a, Place) { return invoke(f, s.width, s.mask(), a); }
StatusCode roiApertureAndBlock(void *f, const Sizes &s, Place a, Place) { return invoke(f, s.roi(), 5, 5, a); }
StatusCode widthAndMaskForTwo(void *f, const Sizes &s, Place a, Place b) { return invoke(f, s.width, s.mask(), a, b); }

constexpr HoughResolution degrees{1.0f, 0.0174533f};
constexpr ForegroundGaussianParams gaussianBackground{3, 225, 16, 1125, 0.1f, 0};
constexpr FGMMParams mixedBackground{8, 4, 225, 16, 1125, 1, 0.5f, 0.9f, 0};
constexpr ForegroundHistogramParams colourBackground{32, 6, 10, 0.8f};

const Shape shapes[] = {
    {"rvxiFilterRowBorderPipeline", roiAndKernel},
    {"rvxiFilterColumnPipeline", roiAndKernel},
    {"rvxiFilterSobel", roiAndCode},
    {"rvxiFilterScharr", roiOnly},
    {"rvxiFilterLaplacian", roiAndCode},
    {"rvxiFilterLowpass", roiAndCode},
    {"rvxiFilterMin", widthAndMask, false},
    {"rvxiFilterMax", widthAndMask, false},
    {"rvxiFilterGaussGet", roiAndKernel},
    {"rvxiFilterGaussian",
     [](void *f, const Sizes &s, Place a, Place b) { return invoke(f, s.roi(), s.side, PixelType16s, 3, a, b); }},
    {"rvxiMorphologyBorder", widthAndMaskForTwo, false},
    {"rvxiGrayMorphology", widthAndMaskForTwo, false},
    {"rvxiMorphology", [](void *f, const Sizes &s, Place a, Place) { return invoke(f, s.width, "mask", s.mask(), a); },
     false},
    {"rvxiMorphAdv", [](void *f, const Sizes &s, Place a, Place b) { return invoke(f, s.roi(), s.mask(), a, b); }},
    {"rvxiCannyGet", roiOnly},
    {"rvxiCannyBorder",
     [](void *f, const Sizes &s, Place a, Place) { return invoke(f, s.roi(), 2, Mask5x5, PixelType8u, a); }},
    {"rvxiMinEigenVal", roiApertureAndBlock},
    {"rvxiEigenValsVecs", roiApertureAndBlock},
    {"rvxiHarrisCorner", roiApertureAndBlock},
    {"rvxiLineSuppression", roiApertureAndBlock},
    {"rvxiFindPeaks", widthOnly, false},
    {"rvxiFastN", roiOnly},
    {"rvxiHoughLine", [](void *f, const Sizes &s, Place a, Place) { return invoke(f, s.roi(), degrees, s.side, a); }},
    {"rvxiHoughProbLine", [](void *f, const Sizes &s, Place a, Place b) { return invoke(f, s.roi(), degrees, a, b); }},
    {"rvxiPyrDown", floatsOfWidth, false},
    {"rvxiPyrUp", floatsOfWidth, false},
    {"rvxiTrueDistance", roiOnly},
    {"rvxiFloodFill", roiOnly, true, true},
    {"rvxiLabelMarkers", roiOnly, true, true},
    {"rvxiFastMarching", roiOnly},
    {"rvxiInpaint",
     [](void *f, const Sizes &s, Place a, Place) { return invoke(f, s.roi(), std::min(s.side, 100), a); }},
    {"rvxiSegmentWatershed", roiOnly},
    {"rvxiSegmentGradient", roiOnly},
    {"rvxiUndistort", roiOnly},
    {"rvxiForegroundGaussian",
     [](void *f, const Sizes &s, Place a, Place) { return invoke(f, s.roi(), 3, &gaussianBackground, a); }},
    {"rvxiFGMM", [](void *f, const Sizes &s, Place a, Place) { return invoke(f, s.roi(), 3, &mixedBackground, a); }},
    {"rvxiForegroundHistogram",
     [](void *f, const Sizes &s, Place a, Place) { return invoke(f, s.roi(), 3, &colourBackground, a); }},
    {"rvxiMorphReconstruct", roiOnly},
    {"rvxiMarkSpeckles", roiOnly},
};

const Shape *shapeOf(const std::string &name) {
    const Shape *best = nullptr;
    for (const Shape &shape : shapes) {
        const std::string prefix = shape.prefix;
        if (name.compare(0, prefix.size(), prefix) == 0 &&
            (best == nullptr || prefix.size() > std::string(best->prefix).size())) {
            best = &shape;
        }
    }
    return best;
}

std::vector<std::string> listedQueries() {
    std::ifstream list(RVXCV_SOURCE_DIR "/src/frame/exports.def");
    const std::regex query("EXPORT\\((\\w+Get(Buffer|Buf)?Size\\w*)\\)");
    std::vector<std::string> names;
    for (std::string line; std::getline(list, line);) {
        std::smatch match;
        // This one takes no size.
        if (std::regex_match(line, match, query) && match[1] != "rvxiFastNGetSize_8u_C1R") {
            names.push_back(match[1]);
        }
    }
    return names;
}

// Around every power of two from which a formula can wrap, and the sizes at which some did.
constexpr std::int32_t ladder[] = {
    1,         2,          7,       64,         999,        4096,       20001,      32768,          46341,
    65533,     65536,      99999,   1 << 20,    1 << 24,    1 << 27,    (1 << 28),  357913941,      (1 << 29),
    715827882, 1073741807, 1 << 30, 1100000000, 1431655765, 1500000000, 1610612736, INT32_MAX - 15, INT32_MAX};
constexpr std::int32_t sides[] = {3, 5, 31, 181, 4095, 65535, (1 << 24) + 1, (1 << 30) - 1, 1500000001, INT32_MAX};

struct Answer {
    std::int64_t a, b;
};
constexpr std::int64_t refused = INT64_MAX;

class SizeQuery : public testing::TestWithParam<std::string> {
protected:
    static constexpr std::int32_t untouched = -77;

    void SetUp() override {
        ASSERT_NE(shape_, nullptr) << "a new query: the table needs its arguments";
        ASSERT_NE(query_, nullptr);
    }

    bool asksForTwo() { return ask({1, 1, 3}).b != untouched; }

    Answer ask(const Sizes &sizes) {
        std::int32_t a = untouched, b = untouched;
        const StatusCode status = shape_->call(query_, sizes, &a, &b);
        if (status == StatusBadSize) {
            wrong_ |= a != untouched || b != untouched;
            return {refused, refused};
        }
        wrong_ |= status != StatusOk || a <= 0 || (b <= 0 && b != untouched);
        return {a, b};
    }

    const Shape *shape_ = shapeOf(GetParam());
    void *query_ = dlsym(RTLD_DEFAULT, GetParam().c_str());
    bool wrong_ = false;
};

TEST_P(SizeQuery, ChecksPointersThenSizes) {
    std::int32_t a = -77, b = -77;
    const Sizes empty{0, 0, 3};
    EXPECT_EQ(shape_->call(query_, empty, nullptr, &b), StatusNullPointer);
    EXPECT_EQ(shape_->call(query_, empty, &a, nullptr), asksForTwo() ? StatusNullPointer : StatusBadSize);
    EXPECT_EQ(shape_->call(query_, {0, 1, 3}, &a, &b), StatusBadSize);
    EXPECT_EQ(shape_->call(query_, {-1, 1, 3}, &a, &b), StatusBadSize);
    if (shape_->takesHeight) {
        EXPECT_EQ(shape_->call(query_, {1, 0, 3}, &a, &b), StatusBadSize);
        EXPECT_EQ(shape_->call(query_, {1, INT32_MIN, 3}, &a, &b), StatusBadSize);
    }
    EXPECT_TRUE(a == -77 && b == -77) << "written despite a failure";
}

TEST_P(SizeQuery, NeverWraps) {
    const auto least = ask({1, 1, 3});
    EXPECT_LT(least.a, refused);
    for (std::size_t w = 0; w < std::size(ladder) && !shape_->truncates; ++w) {
        for (std::size_t h = 0; h < std::size(ladder); ++h) {
            for (std::size_t s = 0; s < std::size(sides); ++s) {
                const Sizes sizes{ladder[w], ladder[h], sides[s]};
                const Answer here = ask(sizes);
                // The same with one of the sizes a rung lower.
                for (const Answer &lower : {ask({ladder[w - (w > 0)], sizes.height, sizes.side}),
                                            ask({sizes.width, ladder[h - (h > 0)], sizes.side}),
                                            ask({sizes.width, sizes.height, sides[s - (s > 0)]})}) {
                    ASSERT_FALSE(wrong_ || here.a < lower.a || here.b < lower.b)
                        << GetParam() << " " << sizes.width << "x" << sizes.height << ", side " << sizes.side << ": "
                        << here.a << " and " << here.b << " after " << lower.a << " and " << lower.b;
                }
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Every, SizeQuery, testing::ValuesIn(listedQueries()));

TEST(SizeQueries, AreFoundInTheList) { EXPECT_GT(listedQueries().size(), 100U); }

} // namespace
