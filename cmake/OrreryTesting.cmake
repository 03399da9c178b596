include(GoogleTest)

# One GoogleTest program per subsystem folder: every *Test.cpp in FOLDER
# becomes part of the program NAME, registered with CTest test by test.
# Extra arguments are libraries to link.
function(orrery_add_test_folder name folder)
  if(NOT ORRERY_BUILD_TESTS)
    return()
  endif()
  file(GLOB sources CONFIGURE_DEPENDS "${folder}/*Test.cpp")
  if(NOT sources)
    return()
  endif()
  add_executable(${name} ${sources})
  orrery_set_warnings(${name})
  target_link_libraries(${name} PRIVATE ${ARGN} GTest::gtest GTest::gtest_main GTest::gmock)
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
                       PROPERTIES LABELS "${name}")
endfunction()
