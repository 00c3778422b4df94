#include "detector.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace tools {
namespace {

// Element (X, Y) is the sum of the pixels of a triangle whose lowest row is the one pixel (X - 1, Y - 1) and which
// grows by a pixel to both sides from row to row upwards. The library's triangles start with two pixels.
std::vector<std::int32_t> singleTipIntegral(const Image &grey) {
    const std::size_t step = static_cast<std::size_t>(grey.width) + 2, width = static_cast<std::size_t>(grey.width);
    std::vector<std::int32_t> sums(step * (static_cast<std::size_t>(grey.height) + 2), 0);
    for (int y = 1; y <= grey.height; ++y) {
        std::int32_t *row = sums.data() + step * (static_cast<std::size_t>(y) + 1) + 1;
        const std::int32_t *above = row - step, *second = y >= 2 ? above - step : above;
        const std::uint8_t *pixels = grey.pixel(0, y - 1), *pixelsAbove = grey.pixel(0, std::max(y - 2, 0));
        row[0] = above[1];
        for (std::size_t x = 1; x <= width; ++x) {
            // What lies beyond the last column is what the row above that ends with.
            const std::int32_t right = x < width ? above[x + 1] : second[x];
            const auto sum = static_cast<std::uint32_t>(above[x - 1]) + static_cast<std::uint32_t>(right) -
                             static_cast<std::uint32_t>(second[x]) + pixels[x - 1] + (y >= 2 ? pixelsAbove[x - 1] : 0u);
            row[x] = static_cast<std::int32_t>(sum);
        }
    }
    return sums;
}

std::int32_t bytes(std::size_t elements, std::size_t size) { return static_cast<std::int32_t>(elements * size); }

} // namespace

std::vector<std::int32_t> tiltedIntegral(const Image &grey, int tip) {
    if (tip == 1) {
        return singleTipIntegral(grey);
    }
    const std::size_t step = static_cast<std::size_t>(grey.width) + 2;
    std::vector<std::int32_t> sums(step * (static_cast<std::size_t>(grey.height) + 2));
    check(rvxiTiltedIntegral_8u32s_C1R(grey.data(), grey.step(), sums.data(), bytes(step, 4), grey.roi(), 0),
          "rvxiTiltedIntegral_8u32s_C1R");
    return sums;
}

Detector::Detector(const Cascade &cascade)
    : window_(cascade.window), deviation_(cascade.deviation), contrast_(static_cast<float>(cascade.contrast)),
      tip_(cascade.tip), tilted_(cascade.tilted()) {
    for (const CascadeStage &stage : cascade.stages) {
        std::vector<Rect2i> rects;
        std::vector<float> weights, thresholds, below, above;
        std::vector<std::int32_t> counts;
        std::vector<std::uint8_t> tilted;
        for (const CascadeStump &stump : stage.stumps) {
            for (const CascadeRect &rect : stump.rects) {
                rects.push_back(rect.box);
                weights.push_back(rect.weight);
            }
            thresholds.push_back(stump.threshold);
            below.push_back(stump.below);
            above.push_back(stump.above);
            counts.push_back(static_cast<std::int32_t>(stump.rects.size()));
            tilted.push_back(stump.tilted);
        }
        HaarClassifier *record = nullptr;
        check(rvxiHaarClassifierInitAlloc_32f(&record, rects.data(), weights.data(), thresholds.data(), below.data(),
                                              above.data(), counts.data(), static_cast<std::int32_t>(counts.size())),
              "rvxiHaarClassifierInitAlloc_32f");
        const bool mixed = std::any_of(tilted.begin(), tilted.end(), [](std::uint8_t t) { return t != 0; });
        stages_.push_back({std::unique_ptr<HaarClassifier, Free>(record), stage.threshold, mixed});
        if (mixed) {
            check(rvxiTiltHaarFeatures_32f(tilted.data(), 1, record), "rvxiTiltHaarFeatures_32f");
        }
    }
}

std::vector<Point2i> Detector::windows(const Image &grey) const {
    if (grey.width < window_.width || grey.height < window_.height) {
        return {};
    }
    // Sums as integers: floats would round those of pictures beyond 256x256 bright pixels.
    const std::size_t step = static_cast<std::size_t>(grey.width) + 1, rows = static_cast<std::size_t>(grey.height) + 1;
    std::vector<std::int32_t> sum(step * rows);
    std::vector<double> squares(step * rows);
    check(rvxiSqrIntegral_8u32s64f_C1R(grey.data(), grey.step(), sum.data(), bytes(step, 4), squares.data(),
                                       bytes(step, 8), grey.roi(), 0, 0),
          "rvxiSqrIntegral_8u32s64f_C1R");
    const std::vector<std::int32_t> tilted = tilted_ ? tiltedIntegral(grey, tip_) : std::vector<std::int32_t>();

    const RoiSize roi{grey.width - window_.width + 1, grey.height - window_.height + 1};
    const std::size_t places = static_cast<std::size_t>(roi.width) * static_cast<std::size_t>(roi.height);
    std::vector<float> norm(places);
    check(rvxiRectStdDev_32s32f_C1R(sum.data(), bytes(step, 4), squares.data(), bytes(step, 8), norm.data(),
                                    4 * roi.width, roi, deviation_),
          "rvxiRectStdDev_32s32f_C1R");
    std::vector<std::uint8_t> mask(places);
    std::int32_t count = 0;
    for (std::size_t i = 0; i < places; ++i) {
        mask[i] = norm[i] >= contrast_ ? 255 : 0;
        count += mask[i] & 1;
    }
    for (const Stage &stage : stages_) {
        if (count == 0) {
            return {};
        }
        if (stage.tilted) {
            check(rvxiApplyMixedHaarClassifier_32s32f_C1R(sum.data(), bytes(step, 4), tilted.data(), bytes(step + 1, 4),
                                                          norm.data(), 4 * roi.width, mask.data(), roi.width, roi,
                                                          &count, stage.record.get(), stage.threshold),
                  "rvxiApplyMixedHaarClassifier_32s32f_C1R");
        } else {
            check(rvxiApplyHaarClassifier_32s32f_C1R(sum.data(), bytes(step, 4), norm.data(), 4 * roi.width,
                                                     mask.data(), roi.width, roi, &count, stage.record.get(),
                                                     stage.threshold),
                  "rvxiApplyHaarClassifier_32s32f_C1R");
        }
    }
    std::vector<Point2i> passed;
    for (std::size_t i = 0; i < places && count != 0; ++i) {
        if (mask[i] != 0) {
            const int at = static_cast<int>(i);
            passed.push_back({at % roi.width, at / roi.width});
        }
    }
    return passed;
}

