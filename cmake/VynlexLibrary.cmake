# The shared library: every folder of src/, whole, because the QML modules register themselves from initialisers that nothing names,
# and because hosts call what the kit itself does not. A new folder is in it unasked; a new public header is a line here.

add_library(VynlexTranslationSDK SHARED)
add_library(VynlexTranslationSDK::VynlexTranslationSDK ALIAS VynlexTranslationSDK)
target_sources(VynlexTranslationSDK PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR}/include FILES
    include/VynlexTranslationSDK/NetworkReachabilityHandler.h
    include/VynlexTranslationSDK/NetworkReachabilityHandlerDelegate.h
    include/VynlexTranslationSDK/VLApiServer.h
    include/VynlexTranslationSDK/VLChatDeleagate.h
    include/VynlexTranslationSDK/VLCurrentUserType.h
    include/VynlexTranslationSDK/VLTranslationConfig.h
    include/VynlexTranslationSDK/VLTranslationView.h
    include/VynlexTranslationSDK/VynlexExport.h
    include/VynlexTranslationSDK/VynlexTranslationSDKVersion.h)
target_compile_features(VynlexTranslationSDK PUBLIC cxx_std_20)
target_link_libraries(VynlexTranslationSDK PUBLIC Qt6::Core Qt6::Quick)
get_property(folders GLOBAL PROPERTY VYNLEX_FOLDERS)
foreach(folder IN LISTS folders)
    # Its objects, and as a library for what those need in turn.
    target_sources(VynlexTranslationSDK PRIVATE $<TARGET_OBJECTS:${folder}>)
    target_link_libraries(VynlexTranslationSDK PRIVATE ${folder})
endforeach()

set_target_properties(VynlexTranslationSDK PROPERTIES
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    AUTOMOC OFF)
if(UNIX AND NOT APPLE)
    set(map ${PROJECT_SOURCE_DIR}/cmake/VynlexTranslationSDK.map)
    target_link_options(VynlexTranslationSDK PRIVATE LINKER:--no-undefined LINKER:--version-script=${map})
    set_property(TARGET VynlexTranslationSDK APPEND PROPERTY LINK_DEPENDS ${map})
endif()
