# Build helpers shared by every folder of the project.

# Warnings on everywhere; sanitizers on request.
macro(quorvex_common_flags)
  add_compile_options(-Wall -Wextra)
  if(QUORVEX_WARNINGS_AS_ERRORS)
    add_compile_options(-Werror)
  endif()
  if(QUORVEX_SANITIZE)
    add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
    add_link_options(-fsanitize=address,undefined)
    # Programs run at build time (the icon generator) and tests exit through
    # the leak check: every target made from here on carries the list of
    # known leaks in the libraries beneath us.
    add_library(quorvex_sanitizer_suppressions OBJECT "${PROJECT_SOURCE_DIR}/cmake/sanitizer_suppressions.cpp")
    link_libraries(quorvex_sanitizer_suppressions)
  endif()
  # Shared libraries land in the staged suite's apps folder, where the tool,
  # the simulator and the command-line front end find them through RPATH.
  set(QUORVEX_APPS_DIR "${QUORVEX_SUITE_DIR}/apps")
  set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${QUORVEX_APPS_DIR}")
  set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
  set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")
  # Installed, the suite keeps the staged layout below <prefix>/lib/quorvex
  # (cmake/QuorvexPackage.cmake); destinations are relative to the prefix.
  set(QUORVEX_INSTALL_SUITE "lib/quorvex")
  set(QUORVEX_INSTALL_APPS "${QUORVEX_INSTALL_SUITE}/apps")
  set(QUORVEX_INSTALL_COMMON "${QUORVEX_INSTALL_SUITE}/common")
endmacro()

# A shared library of the suite: staged in <suite>/apps, finds its siblings
# through $ORIGIN; installed in <prefix>/lib/quorvex/apps.
function(quorvex_suite_library target)
  set_target_properties(${target} PROPERTIES
    LIBRARY_OUTPUT_DIRECTORY "${QUORVEX_APPS_DIR}"
    BUILD_WITH_INSTALL_RPATH ON
    INSTALL_RPATH "$ORIGIN")
  install(TARGETS ${target} LIBRARY DESTINATION "${QUORVEX_INSTALL_APPS}")
endfunction()

# A program of the suite, staged at <suite>/apps/<subdir>; RPATH points back
# at <suite>/apps.
function(quorvex_suite_program target subdir)
  if(subdir STREQUAL ".")
    set(dir "${QUORVEX_APPS_DIR}")
    set(installed "${QUORVEX_INSTALL_APPS}")
    set(rpath "$ORIGIN")
  else()
    set(dir "${QUORVEX_APPS_DIR}/${subdir}")
    set(installed "${QUORVEX_INSTALL_APPS}/${subdir}")
    set(rpath "$ORIGIN/..")
  endif()
  set_target_properties(${target} PROPERTIES
    RUNTIME_OUTPUT_DIRECTORY "${dir}"
    BUILD_WITH_INSTALL_RPATH ON
    INSTALL_RPATH "${rpath}")
  # Installed as staged, so the installed program derives the same folders.
  install(TARGETS ${target} RUNTIME DESTINATION "${installed}")
endfunction()

