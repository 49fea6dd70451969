// SPDX-License-Identifier: GPL-3.0-or-later
// The player as the interface sees it, and the object that says which back end plays.

#include "settings/VxSettingsKeys.h"
#include "settings/VxSettingsManager.h"
#include "settings/VxVlcOptions.h"
#include "tests/video/Clips.h"
#include "tests/video/PlayerTestMain.h"
#include "video/VxVideoPlugin.h"

#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

namespace {

// The numbers of MediaPlayer in QtMultimedia.
constexpr int StoppedState = 0, PlayingState = 1, PausedState = 2;
constexpr int NoMedia = 1, Loading = 2, Buffering = 5, Buffered = 6, EndOfMedia = 7,
              InvalidMedia = 8;

QStringList s_warnings;

void collectWarnings(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (type != QtDebugMsg && type != QtInfoMsg && QByteArray(context.category) != "qt.qpa.input")
        s_warnings.append(message);
}

class Controller : public QObject
{
    Q_OBJECT

public:
    Q_INVOKABLE void hackQmlMediaPlayer(QObject *player) { hacked = player; }

    QObject *hacked = nullptr;
};

} // namespace

class TestVideoBackend : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void listOfBackends();
    void currentPlugin();
    void vlcSettings();
    void defaultsOfThePlayer();
    void states();
    void run();
    void failingStreamSaysWhy();
    void seekJump();
    void settingsWhilePlaying();
    void volumeStaysTheUsers();
    void qtBackend();

private:
    void load(const QString &plugin);

    void playClip()
    {
        load(QString());
        m_player->setProperty("mediaSource", clip());
        QTRY_VERIFY(value("textureId").toInt() != 0);
    }

    QVariant value(const char *name) const { return m_player->property(name); }

    void call(const char *function) { QVERIFY(QMetaObject::invokeMethod(m_player, function)); }

    QUrl clip()
    {
        m_clips.make(QStringLiteral("clip.mp4"),
                     QStringLiteral("-f lavfi -i color=red:s=160x80:r=25:d=1.5 -f lavfi -i "
                                    "sine=duration=1.5 -c:v libx264 -pix_fmt yuv420p -c:a aac"));
        return m_clips.url(QStringLiteral("clip.mp4"));
    }

    QTemporaryDir m_home;
    Clips m_clips;
    VxVlcOptions m_options;
    std::unique_ptr<VxSettingsManager> m_store;
    std::unique_ptr<VxVideoPlugin> m_plugin;
    Controller m_controller;
    std::unique_ptr<QQuickView> m_view;
    QObject *m_player = nullptr;
};

void TestVideoBackend::initTestCase()
{
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_home.path());
    VxVlcOptions::setInstance(&m_options);
    VxVideoPlugin::registerQmlTypes();
    qInstallMessageHandler(collectWarnings);
}

void TestVideoBackend::init()
{
    m_options = VxVlcOptions();
    QFile::remove(m_home.filePath(QStringLiteral("Tavro/Test.conf")));
    m_store = std::make_unique<VxSettingsManager>(QSettings::UserScope, QStringLiteral("Tavro"),
                                                  QStringLiteral("Test"));
    m_plugin = std::make_unique<VxVideoPlugin>(m_store.get());
    s_warnings.clear();
}

void TestVideoBackend::cleanup()
{
    m_view.reset();
    m_plugin.reset();
    m_store.reset();
    // Qt's multimedia has warnings of its own.
    if (QLatin1String(QTest::currentTestFunction()) == QLatin1String("qtBackend"))
        s_warnings = s_warnings.filter(QStringLiteral("qrc:"));
    QCOMPARE(s_warnings, QStringList());
}

void TestVideoBackend::load(const QString &plugin)
{
    m_plugin = std::make_unique<VxVideoPlugin>(m_store.get(), plugin);
    m_view = std::make_unique<QQuickView>();
    m_view->rootContext()->setContextProperty(QStringLiteral("vxVideoPlugin"), m_plugin.get());
    m_view->rootContext()->setContextProperty(QStringLiteral("vxGlobalObject"), &m_controller);
    m_view->setSource(QUrl(QStringLiteral("qrc:/VxVideo/Vx_MediaPlayer.qml")));
    m_view->resize(320, 240);
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
    m_player = m_view->rootObject();
    QVERIFY(m_player);
    QVERIFY(value("item").value<QObject *>());
}

void TestVideoBackend::listOfBackends()
{
    const QVariantList list = m_plugin->pluginsList();
    QVERIFY(list.size() > 1);
    QCOMPARE(list.first().toList().first().toString(), QStringLiteral("vlc"));
    const QString label = list.first().toList().at(1).toString();
    QVERIFY2(label.startsWith(QLatin1String("VLC 'Should play any video, current version is 3.")),
             qPrintable(label));
    QVERIFY(label.endsWith(u'\''));
}

