// SPDX-License-Identifier: GPL-3.0-or-later
// The program's spine among all that it owns, where no command line and no key reaches.
#include "app/Application.h"
#include "app/PicturePrefetch.h"
#include "app/VxGlobalObject.h"
#include "settings/VxVlcOptions.h"

#include <QFileOpenEvent>
#include <QQuickWindow>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

class TestApplication : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void opensWhatTheDesktopHandsOver()
    {
        const QString file = m_dir.filePath("a b #1.png");
        QImage picture(64, 32, QImage::Format_RGB32);
        picture.fill(Qt::red);
        QVERIFY(picture.save(file));
        QCoreApplication::postEvent(qApp, new QFileOpenEvent(file));
        QTRY_COMPARE(app()->window()->title(),
                     "Tavro VR Player - " + QUrl::fromLocalFile(file).toString());
    }

    void restarts()
    {
        QSignalSpy ending(app()->globalObject(), &VxGlobalObject::ending);
        QTimer::singleShot(0, app()->globalObject(), &VxGlobalObject::restart);
        QCOMPARE(QCoreApplication::exec(), 123456789);
        QCOMPARE(ending.value(0).value(0).toInt(), 123456789);
    }

private:
    static Application *app() { return static_cast<Application *>(qApp); }

    QTemporaryDir m_dir;
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
