// Cascades: their files, and what the detector makes of them against a plain evaluation of every window.
#include "cascade.h"
#include "detector.h"
#include "program.h"
#include "random.h"

#include <cmath>

namespace {

using namespace tools;
using program::Folder;

Image noise(int width, int height, std::uint64_t seed) {
    Random random(seed);
    Image image(width, height, 1);
    for (std::uint8_t &pixel : image.pixels) {
        pixel = static_cast<std::uint8_t>(random.below(256));
    }
    return image;
}

Cascade randomCascade(RoiSize window, int tip, std::uint64_t seed) {
    Random random(seed);
    Cascade cascade{"a \"thing\"", window, {1, 2, window.width - 3, window.height - 2}, 40, tip, {}};
    for (int i = 0; i < 3; ++i) {
        CascadeStage &stage = cascade.stages.emplace_back();
        for (int j = 0; j < 3 + 2 * i; ++j) {
            CascadeStump stump{{},
                               i > 0 && random.chance(0.6),
                               static_cast<float>(random.between(-0.5, 0.5)),
                               static_cast<float>(random.between(-1, 1)),
                               static_cast<float>(random.between(-1, 1))};
            const int count = 2 + random.below(3);
            double sum = 0;
            for (int k = 0; k < count; ++k) {
                const int w = 1 + random.below(window.width / 2), h = 1 + random.below(window.height / 2 - w / 2);
                const int left = stump.tilted ? h + 1 - tip : 0, right = w, down = stump.tilted ? w + h : h;
                if (left + right > window.width || down > window.height) {
                    --k;
                    continue;
                }
                const int x = left + random.below(window.width - left - right + 1);
                const int y = random.below(window.height - down + 1);
                const double weight = k + 1 < count ? random.between(-2, 2) : -sum; // an even surface gives 0
                stump.rects.push_back({{x, y, w, h}, static_cast<float>(weight / (w * h))});
                sum += weight;
            }
            stage.stumps.push_back(stump);
        }
        stage.threshold = static_cast<float>(random.between(-1, 0.2));
    }
    return cascade;
}

// The sum of a triangle of pixels whose tip, one or two pixels wide, is the end of a tilted rectangle's corner.
double triangle(const Image &image, int x, int y, int tip) {
    double sum = 0;
    for (int row = std::min(y, image.height) - 1; row >= 0; --row) {
        const int grown = y - 1 - row, first = (tip == 1 ? x - 1 : x) - grown,
                  last = (tip == 1 ? x - 1 : x + 1) + grown;
        for (int column = std::max(first, 0); column <= std::min(last, image.width - 1); ++column) {
            sum += *image.pixel(column, row);
        }
    }
    return sum;
}

double pixelSum(const Image &image, int x, int y, const Rect2i &r) {
    double sum = 0;
    for (int v = 0; v < r.height; ++v) {
        for (int u = 0; u < r.width; ++u) {
            sum += *image.pixel(x + r.x + u, y + r.y + v);
        }
    }
    return sum;
}

std::vector<Point2i> plainWindows(const Image &image, const Cascade &cascade) {
    std::vector<Point2i> passed;
    for (int y = 0; y + cascade.window.height <= image.height; ++y) {
        for (int x = 0; x + cascade.window.width <= image.width; ++x) {
            const Rect2i d = cascade.deviation;
            const double mean = pixelSum(image, x, y, d) / (d.width * d.height);
            double squares = 0;
            for (int v = y + d.y; v < y + d.y + d.height; ++v) {
                for (int u = x + d.x; u < x + d.x + d.width; ++u) {
                    squares += (*image.pixel(u, v) - mean) * (*image.pixel(u, v) - mean);
                }
            }
            const double norm = std::sqrt(squares / (d.width * d.height));
            bool pass = norm >= cascade.contrast;
            for (const CascadeStage &stage : cascade.stages) {
                double total = 0;
                for (const CascadeStump &stump : stage.stumps) {
                    double value = 0;
                    for (const auto &[box, weight] : stump.rects) {
                        const auto at = [&](int u, int v) { return triangle(image, x + u, y + v, cascade.tip); };
                        const auto [u, v, w, h] = box;
                        value += weight * (stump.tilted ? at(u + w - h, v + w + h) - at(u - h, v + h) -
                                                              at(u + w, v + w) + at(u, v)
                                                        : pixelSum(image, x, y, box));
                    }
                    total += value < stump.threshold * norm ? stump.below : stump.above;
                }
                pass = pass && total >= stage.threshold;
            }
            if (pass) {
                passed.push_back({x, y});
            }
        }
    }
    return passed;
}

void expectSame(const std::vector<Point2i> &a, const std::vector<Point2i> &b) {
    ASSERT_EQ(a.size(), b.size());
    for (std::size_t i = 0; i < a.size(); ++i) {
        ASSERT_TRUE(a[i].x == b[i].x && a[i].y == b[i].y) << a[i].x << "," << a[i].y;
    }
}

TEST(Detector, WindowsAgreeWithAPlainEvaluation) {
    std::size_t some = 0;
    for (const int tip : {1, 2}) {
        for (std::uint64_t seed = 1; seed <= 12; ++seed) {
            const int window = 8 + static_cast<int>(seed);
            const Cascade cascade = randomCascade({window, window - 1}, tip, seed);
            checkCascade(cascade, "random");
            const int width = window + static_cast<int>(seed) * 3 - 3, height = window + 11;
            const Image image =
                resample(noise(width / 3, height / 3, seed), {0, 0, width / 3.0, height / 3.0}, {width, height});
            const std::vector<Point2i> expected = plainWindows(image, cascade);
            expectSame(Detector(cascade).windows(image), expected);
            some += !expected.empty() && expected.size() < 12 * (3 * seed - 2);
        }
    }
    EXPECT_GE(some, 12u) << "cascades that neither take nor refuse everything";
    EXPECT_TRUE(Detector(randomCascade({30, 30}, 2, 1)).windows(noise(29, 40, 1)).empty()) << "smaller than the window";
}

// The library's own, with tips of two pixels, are exact only as the sums of rectangles that they are read for.
TEST(Detector, SumsWithSingleTipsUpToTheEdges) {
    for (const auto &[width, height] : {std::pair{1, 1}, {1, 6}, {9, 2}, {7, 11}}) {
        const Image image = noise(width, height, 8);
        const std::vector<std::int32_t> sums = tiltedIntegral(image, 1);
        for (int y = 0; y <= height; ++y) {
            for (int x = 0; x <= width; ++x) {
                ASSERT_EQ(sums[static_cast<std::size_t>((y + 1) * (width + 2) + x + 1)], triangle(image, x, y, 1))
                    << x << "," << y << " of " << width << "x" << height;
            }
        }
    }
}

TEST(Cascades, JsonKeepsEveryNumber) {
    const Folder folder;
    for (const int tip : {1, 2}) {
        const Cascade cascade = randomCascade({21, 17}, tip, 5);
        writeCascade(folder / "a.json", cascade);
        const Cascade again = readCascade(folder / "a.json");
        writeCascade(folder / "b.json", again);
        EXPECT_EQ(program::readText(folder / "a.json"), program::readText(folder / "b.json"));
        EXPECT_EQ(again.object, cascade.object);
        EXPECT_EQ(again.contrast, cascade.contrast);
        ASSERT_EQ(again.stumpCount(), cascade.stumpCount());
        for (std::size_t i = 0; i < cascade.stages.size(); ++i) {
            EXPECT_EQ(again.stages[i].threshold, cascade.stages[i].threshold);
            for (std::size_t j = 0; j < cascade.stages[i].stumps.size(); ++j) {
                const CascadeStump &a = cascade.stages[i].stumps[j], &b = again.stages[i].stumps[j];
                EXPECT_TRUE(a.tilted == b.tilted && a.threshold == b.threshold && a.below == b.below &&
                            a.above == b.above && a.rects.size() == b.rects.size() &&
                            a.rects.back().weight == b.rects.back().weight);
            }
        }
        const Image image = noise(60, 50, 9);
        expectSame(Detector(again).windows(image), Detector(cascade).windows(image));
    }
}

// ----------------------------------------------------------------------------------------------------------- XML

constexpr char older[] = R"(<?xml version="1.0"?>
<storage><thing type_id="classifier">
  <size>12 10</size>
  <stages>
    <_><!-- stage 0 -->
      <trees>
        <_><!-- tree 0 --><_>
          <feature><rects><_>2 1 8 4 -1.</_><_>2 3 8 2 2.</_></rects><tilted>0</tilted></feature>
          <threshold>2.5e-002</threshold><left_val>-0.5</left_val><right_val>0.75</right_val></_></_>
        <_><_>
          <feature><rects><_>5 1 2 4 -1.</_><_>5 1 1 4 2.</_></rects><tilted>1</tilted></feature>
          <threshold>-1.5e-002</threshold><left_val>0.5</left_val><right_val>-0.25</right_val></_></_>
      </trees>
      <stage_threshold>0.0001</stage_threshold><parent>-1</parent><next>-1</next></_>
    <_>
      <trees><_><_>
        <feature><rects><_>0 0 12 10 -1.</_><_>4 0 4 10 3.</_></rects><tilted>0</tilted></feature>
        <threshold>0.005</threshold><left_val>1</left_val><right_val>0</right_val></_></_></trees>
      <stage_threshold>0.5001</stage_threshold><parent>0</parent><next>-1</next></_>
  </stages></thing></storage>
)";

