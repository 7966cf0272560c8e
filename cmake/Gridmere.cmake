# Each subsystem folder is one static library made of every source in it, so
# adding a file never means editing a build list.
function(gridmere_library name)
  cmake_parse_arguments(ARG "" "" "DEPS" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS
       "${CMAKE_CURRENT_SOURCE_DIR}/*.cpp" "${CMAKE_CURRENT_SOURCE_DIR}/*.h"
       "${CMAKE_CURRENT_SOURCE_DIR}/*.qrc")
  list(FILTER sources INCLUDE REGEX "\\.(cpp|qrc)$")
  if(sources)
    file(GLOB headers CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/*.h")
    add_library(${name} STATIC ${sources} ${headers})
    target_include_directories(${name} PUBLIC "${PROJECT_SOURCE_DIR}/src")
    target_link_libraries(${name} PUBLIC ${ARG_DEPS})
  else()
    # A folder without code yet still gives its dependants a target to link.
    add_library(${name} INTERFACE)
    target_include_directories(${name} INTERFACE "${PROJECT_SOURCE_DIR}/src")
    target_link_libraries(${name} INTERFACE ${ARG_DEPS})
  endif()
endfunction()

# Every tst_*.cpp in the calling folder becomes its own Qt Test executable,
# registered with CTest. LABEL nogui marks tests that need no window; those
# also run under the sanitizers.
function(gridmere_tests)
  cmake_parse_arguments(ARG "" "LABEL" "LIBS" ${ARGN})
  file(GLOB tests CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/tst_*.cpp")
  file(GLOB helpers CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/testutil*.cpp"
       "${CMAKE_CURRENT_SOURCE_DIR}/testutil*.h")
  foreach(src ${tests})
    get_filename_component(name "${src}" NAME_WE)
    add_executable(${name} "${src}" ${helpers})
    target_link_libraries(${name} PRIVATE ${ARG_LIBS} Qt6::Test)
    target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}/tests")
    target_compile_definitions(${name} PRIVATE
      GRIDMERE_FIXTURES="${PROJECT_SOURCE_DIR}/tests/fixtures")
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES
      ENVIRONMENT "QT_QPA_PLATFORM=offscreen" TIMEOUT 900)
    if(ARG_LABEL)
      set_tests_properties(${name} PROPERTIES LABELS "${ARG_LABEL}")
    endif()
  endforeach()
endfunction()
