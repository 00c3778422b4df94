# The typed allocation is internal: the test is linked with its source.
target_sources(frame_test PRIVATE ${PROJECT_SOURCE_DIR}/src/frame/alloc.cpp)
target_include_directories(frame_test PRIVATE ${PROJECT_SOURCE_DIR}/src)
target_link_libraries(frame_test PRIVATE ${CMAKE_DL_LIBS})

# Each public header alone, as C99 and as C++17, with the warnings that a careful user has on; and the layout of the
# public records, which is nothing but static assertions.
file(GLOB public_headers ${PROJECT_SOURCE_DIR}/include/*.h ${PROJECT_SOURCE_DIR}/include/rvxcv/*.h
     ${PROJECT_SOURCE_DIR}/tests/abi/layout.c)
set(strict -Wall -Wextra -Wpedantic -Wconversion -Werror -fsyntax-only -I${PROJECT_SOURCE_DIR}/include)
add_test(NAME headers_c99 COMMAND ${CMAKE_C_COMPILER} -std=c99 -Wstrict-prototypes ${strict} -x c ${public_headers})
add_test(NAME headers_cxx17 COMMAND ${CMAKE_CXX_COMPILER} -std=c++17 -Wold-style-cast ${strict} -x c++ ${public_headers})

find_program(RVXCV_QEMU qemu-x86_64)
# Loading the library and asking for its version on a processor without AVX. Sanitizers do not run emulated.
if(NOT RVXCV_SANITIZE)
  if(RVXCV_QEMU)
    add_test(NAME frame_old_processor
             COMMAND ${RVXCV_QEMU} -cpu Nehalem $<TARGET_FILE:frame_test> --gtest_filter=Load.*:Version.RecordHoldsItsValues)
    set_tests_properties(frame_old_processor PROPERTIES ENVIRONMENT RVXCV_OLD_PROCESSOR=1)
  else()
    message(WARNING "qemu-x86_64 is missing (package qemu-user): no test on an old processor")
  endif()
endif()