void TestVideoBackend::currentPlugin()
{
    QCOMPARE(m_plugin->currentPlugin(), QStringLiteral("vlc"));
    QSignalSpy changed(m_plugin.get(), &VxVideoPlugin::currentPluginChanged);
    QSignalSpy messages(m_plugin.get(), &VxVideoPlugin::displayMessage);
    m_plugin->setCurrentPlugin(QStringLiteral("vlc"));
    QCOMPARE(changed.count() + messages.count(), 0);
    m_plugin->setCurrentPlugin(QStringLiteral("other"));
    QCOMPARE(changed.count(), 1);
    QCOMPARE(messages.value(0).value(0).toString(),
             QStringLiteral("You must restart to apply modifications on video plugin."));
    // The next start takes it; a name given on the command line wins over it.
    QCOMPARE(VxVideoPlugin(m_store.get()).currentPlugin(), QStringLiteral("other"));
    QCOMPARE(VxVideoPlugin(m_store.get(), QStringLiteral("vlc")).currentPlugin(),
             QStringLiteral("vlc"));
    m_plugin->resetDefaultValues(QStringLiteral("application"));
    QCOMPARE(m_plugin->currentPlugin(), QStringLiteral("vlc"));
}

void TestVideoBackend::vlcSettings()
{
    QSignalSpy hardware(m_plugin.get(), &VxVideoPlugin::vlcHwDecodingChanged);
    QSignalSpy shader(m_plugin.get(), &VxVideoPlugin::vlcShaderColorConversionChanged);
    QSignalSpy delay(m_plugin.get(), &VxVideoPlugin::vlcAudioDelayChanged);
    for (int round = 0; round < 2; ++round) {
        m_plugin->setVlcHwDecoding(true);
        m_plugin->setVlcShaderColorConversion(true);
        m_plugin->setVlcAudioDelay(-250);
    }
    QCOMPARE(hardware.count() + shader.count() + delay.count(), 3);
    QVERIFY(m_options.hardwareDecoding && m_options.shaderColorConversion);
    QCOMPARE(m_options.audioDelay, -250);
    VxVlcOptions stored;
    stored.load(m_store.get());
    QVERIFY(stored.hardwareDecoding && stored.shaderColorConversion && stored.audioDelay == -250);

    m_options.customMediaOptions = QStringLiteral(":a");
    m_plugin->resetDefaultValues(QStringLiteral("vlc"));
    QCOMPARE(hardware.count() + shader.count() + delay.count(), 6);
    stored.load(m_store.get());
    QVERIFY(!stored.hardwareDecoding && !stored.shaderColorConversion && stored.audioDelay == 0);
    QCOMPARE(stored.customMediaOptions, QString());
}

void TestVideoBackend::defaultsOfThePlayer()
{
    load(QString());
    const QVariantMap defaults{{"duration", 0},  {"position", 0},
                               {"volume", 0.5},  {"nativeSize", true},
                               {"textureId", 0}, {"playbackState", StoppedState},
                               {"fps", 0},       {"playerStatus", NoMedia}};
    for (auto it = defaults.begin(); it != defaults.end(); ++it)
        QCOMPARE(value(qPrintable(it.key())), it.value());
    QVERIFY(!value("shaderEffectSource").value<QObject *>());
    // Known as soon as the scene graph has run once.
    QTRY_COMPARE(value("textureTransfer").toString(), QStringLiteral("Pixel Buffer Object"));
    for (const char *function : {"pause", "play", "stop", "restart"})
        call(function);
}

void TestVideoBackend::states()
{
    load(QString());
    // By the number of the state: from idle over opening and so on to the error.
    const std::pair<int, int> expected[] = {
        {StoppedState, NoMedia},    {StoppedState, Loading},     {StoppedState, Buffering},
        {PlayingState, Buffered},   {PausedState, Buffered},     {StoppedState, NoMedia},
        {StoppedState, EndOfMedia}, {StoppedState, InvalidMedia}};
    int state = 0;
    for (const auto &[playbackState, status] : expected) {
        m_player->setProperty("playbackState", -1);
        m_player->setProperty("playerStatus", -1);
        QVERIFY(QMetaObject::invokeMethod(value("item").value<QObject *>(), "vlcStateChanged",
                                          Q_ARG(int, state++)));
        QCOMPARE(value("playbackState").toInt(), playbackState);
        QCOMPARE(value("playerStatus").toInt(), status);
    }
}

