// Frames whose true motion is known, and pyramids of them, in plain code.
#pragma once

#include "support/guarded.h"

#include "rvxcv.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

namespace flow {

using namespace support;

struct Position {
    double x, y;
};

// A texture without edges: waves in all directions, the longer the stronger.
class Texture {
public:
    explicit Texture(Rng &rng) {
        for (int i = 0; i < 60; ++i) {
            const double length = 6.0 * std::pow(20.0, i / 59.0), angle = static_cast<double>(uniform(rng, 0, 9999));
            const double k = 2 * 3.14159265358979 / length;
            waves_.push_back({k * std::cos(angle), k * std::sin(angle),
                              static_cast<double>(uniform(rng, 0, 6283)) / 1e3, std::sqrt(length)});
            total_ += waves_.back().strength * waves_.back().strength;
        }
    }
    // Around 128, mostly within 30..226.
    double at(Position p) const {
        double sum = 0;
        for (const Wave &w : waves_) {
            sum += w.strength * std::sin(w.kx * p.x + w.ky * p.y + w.phase);
        }
        return 128 + 45 * sum / std::sqrt(total_ / 2);
    }

private:
    struct Wave {
        double kx, ky, phase, strength;
    };
    std::vector<Wave> waves_;
    double total_ = 0;
};

struct Image {
    std::int64_t width, height;
    std::vector<double> pixels;