# One test executable per unit:
#   quorvex_add_test(NAME name SOURCES ... [LIBS ...] [QT] [GTEST [OWN_MAIN]] [NETNS] [XVFB]
#                    [TIMEOUT seconds] [ENV VAR=value ...] [LABELS ...])
# QT     links QtTest (signal spies, simulated input) and runs on the
#        offscreen platform.
# GTEST  links GoogleTest; with QT its entry point creates a QApplication.
# OWN_MAIN  the test brings its own main() (one that must act before Qt
#        starts); GoogleTest is linked without an entry point.
# NETNS  runs the test inside a private network namespace with only loopback up.
# XVFB   runs the test on a virtual X display of its own (platform xcb).
# Every test gets its own home: XDG folders and the tool's folder overrides
# point into the build tree, so no test touches the real user's files.
function(quorvex_add_test)
  cmake_parse_arguments(T "QT;GTEST;OWN_MAIN;NETNS;XVFB" "NAME;TIMEOUT" "SOURCES;LIBS;ENV;LABELS" ${ARGN})
  add_executable(${T_NAME} ${T_SOURCES})
  set_target_properties(${T_NAME} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests-bin")
  target_link_libraries(${T_NAME} PRIVATE ${T_LIBS} Threads::Threads)
  target_compile_definitions(${T_NAME} PRIVATE
    QUORVEX_SOURCE_DIR="${CMAKE_SOURCE_DIR}"
    QUORVEX_BINARY_DIR="${CMAKE_BINARY_DIR}"
    QUORVEX_SUITE_DIR="${QUORVEX_SUITE_DIR}"
    QUORVEX_TEST_DATA_DIR="${CMAKE_CURRENT_SOURCE_DIR}")
  if(T_QT)
    find_package(Qt5 COMPONENTS Test REQUIRED)
    target_link_libraries(${T_NAME} PRIVATE Qt5::Test)
    set_target_properties(${T_NAME} PROPERTIES AUTOMOC ON)
  endif()
  if(T_GTEST AND T_OWN_MAIN)
    find_package(GTest REQUIRED)
    target_link_libraries(${T_NAME} PRIVATE GTest::gtest)
  elseif(T_GTEST AND T_QT)
    target_link_libraries(${T_NAME} PRIVATE quorvex_qt_gtest_main)
  elseif(T_GTEST)
    find_package(GTest REQUIRED)
    target_link_libraries(${T_NAME} PRIVATE GTest::gtest GTest::gtest_main)
  endif()

  set(cmd "${CMAKE_SOURCE_DIR}/tests/run-test")
  if(T_NETNS)
    list(APPEND cmd --netns)
  endif()
  if(T_XVFB)
    list(APPEND cmd --xvfb)
  endif()
  add_test(NAME ${T_NAME} COMMAND ${cmd} $<TARGET_FILE:${T_NAME}>)

  set(home "${CMAKE_BINARY_DIR}/test-home/${T_NAME}")
  set(env
    "HOME=${home}"
    "XDG_DATA_HOME=${home}/data"
    "XDG_CONFIG_HOME=${home}/config"
    "XDG_CACHE_HOME=${home}/cache"
    "XDG_RUNTIME_DIR=${home}/run"
    "QUORVEX_TEST_HOME=${home}"
    "QT_QPA_PLATFORM=offscreen"
    ${T_ENV})
  if(TARGET quorvex-simulator)
    list(APPEND env "QUORVEX_SIMULATOR=$<TARGET_FILE:quorvex-simulator>")
  endif()
  set_tests_properties(${T_NAME} PROPERTIES ENVIRONMENT "${env}")
  if(T_TIMEOUT)
    set_tests_properties(${T_NAME} PROPERTIES TIMEOUT ${T_TIMEOUT})
  else()
    set_tests_properties(${T_NAME} PROPERTIES TIMEOUT 300)
  endif()
  if(T_NETNS)
    list(APPEND T_LABELS network)
    # Simulated devices stream whole frames over loopback: two such tests
    # side by side on a small machine starve each other's receivers.
    set_tests_properties(${T_NAME} PROPERTIES RESOURCE_LOCK device-network)
  endif()
  if(T_LABELS)
    set_tests_properties(${T_NAME} PROPERTIES LABELS "${T_LABELS}")
  endif()
endfunction()

# Adds every direct subfolder of the current folder that has a CMakeLists.txt,
# so that a new area needs no edit of its parent.
# Without the GUI only the folders named after WITHOUT_GUI are added (the
# device side: SDKs, simulator), since the others need Qt.
function(quorvex_add_subfolders)
  cmake_parse_arguments(F "" "" "WITHOUT_GUI" ${ARGN})
  file(GLOB children LIST_DIRECTORIES true RELATIVE "${CMAKE_CURRENT_SOURCE_DIR}" "${CMAKE_CURRENT_SOURCE_DIR}/*")
  list(SORT children)
  foreach(child IN LISTS children)
    if(NOT QUORVEX_BUILD_GUI AND NOT child IN_LIST F_WITHOUT_GUI)
      continue()
    endif()
    if(IS_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}/${child}" AND EXISTS "${CMAKE_CURRENT_SOURCE_DIR}/${child}/CMakeLists.txt")
      add_subdirectory(${child})
    endif()
  endforeach()
endfunction()
