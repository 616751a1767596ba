# One interface target with what every target of the tree is compiled with.
add_library(ostrel_options INTERFACE)
target_include_directories(ostrel_options INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(ostrel_options INTERFACE -Wall -Wextra -Werror)
target_compile_definitions(ostrel_options INTERFACE
    QT_NO_CAST_FROM_BYTEARRAY
    QT_DEPRECATED_WARNINGS
    QT_DISABLE_DEPRECATED_BEFORE=0x050F00
    QT_NO_FOREACH)
if(OSTREL_SANITIZE)
    target_compile_options(ostrel_options INTERFACE
        -fsanitize=${OSTREL_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    target_link_options(ostrel_options INTERFACE -fsanitize=${OSTREL_SANITIZE})
endif()

# What most sources of the core, of the windows and of the tests begin with.
set(OSTREL_CORE_HEADERS
    <QByteArray> <QDateTime> <QElapsedTimer> <QFile> <QHash> <QList> <QObject> <QString> <QStringList> <QThread> <QVector>
    <algorithm> <atomic> <array> <functional> <memory> <mutex> <vector>)
set(OSTREL_GUI_HEADERS <QtWidgets/QtWidgets>)
set(OSTREL_TEST_HEADERS <QtTest/QtTest>)
