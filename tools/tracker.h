// Points followed from frame to frame: pyramidal Lucas-Kanade from corners, new corners for what gets lost.
#pragma once

#include "corner_search.h"
#include "pyramid.h"

#include <deque>
#include <memory>
#include <optional>

namespace tools {

struct TrackSettings {
    CornerSettings corners;
    int window = 21;         // side of the window around a point, in pixels
    int levels = 4;          // of the pyramids, above the frame itself
    int iterations = 20;     // at most, on each level
    float precision = 0.01f; // length of a step that ends the search, in pixels
    float error = 20;        // a point whose window differs by more grey levels is lost
};

struct Track {
    std::size_t number; // from 0, in the order of appearance
    Point2f at;
    float error; // of its window against the frame before, in grey levels; 0 in its first frame
};

class Tracker {
public:
    explicit Tracker(const TrackSettings &settings) : settings_(settings) {}

    // Follows the points into this frame; all frames are of one size.
    void add(const Image &grey);

    // Where the points are in the last frame.
    const std::vector<Track> &tracks() const { return tracks_; }
    std::size_t count() const { return next_; } // of all points so far

private:
    struct Free {
        void operator()(OpticalFlowState *state) const { rvxiOpticalFlowPyrLKFree_8u_C1R(state); }
    };

    void follow(const Pyramid &now);
    void findMore(const Image &grey);

    TrackSettings settings_;
    std::vector<Track> tracks_;
    std::size_t next_ = 0;
    std::optional<Pyramid> before_;
    std::unique_ptr<OpticalFlowState, Free> state_;
};

} // namespace tools
