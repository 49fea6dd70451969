// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/FileInquiry.h"

#include "app/DetachedThread.h"

#include <mutex>
#include <utility>

/// The way back to the main thread, which is cut when nobody listens any more.
struct FileInquiry::Line
{
    std::mutex mutex; // guards the members below
    FileInquiry *receiver = nullptr; // null once it is gone
    int number = 0; // of the question that is answered
    Answer answer; // until it is heard
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
    const auto work = [line = m_line, number, question = std::move(question)] {
        Answer answer = question();
        const std::lock_guard lock(line->mutex);
        if (!line->receiver || number < line->number)
            return;
        line->number = number;
        line->answer = std::move(answer);
        QMetaObject::invokeMethod(line->receiver, &FileInquiry::hear, Qt::QueuedConnection);
    };
    // So many disks hang already that there is no thread left: better to wait than to say nothing.
    if (!DetachedThread::start(work))
        work();
}

void FileInquiry::hear()
{
    Answer answer;
    {
        const std::lock_guard lock(m_line->mutex);
        if (m_line->number == m_latest)
            answer = std::exchange(m_line->answer, nullptr);
    }
    // One that came too late, or was heard with the notice of the one before.
    if (!answer || !m_isAsking)
        return;
    m_isAsking = false;
    answer();
    if (!m_isAsking)
        Q_EMIT askingChanged();
}

void FileInquiry::forget()
{
    ++m_latest;
    if (std::exchange(m_isAsking, false))
        Q_EMIT askingChanged();
}
