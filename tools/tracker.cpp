#include "tracker.h"

#include <algorithm>

namespace tools {

void Tracker::add(const Image &grey) {
    Pyramid now(grey, 2, settings_.levels);
    const std::size_t had = tracks_.size();
    if (before_ && had > 0) {
        follow(now);
    }
    if (!before_ || tracks_.size() < had || had == 0) {
        findMore(grey);
    }
    before_ = std::move(now);
}

void Tracker::follow(const Pyramid &now) {
    const RoiSize size = now.levels().front().roi();
    if (!state_) {
        // On levels up to half the frame's size the derivatives are computed once for all points.
        OpticalFlowState *state = nullptr;
        check(rvxiOpticalFlowPyrLKInitAlloc_8u_C1R(&state, {size.width / 2 + 1, size.height / 2 + 1}, settings_.window,
                                                   0),
              "OpticalFlowPyrLKInitAlloc");
        state_.reset(state);
    }
    std::vector<Point2f> from, to;
    for (const Track &track : tracks_) {
        from.push_back(track.at);
    }
    to = from;
    std::vector<std::uint8_t> status(from.size());
    std::vector<float> error(from.size());
    check(rvxiOpticalFlowPyrLK_8u_C1R(before_->record(), now.record(), from.data(), to.data(), status.data(),
                                      error.data(), static_cast<std::int32_t>(from.size()), settings_.window,
                                      now.record()->levelCount, settings_.iterations, settings_.precision,
                                      state_.get()),
          "OpticalFlowPyrLK");
    std::vector<Track> kept;
    for (std::size_t i = 0; i < to.size(); ++i) {
        const auto width = static_cast<float>(size.width - 1), height = static_cast<float>(size.height - 1);
        const bool inside = to[i].x >= 0 && to[i].y >= 0 && to[i].x <= width && to[i].y <= height;
        if (status[i] == 0 && inside && error[i] <= settings_.error) {
            kept.push_back({tracks_[i].number, to[i], error[i]});
        }
    }
    tracks_ = std::move(kept);
}

void Tracker::findMore(const Image &grey) {
    CornerSettings corners = settings_.corners;
    corners.count -= tracks_.size();
    std::vector<Point2f> taken;
    for (const Track &track : tracks_) {
        taken.push_back(track.at);
    }
    for (const Corner &corner : findCorners(grey, corners, taken)) {
        tracks_.push_back({next_++, {static_cast<float>(corner.at.x), static_cast<float>(corner.at.y)}, 0});
    }
}

} // namespace tools
