// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The names under which the program is known to users, to the desktop and to its settings.

#include <QString>

namespace Identity {

inline QString displayName()
{
    return QStringLiteral("Tavro VR Player");
}

inline QString organization()
{
    return QStringLiteral("Tavro");
}

/// Major, minor, patch and build number.
inline QString version()
{
    return QStringLiteral("2.3.1.400");
}

/// The version for people: the first three fields, then a word for a build that is no release.
QString displayVersion(const QString &version);

/// The name of the settings: with major and minor version in it, each such version starts fresh.
QString applicationName();

} // namespace Identity
