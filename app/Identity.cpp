// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Identity.h"

#include <QStringList>

namespace Identity {

namespace {

QString preReleaseSuffix(int build)
{
    if (build < 100)
        return QStringLiteral(" Internal %1").arg(build);
    if (build < 200)
        return QStringLiteral(" Alpha %1").arg(build - 100);
    if (build < 300)
        return QStringLiteral(" Beta %1").arg(build - 200);
    if (build < 400)
        return QStringLiteral(" RC %1").arg(build - 300);
    return {};
}

} // namespace

QString displayVersion(const QString &version)
{
    const QStringList fields = version.split(QLatin1Char('.'));
    return QStringList(fields.mid(0, 3)).join(QLatin1Char('.'))
        + preReleaseSuffix(fields.value(3).toInt());
}

QString applicationName()
{
    const QStringList fields = version().split(QLatin1Char('.'));
    return QStringLiteral("%1 %2.%3").arg(displayName(), fields.value(0), fields.value(1));
}

} // namespace Identity
