#include "boosting.h"

#include "detector.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numeric>
#include <set>
#include <tuple>

namespace tools {
namespace {

// ------------------------------------------------------------------------------------------------------- shapes

// A shape is a block of cells, of which some are counted against the whole block.
struct Part {
    int x, y, width, height; // cells
};
struct Kind {
    int columns, rows;
    std::vector<Part> parts; // of one size each
};

const std::vector<Kind> &kinds() {
    static const std::vector<Kind> all = {
        {2, 1, {{1, 0, 1, 1}}},               // edges
        {1, 2, {{0, 1, 1, 1}}},               //
        {3, 1, {{1, 0, 1, 1}}},               // lines
        {1, 3, {{0, 1, 1, 1}}},               //
        {4, 1, {{1, 0, 2, 1}}},               // wide lines
        {1, 4, {{0, 1, 1, 2}}},               //
        {3, 3, {{1, 1, 1, 1}}},               // a spot
        {2, 2, {{0, 0, 1, 1}, {1, 1, 1, 1}}}, // a chequer
    };
    return all;
}

HaarShape makeShape(const Kind &kind, bool tilted, int x, int y, int cellWidth, int cellHeight) {
    const auto rect = [&](const Part &part) {
        const int along = part.x * cellWidth, down = part.y * cellHeight;
        const int left = tilted ? x + along - down : x + along, top = tilted ? y + along + down : y + down;
        return Rect2i{left, top, part.width * cellWidth, part.height * cellHeight};
    };
    const double cells = kind.columns * kind.rows;
    HaarShape shape{{{rect({0, 0, kind.columns, kind.rows}), -1}}, tilted};
    for (const Part &part : kind.parts) {
        const double counted = part.width * part.height * double(kind.parts.size());
        shape.rects.push_back({rect(part), static_cast<float>(cells / counted)});
    }
    return shape;
}

} // namespace

std::vector<HaarShape> pickShapes(RoiSize window, int count, bool tilted, Random &random) {
    std::vector<HaarShape> shapes;
    std::set<std::tuple<int, bool, int, int, int, int>> taken;
    // A small window has fewer shapes than are asked for.
    for (int tries = 0; tries < 40 * count && static_cast<int>(shapes.size()) < count; ++tries) {
        const int index = random.below(static_cast<int>(kinds().size()));
        const Kind &kind = kinds()[static_cast<std::size_t>(index)];
        const bool turned = tilted && random.chance(0.3);
        const int w = 1 + random.below(std::max(1, window.width / kind.columns));
        const int h = 1 + random.below(std::max(1, window.height / kind.rows));
        const int width = w * kind.columns, height = h * kind.rows;
        // How far the block reaches from its corner: tilted ones to both sides, the last column being left free, since
        // their lowest row is two pixels wide.
        const int left = turned ? height - 1 : 0, right = turned ? width + 1 : width;
        const int down = turned ? width + height : height;
        if (width * height < 8 || left + right > window.width || down > window.height) {
            continue;
        }
        const int x = left + random.below(window.width - left - right + 1), y = random.below(window.height - down + 1);
        if (taken.insert({index, turned, x, y, w, h}).second) {
            shapes.push_back(makeShape(kind, turned, x, y, w, h));
        }
    }
    return shapes;
}

// ------------------------------------------------------------------------------------------------------- values

void ShapeValues::add(const Image &grey) {
    const int step = window_.width + 1;
    std::vector<std::int32_t> sum(static_cast<std::size_t>(step) * static_cast<std::size_t>(window_.height + 1));
    std::vector<double> squares(sum.size());
    check(rvxiSqrIntegral_8u32s64f_C1R(grey.data(), grey.step(), sum.data(), 4 * step, squares.data(), 8 * step,
                                       window_, 0, 0),
          "rvxiSqrIntegral_8u32s64f_C1R");
    float norm = 0;
    check(rvxiRectStdDev_32s32f_C1R(sum.data(), 4 * step, squares.data(), 8 * step, &norm, 4, {1, 1}, deviation_),
          "rvxiRectStdDev_32s32f_C1R");
    const std::vector<std::int32_t> tilted = tiltedIntegral(grey, 2);
    for (std::size_t i = 0; i < values_.size(); ++i) {
        const HaarShape &shape = (*shapes_)[i];
        const auto at = [&](int x, int y) {
            const int place = shape.tilted ? (y + 1) * (step + 1) + x + 1 : y * step + x;
            return (shape.tilted ? tilted : sum)[static_cast<std::size_t>(place)];
        };
        float value = 0;
        for (const CascadeRect &rect : shape.rects) {
            const auto [x, y, w, h] = rect.box;
            const std::int32_t pixels = shape.tilted
                                            ? at(x + w - h, y + w + h) - at(x - h, y + h) - at(x + w, y + w) + at(x, y)
                                            : at(x + w, y + h) - at(x, y + h) - at(x + w, y) + at(x, y);
            value += static_cast<float>(pixels) * rect.weight;
        }
        values_[i].push_back(norm > 0 ? value / norm : 0);
    }
    ++samples_;
}

void ShapeValues::keep(const std::vector<std::uint8_t> &wanted) {
    for (std::vector<float> &values : values_) {
        std::size_t kept = 0;
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (wanted[i] != 0) {
                values[kept++] = values[i];
            }
        }
        values.resize(kept);
    }
    samples_ = values_.empty() ? 0 : values_[0].size();
}

// ------------------------------------------------------------------------------------------------------ boosting

