// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The writing half of the settings interface: code that only stores values depends on this and
// not on where they end up.

#include <QString>
#include <QVariant>

/// Takes values by key.
class KernelSettingsWriter
{
public:
    virtual void setValue(const QString &key, const QVariant &value) = 0;
    virtual ~KernelSettingsWriter() = default;
};