std::vector<RoiSize> Detector::sizes(RoiSize picture, const DetectorSettings &settings) const {
    std::vector<RoiSize> sizes;
    const double first = std::max(1.0, double(settings.smallest) / window_.width);
    for (double scale = first;; scale *= settings.scaleStep) {
        const RoiSize size{static_cast<int>(std::lround(picture.width / scale)),
                           static_cast<int>(std::lround(picture.height / scale))};
        if (size.width < window_.width || size.height < window_.height ||
            (settings.largest > 0 && window_.width * scale > settings.largest + 0.5)) {
            return sizes;
        }
        sizes.push_back(size);
    }
}

std::vector<Box> Detector::hits(const Image &grey, const DetectorSettings &settings) const {
    std::vector<Box> boxes;
    search(grey, settings, [&](const Image &level, const std::vector<Point2i> &corners) {
        const double sx = double(grey.width) / level.width, sy = double(grey.height) / level.height;
        for (const Point2i corner : corners) {
            boxes.push_back({corner.x * sx, corner.y * sy, window_.width * sx, window_.height * sy});
        }
    });
    return boxes;
}

namespace {

double common(const Box &a, const Box &b) {
    const double width = std::min(a.x + a.width, b.x + b.width) - std::max(a.x, b.x);
    const double height = std::min(a.y + a.height, b.y + b.height) - std::max(a.y, b.y);
    return width > 0 && height > 0 ? width * height : 0;
}

double area(const Box &box) { return box.width * box.height; }

} // namespace

double overlap(const Box &a, const Box &b) {
    const double both = common(a, b);
    return both / (area(a) + area(b) - both);
}

std::vector<Detection> mergeHits(const std::vector<Box> &hits, int least) {
    std::vector<Box> boxes = hits;
    std::stable_sort(boxes.begin(), boxes.end(), [](const Box &a, const Box &b) { return a.x < b.x; });
    std::vector<std::size_t> group(boxes.size());
    std::iota(group.begin(), group.end(), std::size_t{0});
    const auto root = [&](std::size_t i) {
        while (group[i] != i) {
            i = group[i] = group[group[i]];
        }
        return i;
    };
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        // Half of the union in common needs an overlap of half of the width.
        for (std::size_t j = i + 1; j < boxes.size() && boxes[j].x <= boxes[i].x + boxes[i].width / 2; ++j) {
            if (const std::size_t a = root(i), b = root(j); a != b && overlap(boxes[i], boxes[j]) >= 0.5) {
                group[std::max(a, b)] = std::min(a, b);
            }
        }
    }
    std::vector<Detection> sums(boxes.size(), {{0, 0, 0, 0}, 0});
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        Detection &sum = sums[root(i)];
        sum.box.x += boxes[i].x;
        sum.box.y += boxes[i].y;
        sum.box.width += boxes[i].width;
        sum.box.height += boxes[i].height;
        ++sum.hits;
    }
    std::vector<Detection> merged;
    for (const Detection &sum : sums) {
        if (sum.hits >= std::max(least, 1)) {
            const double n = sum.hits;
            merged.push_back({{sum.box.x / n, sum.box.y / n, sum.box.width / n, sum.box.height / n}, sum.hits});
        }
    }
    std::stable_sort(merged.begin(), merged.end(),
                     [](const Detection &a, const Detection &b) { return a.hits > b.hits; });
    std::vector<Detection> kept;
    for (const Detection &one : merged) {
        const bool inside = std::any_of(kept.begin(), kept.end(), [&](const Detection &other) {
            return common(one.box, other.box) > 0.6 * std::min(area(one.box), area(other.box));
        });
        if (!inside) {
            kept.push_back(one);
        }
    }
    return kept;
}

Score score(const std::vector<Detection> &detections, const std::vector<Box> &truth) {
    Score result;
    result.objects = static_cast<int>(truth.size());
    std::vector<std::uint8_t> taken(truth.size());
    for (const Detection &one : detections) {
        std::size_t i = 0;
        while (i < truth.size() && (taken[i] != 0 || overlap(one.box, truth[i]) < 0.5)) {
            ++i;
        }
        if (i < truth.size()) {
            taken[i] = 1;
            ++result.found;
        } else {
            ++result.falseBoxes;
        }
    }
    return result;
}

} // namespace tools
