// Boosted stumps over Haar-like features: one stage of a cascade from windows with and without the object.
#pragma once

#include "cascade.h"
#include "random.h"

namespace tools {

// What a stump compares: rectangles with their weights, upright or tilted.
struct HaarShape {
    std::vector<CascadeRect> rects;
    bool tilted = false;
};

// Different shapes of all kinds (edges, lines, spots, chequers), picked at random; an even surface gives 0. At most so
// many, since a small window has no more.
std::vector<HaarShape> pickShapes(RoiSize window, int count, bool tilted, Random &random);

// Values of all shapes for a set of windows, each divided by its window's deviation.
class ShapeValues {
public:
    ShapeValues(const std::vector<HaarShape> &shapes, RoiSize window, Rect2i deviation)
        : shapes_(&shapes), window_(window), deviation_(deviation), values_(shapes.size()) {}

    // Pictures of the window's size.
    void add(const Image &grey);
    std::size_t samples() const { return samples_; }
    const std::vector<float> &of(std::size_t shape) const { return values_[shape]; }
    void keep(const std::vector<std::uint8_t> &wanted); // one flag per window

private:
    const std::vector<HaarShape> *shapes_;
    RoiSize window_;
    Rect2i deviation_;
    std::size_t samples_ = 0;
    std::vector<std::vector<float>> values_; // by shape, then by window
};

struct StageSettings {
    double hitRate = 0.998, falseAlarm = 0.4; // of the windows given
    int mostStumps = 60;
};

struct TrainedStage {
    CascadeStage stage;
    double hitRate, falseAlarm;       // reached
    std::vector<std::uint8_t> passed; // one flag per window with the object
};

// Gentle AdaBoost (Friedman, Hastie, Tibshirani, "Additive logistic regression", Annals of Statistics 28, 2000) until
// the stage keeps the hit rate and its false alarms are few enough. Neither set may be empty.
TrainedStage trainStage(const std::vector<HaarShape> &shapes, const ShapeValues &positives,
                        const ShapeValues &negatives, const StageSettings &settings);

} // namespace tools