void TestVideoBackend::run()
{
    playClip();
    QTRY_COMPARE(value("playerStatus").toInt(), Buffered);
    QTRY_VERIFY(value("position").toInt() > 0);
    QVERIFY(std::abs(value("duration").toInt() - 1500) < 100);
    QCOMPARE(value("texturePixelFormat").toString(), QStringLiteral("BGRA"));
    QTRY_COMPARE(value("width").toInt(), 160);
    call("pause");
    QTRY_COMPARE(value("playbackState").toInt(), PausedState);
    QSignalSpy seeks(m_player, SIGNAL(seekRequested()));
    QVERIFY(QMetaObject::invokeMethod(m_player, "seek", Q_ARG(QVariant, 700)));
    QCOMPARE(seeks.count(), 1);
    QCOMPARE(value("position").toInt(), 700);
    call("play");
    QTRY_COMPARE(value("playerStatus").toInt(), EndOfMedia);
    call("restart");
    QTRY_COMPARE(value("playbackState").toInt(), PlayingState);
    // An empty source ends it, and no command brings it back.
    m_player->setProperty("mediaSource", QUrl());
    QTRY_COMPARE(value("playerStatus").toInt(), NoMedia);
    QCOMPARE(value("textureId").toInt(), 0);
    QCOMPARE(value("duration").toInt(), 0);
    call("play");
    call("restart");
    m_plugin->setVlcHwDecoding(true);
    QTest::qWait(300);
    QCOMPARE(value("playerStatus").toInt(), NoMedia);
}

void TestVideoBackend::failingStreamSaysWhy()
{
    load(QString());
    m_player->setProperty("mediaSource", QUrl(QStringLiteral("rtsp://127.0.0.1:1/clip")));
    QTRY_COMPARE_WITH_TIMEOUT(value("playerStatus").toInt(), InvalidMedia, 10000);
    const QString error = value("errorString").toString();
    QVERIFY2(error.startsWith(QLatin1String("Unknown Error")), qPrintable(error));
    QVERIFY2(error.contains(QLatin1String("rtsp")), qPrintable(error));
    // A file's error stands alone, and the next source begins without one.
    m_player->setProperty("mediaSource", m_clips.url(QStringLiteral("missing.mp4")));
    QCOMPARE(value("errorString").toString(), QString());
    QTRY_COMPARE(value("errorString").toString(), QStringLiteral("Unknown Error"));
}

void TestVideoBackend::seekJump()
{
    playClip();
    call("pause");
    QTRY_COMPARE(value("playbackState").toInt(), PausedState);
    // To the very end, but from past it and from before the beginning to the beginning.
    for (const auto &[delta, position] :
         {std::pair(300, 700), {-300, 100}, {600, 1000}, {601, 0}, {-401, 0}}) {
        m_player->setProperty("duration", 1000);
        m_player->setProperty("position", 400);
        QVERIFY(QMetaObject::invokeMethod(m_player, "seekJump", Q_ARG(QVariant, delta)));
        QCOMPARE(value("position").toInt(), position);
    }
}

void TestVideoBackend::settingsWhilePlaying()
{
    playClip();
    QSignalSpy opened(value("item").value<QObject *>(), SIGNAL(sourceChanged()));
    m_plugin->setVlcAudioDelay(100);
    QCOMPARE(opened.count(), 0);
    m_plugin->setVlcHwDecoding(true);
    QCOMPARE(opened.count(), 1);
    m_plugin->setVlcShaderColorConversion(true);
    QCOMPARE(opened.count(), 2);
    QTRY_COMPARE(value("texturePixelFormat").toString(), QStringLiteral("I420"));
    QTRY_VERIFY(value("textureId").toInt() != 0);
}

// libvlc answers a negative volume while it has no output; the user's must survive.
void TestVideoBackend::volumeStaysTheUsers()
{
    load(QString());
    m_player->setProperty("volume", 0.35);
    for (int round = 0; round < 2; ++round) {
        m_player->setProperty("mediaSource", clip());
        QTRY_COMPARE(value("playerStatus").toInt(), Buffered);
        QTRY_COMPARE(value("item").value<QObject *>()->property("volume").toFloat(), 0.35f);
        m_player->setProperty("mediaSource", QUrl());
        QTRY_COMPARE(value("playerStatus").toInt(), NoMedia);
        QCOMPARE(value("volume").toDouble(), 0.35);
    }
}

// Qt's multimedia plays what its plug-ins can; the set-up installs those for the clip.
void TestVideoBackend::qtBackend()
{
    load(QStringLiteral("gstreamermediaplayer"));
    QVERIFY(m_controller.hacked);
    QVERIFY(value("shaderEffectSource").value<QObject *>());
    m_player->setProperty("mediaSource", clip());
    QTRY_VERIFY_WITH_TIMEOUT(value("playerStatus").toInt() == Buffered
                                 || !value("errorString").toString().isEmpty(),
                             10000);
    QVERIFY2(value("playerStatus").toInt() == Buffered,
             qPrintable(value("errorString").toString()));
    QTRY_VERIFY(value("duration").toInt() > 1000);
    QTRY_COMPARE_WITH_TIMEOUT(value("playerStatus").toInt(), EndOfMedia, 10000);
    call("restart");
    QTRY_COMPARE(value("playbackState").toInt(), PlayingState);
}

PLAYER_TEST_MAIN(TestVideoBackend)
#include "tst_video_backend.moc"
