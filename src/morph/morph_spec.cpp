// The record in memory, by byte offsets (mh mask rows, n = positions rounded up to 16):
//
//     0          fields of MorphSpec
//     128        RowRun[mh]
//     160 + 16mh mask copy, n bytes
//     .. + n     neutral table of the minimum, 16n bytes, then that of the maximum
//
// and for bit images: fields up to the shape, at 96 the mask copy and the two tables, n bytes each.
#include "morph/morph_spec.h"

#include <algorithm>
#include <cstddef>

namespace rvxcv {
namespace {

constexpr std::int64_t runsOffset = 128;
static_assert(sizeof(MorphSpec) <= runsOffset && sizeof(RowRun) == 16);
constexpr std::int64_t bitTablesOffset = 96;
constexpr std::size_t bitFieldsBytes = offsetof(MorphSpec, rectangleWidth);
static_assert(bitFieldsBytes <= bitTablesOffset);

// The non-zeros of one mask row: [first, end) is the first run; `single` when nothing follows it.
struct MaskRow {
    std::int64_t first, end;
    bool single;
};

MaskRow scanRow(const std::uint8_t *row, std::int64_t width) {
    const auto isSet = [](std::uint8_t m) { return m != 0; };
    const std::uint8_t *first = std::find_if(row, row + width, isSet);
    const std::uint8_t *end = std::find(first, row + width, std::uint8_t{0});
    return {first - row, end - row, std::find_if(end, row + width, isSet) == row + width};
}

// The shape, the rectangle's fields, and in `runs` the non-empty rows (for rectangles and run masks).
void classify(MorphSpec &spec, const std::uint8_t *mask, RowRun *runs) {
    const std::int64_t width = spec.maskWidth;
    std::int64_t smallestStart = width, largestEnd = 0;
    bool anchorInside = true, equalRuns = true;
    RowRun firstRun{}, lastRun{};
    for (std::int32_t y = 0; y < spec.maskHeight; ++y) {
        const MaskRow row = scanRow(mask + y * width, width);
        if (row.first == width) {
            continue;
        }
        if (!row.single) {
            spec.shape = MaskGeneral;
            spec.runCount = 0;
            return;
        }
        smallestStart = std::min(smallestStart, row.first);
        largestEnd = std::max(largestEnd, row.end);
        anchorInside = anchorInside && spec.anchorX >= row.first && spec.anchorX < row.end;
        lastRun = {y, static_cast<std::int32_t>(row.end - row.first),
                   static_cast<std::int32_t>(row.first - spec.anchorX), 0};
        if (spec.runCount == 0) {
            firstRun = lastRun;
        }
        equalRuns = equalRuns && lastRun.start == firstRun.start && lastRun.length == firstRun.length;
        storeScalar(runs + spec.runCount++, lastRun);
    }
    if (spec.runCount == 0) {
        spec.shape = MaskEmpty;
    } else if (equalRuns && spec.runCount + firstRun.row == lastRun.row + 1) {
        spec.shape = MaskRectangle;
        spec.rectangleWidth = static_cast<std::int32_t>(largestEnd - smallestStart);
        spec.rectangleHeight = spec.runCount;
        spec.rectangleAnchorX = static_cast<std::int32_t>(spec.anchorX - smallestStart);
        spec.rectangleAnchorY = spec.anchorY - firstRun.row;
    } else if (anchorInside && spec.anchorY >= firstRun.row && spec.anchorY <= lastRun.row) {
        spec.shape = MaskEllipse;
    } else {
        spec.shape = MaskGeneral;
        spec.runCount = 0;
    }
}

// One entry of `entryBytes` per position: neutral where the mask is zero, pass-through elsewhere. The entries of the
// minimum and of the maximum are each other's opposites.
void fillTables(std::uint8_t *neutralMin, std::uint8_t *neutralMax, const std::uint8_t *mask, std::int64_t positions,
                std::int64_t entryBytes, bool signed16) {
    for (std::int64_t i = 0; i < positions; ++i) {
        for (std::int64_t b = 0; b < entryBytes; ++b) {
            const std::uint8_t smallest = signed16 && b % 2 == 1 ? 0x80 : 0x00;
            const auto largest = static_cast<std::uint8_t>(~smallest);
            neutralMin[i * entryBytes + b] = mask[i] != 0 ? smallest : largest;
            neutralMax[i * entryBytes + b] = mask[i] != 0 ? largest : smallest;
        }
    }
}

} // namespace

void initMorphSpec(std::int32_t roiWidth, const std::uint8_t *mask, RoiSize maskSize, Point2i anchor, MorphPixel pixel,
                   MorphSpec *spec) {
    const bool bits = pixel.typeCode == PixelType1u;
    const std::int64_t positions = std::int64_t{maskSize.width} * maskSize.height;
    auto *record = reinterpret_cast<std::uint8_t *>(spec);
    std::memset(record, 0, static_cast<std::size_t>(morphSpecBytes(pixel.typeCode, maskSize)));

    MorphSpec fields{};
    fields.maskCopy = record + (bits ? bitTablesOffset : 160 + 16 * std::int64_t{maskSize.height});
    fields.maskWidth = maskSize.width;
    fields.maskHeight = maskSize.height;
    fields.anchorX = anchor.x;
    fields.anchorY = anchor.y;
    fields.rightExtent = maskSize.width - anchor.x - 1;
    fields.bottomExtent = maskSize.height - anchor.y - 1;
    fields.typeCode = pixel.typeCode;
    fields.channels = pixel.channels;
    fields.roiWidth = roiWidth;
    fields.marker = -1;
    std::memcpy(fields.maskCopy, mask, static_cast<std::size_t>(positions));

    if (bits) {
        fields.shape =
            std::all_of(mask, mask + positions, [](std::uint8_t m) { return m == 0; }) ? MaskEmpty : MaskGeneral;
    } else {
        fields.runsTable = reinterpret_cast<RowRun *>(record + runsOffset);
        classify(fields, mask, fields.runsTable);
        if (fields.shape == MaskGeneral || fields.shape == MaskEmpty) {
            std::memset(record + runsOffset, 0, sizeof(RowRun) * static_cast<std::size_t>(maskSize.height));
            fields.runsTable = nullptr;
        }
    }
    if (fields.shape == MaskGeneral) {
        const std::int64_t entryBytes = bits ? 1 : 16;
        fields.neutralMin = fields.maskCopy + align16(positions);
        fields.neutralMax = fields.neutralMin + entryBytes * align16(positions);
        fillTables(fields.neutralMin, fields.neutralMax, mask, positions, entryBytes, pixel.typeCode == PixelType16s);
    }
    if (fields.shape != MaskEmpty) {
        const std::int64_t pixels = std::int64_t{roiWidth} + maskSize.width;
        const std::int64_t bytes = align16(bits ? (pixels + 7) >> 3 : pixels * pixel.channels * pixel.elementBytes());
        fields.rowBufferBytes =
            static_cast<std::int32_t>(std::min<std::int64_t>(bytes, std::numeric_limits<std::int32_t>::max()));
    }
    std::memcpy(record, &fields, bits ? bitFieldsBytes : sizeof fields);
}

} // namespace rvxcv
