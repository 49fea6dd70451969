// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Brings what MediumAdvice finds to the user, who must not wait for a disk to hear that something
// failed.

#include "app/FileInquiry.h"

#include <QObject>
#include <QTimer>
#include <QUrl>

/// Main thread only.
class MediumAdvisor : public QObject
{
    Q_OBJECT

public:
    MediumAdvisor();

    /// Answers with explained() in at most half a second. What was asked before and is not answered
    /// yet is answered now.
    void explain(const QUrl &medium, const QString &message);

Q_SIGNALS:
    /// \a message as it was given, and what helps; where the disk did not tell, only the name.
    void explained(const QString &message, const QString &advice);

private:
    void answer(const QString &advice);

    FileInquiry m_inquiry;
    QTimer m_patience;
    QUrl m_medium;
    QString m_message; // empty when nothing waits for an answer
};