constexpr char newer[] = R"(<?xml version="1.0"?>
<anything><cascade type_id="some-classifier"><stageType>BOOST</stageType><featureType>HAAR</featureType>
  <height>10</height><width>12</width>
  <stageParams><maxWeakCount>2</maxWeakCount></stageParams><featureParams><maxCatCount>0</maxCatCount></featureParams>
  <stageNum>2</stageNum>
  <stages>
    <_><maxWeakCount>2</maxWeakCount><stageThreshold>1e-05</stageThreshold>
      <weakClassifiers>
        <_><internalNodes>0 -1 2 2.5000000372529030e-02</internalNodes><leafValues>-0.5 7.5e-01</leafValues></_>
        <_><internalNodes>-1 0 0 -1.5e-02</internalNodes><leafValues>-0.25 0.5</leafValues></_></weakClassifiers></_>
    <_><maxWeakCount>1</maxWeakCount><stageThreshold>0.50001</stageThreshold>
      <weakClassifiers>
        <_><internalNodes>0 -1 1 5e-03</internalNodes><leafValues>1. 0.</leafValues></_></weakClassifiers></_></stages>
  <features>
    <_><rects><_>5 1 2 4 -1.</_><_>5 1 1 4 2.</_></rects><tilted>1</tilted></_>
    <_><rects><_>0 0 12 10 -1.</_><_>4 0 4 10 3.</_></rects></_>
    <_><rects><_>2 1 8 4 -1.</_><_>2 3 8 2 2.</_></rects><tilted>0</tilted></_></features>
