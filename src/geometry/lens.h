// Where the pixels of a picture without distortion stand in the picture that was taken: the formulas of the public
// header, eight columns of a row at a time. What holds for a column and what holds for a row is formed once.
#pragma once

#include "kernel/vec.h"

namespace rvxcv {

struct Lens {
    float fx, fy, cx, cy, k1, k2, p1, p2;

    bool valid() const { return fx != 0.0f && fy != 0.0f; }
    bool tangential() const { return p1 != 0.0f || p2 != 0.0f; }
};

struct LensPositions {
    F32x8 x, y;
};

class LensColumns {
public:
    explicit LensColumns(const Lens &lens)
        : cx_(splat(lens.cx)), perFx_(splat(1.0f / lens.fx)), twiceP2_(splat(2.0f * lens.p2)) {}

    struct Block {
        F32x8 x, dx, xn2, tangent;
    };

    RVX_INLINE Block at(std::ptrdiff_t x) const {
        const F32x8 column = toF32(add(splat(static_cast<std::int32_t>(x)), laneNumbers()));
        const F32x8 dx = sub(column, cx_), xn = mul(dx, perFx_);
        return {column, dx, mul(xn, xn), mul(twiceP2_, xn)};
    }

private:
    F32x8 cx_, perFx_, twiceP2_;
};

class LensRow {
public:
    LensRow() = default;
    LensRow(const Lens &lens, std::int64_t y) {
        const float row = static_cast<float>(y), dy = row - lens.cy, yn = dy * (1.0f / lens.fy);
        y_ = splat(row);
        dy_ = splat(dy);
        yn2_ = splat(yn * yn);
        tangent_ = splat(2.0f * lens.p1 * yn);
        k1_ = splat(lens.k1);
        k2_ = splat(lens.k2);
        gx_ = splat(lens.fx * lens.p2);
        gy_ = splat(lens.fy * lens.p1);
    }

    template <bool tangential> RVX_INLINE LensPositions at(const LensColumns::Block &column) const {
        const F32x8 r2 = add(column.xn2, yn2_);
        F32x8 t = mul(add(mul(k2_, r2), k1_), r2);
        if constexpr (tangential) {
            t = add(add(t, column.tangent), tangent_);
            return {add(add(mul(t, column.dx), mul(gx_, r2)), column.x), add(add(mul(t, dy_), mul(gy_, r2)), y_)};
        } else {
            return {add(mul(t, column.dx), column.x), add(mul(t, dy_), y_)};
        }
    }

private:
    F32x8 y_, dy_, yn2_, tangent_, k1_, k2_, gx_, gy_;
};

} // namespace rvxcv
