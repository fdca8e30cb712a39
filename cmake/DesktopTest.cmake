# Desktop tests run on the private X server of .ci/with-desktop.sh, one at a
# time: they share the pointer, the keyboard and the focus.
#
#   tarvoke_desktop_test(NAME name COMMAND command args...)  one test
#   tarvoke_desktop_gtest(target)                           every GoogleTest case of target
#
# Both put the label "desktop" and the resource lock "desktop" on the tests
# and tell them where the test window and the player are: plain tests in the
# environment (TARVOKE_TESTWINDOW, TARVOKE_PLAY), GoogleTest targets as the
# macros of the same names.

function(tarvoke_desktop_properties)
  set_tests_properties(${ARGN} PROPERTIES LABELS desktop RESOURCE_LOCK desktop TIMEOUT 120
    ENVIRONMENT "TARVOKE_TESTWINDOW=$<TARGET_FILE:tarvoke-testwindow>;TARVOKE_PLAY=$<TARGET_FILE:tarvoke-play>")
endfunction()

function(tarvoke_desktop_test)
  cmake_parse_arguments(ARG "" "NAME" "COMMAND" ${ARGN})
  add_test(NAME ${ARG_NAME} COMMAND ${ARG_COMMAND})
  tarvoke_desktop_properties(${ARG_NAME})
endfunction()

function(tarvoke_desktop_gtest target)
  target_compile_definitions(${target} PRIVATE
    TARVOKE_TESTWINDOW="$<TARGET_FILE:tarvoke-testwindow>" TARVOKE_PLAY="$<TARGET_FILE:tarvoke-play>")
  add_dependencies(${target} tarvoke-testwindow tarvoke-play)
  gtest_discover_tests(${target} DISCOVERY_TIMEOUT 60
    PROPERTIES LABELS desktop RESOURCE_LOCK desktop TIMEOUT 120)
endfunction()
