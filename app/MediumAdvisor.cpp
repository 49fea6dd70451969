// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/MediumAdvisor.h"

#include "app/MediumAdvice.h"

#include <utility>

namespace {

constexpr int kPatienceMs = 500;

} // namespace

MediumAdvisor::MediumAdvisor()
{
    m_patience.setSingleShot(true);
    m_patience.setInterval(kPatienceMs);
    connect(&m_patience, &QTimer::timeout, this,
            [this] { answer(m_medium.toDisplayString(QUrl::PreferLocalFile)); });
}

void MediumAdvisor::explain(const QUrl &medium, const QString &message)
{
    answer(m_medium.toDisplayString(QUrl::PreferLocalFile));
    m_medium = medium;
    m_message = message;
    m_patience.start();
    m_inquiry.ask([this, medium]() -> FileInquiry::Answer {
        return [this, advice = MediumAdvice::of(medium)] { answer(advice); };
    });
}

void MediumAdvisor::answer(const QString &advice)
{
    m_patience.stop();
    m_inquiry.forget();
    const QString message = std::exchange(m_message, QString());
    if (!message.isEmpty())
        Q_EMIT explained(message, advice);
}
