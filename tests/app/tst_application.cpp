// SPDX-License-Identifier: GPL-3.0-or-later
// The program's spine among all that it owns, where no command line and no key reaches.
#include "app/Application.h"
#include "app/PicturePrefetch.h"
#include "settings/VxVlcOptions.h"

#include <QFileOpenEvent>
#include <QTest>
#include <QWindow>

class TestApplication : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void opensWhatTheDesktopHandsOver()
    {
        const QString file = TAVRO_SOURCE_DIR "/samples/sphere.jpg";
        QCoreApplication::postEvent(qApp, new QFileOpenEvent(file));
        QTRY_COMPARE(QGuiApplication::topLevelWindows().constFirst()->title(),
                     "Tavro VR Player - " + QUrl::fromLocalFile(file).toString());
    }
};

int main(int argc, char **argv)
{
    int one = 1; // the rest is for the test
    Application application(one, argv);
    VxVlcOptions options;
    VxVlcOptions::setInstance(&options);
    application.init(QDir::currentPath(), nullptr);
    TestApplication test;
    const int failures = QTest::qExec(&test, argc, argv);
    application.teardown();
    return failures;
}

#include "tst_application.moc"
