# xq_sdk_library(<name> CORE_SOURCES ... API_SOURCES ... [CORE_LIBS ...])
#
# One device SDK: its insides as the static library <name>Core, so that unit
# tests and benchmarks can reach them, and the shared library <name> that adds
# only the C entry points and exports nothing else.
function(xq_sdk_library name)
  cmake_parse_arguments(ARG "" "" "CORE_SOURCES;API_SOURCES;CORE_LIBS" ${ARGN})
  set(sdk_dir ${CMAKE_CURRENT_SOURCE_DIR})

  add_library(${name}Core STATIC ${ARG_CORE_SOURCES})
  target_include_directories(${name}Core PUBLIC ${sdk_dir}/include ${sdk_dir}/src)
  target_link_libraries(${name}Core PUBLIC XQSdkCore ${ARG_CORE_LIBS})
  set_target_properties(${name}Core PROPERTIES
    POSITION_INDEPENDENT_CODE ON
    CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON AUTOMOC OFF)

  add_library(${name} SHARED ${ARG_API_SOURCES})
  target_include_directories(${name} PUBLIC ${sdk_dir}/include)
  target_link_libraries(${name} PUBLIC XQSdkCommon PRIVATE ${name}Core)
  target_compile_definitions(${name} PRIVATE XQ_SDK_BUILDING)
  set_target_properties(${name} PROPERTIES
    CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON AUTOMOC OFF)
  quorvex_suite_library(${name})
endfunction()