    Image(std::int64_t w, std::int64_t h) : width(w), height(h), pixels(static_cast<std::size_t>(w * h)) {}
    double &at(std::int64_t x, std::int64_t y) { return pixels[static_cast<std::size_t>(y * width + x)]; }
    double replicated(std::int64_t x, std::int64_t y) const {
        x = std::clamp<std::int64_t>(x, 0, width - 1);
        y = std::clamp<std::int64_t>(y, 0, height - 1);
        return pixels[static_cast<std::size_t>(y * width + x)];
    }
    double bilinear(double x, double y) const {
        const auto i = static_cast<std::int64_t>(std::floor(x)), j = static_cast<std::int64_t>(std::floor(y));
        const double a = x - std::floor(x), b = y - std::floor(y);
        const double upper = replicated(i, j) + a * (replicated(i + 1, j) - replicated(i, j));
        const double lower = replicated(i, j + 1) + a * (replicated(i + 1, j + 1) - replicated(i, j + 1));
        return upper + b * (lower - upper);
    }
};

inline Image render(std::int64_t width, std::int64_t height, const std::function<double(Position)> &scene) {
    Image image(width, height);
    for (std::int64_t y = 0; y < height; ++y) {
        for (std::int64_t x = 0; x < width; ++x) {
            image.at(x, y) = scene({static_cast<double>(x), static_cast<double>(y)});
        }
    }
    return image;
}

// Smoothed by 1 4 6 4 1, then sampled at the rate.
inline Image nextLevel(const Image &image, double rate) {
    const double taps[] = {1 / 16.0, 4 / 16.0, 6 / 16.0, 4 / 16.0, 1 / 16.0};
    Image rows(image.width, image.height), smooth(image.width, image.height);
    for (std::int64_t y = 0; y < image.height; ++y) {
        for (std::int64_t x = 0; x < image.width; ++x) {
            for (std::int64_t i = 0; i < 5; ++i) {
                rows.at(x, y) += taps[i] * image.replicated(x + i - 2, y);
            }
        }
    }
    for (std::int64_t y = 0; y < image.height; ++y) {
        for (std::int64_t x = 0; x < image.width; ++x) {
            for (std::int64_t i = 0; i < 5; ++i) {
                smooth.at(x, y) += taps[i] * rows.replicated(x, y + i - 2);
            }
        }
    }
    const auto shorter = [&](std::int64_t n) {
        return std::max<std::int64_t>(1, static_cast<std::int64_t>(static_cast<double>(n) / rate));
    };
    return render(shorter(image.width), shorter(image.height),
                  [&](Position p) { return smooth.bilinear(p.x * rate, p.y * rate); });
}

// A pyramid of T: a record with arrays of its own, and level images that end (or begin) at unmapped pages. `levels`
// holds the pixels as T has them.
template <class T> class Pyramid {
public:
    Pyramid(const Image &base, std::int64_t levelsAbove, double rate, double factor = 1) {
        Image level = base;
        double scale = 1;
        for (std::int64_t i = 0; i <= levelsAbove; ++i) {
            add(level, scale, factor);
            scale *= 1.0 / rate;
            level = nextLevel(level, rate);
        }
    }

    void add(const Image &level, double scale, double factor = 1) {
        const auto index = static_cast<std::int64_t>(levels.size());
        guarded_.push_back(std::make_unique<GuardedImage<T>>(
            level.width, level.height,
            typename GuardedImage<T>::Layout{.padding = 3 * index, // any step will do
                                             .guard = index % 2 != 0 ? Guard::before : Guard::behind,
                                             .skew = index % 2}));
        levels.push_back(level);
        for (std::int64_t y = 0; y < level.height; ++y) {
            for (std::int64_t x = 0; x < level.width; ++x) {
                const double value = factor * levels.back().at(x, y);
                const T stored = std::is_same_v<T, float>
                                     ? static_cast<T>(value)
                                     : static_cast<T>(std::clamp(std::round(value), 0.0,
                                                                 static_cast<double>(std::numeric_limits<T>::max())));
                guarded_.back()->set(x, y, stored);
                levels.back().at(x, y) = static_cast<double>(stored);
            }
        }
        images_.push_back(guarded_.back()->data());
        sizes_.push_back(guarded_.back()->roi());
        scales_.push_back(scale);
        steps_.push_back(guarded_.back()->step());
    }

    PyramidRecord record() {
        return {images_.data(), sizes_.data(), scales_.data(),
                steps_.data(),  nullptr,       static_cast<std::int32_t>(levels.size()) - 1};
    }
    double scale(std::size_t level) const { return scales_[level]; }

    std::vector<Image> levels;

private:
    std::vector<std::unique_ptr<GuardedImage<T>>> guarded_;
    std::vector<void *> images_;
    std::vector<RoiSize> sizes_;
    std::vector<double> scales_;
    std::vector<std::int32_t> steps_;
};

// The pixel with the largest smaller eigenvalue of the gradient covariance in every cell of a grid; of these the better
// two thirds.
inline std::vector<Point2f> corners(const Image &image, std::int64_t cell, std::int64_t margin) {
    std::vector<std::pair<double, Point2f>> found;
    const auto measure = [&](std::int64_t x, std::int64_t y) {
        double xx = 0, xy = 0, yy = 0;
        for (std::int64_t j = y - 3; j <= y + 3; ++j) {
            for (std::int64_t i = x - 3; i <= x + 3; ++i) {
                const double dx = image.replicated(i + 1, j) - image.replicated(i - 1, j);
                const double dy = image.replicated(i, j + 1) - image.replicated(i, j - 1);
                xx += dx * dx, xy += dx * dy, yy += dy * dy;
            }
        }
        return xx + yy - std::sqrt((xx - yy) * (xx - yy) + 4 * xy * xy);
    };
    for (std::int64_t top = margin; top + cell <= image.height - margin; top += cell) {
        for (std::int64_t left = margin; left + cell <= image.width - margin; left += cell) {
            double best = -1;
            Point2f corner{};
            for (std::int64_t y = top; y < top + cell; y += 2) {
                for (std::int64_t x = left; x < left + cell; x += 2) {
                    const double m = measure(x, y);
                    if (m > best) {
                        best = m;
                        corner = {static_cast<float>(x), static_cast<float>(y)};
                    }
                }
            }
            found.push_back({best, corner});
        }
    }
    std::sort(found.begin(), found.end(), [](const auto &a, const auto &b) { return a.first > b.first; });
    std::vector<Point2f> corners;
    for (std::size_t i = 0; i < found.size() * 2 / 3; ++i) {
        corners.push_back(found[i].second);
    }
    return corners;
}

} // namespace flow
