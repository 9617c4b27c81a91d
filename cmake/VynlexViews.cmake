# vynlex_add_views(<name> URI <module> VIEWS <qml files> [SINGLETONS <qml files>] [DEPENDS <modules>])
# Makes a folder of the kit a QML module: its QML_ELEMENT types and its views, compiled into the library under a path
# that every host's engine searches unasked. A program that links the folder has the module; it needs no plugin.
function(vynlex_add_views name)
    cmake_parse_arguments(ARG "" "URI" "VIEWS;SINGLETONS;DEPENDS" ${ARGN})
    set(target vynlex_${name})
    string(REPLACE "." "/" path ${ARG_URI})
    set_source_files_properties(${ARG_SINGLETONS} PROPERTIES QT_QML_SINGLETON_TYPE TRUE)
    qt_add_qml_module(${target}
        URI ${ARG_URI}
        VERSION 1.0
        NO_PLUGIN
        TYPEINFO ${name}.qmltypes
        RESOURCE_PREFIX /qt-project.org/imports
        OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/qml/${path}
        IMPORT_PATH ${PROJECT_BINARY_DIR}/qml
        DEPENDENCIES QtQuick ${ARG_DEPENDS}
        QML_FILES ${ARG_SINGLETONS} ${ARG_VIEWS})
    list(TRANSFORM ARG_SINGLETONS PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
    list(TRANSFORM ARG_VIEWS PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
    set_property(GLOBAL APPEND PROPERTY VYNLEX_VIEWS ${ARG_SINGLETONS} ${ARG_VIEWS})
    # Views are a screenful each: bytecode loads as fast as compiled bindings, builds three times as fast and is a fifth of the size.
    set_target_properties(${target} PROPERTIES QT_QMLCACHEGEN_ARGUMENTS "--only-bytecode")
    # The module registers itself from a static initialiser that nothing names; without this the linker leaves it in the archive.
    string(REPLACE "." "_" register "qml_register_types_${ARG_URI}")
    string(LENGTH ${register} length)
    target_link_options(${target} INTERFACE "LINKER:-u,$<$<PLATFORM_ID:Darwin>:_>_Z${length}${register}v")
    # Generated code includes the types' headers by their base names.
    target_include_directories(${target} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
endfunction()
