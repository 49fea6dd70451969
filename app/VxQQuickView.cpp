// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/VxQQuickView.h"

#include "app/Identity.h"
#include "app/VxContext.h"
#include "app/VxGlobalObject.h"
#include "settings/VxSettings.h"
#include "settings/VxSettingsKeys.h"

#include <QDateTime>
#include <QMouseEvent>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QResizeEvent>
#include <QScreen>

#include <cmath>

namespace {

// A window manager may tell of the size of a full screen before it tells of the full screen.
constexpr int kSettleMs = 200;

} // namespace

constexpr QSize VxQQuickView::kMinimumSize;

VxQQuickView::VxQQuickView(VxContext *context)
    : m_context(context)
    , m_gpuInfo(tr("Cannot get GPU version"))
{
    // The window is cleared here to the panorama's own background, so that no item has to be drawn
    // for it: on software OpenGL the first frame would wait for that item's shader.
    setClearBeforeRendering(false);
    connect(this, &QQuickWindow::beforeRendering, this, &VxQQuickView::clearWindow,
            Qt::DirectConnection);
    connect(this, &QWindow::windowStateChanged, this, &VxQQuickView::onWindowStateChanged);
    m_sizeSettling.setSingleShot(true);
    m_sizeSettling.setInterval(kSettleMs);
    connect(&m_sizeSettling, &QTimer::timeout, this, &VxQQuickView::keepSize);
    connect(this, &QWindow::visibilityChanged, this, [this] { m_newSize = QSize(); });
    // Early enough for the first file, which is opened as soon as the scene graph is there and asks
    // for the largest texture; the main thread is held meanwhile.
    connect(this, &QQuickWindow::sceneGraphInitialized, this, &VxQQuickView::computeGpuInfo,
            Qt::DirectConnection);
    connect(this, &QQuickWindow::beforeRendering, this, &VxQQuickView::computeGpuInfo,
            Qt::DirectConnection);
    connect(this, &QQuickWindow::afterRendering, this, &VxQQuickView::computeFps,
            Qt::DirectConnection);
}

VxQQuickView::~VxQQuickView()
{
    // The rendering thread would go on drawing, and its signals come to what is no longer of this
    // class. Hiding waits for its last frame.
    hide();
}

QSize VxQQuickView::startSize() const
{
    const VxSettings *settings = m_context->settings();
    const QSize wanted(settings->get(VxSettingsKeys::kWindowWidth.application).toInt(),
                       settings->get(VxSettingsKeys::kWindowHeight.application).toInt());
    // A window may stand on several screens.
    const QSize room = screen() ? screen()->availableVirtualSize() : kMinimumSize;
    return wanted.boundedTo(room).expandedTo(kMinimumSize);
}

void VxQQuickView::keepSize()
{
    m_sizeSettling.stop();
    if (m_newSize.isEmpty())
        return;
    VxSettings *settings = m_context->settings();
    const auto keep = [settings](const QString &key, int length) {
        if (settings->get(key) != length)
            settings->set(key, length);
    };
    keep(VxSettingsKeys::kWindowWidth.application, m_newSize.width());
    keep(VxSettingsKeys::kWindowHeight.application, m_newSize.height());
    m_newSize = QSize();
}

void VxQQuickView::fullScreenMode(bool enabled)
{
    // What has just been resized is not given the time to settle.
    keepSize();
    if (enabled)
        showFullScreen();
    else
        showNormal();
}

QString VxQQuickView::colorTeam() const
{
    return QStringList{tr("Rendering"), tr("Video"), tr("Interface"), tr("Devices")}.join(
        QStringLiteral(", "));
}

QString VxQQuickView::copyright() const
{
    return tr("Copyright %1 the Tavro VR Player authors").arg(copyrightDates());
}

QString VxQQuickView::copyrightDates() const
{
    return QStringLiteral("2026");
}

QString VxQQuickView::version() const
{
    return Identity::displayVersion(Identity::version());
}

QString VxQQuickView::title() const
{
    return QStringLiteral("%1 %2").arg(Identity::displayName() + QLatin1String(" 64bits"),
                                       version());
}

