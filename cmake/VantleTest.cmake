# add_vantle_test(name SOURCES ... [LIBS ...] [LABELS ...])
# One QtTest executable per unit, registered with CTest. Widget tests run offscreen, and every
# test gets its own settings and runtime folders so nothing touches the developer's real settings.
function(add_vantle_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS;LABELS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE vantle_app vantle_fakes Qt6::Test ${ARG_LIBS})
  vantle_set_warnings(${name})
  add_test(NAME ${name} COMMAND ${name})
  set(home "${CMAKE_CURRENT_BINARY_DIR}/${name}.home")
  set_tests_properties(${name} PROPERTIES
    LABELS "${ARG_LABELS}"
    ENVIRONMENT "QT_QPA_PLATFORM=offscreen;XDG_CONFIG_HOME=${home}/config;XDG_DATA_HOME=${home}/data;XDG_CACHE_HOME=${home}/cache"
    TIMEOUT 120)
endfunction()
