// The background models in their plainest form, a pixel each. Pixels of one channel have zeros in the other two, which
// add nothing to any sum.
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

inline float plainSum(const Floats &a, const Floats &b) {
    return std::fma(a[2], b[2], std::fma(a[1], b[1], a[0] * b[0]));
}

struct PlainGaussian {
    float weight = 0, variance = 0;
    Floats mean{};

    Floats difference(const Floats &s) const { return {s[0] - mean[0], s[1] - mean[1], s[2] - mean[2]}; }
    float distance(const Floats &s) const { return plainSum(difference(s), difference(s)); }
    bool matches(const Floats &s, float t2) const { return distance(s) < t2 * variance; }
    bool shadows(const Floats &s, float t2, float shadow) const {
        const float num = plainSum(s, mean), den = plainSum(mean, mean), g = num / den;
        const Floats e{std::fma(g, mean[0], -s[0]), std::fma(g, mean[1], -s[1]), std::fma(g, mean[2], -s[2])};
        return shadow > 0 && den > 0 && num < den && num >= shadow * den && plainSum(e, e) < t2 * variance * (g * g);
    }
    void moveMean(const Floats &s, float step) {
        const Floats d = difference(s);
        mean = {std::fma(step, d[0], mean[0]), std::fma(step, d[1], mean[1]), std::fma(step, d[2], mean[2])};
    }
    template <class Params> void learn(const Floats &s, float step, const Params &p, int channels) {
        const float square = distance(s) * (channels == 1 ? 1.0f : 0.333333343f);
        moveMean(s, step);
        variance = std::max(p.varMin, std::min(p.varMax, std::fma(step, square - variance, variance)));
    }
    Sample picture() const {
        const auto rounded = [](float m) { return static_cast<std::uint8_t>(std::nearbyint(m)); };
        return {rounded(mean[0]), rounded(mean[1]), rounded(mean[2])};
    }
    // Every number of the record, here and below.
    void append(int channels, std::vector<std::uint32_t> &words) const {
        words.push_back(std::bit_cast<std::uint32_t>(variance));
        for (int c = 0; c < channels; ++c) {
            words.push_back(std::bit_cast<std::uint32_t>(mean[static_cast<std::size_t>(c)]));
        }
    }
};

inline Floats floatsOf(const Sample &s) {
    return {static_cast<float>(s[0]), static_cast<float>(s[1]), static_cast<float>(s[2])};
}

struct PlainGaussianModel {
    static constexpr std::int64_t block = 8;
    ForegroundGaussianParams p;
    int channels;
    PlainGaussian one{};

    std::int64_t bytes() const { return 4 * (channels + 1); }
    int decide(const Sample &sample) const {
        const Floats s = floatsOf(sample);
        const float t2 = p.threshold * p.threshold;
        return one.variance == 0 || one.matches(s, t2) ? 0 : one.shadows(s, t2, p.shadow) ? 127 : 255;
    }
    void learn(const Sample &sample, bool background, float rate) {
        const Floats s = floatsOf(sample);
        if (one.variance == 0) {
            one = {0, p.varInit, s};
        } else if (background) {
            one.learn(s, rate, p, channels);
        } else {
            one.moveMean(s, rate * p.foregroundRate);
        }
    }
    Sample picture() const { return one.picture(); }
    void append(std::vector<std::uint32_t> &words) const { one.append(channels, words); }
};

struct PlainMixtureModel {
    static constexpr std::int64_t block = 8;
    FGMMParams p;
    int channels;
    std::vector<PlainGaussian> parts{static_cast<std::size_t>(p.components)};

