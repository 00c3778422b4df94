// Canny edges of a picture, for commands that need edges.
#pragma once

#include "image.h"

#include <optional>

namespace tools {

struct EdgeSettings {
    std::string norm = "l2", filter = "sobel"; // l1 or l2 (colour: l1); sobel or scharr
    int size = 3;                              // 3 or 5 (Scharr: 3)
    std::optional<float> low, high;            // what is not given is chosen from the picture
};

struct Edges {
    Image image; // 255 on edges, 0 elsewhere
    float low, high;
};

// Of a colour picture every pixel's gradient is that of the channel in which it is strongest: a red flower on green
// grass has edges where their luma is equal.
Edges findEdges(const Image &picture, const EdgeSettings &settings);

} // namespace tools