</cascade></anything>
)";

TEST(Cascades, BothGenerationsOfXmlGiveOneDetector) {
    const Folder folder;
    program::writeText(folder / "older.xml", older);
    program::writeText(folder / "newer.xml", newer);
    // Thresholds times the 10x8 pixels of the inner window.
    program::writeText(folder / "same.json", R"({"format": "rvxcv cascade 1", "window": [12, 10],
        "deviation": [1, 1, 10, 8], "contrast": 1, "tip": 1, "stages": [
        {"threshold": 0, "stumps": [
          {"rects": [[2, 1, 8, 4, -1], [2, 3, 8, 2, 2]], "threshold": 2, "values": [-0.5, 0.75]},
          {"rects": [[5, 1, 2, 4, -1], [5, 1, 1, 4, 2]], "tilted": true, "threshold": -1.2, "values": [0.5, -0.25]}]},
        {"threshold": 0.5, "stumps": [
          {"rects": [[0, 0, 12, 10, -1], [4, 0, 4, 10, 3]], "threshold": 0.4, "values": [1, 0]}]}]})");
    const Image image = noise(150, 90, 3);
    const Cascade json = readCascade(folder / "same.json");
    const std::vector<Point2i> expected = plainWindows(image, json);
    ASSERT_GT(expected.size(), 500u);
    EXPECT_EQ(json.object, "same");
    for (const char *name : {"older.xml", "newer.xml", "same.json"}) {
        const Cascade cascade = readCascade(folder / name);
        expectSame(Detector(cascade).windows(image), expected);
        EXPECT_NEAR(cascade.stages[1].threshold, 0.5, 1e-6);
    }
}

std::string replaced(std::string text, const std::string &from, const std::string &to) {
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return text.replace(at, from.size(), to);
}

