// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// SIGINT and SIGTERM as an event of the main loop.

#include <QObject>

/// Turns the first SIGINT or SIGTERM into the signal terminated(); the same
/// once more has its default effect, so that a user can still end a program that hangs. One object
/// at a time, made on the main thread.
class UnixSignals : public QObject
{
    Q_OBJECT

public:
    explicit UnixSignals(QObject *parent = nullptr);
    ~UnixSignals() override;

Q_SIGNALS:
    void terminated();
};
