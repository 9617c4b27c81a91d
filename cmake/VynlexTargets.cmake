# One target per folder that has a boundary. A target sees the headers of a folder only when it links that folder's
# target: each target's public include directory holds nothing but a link to its own folder, so an include against the
# arrows does not compile.

set(VYNLEX_INCLUDE_ROOTS ${PROJECT_BINARY_DIR}/include-roots)

add_library(vynlex_warnings INTERFACE)
target_compile_options(vynlex_warnings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(vynlex_warnings INTERFACE -Wno-restrict) # false alarms for "text" + std::string when optimising
endif()
if(CMAKE_UNITY_BUILD)
    # Files compiled as one see each other's names, and the compiler takes them all for headers.
    target_compile_options(vynlex_warnings INTERFACE -Wno-shadow $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
endif()
if(VYNLEX_WARNINGS_AS_ERRORS)
    target_compile_options(vynlex_warnings INTERFACE -Werror)
endif()

include(VynlexPrecompiled)

# vynlex_add_folder(<name> FOLDER <path below ROOT> [ROOT <folder of the project; "src" unless told, "." for the top>]
#                   SOURCES <files> [PUBLIC <targets>] [PRIVATE <targets>])
# Headers are included as "<FOLDER>/Name.h". Others link vynlex::<name>. The target itself is vynlex_<name>, since a host that takes the
# kit in by add_subdirectory may well have an "api" of its own, and targets share one space of names.
function(vynlex_add_folder name)
    cmake_parse_arguments(ARG "" "FOLDER;ROOT" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
    if(NOT ARG_ROOT)
        set(ARG_ROOT src)
    endif()
    set(target vynlex_${name})
    set(root ${VYNLEX_INCLUDE_ROOTS}/${name})
    cmake_path(GET ARG_FOLDER PARENT_PATH parent)
    file(MAKE_DIRECTORY ${root}/${parent})
    if(NOT EXISTS ${root}/${ARG_FOLDER})
        file(CREATE_LINK ${PROJECT_SOURCE_DIR}/${ARG_ROOT}/${ARG_FOLDER} ${root}/${ARG_FOLDER} SYMBOLIC)
    endif()

    add_library(${target} STATIC ${ARG_SOURCES})
    add_library(vynlex::${name} ALIAS ${target})
    target_include_directories(${target} PUBLIC ${root})
    target_link_libraries(${target} PUBLIC ${ARG_PUBLIC} PRIVATE ${ARG_PRIVATE} vynlex_warnings)
    if(ARG_ROOT STREQUAL "src")
        set_property(GLOBAL APPEND PROPERTY VYNLEX_FOLDERS ${target})
    endif()
    if(ARG_FOLDER MATCHES "^sandbox/") # which knows no Qt
        return()
    endif()
    if(NOT ARG_ROOT STREQUAL "src" OR NOT VYNLEX_PRECOMPILED_HEADERS STREQUAL "TESTS")
        vynlex_precompile(${target} vynlex_precompiled_kit)
    endif()
endfunction()

# vynlex_add_test(<name> [GUI] SOURCES <files> LIBS <targets> [LABELS <labels>] [TIMEOUT <seconds>])
# A Qt Test executable run by CTest, offscreen. GUI: it links QtGui, directly or not.
function(vynlex_add_test name)
    cmake_parse_arguments(ARG "GUI" "TIMEOUT" "SOURCES;LIBS;LABELS" ${ARGN})
    if(NOT ARG_TIMEOUT)
        # A hang ends before that: Qt Test gives a function 300 s, and patience is far less.
        set(ARG_TIMEOUT 600)
    endif()
    add_executable(${name} ${ARG_SOURCES})
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}) # "tests/..."
    target_link_libraries(${name} PRIVATE ${ARG_LIBS} Qt6::Test vynlex_warnings)
    target_compile_definitions(${name} PRIVATE VYNLEX_FIXTURES="${PROJECT_SOURCE_DIR}/tests/fixtures")
    if(ARG_GUI)
        vynlex_precompile(${name} vynlex_precompiled_gui_tests)
    else()
        vynlex_precompile(${name} vynlex_precompiled_tests)
    endif()
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES
        TIMEOUT ${ARG_TIMEOUT}
        LABELS "${ARG_LABELS}"
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;QT_QUICK_BACKEND=software;LC_ALL=C.UTF-8")
endfunction()
