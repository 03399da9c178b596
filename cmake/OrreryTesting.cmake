include(GoogleTest)

# One GoogleTest program per subsystem folder: every *Test.cpp in FOLDER
# becomes part of the program NAME, registered with CTest test by test.
# Extra arguments are libraries to link; after the keyword ENVIRONMENT come
# VAR=value settings for the tests' environment.
function(orrery_add_test_folder name folder)
  if(NOT ORRERY_BUILD_TESTS)
    return()
  endif()
  cmake_parse_arguments(PARSE_ARGV 2 arg "" "" "ENVIRONMENT")
  file(GLOB sources CONFIGURE_DEPENDS "${folder}/*Test.cpp")
  if(NOT sources)
    return()
  endif()
  add_executable(${name} ${sources})
  orrery_set_warnings(${name})
  target_link_libraries(${name} PRIVATE ${arg_UNPARSED_ARGUMENTS} GTest::gtest GTest::gtest_main GTest::gmock)
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
                       PROPERTIES LABELS "${name}")
  if(arg_ENVIRONMENT)
    # gtest_discover_tests hands its PROPERTIES through several rounds of
    # list splitting, which tear a list value such as ENVIRONMENT apart:
    # every variable after the first was lost. The environment is set from
    # a file of our own that ctest reads after the discovered tests.
    set(script "${CMAKE_CURRENT_BINARY_DIR}/${name}_environment.cmake")
    file(WRITE "${script}"
         "if(${name}_TESTS)\n"
         "  set_tests_properties(\${${name}_TESTS} PROPERTIES ENVIRONMENT [==[${arg_ENVIRONMENT}]==])\n"
         "endif()\n")
    set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES "${script}")
  endif()
endfunction()
