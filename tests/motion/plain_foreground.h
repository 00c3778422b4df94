// The background models in their plainest form: one pixel, one rule after the other.
#pragma once

#include "rvxcv.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <vector>

namespace support {

using Sample = std::array<std::uint8_t, 3>;
using Floats = std::array<float, 3>;

inline float plainSum(int channels, const Floats &a, const Floats &b) {
    float sum = a[0] * b[0];
    for (std::size_t c = 1; c < static_cast<std::size_t>(channels); ++c) {
        sum = std::fma(a[c], b[c], sum);
    }
    return sum;
}
inline Floats plainDifference(const Sample &s, const Floats &m) {
    return {static_cast<float>(s[0]) - m[0], static_cast<float>(s[1]) - m[1], static_cast<float>(s[2]) - m[2]};
}
inline Floats plainFloats(const Sample &s) {
    return {static_cast<float>(s[0]), static_cast<float>(s[1]), static_cast<float>(s[2])};
}

// One Gaussian; of a mixture it has a weight too.
struct PlainGaussian {
    float weight = 0, variance = 0;
    Floats mean{};

    template <class Params> bool matches(int channels, const Params &p, const Sample &s) const {
        const Floats d = plainDifference(s, mean);
        return plainSum(channels, d, d) < p.threshold * p.threshold * variance;
    }
    template <class Params> bool shadows(int channels, const Params &p, const Sample &s) const {
        const Floats samples = plainFloats(s);
        const float num = plainSum(channels, samples, mean), den = plainSum(channels, mean, mean);
        if (p.shadow == 0 || !(den > 0) || !(num < den) || !(num >= p.shadow * den)) {
            return false;
        }
        const float g = num / den;
        const Floats e{std::fma(g, mean[0], -samples[0]), std::fma(g, mean[1], -samples[1]),
                       std::fma(g, mean[2], -samples[2])};
        return plainSum(channels, e, e) < p.threshold * p.threshold * variance * (g * g);
    }
    void moveMean(int channels, const Sample &s, float step) {
        const Floats d = plainDifference(s, mean);
        for (std::size_t c = 0; c < static_cast<std::size_t>(channels); ++c) {
            mean[c] = std::fma(step, d[c], mean[c]);
        }
    }
    template <class Params> void learn(int channels, const Params &p, const Sample &s, float step) {
        const Floats d = plainDifference(s, mean);
        const float squares = plainSum(channels, d, d) * (channels == 1 ? 1.0f : 0.333333343f);
        moveMean(channels, s, step);
        variance = std::max(p.varMin, std::min(p.varMax, std::fma(step, squares - variance, variance)));
    }
    void begin(int channels, const Sample &s, float first) {
        mean = {};
        std::copy_n(plainFloats(s).begin(), channels, mean.begin());
        variance = first;
    }
    Sample picture() const {
        Sample result{};
        std::transform(mean.begin(), mean.end(), result.begin(),
                       [](float m) { return static_cast<std::uint8_t>(std::nearbyint(m)); });
        return result;
    }
};

struct PlainGaussianModel {
    using Params = ForegroundGaussianParams;
    static constexpr int block = 8;
    PlainGaussian one;

    explicit PlainGaussianModel(const Params &) {}
    int decide(int channels, const Params &p, const Sample &s) const {
        return one.variance == 0 || one.matches(channels, p, s) ? 0 : one.shadows(channels, p, s) ? 127 : 255;
    }
    void learn(int channels, const Params &p, const Sample &s, bool background, float rate) {
        if (one.variance == 0) {
            one.begin(channels, s, p.varInit);
        } else if (background) {
            one.learn(channels, p, s, rate);
        } else {
            one.moveMean(channels, s, rate * p.foregroundRate);
        }
    }
    Sample picture() const { return one.picture(); }
    // Every number of the model, in any order.
    void append(int channels, std::vector<std::uint32_t> &words) const {
        words.push_back(std::bit_cast<std::uint32_t>(one.variance));
        std::transform(one.mean.begin(), one.mean.begin() + channels, std::back_inserter(words),
                       [](float m) { return std::bit_cast<std::uint32_t>(m); });
    }
};

struct PlainMixtureModel {
    using Params = FGMMParams;
    static constexpr int block = 8;
    std::vector<PlainGaussian> parts;

