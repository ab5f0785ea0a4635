# SPDX-License-Identifier: GPL-3.0-or-later
# Shared compile settings and the helpers the module folders use.

add_library(padmapper_options INTERFACE)
target_compile_features(padmapper_options INTERFACE cxx_std_20)
target_compile_definitions(padmapper_options INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_NARROWING_CONVERSIONS_IN_CONNECT
    PADMAPPER_VERSION_MAJOR=${PROJECT_VERSION_MAJOR}
    PADMAPPER_VERSION_MINOR=${PROJECT_VERSION_MINOR}
    PADMAPPER_VERSION_PATCH=${PROJECT_VERSION_PATCH}
    PADMAPPER_VERSION="${PROJECT_VERSION}")
if(MSVC)
    target_compile_options(padmapper_options INTERFACE /W4 /utf-8)
else()
    target_compile_options(padmapper_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow
        -Wnon-virtual-dtor -Wold-style-cast -Wcast-align -Woverloaded-virtual
        -Wimplicit-fallthrough)
    if(PADMAPPER_WERROR)
        target_compile_options(padmapper_options INTERFACE -Werror)
    endif()
    if(PADMAPPER_SANITIZE)
        target_compile_options(padmapper_options INTERFACE
            -fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
        target_link_options(padmapper_options INTERFACE -fsanitize=address,undefined)
        if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
            # Coverage feedback for the fuzz targets from every library they call.
            target_compile_options(padmapper_options INTERFACE -fsanitize=fuzzer-no-link)
        endif()
    endif()
endif()

# add_core_library(name SOURCES ... LIBS ...): one static library per core folder.
function(add_core_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    target_include_directories(${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR}/..)
    target_link_libraries(${name} PUBLIC padmapper_options ${ARG_LIBS})
endfunction()

# add_unit_test(name SOURCES ... LIBS ... [WIDGETS] [RUNNER command ...] [ARGS ...]): a QtTest
# executable registered with CTest, run by the runner command when one is given, with the
# arguments (test functions to run, for instance).
function(add_unit_test name)
    cmake_parse_arguments(ARG "WIDGETS" "" "SOURCES;LIBS;RUNNER;ARGS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE padmapper_options Qt6::Test ${ARG_LIBS})

    if(ARG_RUNNER)
        add_test(NAME ${name} COMMAND ${ARG_RUNNER} $<TARGET_FILE:${name}> ${ARG_ARGS})
    else()
        add_test(NAME ${name} COMMAND ${name} ${ARG_ARGS})
    endif()
    set(env "QT_QPA_PLATFORM=offscreen")
    # The machine's own D-Bus buses are never used: a test that needs buses
    # gets private ones from its runner, which sets these again.
    list(APPEND env "DBUS_SYSTEM_BUS_ADDRESS=unix:path=/nonexistent/padmapper-test-bus"
        "DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent/padmapper-test-bus")
    set_tests_properties(${name} PROPERTIES ENVIRONMENT "${env}" TIMEOUT 300)
endfunction()
