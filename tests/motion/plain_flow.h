// The optical flow of one point in its plainest form, in double: derivative images of whole levels, every window
// sampled pixel by pixel in every iteration.
#pragma once

#include "motion/flow_scene.h"

namespace flow {

struct Tracked {
    Point2f position;
    int status;
    double error;
    bool fragile; // a decision was so close that rounding may have taken it
};

struct Parameters {
    std::int64_t winSize, maxLevel, maxIterations;
    double threshold;
    Position disturbance{}; // added to every mismatch, relative to the sum of its absolute terms
};

struct PlainWindow {
    std::int64_t x, y;
    double a, b;

    PlainWindow(Position centre, std::int64_t size) {
        const double ox = centre.x - 0.5 * static_cast<double>(size - 1),
                     oy = centre.y - 0.5 * static_cast<double>(size - 1);
        x = static_cast<std::int64_t>(std::floor(ox)), y = static_cast<std::int64_t>(std::floor(oy));
        a = ox - std::floor(ox), b = oy - std::floor(oy);
    }
    bool inside(const Image &image, std::int64_t i, std::int64_t j) const {
        return x + i >= 0 && x + i + (a > 0 ? 1 : 0) < image.width && y + j >= 0 &&
               y + j + (b > 0 ? 1 : 0) < image.height;
    }
    bool nearPixels() const {
        const auto close = [](double f) { return f < 2e-5 || f > 1 - 2e-5; };
        return close(a) || close(b);
    }
    double sample(const Image &image, std::int64_t i, std::int64_t j) const {
        return image.bilinear(static_cast<double>(x + i) + a, static_cast<double>(y + j) + b);
    }
};

inline Image scharr(const Image &image, bool horizontal) {
    return render(image.width, image.height, [&](Position p) {
        const double smooth[] = {3, 10, 3}, derive[] = {-1, 0, 1};
        double sum = 0;
        for (std::int64_t j = 0; j < 3; ++j) {
            for (std::int64_t i = 0; i < 3; ++i) {
                sum += (horizontal ? smooth[i] * derive[j] : derive[i] * smooth[j]) *
                       image.replicated(static_cast<std::int64_t>(p.x) + i - 1, static_cast<std::int64_t>(p.y) + j - 1);
            }
        }
        return sum / 32;
    });
}

enum class Outcome { tracked, lost, apart };

// v is the guess and becomes the position, which counts unless the point is lost.
inline Outcome plainLevel(const Image &prev, const Image &dx, const Image &dy, const Image &next, Position u,
                          Position &v, const Parameters &p, Tracked &result) {
    const auto beyond = [](Position q) { return !(std::fabs(q.x) <= 1e9 && std::fabs(q.y) <= 1e9); };
    if (beyond(u)) {
        return Outcome::lost;
    }
    const std::int64_t n = p.winSize;
    const PlainWindow patch(u, n + 2), from(u, n);
    bool some = false;
    for (std::int64_t i = 0; i < (n + 2) * (n + 2); ++i) {
        some |= patch.inside(prev, i % (n + 2), i / (n + 2));
    }
    if (!some) {
        return Outcome::lost;
    }
    Position d{}, before{};
    for (std::int64_t k = 1;; ++k) {
        if (beyond(v)) {
            return Outcome::lost;
        }
        const PlainWindow to(v, n);
        double xx = 0, xy = 0, yy = 0, bx = 0, by = 0, squares = 0;
        std::int64_t sampled = 0, count = 0;
        for (std::int64_t j = 0; j < n; ++j) {
            for (std::int64_t i = 0; i < n; ++i) {
                sampled += to.inside(next, i, j);
                if (to.inside(next, i, j) && from.inside(prev, i, j)) {
                    const double gx = from.sample(dx, i, j), gy = from.sample(dy, i, j);
                    const double difference = from.sample(prev, i, j) - to.sample(next, i, j);
                    xx += gx * gx, xy += gx * gy, yy += gy * gy;
                    bx += difference * gx + p.disturbance.x * std::fabs(from.sample(prev, i, j) * gx);
                    by += difference * gy + p.disturbance.y * std::fabs(from.sample(prev, i, j) * gy);
                    squares += difference * difference;
                    ++count;
                }
            }
        }
        result.fragile |= k > 1 && to.nearPixels();
        if (sampled == 0) {
            return Outcome::lost;
        }
        if (count == 0) {
            return Outcome::apart;
        }
        const double determinant = xx * yy - xy * xy;
        // What float samples leave of a determinant that should be nothing, or nearly.
        result.fragile |= std::fabs(determinant) < 1e-3 * xx * yy && determinant != 0;
        if (!(determinant >= 2.220446049250313e-16)) {
            return Outcome::lost;
        }
        before = d;
        d = {(yy * bx - xy * by) / determinant, (xx * by - xy * bx) / determinant};
        v = {v.x + d.x, v.y + d.y};
        if (beyond(v)) {
            return Outcome::lost;
        }
        result.error = squares > 0 ? std::sqrt(squares / static_cast<double>(count)) : 0;
        const double length = std::hypot(d.x, d.y);
        result.fragile |= std::fabs(length - p.threshold) < 1e-6 + 1e-4 * length && p.threshold > 0;
        if (length * length < p.threshold * p.threshold) {
            return Outcome::tracked;
        }
        const double sx = std::fabs(d.x + before.x), sy = std::fabs(d.y + before.y), most = 0.0003452669770922512;
        result.fragile |= k > 1 && (std::fabs(sx - most) < 5e-6 || std::fabs(sy - most) < 5e-6);
        if (k > 1 && sx < most && sy < most) {
            v = {v.x - d.x / 2, v.y - d.y / 2};
            return Outcome::tracked;
        }
        if (k >= p.maxIterations) {
            return Outcome::tracked;
        }
    }
}

template <class T> class PlainFlow {
public:
    PlainFlow(const Pyramid<T> &prev, const Pyramid<T> &next) : prev_(prev), next_(next) {
        for (const Image &level : prev.levels) {
            dx_.push_back(scharr(level, false));
            dy_.push_back(scharr(level, true));
        }
    }

    Tracked follow(Point2f point, Point2f guess, const Parameters &p) const {
        Tracked result{guess, static_cast<int>(p.maxLevel) + 1, 0, false};
        for (std::int64_t level = p.maxLevel; level >= 0; --level) {
            const auto l = static_cast<std::size_t>(level);
            const double scale = prev_.scale(l);
            const Position u{static_cast<double>(point.x) * scale, static_cast<double>(point.y) * scale};
            Position v{static_cast<double>(result.position.x) * scale, static_cast<double>(result.position.y) * scale};
            const Outcome outcome = plainLevel(prev_.levels[l], dx_[l], dy_[l], next_.levels[l], u, v, p, result);
            if (outcome != Outcome::lost) {
                result.position = {static_cast<float>(v.x / scale), static_cast<float>(v.y / scale)};
            }
            if (outcome != Outcome::tracked) {
                result.status = static_cast<int>(level) + 1;
                result.error = 0;
                return result;
            }
        }
        result.status = 0;
        return result;
    }

private:
    const Pyramid<T> &prev_, &next_;
    std::vector<Image> dx_, dy_;
};

} // namespace flow
