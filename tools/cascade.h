// Trained detectors as a model in memory, and their files: JSON (docs/cascades.md) and the XML in which cascades are
// passed around.
#pragma once

#include "image.h"

#include <string>
#include <vector>

namespace tools {

struct CascadeRect {
    Rect2i box; // tilted: the top corner, how far it reaches down to the right, how far down to the left
    float weight;
};

// Adds `below` where the weighted sum of pixels is less than the threshold times the window's deviation, else `above`.
struct CascadeStump {
    std::vector<CascadeRect> rects;
    bool tilted = false;
    float threshold = 0, below = 0, above = 0;
};

// Passes where its stumps' total reaches the threshold.
struct CascadeStage {
    float threshold = 0;
    std::vector<CascadeStump> stumps;
};

struct Cascade {
    std::string object;  // what it finds
    RoiSize window{};    // pixels
    Rect2i deviation{};  // the part of the window whose deviation scales the thresholds
    double contrast = 1; // windows of a smaller deviation, in grey levels, are passed over
    // Width of the lowest row of the triangle whose sum an element of the tilted integral image is: 2 for the
    // library's, 1 for those that XML cascades are made for. Tilted rectangles lie on other pixels for each.
    int tip = 2;
    std::vector<CascadeStage> stages;

    bool tilted() const;
    std::size_t stumpCount() const;
};

// Reads a file of any of the formats. Throws a Failure that names the file and the place in it.
Cascade readCascade(const std::string &path);
void writeCascade(const std::string &path, const Cascade &cascade);

// A file's name stands for itself; a name without folder and ending also for a cascade that came with the program.
std::string findCascade(const std::string &name);

// Throws a Failure unless every number is one that the detector can work with: above all, rectangles in the window.
void checkCascade(const Cascade &cascade, const std::string &path);

// What readCascade() does for XML text.
Cascade parseCascadeXml(const std::string &text, const std::string &path);

} // namespace tools