void VxQQuickView::updateTitle(const QString &newSource)
{
    const QString source = newSource.isEmpty() ? QString() : QStringLiteral(" - %1").arg(newSource);
    setTitle(Identity::displayName() + source);
}

void VxQQuickView::OnAlreadyLatestVersion()
{
    Q_EMIT displayMessage(
        tr("There is no update for this product.\n"
           "Your are already running the most up to date version."));
}

void VxQQuickView::OnNewVersionAvailable()
{
    Q_EMIT displayPopup(QStringLiteral("qrc:/qml/popup/PopupUpdateAvailable.qml"));
}

void VxQQuickView::onWindowStateChanged(Qt::WindowState state)
{
    const bool fullScreen = state == Qt::WindowFullScreen;
    if (fullScreen == m_fullScreen)
        return;
    m_fullScreen = fullScreen;
    Q_EMIT fullScreenChanged();
}

void VxQQuickView::computeGpuInfo()
{
    disconnect(this, &QQuickWindow::sceneGraphInitialized, this, &VxQQuickView::computeGpuInfo);
    disconnect(this, &QQuickWindow::beforeRendering, this, &VxQQuickView::computeGpuInfo);
    QOpenGLContext *context = QOpenGLContext::currentContext();
    if (!context)
        return;
    QOpenGLFunctions *gl = context->functions();
    const auto text = [gl](GLenum name) {
        return QString::fromLatin1(reinterpret_cast<const char *>(gl->glGetString(name)));
    };
    GLint maxSize = 0;
    gl->glGetIntegerv(GL_MAX_TEXTURE_SIZE, &maxSize);
    m_gpuInfo = QStringLiteral("Renderer : %1 \nOpenGL Version : %2 \nMaximum texture size : %3\n")
                    .arg(text(GL_RENDERER), text(GL_VERSION))
                    .arg(maxSize);
    m_maxTextureSize = QSize(maxSize, maxSize);
    Q_EMIT maxTextureSizeChanged();
    Q_EMIT gpuInfoChanged();
}

void VxQQuickView::clearWindow()
{
    constexpr float kBackground = 0.1333333F;
    QOpenGLContext *context = QOpenGLContext::currentContext();
    if (!context)
        return;
    QOpenGLFunctions *gl = context->functions();
    gl->glBindFramebuffer(GL_FRAMEBUFFER, context->defaultFramebufferObject());
    gl->glClearColor(kBackground, kBackground, kBackground, 1);
    gl->glClear(GL_COLOR_BUFFER_BIT);
}

void VxQQuickView::computeFps()
{
    const qint64 second = QDateTime::currentMSecsSinceEpoch() / 1000;
    if (second > m_lastSecond) {
        m_fps = m_frameCount + 1;
        m_lastSecond = second;
        m_frameCount = 0;
        Q_EMIT fpsChanged();
    } else {
        ++m_frameCount;
    }
}

bool VxQQuickView::event(QEvent *event)
{
    // The window stays until teardown: the players have to stop before it goes.
    if (event->type() == QEvent::Close && m_context->globalObject()) {
        m_context->globalObject()->quit();
        return true;
    }
    return QQuickView::event(event);
}

void VxQQuickView::resizeEvent(QResizeEvent *event)
{
    QQuickView::resizeEvent(event);
    // The next window is neither maximised nor full screen, and is not to fill the screen.
    // Nor is a smaller screen to change what the user has set.
    if (visibility() != QWindow::Windowed || size() == startSize())
        return;
    m_newSize = event->size();
    m_sizeSettling.start();
}

void VxQQuickView::mouseMoveEvent(QMouseEvent *event)
{
    QQuickView::mouseMoveEvent(event);
    // A touch would open the bottom bar under the finger.
    if (event->source() != Qt::MouseEventSynthesizedBySystem)
        Q_EMIT mouseMoved(int(std::lround(event->localPos().x())),
                          int(std::lround(event->localPos().y())));
}

bool VxQQuickView::nativeEvent(const QByteArray &eventType, void *message, long *result)
{
    Q_EMIT signalNativeEvent(eventType, message, result);
    return QQuickView::nativeEvent(eventType, message, result);
}
