# Qwt 6.1 for Qt 5, of this machine or, in a cross build, below QWT_WINDOWS_ROOT. Gives the target Qwt::Qwt.
find_path(QWT_INCLUDE_DIR qwt_plot.h PATH_SUFFIXES qwt qwt-qt5)
find_library(QWT_LIBRARY NAMES qwt-qt5 qwt)
if(QWT_INCLUDE_DIR)
    file(STRINGS ${QWT_INCLUDE_DIR}/qwt_global.h QWT_VERSION REGEX "define QWT_VERSION_STR ")
    string(REGEX REPLACE ".*\"(.*)\".*" "\\1" QWT_VERSION "${QWT_VERSION}")
endif()
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Qwt REQUIRED_VARS QWT_LIBRARY QWT_INCLUDE_DIR VERSION_VAR QWT_VERSION)
mark_as_advanced(QWT_INCLUDE_DIR QWT_LIBRARY)
if(Qwt_FOUND AND NOT TARGET Qwt::Qwt)
    add_library(Qwt::Qwt UNKNOWN IMPORTED)
    set_target_properties(Qwt::Qwt PROPERTIES
        IMPORTED_LOCATION ${QWT_LIBRARY}
        INTERFACE_INCLUDE_DIRECTORIES ${QWT_INCLUDE_DIR}
        INTERFACE_LINK_LIBRARIES Qt5::Widgets)
    if(WIN32)
        set_property(TARGET Qwt::Qwt PROPERTY INTERFACE_COMPILE_DEFINITIONS QWT_DLL)
    endif()
endif()
