find_program(RVXCV_QEMU qemu-x86_64)
if(RVXCV_QEMU AND NOT RVXCV_SANITIZE)
  # Feature bits of a processor that has few of them.
  add_test(NAME core_old_processor COMMAND ${RVXCV_QEMU} -cpu Nehalem $<TARGET_FILE:core_test> --gtest_filter=Cpu*:Mem*)
endif()
