# With VYNLEX_PRECOMPILED_HEADERS, what nearly every file includes anyway (the standard library's vocabulary, QtCore, and QtTest for
# tests) is compiled once. With TESTS the kit itself does without, so that it shows an include that was forgotten.

if(NOT VYNLEX_PRECOMPILED_HEADERS)
    function(vynlex_precompile target from)
    endfunction()
    return()
endif()

# What <QtTest> looks at and differs from test to test: each test's own folder, and whether it links QtNetwork.
set(vynlex_forgotten_definitions -UQT_TESTCASE_BUILDDIR -UQT_TESTCASE_SOURCEDIR -UQT_NETWORK_LIB)

# vynlex_add_precompiled(<target> LIBS <targets> HEADERS <headers>)
function(vynlex_add_precompiled target)
    cmake_parse_arguments(ARG "" "" "LIBS;HEADERS" ${ARGN})
    file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/precompiled/${target}.cpp CONTENT "")
    add_library(${target} OBJECT ${PROJECT_BINARY_DIR}/precompiled/${target}.cpp)
    set_target_properties(${target} PROPERTIES AUTOMOC OFF PCH_WARN_INVALID OFF)
    target_link_libraries(${target} PRIVATE ${ARG_LIBS} vynlex_warnings)
    target_compile_options(${target} PRIVATE ${vynlex_forgotten_definitions})
    target_precompile_headers(${target} PRIVATE ${ARG_HEADERS})
endfunction()

set(vocabulary
    <algorithm> <array> <atomic> <chrono> <cstdint> <deque> <functional> <memory> <mutex> <optional> <set> <string> <thread>
    <tuple> <unordered_map> <utility> <variant> <vector>
    <QtCore>)
vynlex_add_precompiled(vynlex_precompiled_kit LIBS Qt6::Core HEADERS ${vocabulary})
if(VYNLEX_BUILD_TESTS)
    vynlex_add_precompiled(vynlex_precompiled_tests LIBS Qt6::Core Qt6::Test HEADERS ${vocabulary} <QtTest>)
    vynlex_add_precompiled(vynlex_precompiled_gui_tests LIBS Qt6::Gui Qt6::Test HEADERS ${vocabulary} <QtTest>)
endif()

function(vynlex_precompile target from)
    set_target_properties(${target} PROPERTIES PCH_WARN_INVALID OFF)
    target_compile_options(${target} PRIVATE ${vynlex_forgotten_definitions})
    target_precompile_headers(${target} REUSE_FROM ${from})
endfunction()
