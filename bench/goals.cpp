// What rows should not exceed at 640x480: in times of the limit where a row streams, else in times of the copy.
#include "harness.h"

namespace bench {
namespace {

constexpr Goal::Of copy = Goal::Of::copy, limit = Goal::Of::limit;

constexpr Goal goals[] = {
    // These stream: the limit is what holds them.
    {"Add_8u32f_C1IMR", 1.1, limit},
    {"AddSquare_8u32f_C1IR", 1.15, limit},
    {"AddSquare_8u32f_C1IMR", 1.15, limit},
    {"AddProduct_8u32f_C1IR", 1.15, limit},
    {"AddProduct_8u32f_C1IMR", 1.15, limit},
    {"AddWeighted_8u32f_C1IR", 1.15, limit},
    {"AddWeighted_8u32f_C1IMR", 1.3, limit},
    // Derivative and low-pass filters, pipelines
    {"FilterLaplacianBorder_32f_C1R/3", 1.32, copy},
    {"FilterLaplacianBorder_32f_C1R/5", 2.52, copy},
    {"FilterSobelVertBorder_32f_C1R/3", 1.19, copy},
    {"FilterSobelVertBorder_32f_C1R/5", 1.64, copy},
    {"FilterSobelHorizBorder_32f_C1R/3", 1.19, copy},
    {"FilterSobelHorizBorder_32f_C1R/5", 1.64, copy},
    {"FilterSobelNegVertBorder_32f_C1R/3", 1.19, copy},
    {"FilterSobelNegVertBorder_32f_C1R/5", 1.64, copy},
    {"FilterSobelVertSecondBorder_32f_C1R/3", 1.19, copy},
    {"FilterSobelVertSecondBorder_32f_C1R/5", 1.64, copy},
    {"FilterSobelHorizSecondBorder_32f_C1R/3", 1.19, copy},
    {"FilterSobelHorizSecondBorder_32f_C1R/5", 1.64, copy},
    {"FilterSobelCrossBorder_32f_C1R/3", 1.19, copy},
    {"FilterSobelCrossBorder_32f_C1R/5", 1.64, copy},
    {"FilterScharrVertBorder_32f_C1R/3", 1.19, copy},
    {"FilterScharrHorizBorder_32f_C1R/3", 1.19, copy},
    {"FilterLowpassBorder_8u_C1R/3", 0.38, copy},
    {"FilterLowpassBorder_8u_C1R/5", 0.63, copy},
    {"FilterSobelVertBorder_8u16s_C1R/3", 0.35, copy},
    {"FilterSobelVertBorder_8u16s_C1R/5", 0.63, copy},
    {"FilterSobelHorizBorder_8u16s_C1R/3", 0.35, copy},
    {"FilterSobelHorizBorder_8u16s_C1R/5", 0.63, copy},
    {"FilterSobelNegVertBorder_8u16s_C1R/3", 0.35, copy},
    {"FilterSobelNegVertBorder_8u16s_C1R/5", 0.63, copy},
    {"FilterSobelVertSecondBorder_8u16s_C1R/3", 0.35, copy},
    {"FilterSobelVertSecondBorder_8u16s_C1R/5", 0.63, copy},
    {"FilterSobelHorizSecondBorder_8u16s_C1R/3", 0.35, copy},
    {"FilterSobelHorizSecondBorder_8u16s_C1R/5", 0.63, copy},
    {"FilterSobelCrossBorder_8u16s_C1R/3", 0.35, copy},
    {"FilterSobelCrossBorder_8u16s_C1R/5", 0.63, copy},
    {"FilterLaplacianBorder_8u16s_C1R/5", 0.88, copy},
    {"RowColumnPipeline_16s_C1R/taps:7", 2.08, copy},
    {"RowColumnPipeline_16s_C1R/taps:31", 6.92, copy},
    {"RowColumnPipeline_32f_C1R/taps:7", 2.08, copy},
    {"RowColumnPipeline_32f_C3R/taps:7", 6.29, copy},
    // Features
    {"CannyBorder_8u_C1R sobel3 L1", 6.29, copy},
    {"CannyBorder_8u_C1R sobel3 L2", 6.29, copy},
    {"Canny_16s8u_C1R", 6.29, copy},
    {"FindPeaks3x3_32f_C1R_square", 2.08, copy},
    // Background models, learning
    {"ForegroundGaussian_8u_C1R", 3.5, copy},
    {"ForegroundGaussian_8u_C3R", 7, copy},
    {"FGMM_8u_C1R", 14, copy},
    {"FGMM_8u_C3R", 24, copy},
    {"ForegroundHistogram_8u_C1R", 14, copy},
    {"ForegroundHistogram_8u_C3R", 22, copy},
    {"EigenValsVecs_8u32f_C1R_sobel3_block3", 14, copy},
    {"EigenValsVecs_32f_C1R_sobel3_block3", 16, copy},
    {"HarrisCorner_8u32f_C1R_sobel3_block3", 7, copy},
    {"HarrisCorner_32f_C1R_sobel3_block3", 8.5, copy},
    {"LineSuppression_8u_C1R_sobel3_block3_1percent", 5, copy},
    {"LineSuppression_8u_C1R_sobel3_block3_full", 9, copy},
    {"FastN_8u_C1R_radius3_arc9_suppressed", 5.0, copy},
    {"FastN_8u_C1R_radius3_arc9", 3.0, copy},
    {"FastN2DToVec_8u_C1R", 0.5, copy},
    // Motion
    {"CopySubpix_8u_C1R", 0.9, copy},
    {"CopySubpix_8u32f_C1R", 1.0, copy},
    {"CopySubpix_16u_C1R", 1.2, copy},
    {"CopySubpix_32f_C1R", 1.7, copy},
    {"CopySubpixIntersect_32f_C1R", 1.7, copy},
    // Morphology
    {"Dilate_8u_C1R/random7x7", 1.01, copy},
    {"GrayErode_8u_C1R/5x5", 2.85, copy},
    {"GrayDilate_8u_C1R/5x5", 2.85, copy},
    {"GrayDilate_8u_C1R/ball21", 29.1, copy},
    {"GrayErode_32f_C1R/5x5", 8.5, copy},
    {"GrayDilate_32f_C1R/5x5", 8.5, copy},
    {"GrayDilate_32f_C1R/ball21", 96.1, copy},
    {"FilterMin_8u_C1R/15x1", 0.31, copy},
    {"FilterMin_8u_C1R/5x1", 0.25, copy},
    {"FilterMin_32f_C1R/7x7", 1.45, copy},
    {"MorphOpenBorder_8u_C1R 5x5", 0.5, copy},
    {"MorphGradientBorder_8u_C1R 5x5", 0.5, copy},
    {"MorphTophatBorder_8u_C1R 5x5", 0.5, copy},
    {"Dilate_8u_C4R/rect3x3", 1.19, copy},
    {"Erode_16u_C1R/rect5x5", 0.41, copy},
    {"Erode_32f_C1R/rect5x5", 1.26, copy},
    // A part for the image, and nanoseconds for each pixel that a front reaches (a copy is 0.15 ns a pixel)
    {"FastMarching_8u32f_C1R/corner", 668, copy},
    {"FastMarching_8u32f_C1R/noise", 602, copy},
    {"FastMarching_8u32f_C1R/scratches", 15.3, copy},
    {"FastMarching_8u32f_C1R/spot", 68.7, copy},
    {"FastMarching_8u32f_C1R/nothing", 2, copy},
    {"Inpaint_8u_C1MR_march/scratches", 50.6, copy},
    {"Inpaint_8u_C1MR_march/spot", 237, copy},
    {"Inpaint_8u_C3MR_march/scratches", 113, copy},
    {"Inpaint_8u_C3MR_march/spot", 539, copy},
    {"Inpaint_32f_C1MR_march/scratches", 50.6, copy},
    {"Inpaint_32f_C1MR_march/spot", 237, copy},
    {"Inpaint_8u_C1MR_diffusion/scratches", 21.3, copy},
    {"Inpaint_8u_C1MR_diffusion/spot", 667, copy},
    {"Inpaint_8u_C3MR_diffusion/scratches", 56, copy},
    {"Inpaint_8u_C3MR_diffusion/spot", 1990, copy},
    {"Inpaint_32f_C1MR_diffusion/scratches", 21.3, copy},
    {"Inpaint_32f_C1MR_diffusion/spot", 667, copy},
    // Segments
    {"BoundSegments_8u_C1IR/8", 0.5, copy},
    {"BoundSegments_8u_C1IR/4", 0.5, copy},
    {"BoundSegments_16u_C1IR/8", 0.8, copy},
    {"BoundSegments_16u_C1IR/4", 0.8, copy},
    {"BoundSegments_32s_C1IR/8", 1.5, copy},
    {"BoundSegments_32s_C1IR/4", 1.5, copy},
    // Segmentation: a copy is about 0.15 ns a pixel
    {"SegmentWatershed_8u32s_C1IR_4", 100, copy},
    {"SegmentWatershed_8u32s_C1IR_8", 100, copy},
    {"SegmentGradient_8u32s_C1IR_4", 233, copy},
    {"SegmentGradient_8u32s_C1IR_8", 367, copy},
};

} // namespace

const Goal *findGoal(const std::string &row) {
    for (const Goal &goal : goals) {
        if (row == goal.row) {
            return &goal;
        }
    }
    return nullptr;
}

} // namespace bench