    std::int64_t bytes() const { return 4 * p.components * (channels + 2); }
    float t2() const { return p.threshold * p.threshold; }
    auto match(const Floats &s) {
        return std::find_if(parts.begin(), parts.end(),
                            [&](const PlainGaussian &part) { return part.weight > 0 && part.matches(s, t2()); });
    }
    int decide(const Sample &sample) {
        const Floats s = floatsOf(sample);
        const auto star = match(s);
        float before = 0;
        bool shadow = false;
        for (auto part = parts.begin(); part != parts.end() && before < p.backgroundRatio; ++part) {
            if (part == star || parts[0].weight == 0) {
                return 0;
            }
            shadow |= part->weight > 0 && part->shadows(s, t2(), p.shadow);
            before += part->weight;
        }
        return shadow ? 127 : 255;
    }
    void learn(const Sample &sample, bool background, float rate) {
        const Floats s = floatsOf(sample);
        const float a = background || parts[0].weight == 0 ? rate : rate * p.foregroundRate;
        if (a == 0) {
            return;
        }
        const auto star = match(s);
        for (auto part = parts.begin(); part != parts.end(); ++part) {
            const float less = a * p.prior, w = part->weight, moved = std::fma(a, (part == star ? 1.0f : 0.0f) - w, w);
            part->weight = w > 0 ? std::max(0.0f, moved - less) : 0;
        }
        if (star != parts.end()) {
            star->learn(s, std::min(a / star->weight, 1.0f), p, channels);
        } else {
            parts.back() = {a, p.varInit, s};
        }
        float total = 0, after = 0;
        for (const PlainGaussian &part : parts) {
            total += part.weight;
        }
        const float scale = 1.0f / total;
        for (PlainGaussian &part : parts) {
            part.weight *= scale;
            after += part.weight;
            EXPECT_TRUE(part.weight == 0 || (part.variance >= p.varMin && part.variance <= p.varMax));
        }
        EXPECT_NEAR(after, 1, 1e-6);
        for (std::size_t k = parts.size() - 1; k > 0; --k) {
            if (parts[k].weight > parts[k - 1].weight) {
                std::swap(parts[k], parts[k - 1]);
            }
        }
        EXPECT_TRUE(std::is_sorted(parts.rbegin(), parts.rend(), [](auto &x, auto &y) { return x.weight < y.weight; }));
    }
    Sample picture() const { return parts[0].picture(); }
    void append(std::vector<std::uint32_t> &words) const {
        for (const PlainGaussian &part : parts) {
            words.push_back(std::bit_cast<std::uint32_t>(part.weight));
            part.append(channels, words);
        }
    }
};

struct PlainHistogramModel {
    static constexpr std::int64_t block = 32;
    ForegroundHistogramParams p;
    int channels;
    struct Entry {
        Sample colour{};
        int p = 0, b = 0;
    };
    std::vector<Entry> entries{static_cast<std::size_t>(p.entries)};

    std::int64_t bytes() const { return p.entries * (channels + 4); }
    bool matches(const Entry &e, const Sample &s) const {
        const auto near = [&](std::size_t c) { return std::abs(e.colour[c] - s[c]) <= p.tolerance; };
        return e.p > 0 && near(0) && near(1) && near(2);
    }
    int decide(const Sample &s) const {
        int seen = 0, background = 0;
        for (auto e = entries.begin(); e != entries.begin() + p.principal; ++e) {
            seen = std::min(65535, seen + (matches(*e, s) ? e->p : 0));
            background = std::min(65535, background + (matches(*e, s) ? e->b : 0));
        }
        return entries[0].p == 0 || background > seen - background ? 0 : 255;
    }
    void learn(const Sample &s, bool background, float rate) {
        const int gain = std::clamp(static_cast<int>(std::floor(double{rate} * 65536 + 0.5)), 1, 65535);
        if (entries[0].p == 0) {
            entries[0] = {s, 65535, 65535};
            return;
        }
        const auto found = std::find_if(entries.begin(), entries.end(), [&](const Entry &e) { return matches(e, s); });
        const auto decayed = [&](int n) { return n - static_cast<int>(std::int64_t{n} * gain >> 16); };
        for (Entry &e : entries) {
            e = {e.colour, decayed(e.p), decayed(e.b)};
        }
        const int more = background ? gain : 0;
        if (found != entries.end()) {
            *found = {found->colour, std::min(65535, found->p + gain), std::min(65535, found->b + more)};
        } else {
            entries.back() = {s, gain, more};
        }
        for (std::size_t i = entries.size() - 1; i > 0; --i) {
            if (entries[i].p > entries[i - 1].p) {
                std::swap(entries[i], entries[i - 1]);
            }
        }
        int foreground = 0;
        for (auto e = entries.begin(); e != entries.begin() + p.principal; ++e) {
            foreground = std::min(65535, foreground + e->p - e->b);
        }
        const bool turns = foreground > std::floor(double{p.absorb} * 65535 + 0.5);
        for (Entry &e : entries) {
            e.b = turns ? e.p - e.b : e.b;
        }
    }
    Sample picture() const {
        return std::max_element(entries.begin(), entries.end(), [](auto &x, auto &y) { return x.b < y.b; })->colour;
    }
    // Bytes, since the record holds bytes and words.
    void append(std::vector<std::uint32_t> &all) const {
        for (const Entry &e : entries) {
            all.insert(all.end(), e.colour.begin(), e.colour.begin() + channels);
            for (const int n : {e.p & 255, e.p >> 8, e.b & 255, e.b >> 8}) {
                all.push_back(static_cast<std::uint32_t>(n));
            }
        }
    }
};

} // namespace support
