// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What helps a user whose medium cannot be shown: players and decoders say little more than that
// they failed.

#include <QString>

class QUrl;

namespace MediumAdvice {

/// Where \a medium lies, why it cannot be shown as far as a look at it tells, and what the user can
/// do, in plain text of two lines. On any thread; for as long as the disk takes.
QString of(const QUrl &medium);

} // namespace MediumAdvice
