// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Application.h"

#include "app/CommandLine.h"
#include "app/Identity.h"
#include "app/MediaFormats.h"
#include "app/PicturePrefetch.h"
#include "app/UnixSignals.h"
#include "app/VxDropArea.h"
#include "app/VxGlobalObject.h"
#include "app/VxQQuickView.h"
#include "gl/SoftwareOpenGl.h"
#include "render/VistrelView.h"
#include "render/VxShaderCodeBuilder.h"
#include "render/VxTextureProvider.h"
#include "settings/SettingsSaver.h"
#include "settings/VxSettings.h"
#include "settings/VxSettingsKeys.h"
#include "settings/VxVlcOptions.h"
#include "video/BoundedWait.h"
#include "video/VxVideoPlugin.h"

#include <QDir>
#include <QFileOpenEvent>
#include <QLoggingCategory>
#include <QMessageBox>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QQmlContext>
#include <QQmlEngine>

namespace {

Q_LOGGING_CATEGORY(lcMedia, "tavro.media", QtWarningMsg)
Q_LOGGING_CATEGORY(lcTiming, "tavro.timing", QtWarningMsg)

const QString kAdobePlugin = QStringLiteral("adobeplugin");
const QString kFiles = QStringLiteral("files");

// For players that were stopped and have not ended. The window is gone, but who waits for the
// program should not notice.
constexpr std::chrono::milliseconds kPlayerPatience(500);

} // namespace

Application::Application(int &argc, char **argv)
    : QApplication(argc, argv)
    , m_settings(new VxSettings(Identity::applicationName()))
{
    m_settings->load();
    m_saver = new SettingsSaver(m_settings);
}

Application::~Application() = default;

QQuickWindow *Application::window() const
{
    return m_view;
}

void Application::init(const QString &startDirectory, std::unique_ptr<PicturePrefetch> prefetch)
{
    qCDebug(lcTiming) << "application made";
    m_commandLine = CommandLine::parse(arguments(), startDirectory);
    m_sharedMemory = m_settings->get(VxSettingsKeys::kSharedMemory.application).toBool()
        || m_commandLine.value(kAdobePlugin).toBool();
    VxVlcOptions::instance()->load(m_settings->store());
    if (m_commandLine.value(QStringLiteral("customvlc")).toBool()) {
        VxVlcOptions::instance()->custom = true;
        m_videoPlugin = new VxVideoPlugin(m_settings->store(), QStringLiteral("vlc"));
    } else {
        m_videoPlugin = new VxVideoPlugin(m_settings->store(), QString());
    }
    const QUrl first = firstMedium();
    if (!first.isEmpty()
        && (!first.isLocalFile() || MediaFormats::videoKind(first, true) != MediaFormats::NotVideo))
        m_videoPlugin->prepareVideo();
    initRenderer();

    m_view = new VxQQuickView(this);
    // Queued: it comes from the rendering thread, and files are opened on this one.
    connect(this, &Application::openGLReady, this, &Application::playArgsMedia,
            Qt::QueuedConnection);
    connect(m_view, &QQuickWindow::sceneGraphInitialized, this, &Application::checkOpenGLVersion,
            Qt::DirectConnection);
    // A driver that gives no context at all would end the program without a word.
    connect(m_view, &QQuickWindow::sceneGraphError, this, &Application::displayOpenGLErrorMessage,
            Qt::QueuedConnection);
    // By name: the event's type is private to Qt.
    connect(m_view, SIGNAL(closing(QQuickCloseEvent *)), this, SLOT(quit()));
    VxVideoPlugin::registerQmlTypes();
    m_view->engine()->addImportPath(QStringLiteral(":/"));

    m_textureProvider = new VxTextureProvider(this, true, m_sharedMemory);
    m_globalObject = new VxGlobalObject(this);
    m_shaderBuilder = new VxShaderCodeBuilder(this);
    // Neither of the two knows the other: their owner joins them.
    connect(m_shaderBuilder, &VxShaderCodeBuilder::projectionChanged, m_globalObject,
            &VxGlobalObject::onProjectionChanged);
    connect(m_shaderBuilder, &VxShaderCodeBuilder::projectionSourceChanged, m_globalObject,
            &VxGlobalObject::onProjectionChanged);
    m_globalObject->setFovLimits();
    if (prefetch) {
        m_globalObject->setPicturePrefetch(prefetch.get());
        m_view->engine()->addImageProvider(PicturePrefetch::kName, prefetch.release());
    }

    setContextProperties();
    registerQmlTypes();
    m_view->engine()->addImportPath(QStringLiteral("qrc:/QmlLib"));
    m_view->engine()->addPluginPath(QDir(applicationDirPath()).absolutePath());
    m_view->setSource(QUrl(QStringLiteral("qrc:/qml/main_newui.qml")));
    qCDebug(lcTiming) << "scene loaded";
    showView();
    qCDebug(lcTiming) << "window shown";

    setOrganizationName(Identity::organization());
    setApplicationName(Identity::applicationName());
    QDir::setSearchPaths(QStringLiteral("UI"), {QStringLiteral(":/UI")});
    QDir::setSearchPaths(QStringLiteral("Translation"), {QStringLiteral(":/Translation")});

    connect(new UnixSignals(m_globalObject), &UnixSignals::terminated, m_globalObject,
            &VxGlobalObject::quit);
}

QUrl Application::firstMedium() const
{
    const QString argument = m_commandLine.value(kFiles).toStringList().value(0);
    return MediaFormats::isUrl(argument) ? QUrl(argument) : QUrl::fromLocalFile(argument);
}

