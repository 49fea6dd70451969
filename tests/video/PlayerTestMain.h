// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The main function of tests that play: a player that was left to end by itself, as a busy machine
// may well have it, uses what the application object takes away.

#include "video/BoundedWait.h"

#include <QGuiApplication>
#include <QtTest>

#define PLAYER_TEST_MAIN(Test)                                                                     \
    int main(int argc, char *argv[])                                                               \
    {                                                                                              \
        QGuiApplication application(argc, argv);                                                   \
        Test test;                                                                                 \
        const int result = QTest::qExec(&test, argc, argv);                                        \
        return waitForLateWork(std::chrono::seconds(20)) ? result : 1;                             \
    }
