# Cross build for 32-bit Windows with mingw-w64 (POSIX threads, as std::thread and std::mutex need them).
# QT_WINDOWS_ROOT, an environment variable or a cache variable, names a Qt 5.15 configured for win32-g++; the moc, rcc
# and uic in its bin folder run on this machine. lrelease is taken from this machine's own Qt.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR i686)

set(OSTREL_MINGW i686-w64-mingw32)
set(CMAKE_C_COMPILER ${OSTREL_MINGW}-gcc-posix)
set(CMAKE_CXX_COMPILER ${OSTREL_MINGW}-g++-posix)
set(CMAKE_RC_COMPILER ${OSTREL_MINGW}-windres)

if(DEFINED ENV{QT_WINDOWS_ROOT})
    set(QT_WINDOWS_ROOT "$ENV{QT_WINDOWS_ROOT}" CACHE PATH "Qt 5.15 for win32-g++" FORCE)
endif()
if(NOT EXISTS "${QT_WINDOWS_ROOT}/lib/cmake/Qt5/Qt5Config.cmake")
    message(FATAL_ERROR "QT_WINDOWS_ROOT does not name a Qt 5 for mingw: \"${QT_WINDOWS_ROOT}\"")
endif()
if(DEFINED ENV{QWT_WINDOWS_ROOT})
    set(QWT_WINDOWS_ROOT "$ENV{QWT_WINDOWS_ROOT}" CACHE PATH "Qwt 6.1 for that Qt" FORCE)
endif()
if(NOT EXISTS "${QWT_WINDOWS_ROOT}/lib/libqwt-qt5.dll.a")
    message(FATAL_ERROR "QWT_WINDOWS_ROOT does not name a Qwt for mingw: \"${QWT_WINDOWS_ROOT}\"")
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES QT_WINDOWS_ROOT QWT_WINDOWS_ROOT)

set(CMAKE_FIND_ROOT_PATH "${QT_WINDOWS_ROOT}" "${QWT_WINDOWS_ROOT}" /usr/${OSTREL_MINGW})
set(CMAKE_PREFIX_PATH /)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# The package holds host programs only and no library, so the one of this machine serves.
file(GLOB OSTREL_LINGUIST_DIRS /usr/lib/*/cmake/Qt5LinguistTools /usr/lib/cmake/Qt5LinguistTools
     /usr/lib64/cmake/Qt5LinguistTools)
if(OSTREL_LINGUIST_DIRS)
    list(GET OSTREL_LINGUIST_DIRS 0 OSTREL_LINGUIST_DIR)
    set(Qt5LinguistTools_DIR "${OSTREL_LINGUIST_DIR}" CACHE PATH "lrelease of this machine")
endif()
