# The folders beside the executable: laid by the build, so that the program can be started from it, and by the
# installation, which makes a portable folder. What a user may have changed in the build's copy is left alone.
set(OSTREL_RUNTIME_DIR ${CMAKE_BINARY_DIR}/Ostrel)

set(runtime_files config/company.txt databases/vehicle.dbc language/config.ini firmware/README.txt)
foreach(file IN LISTS runtime_files)
    if(NOT EXISTS ${OSTREL_RUNTIME_DIR}/${file})
        configure_file(${PROJECT_SOURCE_DIR}/${file} ${OSTREL_RUNTIME_DIR}/${file} COPYONLY)
    endif()
endforeach()
file(MAKE_DIRECTORY ${OSTREL_RUNTIME_DIR}/help/Chinese ${OSTREL_RUNTIME_DIR}/help/English)

install(FILES config/company.txt DESTINATION ./config)
install(FILES databases/vehicle.dbc DESTINATION ./databases)
install(FILES firmware/README.txt DESTINATION ./firmware)
install(DIRECTORY help/Chinese help/English DESTINATION ./help PATTERN .gitkeep EXCLUDE)
