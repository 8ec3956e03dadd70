# What nearly every file of a kind includes and what is slow to parse, compiled once for all libraries of that kind. A
# file still includes what it uses. Headers stand here by their own name: a path would bind objects to one folder.

set(TARNWELL_CORE_HEADERS
    <algorithm> <functional> <memory> <optional> <utility> <vector>
    <QByteArray> <QCoreApplication> <QDateTime> <QHash> <QList> <QMap> <QObject> <QString> <QStringList> <QTimer> <QUuid>)
set(TARNWELL_WIDGETS_HEADERS
    <QApplication> <QBoxLayout> <QLabel> <QPainter> <QPushButton> <QStyle> <QWidget>)

# tarnwell_precompiled(NAME LIBS target... HEADERS header...): a library that only carries the precompiled header.
function(tarnwell_precompiled name)
    cmake_parse_arguments(arg "" "" "LIBS;HEADERS" ${ARGN})
    add_library(${name} OBJECT "${CMAKE_SOURCE_DIR}/cmake/pch.cpp")
    target_compile_definitions(${name} PRIVATE ${TARNWELL_QT_DEFINITIONS})
    target_link_libraries(${name} PRIVATE ${arg_LIBS})
    target_precompile_headers(${name} PRIVATE ${arg_HEADERS})
endfunction()

tarnwell_precompiled(tarnwell_core_pch LIBS Qt6::Core HEADERS ${TARNWELL_CORE_HEADERS})
tarnwell_precompiled(tarnwell_widgets_pch LIBS Qt6::Widgets HEADERS ${TARNWELL_CORE_HEADERS} ${TARNWELL_WIDGETS_HEADERS})
if(TARNWELL_TESTS)
    # QtTest defines the absolute paths of each program's folders; no object may hold them.
    set_target_properties(Qt6::Test PROPERTIES INTERFACE_COMPILE_DEFINITIONS QT_TESTLIB_LIB)
    tarnwell_precompiled(tarnwell_test_pch LIBS Qt6::Test HEADERS ${TARNWELL_CORE_HEADERS} <QTest>)
endif()
