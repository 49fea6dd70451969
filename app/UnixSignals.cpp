// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/UnixSignals.h"

#include <QSocketNotifier>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace {

// A signal handler may do next to nothing; it writes a byte here and the event loop reads it.
int pipeEnds[2] = {-1, -1};

void onSignal(int)
{
    const int savedErrno = errno;
    const char byte = 1;
    if (write(pipeEnds[1], &byte, 1) < 0) {
        // Nothing can be done about it here.
    }
    errno = savedErrno;
}

void setHandler(void (*handler)(int), int flags)
{
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = flags;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

} // namespace

UnixSignals::UnixSignals(QObject *parent)
    : QObject(parent)
{
    if (pipe2(pipeEnds, O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    auto *notifier = new QSocketNotifier(pipeEnds[0], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this, notifier] {
        notifier->setEnabled(false);
        Q_EMIT terminated();
    });
    // The second one ends the process, also when no event loop gets to the first.
    setHandler(onSignal, SA_RESTART | SA_RESETHAND);
}

UnixSignals::~UnixSignals()
{
    setHandler(SIG_DFL, 0);
    for (int &end : pipeEnds) {
        if (end >= 0)
            close(end);
        end = -1;
    }
}