namespace {

// All windows of both sets, those with the object first.
struct Sets {
    const ShapeValues &positives, &negatives;

    std::size_t count() const { return positives.samples() + negatives.samples(); }
    float value(std::size_t shape, std::size_t i) const {
        const std::size_t n = positives.samples();
        return i < n ? positives.of(shape)[i] : negatives.of(shape)[i - n];
    }
    float label(std::size_t i) const { return i < positives.samples() ? 1.0f : -1.0f; }
};

using Order = std::vector<std::uint32_t>;

Order sorted(const Sets &sets, std::size_t shape) {
    std::vector<std::pair<float, std::uint32_t>> pairs(sets.count());
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        pairs[i] = {sets.value(shape, i), static_cast<std::uint32_t>(i)};
    }
    std::sort(pairs.begin(), pairs.end());
    Order order(pairs.size());
    std::transform(pairs.begin(), pairs.end(), order.begin(), [](const auto &pair) { return pair.second; });
    return order;
}

struct Choice {
    std::size_t shape = 0;
    double gain = -1;
    float threshold = 0, below = 0, above = 0;
};

struct Weighted {
    double weight, signedWeight; // times the label
};

// The best threshold of a shape: both sides get the weighted mean of their labels, whose squared error is least where
// the gain, the sum of squared signed weights over weights, is greatest.
void tryShape(const Sets &sets, std::size_t shape, const Order &order, const std::vector<Weighted> &weights,
              Weighted all, Choice &best) {
    Weighted left{0, 0};
    for (std::size_t i = 0; i + 1 < order.size(); ++i) {
        const Weighted &w = weights[order[i]];
        left.weight += w.weight;
        left.signedWeight += w.signedWeight;
        const Weighted right{all.weight - left.weight, all.signedWeight - left.signedWeight};
        // The gain without a division by each weight: a / b + c / d compared as (a d + c b) / (b d).
        const double a = left.signedWeight * left.signedWeight, c = right.signedWeight * right.signedWeight;
        const double product = left.weight * right.weight;
        if (a * right.weight + c * left.weight > best.gain * product && right.weight > 1e-9 && left.weight > 1e-9) {
            const float low = sets.value(shape, order[i]), high = sets.value(shape, order[i + 1]);
            const float threshold = low + (high - low) / 2;
            if (low < threshold) { // equal values cannot be told apart
                best = {shape, (a * right.weight + c * left.weight) / product, threshold,
                        static_cast<float>(left.signedWeight / left.weight),
                        static_cast<float>(right.signedWeight / right.weight)};
            }
        }
    }
}

} // namespace

TrainedStage trainStage(const std::vector<HaarShape> &shapes, const ShapeValues &positives,
                        const ShapeValues &negatives, const StageSettings &settings) {
    const Sets sets{positives, negatives};
    const std::size_t count = sets.count(), hits = positives.samples();
    std::vector<Order> orders(shapes.size());
    for (std::size_t shape = 0; shape < shapes.size(); ++shape) {
        orders[shape] = sorted(sets, shape);
    }
    std::vector<Weighted> weights(count);
    std::vector<float> sums(count, 0.0f);
    for (std::size_t i = 0; i < count; ++i) { // both sets weigh the same
        const double weight = 0.5 / static_cast<double>(i < hits ? hits : count - hits);
        weights[i] = {weight, weight * sets.label(i)};
    }
    TrainedStage result{};
    while (static_cast<int>(result.stage.stumps.size()) < settings.mostStumps) {
        Weighted all{0, 0};
        for (const Weighted &w : weights) {
            all.weight += w.weight;
            all.signedWeight += w.signedWeight;
        }
        Choice best;
        for (std::size_t shape = 0; shape < shapes.size(); ++shape) {
            tryShape(sets, shape, orders[shape], weights, all, best);
        }
        if (best.gain < 0) {
            break; // no shape tells any two windows apart
        }
        const HaarShape &shape = shapes[best.shape];
        result.stage.stumps.push_back({shape.rects, shape.tilted, best.threshold, best.below, best.above});
        for (std::size_t i = 0; i < count; ++i) {
            const float vote = sets.value(best.shape, i) < best.threshold ? best.below : best.above;
            sums[i] += vote;
            const double weight = weights[i].weight * std::exp(-double(vote) * sets.label(i)) / all.weight;
            weights[i] = {weight, weight * sets.label(i)};
        }

        // As high a threshold as the hit rate allows; a little lower, since sums are rounded in another order later.
        std::vector<float> ordered(sums.begin(), sums.begin() + static_cast<std::ptrdiff_t>(hits));
        std::sort(ordered.begin(), ordered.end());
        const auto lost = static_cast<std::size_t>((1 - settings.hitRate) * static_cast<double>(hits));
        result.stage.threshold = ordered[std::min(lost, hits - 1)] - 1e-4f;
        const auto passes = [&](float sum) { return sum >= result.stage.threshold; };
        const auto middle = sums.begin() + static_cast<std::ptrdiff_t>(hits);
        result.hitRate = double(std::count_if(sums.begin(), middle, passes)) / static_cast<double>(hits);
        result.falseAlarm =
            double(std::count_if(middle, sums.end(), passes)) / static_cast<double>(negatives.samples());
        if (result.falseAlarm <= settings.falseAlarm) {
            break;
        }
    }
    for (std::size_t i = 0; i < hits; ++i) {
        result.passed.push_back(sums[i] >= result.stage.threshold);
    }
    return result;
}

} // namespace tools
