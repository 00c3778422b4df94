// Finds what a cascade is trained for, at all places and in all sizes of a picture.
#pragma once

#include "cascade.h"
#include "resample.h"

#include <memory>

namespace tools {

struct DetectorSettings {
    double scaleStep = 1.1;        // from one size to the next
    int smallest = 0, largest = 0; // width of what is found, in pixels; 0: no bound but the window and the picture
    int hits = 3;                  // windows that must agree
};

struct Detection {
    Box box;
    int hits;
};

// Mean boxes of windows that overlap by half of their union or more, where there are enough of them. A box that lies
// mostly in one of more hits is left out. Most hits first.
std::vector<Detection> mergeHits(const std::vector<Box> &hits, int least);

// Of the union, as a part.
double overlap(const Box &a, const Box &b);

// What detections are worth beside the true boxes: an object counts as found by a box that shares half of their union
// with it; every further box is a false one.
struct Score {
    int objects = 0, found = 0, falseBoxes = 0;
};
Score score(const std::vector<Detection> &detections, const std::vector<Box> &truth);

class Detector {
public:
    // The cascade must be one that checkCascade() accepts.
    explicit Detector(const Cascade &cascade);

    RoiSize window() const { return window_; }
    // The upper left corners of all windows of a grey picture, in its own size, that pass every stage.
    std::vector<Point2i> windows(const Image &grey) const;

    // Calls visit(level, corners) for every size: the picture made so small that what is sought has the window's size.
    // Column x of a level is column x * picture.width / level.width of the picture.
    template <typename Visit> void search(const Image &grey, const DetectorSettings &settings, Visit visit) const {
        for (const RoiSize size : sizes(grey.roi(), settings)) {
            const Image level = resample(grey, {0, 0, double(grey.width), double(grey.height)}, size);
            visit(level, windows(level));
        }
    }
    std::vector<Box> hits(const Image &grey, const DetectorSettings &settings) const;
    std::vector<Detection> detect(const Image &grey, const DetectorSettings &settings) const {
        return mergeHits(hits(grey, settings), settings.hits);
    }

private:
    struct Free {
        void operator()(HaarClassifier *stage) const { rvxiHaarClassifierFree_32f(stage); }
    };
    struct Stage {
        std::unique_ptr<HaarClassifier, Free> record;
        float threshold;
        bool tilted;
    };

    std::vector<RoiSize> sizes(RoiSize picture, const DetectorSettings &settings) const;

    std::vector<Stage> stages_;
    RoiSize window_;
    Rect2i deviation_;
    float contrast_;
    int tip_;
    bool tilted_;
};

// The tilted integral image with 2 rows and columns more than the picture, of which (1, 1) stands for the picture's
// origin.
std::vector<std::int32_t> tiltedIntegral(const Image &grey, int tip);

} // namespace tools
