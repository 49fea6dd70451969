// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Questions to the file system that the interface must not wait for.

#include <QObject>

#include <functional>
#include <memory>

/// Puts questions on threads of their own and hears the answer to the latest one. Main thread only.
class FileInquiry : public QObject
{
    Q_OBJECT

public:
    /// What is done on the main thread when the question is answered.
    using Answer = std::function<void()>;

    FileInquiry();
    /// Answers that are still to come are dropped.
    ~FileInquiry() override;

    /// Runs \a question on a thread of its own, then on this one the answer that it returns, unless
    /// another question or forget() came first.
    void ask(std::function<Answer()> question);
    void forget();

    /// True from the question until its answer begins.
    bool isAsking() const { return m_isAsking; }

Q_SIGNALS:
    /// Asking has begun, or has ended with all that the answer did.
    void askingChanged();

private:
    struct Line;

    void hear();

    std::shared_ptr<Line> m_line; // shared with the threads
    int m_latest = 0; // number of the last question
    bool m_isAsking = false;
};
