// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtTest/QtTest>

/// Adds the columns of a test's data: columns<QByteArray, bool>("bytes", "reads"). Gives what adds
/// a row: its name, and a value for each column.
template <class... Values, class... Names> auto columns(Names... names)
{
    (QTest::addColumn<Values>(names), ...);
    return [](const char *name, const Values &...values) {
        QTestData &row = QTest::newRow(name);
        static_cast<void>((row << ... << values));
    };
}