TEST(Cascades, WhatIsWrongWithAFileIsSaid) {
    const Folder folder;
    writeCascade(folder / "good.json", randomCascade({20, 16}, 2, 7));
    const std::string json = program::readText(folder / "good.json"), old = older, young = newer;
    struct Case {
        std::string text, message;
    };
    const Case cases[] = {
        {"", "parse error"},
        {"{\"format\": ", "parse error at line 1"},
        {"[1, 2]", "not an object"},
        {"{}", "\"format\" is missing"},
        {replaced(json, "cascade 1", "cascade 9"), "\"format\" is not"},
        {replaced(json, "[20, 16]", "[20]"), "\"window\" is not a list of 2 numbers"},
        {replaced(json, "[20, 16]", "[20, 1e9]"), "not a whole number"},
        {replaced(json, "[20, 16]", "[20, 2000]"), "sides are not from 1 to 1024"},
        {replaced(json, "[1, 2, 17", "[1, 2, 20"), "does not lie in the window"},
        {replaced(json, "\"contrast\": 40", "\"contrast\": -1"), "contrast"},
        {replaced(json, "\"tip\": 2", "\"tip\": 3"), "the tip is neither"},
        {replaced(json, "\"tip\": 2", "\"tips\": 2"), "\"tip\" is missing"},
        {replaced(json, "\"stumps\"", "\"trees\""), "stage 1: \"stumps\" is missing"},
        {replaced(json, "\"rects\": [[", "\"rects\": [[-1, 0, 1, 1, 1], ["), "stump 1: a rectangle does not lie in"},
        {replaced(json, "\"rects\": [[", "\"rects\": [[0, 0, 2147483647, 1, 1], ["),
         "stump 1: a rectangle's side is not"},
        {replaced(json, "\"rects\": [[", "\"rects\": [[0, 0, 0, 1, 1], ["), "a rectangle does not lie in"},
        {replaced(json, "\"rects\": [[", "\"rects\": [[0, 0, 1, 1, 1e39], ["), "a number is too large"},
        {replaced(json, "\"values\": [", "\"values\": [3, "), "\"values\" is not a list of 2 numbers"},
        {replaced(json, "\"tilted\": true", "\"tilted\": 1"), "neither true nor false"},
        {"<a><b>", "at byte"},
        {"<a><b/></a>", "<stages> is missing"},
        {replaced(old, "<size>12 10</size>", ""), "<size> is missing"},
        {replaced(old, "<size>12 10", "<size>12"), "<size> does not hold 2 numbers"},
        {replaced(old, "2 1 8 4", "2 1 8 x"), "stage 1: <_> holds something that is not a number"},
        {replaced(old, "2 1 8 4", "2 1 8 40"), "stage 1, stump 1: a rectangle does not lie in the window"},
        {replaced(old, "5 1 2 4", "3 1 2 4"), "stage 1, stump 2: a rectangle does not lie in the window"},
        {replaced(old, "<left_val>1</left_val>", "<left_node>1</left_node>"), "stage 2: a tree is deeper"},
        {replaced(old, "<parent>0", "<parent>-1"), "stage 2: the stages do not follow"},
        {replaced(old, "<stage_threshold>0.0001</stage_threshold>", ""), "stage 1: <stage_threshold> is missing"},
        {replaced(young, "BOOST", "OTHER"), "type OTHER"},
        {replaced(young, "HAAR", "LBP"), "type LBP"},
        {replaced(young, "0 -1 2 2.5", "1 -1 2 2 0 -2 1 2.5"), "stage 1: a tree is deeper"},
        {replaced(young, "0 -1 2 ", "0 -1 3 "), "there is no feature 3"},
        {replaced(young, "0 -1 2 ", "0 -2 2 "), "two leaves"},
        {replaced(young, "-0.5 7.5e-01", "-0.5"), "<leafValues> does not hold 2 numbers"},
        {replaced(young, "<width>12", "<width>nan"), "<width> holds something that is not a number"},
    };
    for (const Case &c : cases) {
        program::writeText(folder / "bad.file", c.text);
        try {
            readCascade(folder / "bad.file");
            ADD_FAILURE() << c.message;
        } catch (const Failure &failure) {
            const std::string said = failure.what();
            EXPECT_NE(said.find(c.message), std::string::npos) << said;
            EXPECT_EQ(said.find(folder / "bad.file"), 0u) << said;
        }
    }
    // Cut anywhere, a file is refused or read, but nothing worse.
    for (const std::string &text : {json, old, young}) {
        for (std::size_t length = 0; length < text.size(); length += 97) {
            program::writeText(folder / "bad.file", text.substr(0, length));
            EXPECT_THROW(readCascade(folder / "bad.file"), Failure) << length;
        }
    }
    EXPECT_THROW(readCascade(folder / "missing.json"), Failure);
    EXPECT_THROW(readCascade(folder / "."), Failure);
}

