# What `cmake --install` lays down, in two parts: what a program needs to run (runtime) and to be built (development). No file names the
# place where it lies, so the whole may be moved.

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/VynlexTranslationSDK)
set(generated ${CMAKE_CURRENT_BINARY_DIR}/package)

install(TARGETS VynlexTranslationSDK
    EXPORT VynlexTranslationSDKTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)

# For find_package.
install(EXPORT VynlexTranslationSDKTargets
    NAMESPACE VynlexTranslationSDK::
    DESTINATION ${package_dir}
    COMPONENT development)
set(qml_dir ${CMAKE_INSTALL_LIBDIR}/qt6/qml)
configure_package_config_file(
    ${CMAKE_CURRENT_LIST_DIR}/VynlexTranslationSDKConfig.cmake.in ${generated}/VynlexTranslationSDKConfig.cmake
    INSTALL_DESTINATION ${package_dir}
    PATH_VARS qml_dir
    NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file(${generated}/VynlexTranslationSDKConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES
    ${generated}/VynlexTranslationSDKConfig.cmake
    ${generated}/VynlexTranslationSDKConfigVersion.cmake
    DESTINATION ${package_dir}
    COMPONENT development)

# For pkg-config.
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
string(REGEX REPLACE "[^/]+" ".." to_prefix ${pkgconfig_dir})
configure_file(${CMAKE_CURRENT_LIST_DIR}/VynlexTranslationSDK.pc.in ${generated}/VynlexTranslationSDK.pc @ONLY)
install(FILES ${generated}/VynlexTranslationSDK.pc DESTINATION ${pkgconfig_dir} COMPONENT development)

# For qmllint and editors alone: engines find the module in the library.
install(FILES
    ${PROJECT_BINARY_DIR}/qml/VynlexTranslationSDK/qmldir
    ${PROJECT_BINARY_DIR}/qml/VynlexTranslationSDK/entry.qmltypes
    DESTINATION ${qml_dir}/VynlexTranslationSDK
    COMPONENT development)
