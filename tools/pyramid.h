// The pyramid of a picture: itself and ever smaller, smoothed versions of it.
#pragma once

#include "image.h"

#include <memory>

namespace tools {

class Pyramid {
public:
    // At most so many levels above the picture, as long as they get smaller. The rate is above 1, up to 10.
    Pyramid(Image image, float rate, int levels);

    // Level 0 is the picture.
    const std::vector<Image> &levels() const { return levels_; }
    const PyramidRecord *record() const { return record_.get(); }

private:
    struct Free {
        void operator()(PyramidRecord *record) const { rvxiPyramidFree(record); }
    };
    std::vector<Image> levels_;
    std::unique_ptr<PyramidRecord, Free> record_;
};

} // namespace tools