// ------------------------------------------------------------------------------------------------------- merging

TEST(Merging, HitsThatAgreeBecomeTheirMean) {
    const std::vector<Box> hits = {{10, 10, 20, 10}, {200, 50, 40, 20}, {12, 10, 20, 10},
                                   {11, 10, 20, 10}, {204, 50, 40, 20}, {90, 90, 20, 10}};
    const std::vector<Detection> two = mergeHits(hits, 2);
    ASSERT_EQ(two.size(), 2u);
    EXPECT_EQ(two[0].hits, 3);
    EXPECT_DOUBLE_EQ(two[0].box.x, 11);
    EXPECT_DOUBLE_EQ(two[0].box.y, 10);
    EXPECT_EQ(two[1].hits, 2);
    EXPECT_DOUBLE_EQ(two[1].box.x, 202);
    EXPECT_DOUBLE_EQ(two[1].box.width, 40);
    EXPECT_EQ(mergeHits(hits, 1).size(), 3u);
    EXPECT_EQ(mergeHits(hits, 4).size(), 0u);
    EXPECT_TRUE(mergeHits({}, 1).empty());
    // Overlap of exactly half of the union joins, a little less does not; chains join through the middle.
    EXPECT_EQ(mergeHits({{0, 0, 30, 10}, {10, 0, 30, 10}}, 2).size(), 1u);
    EXPECT_EQ(mergeHits({{0, 0, 30, 10}, {10.1, 0, 30, 10}}, 2).size(), 0u);
    EXPECT_EQ(mergeHits({{20, 0, 30, 10}, {0, 0, 30, 10}, {10, 0, 30, 10}}, 3).size(), 1u);
    // A part of a larger find that more hits agree on is left out; one of fewer hits does not hide it.
    const Box whole{0, 0, 100, 50}, part{10, 10, 30, 15};
    EXPECT_EQ(mergeHits({whole, whole, whole, part, part}, 2).size(), 1u);
    EXPECT_EQ(mergeHits({whole, whole, part, part, part}, 2)[0].hits, 3);
    EXPECT_EQ(mergeHits({whole, whole, {101, 10, 30, 15}, {101, 10, 30, 15}}, 2).size(), 2u);
}

TEST(Merging, ScoreCountsEachObjectOnce) {
    const std::vector<Box> truth = {{0, 0, 40, 20}, {100, 0, 40, 20}, {200, 0, 40, 20}};
    const Score result =
        score({{{2, 1, 40, 20}, 5}, {{-2, 0, 40, 20}, 4}, {{110, 0, 40, 20}, 3}, {{220, 0, 40, 20}, 3}}, truth);
    EXPECT_EQ(result.objects, 3);
    EXPECT_EQ(result.found, 2) << "the last shares a third with its object";
    EXPECT_EQ(result.falseBoxes, 2);
}

TEST(Resample, KeepsAreasAndEdges) {
    const Image image = noise(37, 23, 4);
    EXPECT_EQ(resample(image, {0, 0, 37, 23}, {37, 23}).pixels, image.pixels) << "its own size is a copy";
    EXPECT_EQ(resample(image, {5, 3, 8, 9}, {8, 9}).pixels[8 + 2], *image.pixel(7, 4)) << "whole pixels are cut out";
    Image ramp(64, 8, 1);
    for (int i = 0; i < 64 * 8; ++i) {
        ramp.pixels[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(3 * (i % 64));
    }
    const Image half = resample(ramp, {0, 0, 64, 8}, {32, 4}), twice = resample(ramp, {0, 0, 64, 8}, {128, 16});
    for (int x = 4; x < 28; ++x) {
        EXPECT_NEAR(*half.pixel(x, 2), 3 * (2 * x + 0.5), 0.51);
        EXPECT_NEAR(*twice.pixel(4 * x, 5), 3 * (2 * x - 0.25), 0.51);
    }
    EXPECT_EQ(*resample(ramp, {-50, -50, 20, 20}, {4, 4}).pixel(0, 0), 0) << "outside, the edge continues";
    EXPECT_EQ(*resample(ramp, {100, 100, 20, 20}, {4, 4}).pixel(3, 3), 189);
}

} // namespace
