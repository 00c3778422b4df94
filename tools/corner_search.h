// The points of a grey picture that can be tracked best: the peaks of a corner measure or FAST corners, as long as they
// are strong enough and far enough from every stronger one.
#pragma once

#include "image.h"
#include "options.h"

namespace tools {

struct CornerSettings {
    std::string method = "min-eigenvalue"; // what measures a corner: that (Shi and Tomasi), harris or fast
    std::size_t count = 200;               // most corners to keep
    float quality = 0.01f;                 // least strength, as a part of the strongest corner's
    double distance = 10;                  // least distance between corners, in pixels
    int block = 3;                         // side of the block around each pixel: 3 or 5; not with fast
    int threshold = 20;                    // fast: by how much a run of points differs from the pixel
    int arc = 9;                           // fast: how many points of sixteen a run has
};

void addCornerOptions(Command &command, CornerSettings &settings);

struct Corner {
    Point2i at;
    float strength;
};

// Strongest first; none nearer than the distance to a taken point. A picture below 3x3 has no corners.
std::vector<Corner> findCorners(const Image &grey, const CornerSettings &settings,
                                const std::vector<Point2f> &taken = {});

} // namespace tools
