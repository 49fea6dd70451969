// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/FileInquiry.h"

#include "app/DetachedThread.h"

#include <mutex>
#include <utility>

/// The way back to the main thread, which is cut when nobody listens any more.
struct FileInquiry::Line
{
    std::mutex mutex;
    FileInquiry *receiver; // null once it is gone
};

FileInquiry::FileInquiry()
    : m_line(std::make_shared<Line>())
{
    m_line->receiver = this;
}

FileInquiry::~FileInquiry()
{
    const std::lock_guard lock(m_line->mutex);
    m_line->receiver = nullptr;
}

void FileInquiry::ask(std::function<Answer()> question)
{
    const int number = ++m_latest;
    if (!std::exchange(m_isAsking, true))
        Q_EMIT askingChanged();
    // Of this object the thread touches the line only; what it sends back is dropped with it.
    DetachedThread::start([this, line = m_line, number, question = std::move(question)] {
        Answer answer = question();
        const std::lock_guard lock(line->mutex);
        if (!line->receiver)
            return;
        QMetaObject::invokeMethod(
            line->receiver,
            [this, number, answer = std::move(answer)] {
                if (number != m_latest)
                    return;
                m_isAsking = false;
                answer();
                if (!m_isAsking)
                    Q_EMIT askingChanged();
            },
            Qt::QueuedConnection);
    });
}

void FileInquiry::forget()
{
    ++m_latest;
    if (std::exchange(m_isAsking, false))
        Q_EMIT askingChanged();
}