    explicit PlainMixtureModel(const Params &p) : parts(static_cast<std::size_t>(p.components)) {}
    // The first component that matches, or the number of components.
    std::size_t match(int channels, const Params &p, const Sample &s) const {
        const auto found = std::find_if(parts.begin(), parts.end(), [&](const PlainGaussian &part) {
            return part.weight > 0 && part.matches(channels, p, s);
        });
        return static_cast<std::size_t>(found - parts.begin());
    }
    int decide(int channels, const Params &p, const Sample &s) const {
        if (parts[0].weight == 0) {
            return 0;
        }
        const std::size_t star = match(channels, p, s);
        float before = 0;
        bool shadow = false;
        for (std::size_t k = 0; k < parts.size() && before < p.backgroundRatio; ++k) {
            if (k == star) {
                return 0;
            }
            shadow |= parts[k].weight > 0 && parts[k].shadows(channels, p, s);
            before += parts[k].weight;
        }
        return shadow ? 127 : 255;
    }
    void learn(int channels, const Params &p, const Sample &s, bool background, float rate) {
        const float a = background || parts[0].weight == 0 ? rate : rate * p.foregroundRate;
        if (a == 0) {
            return;
        }
        const std::size_t star = match(channels, p, s);
        for (std::size_t k = 0; k < parts.size(); ++k) {
            float &w = parts[k].weight;
            if (w > 0) {
                const float less = a * p.prior, moved = std::fma(a, (k == star ? 1.0f : 0.0f) - w, w);
                w = std::max(0.0f, moved - less);
            }
        }
        if (star < parts.size()) {
            parts[star].learn(channels, p, s, std::min(a / parts[star].weight, 1.0f));
        } else {
            parts.back().weight = a;
            parts.back().begin(channels, s, p.varInit);
        }
        float total = 0;
        for (const PlainGaussian &part : parts) {
            total += part.weight;
        }
        const float scale = 1.0f / total;
        for (PlainGaussian &part : parts) {
            part.weight *= scale;
        }
        for (std::size_t k = parts.size() - 1; k > 0; --k) {
            if (parts[k].weight > parts[k - 1].weight) {
                std::swap(parts[k], parts[k - 1]);
            }
        }
        checkInvariants(p);
    }
    void checkInvariants(const Params &p) const {
        float total = 0;
        for (std::size_t k = 0; k < parts.size(); ++k) {
            total += parts[k].weight;
            EXPECT_TRUE(k == 0 || parts[k].weight <= parts[k - 1].weight);
            EXPECT_TRUE(parts[k].weight == 0 || (parts[k].variance >= p.varMin && parts[k].variance <= p.varMax));
        }
        EXPECT_NEAR(total, 1, 1e-6);
    }
    Sample picture() const { return parts[0].picture(); }
    void append(int channels, std::vector<std::uint32_t> &words) const {
        for (const PlainGaussian &part : parts) {
            words.push_back(std::bit_cast<std::uint32_t>(part.weight));
            words.push_back(std::bit_cast<std::uint32_t>(part.variance));
            std::transform(part.mean.begin(), part.mean.begin() + channels, std::back_inserter(words),
                           [](float m) { return std::bit_cast<std::uint32_t>(m); });
        }
    }
};

struct PlainHistogramModel {
    using Params = ForegroundHistogramParams;
    static constexpr int block = 32;
    struct Entry {
        Sample colour{};
        std::int32_t p = 0, b = 0;
    };
    std::vector<Entry> entries;

    explicit PlainHistogramModel(const Params &p) : entries(static_cast<std::size_t>(p.entries)) {}
    static bool matches(int channels, const Params &p, const Entry &entry, const Sample &s) {
        bool result = entry.p > 0;
        for (std::size_t c = 0; c < static_cast<std::size_t>(channels); ++c) {
            result = result && std::abs(entry.colour[c] - s[c]) <= p.tolerance;
        }
        return result;
    }
    static std::int32_t saturated(std::int32_t a) { return std::min(a, 65535); }
    int decide(int channels, const Params &p, const Sample &s) const {
        std::int32_t seen = 0, background = 0;
        for (std::size_t i = 0; i < static_cast<std::size_t>(p.principal); ++i) {
            if (matches(channels, p, entries[i], s)) {
                seen = saturated(seen + entries[i].p);
                background = saturated(background + entries[i].b);
            }
        }
        return entries[0].p == 0 || background > seen - background ? 0 : 255;
    }
    void learn(int channels, const Params &p, const Sample &s, bool background, float rate) {
        const auto gain =
            std::clamp(static_cast<std::int32_t>(std::floor(static_cast<double>(rate) * 65536 + 0.5)), 1, 65535);
        Sample colour{};
        std::copy_n(s.begin(), channels, colour.begin());
        if (entries[0].p == 0) {
            entries[0] = {colour, 65535, 65535};
            return;
        }
        const auto found = std::find_if(entries.begin(), entries.end(),
                                        [&](const Entry &entry) { return matches(channels, p, entry, s); });
        for (Entry &entry : entries) {
            entry.p -= static_cast<std::int32_t>(std::int64_t{entry.p} * gain >> 16);
            entry.b -= static_cast<std::int32_t>(std::int64_t{entry.b} * gain >> 16);
        }
        if (found != entries.end()) {
            found->p = saturated(found->p + gain);
            found->b = saturated(found->b + (background ? gain : 0));
        } else {
            entries.back() = {colour, gain, background ? gain : 0};
        }
        for (std::size_t i = entries.size() - 1; i > 0; --i) {
            if (entries[i].p > entries[i - 1].p) {
                std::swap(entries[i], entries[i - 1]);
            }
        }
        std::int32_t foreground = 0;
        for (std::size_t i = 0; i < static_cast<std::size_t>(p.principal); ++i) {
            foreground = saturated(foreground + entries[i].p - entries[i].b);
        }
        if (foreground > std::floor(static_cast<double>(p.absorb) * 65535 + 0.5)) {
            for (Entry &entry : entries) {
                entry.b = entry.p - entry.b;
            }
        }
        for (const Entry &entry : entries) {
            EXPECT_TRUE(entry.b <= entry.p && entry.b >= 0);
        }
    }
    Sample picture() const {
        return std::max_element(entries.begin(), entries.end(),
                                [](const Entry &a, const Entry &b) { return a.b < b.b; })
            ->colour;
    }
    // Bytes, since the record holds bytes and words.
    void append(int channels, std::vector<std::uint32_t> &bytes) const {
        for (const Entry &entry : entries) {
            bytes.insert(bytes.end(), entry.colour.begin(), entry.colour.begin() + channels);
            for (const std::int32_t word : {entry.p, entry.b}) {
                bytes.push_back(static_cast<std::uint32_t>(word & 255));
                bytes.push_back(static_cast<std::uint32_t>(word >> 8));
            }
        }
    }
};

} // namespace support