void Application::setContextProperties()
{
    QQmlContext *root = m_view->rootContext();
    root->setContextProperty(QStringLiteral("vxApp"), this);
    root->setContextProperty(QStringLiteral("vxVideoPlugin"), m_videoPlugin);
    root->setContextProperty(QStringLiteral("vxView"), m_view);
    root->setContextProperty(QStringLiteral("vxShaderCodeBuilder"), m_shaderBuilder);
    root->setContextProperty(QStringLiteral("vxGlobalObject"), m_globalObject);
    root->setContextProperty(QStringLiteral("vxTextureProvider"), m_textureProvider);
    root->setContextProperty(QStringLiteral("vxSettings"), m_settings);
    root->setContextProperty(QStringLiteral("qt_debug"), QVariant::fromValue(nullptr));
}

void Application::registerQmlTypes()
{
    constexpr char kModule[] = "Vistrel";
    qmlRegisterUncreatableType<VxShaderCodeBuilder>(kModule, 1, 0, "VxShaderCodeBuilder",
                                                    QStringLiteral("Enums only"));
    qmlRegisterType<VxDropArea>(kModule, 1, 0, "VxDropArea");
    qmlRegisterType<VistrelView>(kModule, 1, 0, "VistrelView");
}

void Application::showView()
{
    m_view->setTitle(Identity::displayName());
    m_view->setFlags(Qt::Window | Qt::WindowTitleHint | Qt::WindowSystemMenuHint
                     | Qt::WindowMinMaxButtonsHint | Qt::WindowCloseButtonHint
                     | Qt::WindowFullscreenButtonHint);
    m_view->setMinimumSize(VxQQuickView::kMinimumSize);
    m_view->setResizeMode(QQuickView::SizeRootObjectToView);
    if (m_commandLine.value(kAdobePlugin).toBool()) {
        // The host plug-in shows the window when it wants it.
        m_view->setFlags(m_view->flags() | Qt::WindowStaysOnTopHint);
    } else if (m_view->isFullScreen()) {
        m_view->showFullScreen();
    } else {
        m_view->show();
    }
}

// On the rendering thread, with the scene graph's first context current.
void Application::checkOpenGLVersion()
{
    if (!hasShaders()) {
        QMetaObject::invokeMethod(this, &Application::displayOpenGLErrorMessage,
                                  Qt::QueuedConnection);
        return;
    }
    QOpenGLContext *current = QOpenGLContext::currentContext();
    current->functions()->initializeOpenGLFunctions();
    SoftwareOpenGl::detect();
    m_mainContext = current;
    // The scene graph may have lost the context that the former one shared with.
    if (m_shareContext)
        m_shareContext->deleteLater();
    m_shareContext = new QOpenGLContext;
    m_shareContext->setShareContext(current);
    m_shareContext->setFormat(current->format());
    m_shareContext->create();
    // Born on the rendering thread, which will be gone when the headset's thread takes it.
    m_shareContext->moveToThread(thread());
    qCDebug(lcTiming) << "OpenGL ready";
    Q_EMIT openGLReady();
}

bool Application::hasShaders() const
{
    const QOpenGLContext *current = QOpenGLContext::currentContext();
    // No driver of today lacks shaders: the way to see what a user of one that does would see.
    static const bool pretendNone = qEnvironmentVariableIsSet("TAVRO_WITHOUT_SHADERS");
    return current && !pretendNone
        && current->functions()->hasOpenGLFeature(QOpenGLFunctions::Shaders);
}

void Application::displayOpenGLErrorMessage()
{
    QMessageBox box(QMessageBox::Critical, QString(), tr("OpenGL 2.0 minimum is required."));
    box.setModal(true);
    qCInfo(lcMedia) << "told the user:" << qPrintable(box.text());
    box.exec();
    quit();
}

void Application::playArgsMedia()
{
    disconnect(this, &Application::openGLReady, this, &Application::playArgsMedia);
    if (m_commandLine.contains(kFiles))
        m_globalObject->openFiles(m_commandLine.value(kFiles).toStringList(), false);
}

bool Application::event(QEvent *event)
{
    if (event->type() == QEvent::FileOpen && m_globalObject)
        m_globalObject->openFile(static_cast<QFileOpenEvent *>(event)->file(), true);
    return QApplication::event(event);
}

void Application::saveSettings()
{
    m_view->keepSize();
    m_saver->saveNow();
}

bool Application::teardown()
{
    VxVlcOptions::instance()->save(m_settings->store());
    m_view->hide();
    // They share contexts with the scene, and the last of these must not be theirs.
    if (!waitForLateWork(kPlayerPatience))
        return false;
    // The scene's bindings would ask what goes below. Its players have stopped: the controller has
    // seen to that.
    m_view->setSource(QUrl());
    delete m_videoPlugin;
    m_videoPlugin = nullptr;
    // Before the scene graph's context: what the two share belongs to the rendering thread, and
    // the last of them deletes it there.
    delete m_shareContext;
    m_shareContext = nullptr;
    // The window next: its rendering thread uses everything below.
    delete m_view;
    m_view = nullptr;
    // Before the builder and the texture provider, whose signals it receives.
    delete m_globalObject;
    m_globalObject = nullptr;
    delete m_shaderBuilder;
    m_shaderBuilder = nullptr;
    // The last that holds textures.
    delete m_textureProvider;
    m_textureProvider = nullptr;
    delete m_saver;
    m_saver = nullptr;
    // Once more, with what the objects have left behind.
    m_settings->save();
    delete m_settings;
    m_settings = nullptr;
    return waitForLateWork(kPlayerPatience);
}
