# The simulated adapter without anything of Qt: part of the core library, and all that a library of its own needs.
set(OSTREL_SIMULATOR_SOURCES
    ${CMAKE_CURRENT_LIST_DIR}/../acceptancefilter.cpp
    ${CMAKE_CURRENT_LIST_DIR}/bittiming.cpp
    ${CMAKE_CURRENT_LIST_DIR}/builtinvehicle.cpp
    ${CMAKE_CURRENT_LIST_DIR}/buschannel.cpp
    ${CMAKE_CURRENT_LIST_DIR}/../busframe.cpp
    ${CMAKE_CURRENT_LIST_DIR}/candumplog.cpp
    ${CMAKE_CURRENT_LIST_DIR}/deviceinfo.cpp
    ${CMAKE_CURRENT_LIST_DIR}/flood.cpp
    ${CMAKE_CURRENT_LIST_DIR}/../numbertext.cpp
    ${CMAKE_CURRENT_LIST_DIR}/../propertyroute.cpp
    ${CMAKE_CURRENT_LIST_DIR}/simulateddriver.cpp
    ${CMAKE_CURRENT_LIST_DIR}/simulatoroptions.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tracereplay.cpp
    ${CMAKE_CURRENT_LIST_DIR}/virtualbus.cpp
)
