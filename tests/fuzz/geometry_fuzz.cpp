// Lens undistortion.
#include "planes.h"

namespace {

using namespace fuzz;

// The scratch is optional.
template <class F> void undistort(Call &call, F member) {
    call.nullsAllowed();
    planes(call, member, ScratchOf{rvxiUndistortGetSize});
}

} // namespace

const std::vector<fuzz::Member> fuzz::members = {
    MEMBER(query, rvxiUndistortGetSize),
    MEMBER(undistort, rvxiUndistortRadial_8u_C1R),
    MEMBER(undistort, rvxiUndistortRadial_8u_C3R),
    MEMBER(undistort, rvxiUndistortRadial_16u_C1R),
    MEMBER(undistort, rvxiUndistortRadial_16u_C3R),
    MEMBER(undistort, rvxiUndistortRadial_32f_C1R),
    MEMBER(undistort, rvxiUndistortRadial_32f_C3R),
    MEMBER(undistort, rvxiCreateMapCameraUndistort_32f_C1R),
};
