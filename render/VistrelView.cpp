// SPDX-License-Identifier: GPL-3.0-or-later
#include "render/VistrelView.h"

#include "app/VxContext.h"
#include "app/VxGlobalObject.h"
#include "devices/VxHmdUIManager.h"
#include "gl/SoftwareOpenGl.h"
#include "render/FastBlur.h"
#include "render/FramebufferNode.h"
#include "render/SceneStirrer.h"
#include "render/VxShaderCodeBuilder.h"
#include "render/VxTextureProvider.h"

#include <QDateTime>
#include <QLoggingCategory>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QOpenGLFunctions>
#include <QQuickWindow>
#include <QSGNode>
#include <QScreen>

#include <algorithm>
#include <cmath>

namespace {

Q_LOGGING_CATEGORY(lcTiming, "tavro.timing", QtWarningMsg)

// What shows wherever no source is.
constexpr float kBackground = 0.1333333F;

// Each second in which there are frames is told of: after more than one without, there are none.
constexpr int kRestMs = 1500;

const QByteArray kDimFragment =
    "#ifdef GL_ES \nprecision highp float; \n#endif \n"
    "void main() {\n   gl_FragColor = vec4(0.0, 0.0, 0.0, 0.5);\n}\n";

/// Holds an OpenMP lock for a scope.
class LockGuard
{
public:
    explicit LockGuard(omp_lock_t &lock)
        : m_lock(lock)
    {
        omp_set_lock(&m_lock);
    }

    ~LockGuard() { omp_unset_lock(&m_lock); }
    Q_DISABLE_COPY(LockGuard)

private:
    omp_lock_t &m_lock;
};

} // namespace

VistrelView::VistrelView(QQuickItem *parent)
    : QQuickPaintedItem(parent)
    , m_fastBlur(std::make_unique<FastBlur>())
{
    omp_init_lock(&m_printLock);
    setMipmap(false);
    setRenderTarget(InvertedYFramebufferObject);
    m_restTimer.setSingleShot(true);
    m_restTimer.setInterval(kRestMs);
    connect(&m_restTimer, &QTimer::timeout, this, &VistrelView::rest);
    connect(this, &VistrelView::fpsChanged, this, [this] {
        if (m_fps > 0)
            m_restTimer.start();
    });
}

VistrelView::~VistrelView()
{
    omp_destroy_lock(&m_printLock);
}

void VistrelView::init(QObject *application)
{
    m_context = qobject_cast<VxContext *>(application);
    if (!m_context)
        return;
    QQuickWindow *window = m_context->window();
    VxGlobalObject *controller = m_context->globalObject();
    VxShaderCodeBuilder *builder = m_context->shaderBuilder();

    const auto compute = &VistrelView::computeViewportParameters;
    connect(this, &QQuickItem::widthChanged, this, compute);
    connect(this, &QQuickItem::heightChanged, this, compute);
    connect(window, &QWindow::screenChanged, this, compute);
    connect(controller, &VxGlobalObject::splitViewChanged, this, compute);
    connect(controller, &VxGlobalObject::tv3dViewChanged, this, compute);
    connect(builder, &VxShaderCodeBuilder::stereoModeChanged, this, compute);

    new SceneStirrer(window);
    const auto request = &VistrelView::requestFrame;
    connect(controller, &VxGlobalObject::rotationMatrixChanged, this, request);
    connect(controller, &VxGlobalObject::yawChanged, this, request);
    connect(controller, &VxGlobalObject::pitchChanged, this, request);
    connect(controller, &VxGlobalObject::fovChanged, this, request);
    connect(controller, &VxGlobalObject::yawMinChanged, this, request);
    connect(controller, &VxGlobalObject::yawMaxChanged, this, request);
    connect(controller, &VxGlobalObject::pitchMinChanged, this, request);
    connect(controller, &VxGlobalObject::pitchMaxChanged, this, request);
    // A texture may come while the scene is synchronised: it shows in that frame and asks for none.
    VxTextureProvider *provider = m_context->textureProvider();
    connect(
        provider, &VxTextureProvider::contentChanged, this, [this] { m_changed = true; },
        Qt::DirectConnection);
    connect(
        provider, &VxTextureProvider::contentChanged, this,
        [this] {
            if (m_changed)
                requestFrame();
        },
        Qt::QueuedConnection);
    connect(this, &QQuickItem::visibleChanged, this, request);

    const auto dirty = &VistrelView::dirtyShader;
    connect(builder, &VxShaderCodeBuilder::hmdModeChanged, this, dirty);
    connect(builder, &VxShaderCodeBuilder::effectChanged, this, dirty);
    connect(builder, &VxShaderCodeBuilder::projectionChanged, this, dirty);
    connect(builder, &VxShaderCodeBuilder::projectionSourceChanged, this, dirty);
    connect(builder, &VxShaderCodeBuilder::stereoModeChanged, this, dirty);
    connect(builder, &VxShaderCodeBuilder::rotationSourceChanged, this, dirty);
    connect(builder, &VxShaderCodeBuilder::invertedColorsChanged, this, dirty);
    connect(builder, &VxShaderCodeBuilder::texturePixelFormatChanged, this, dirty);

    // The layers of an interface in the view change without a word; once more when it has closed.
    connect(window, &QQuickWindow::frameSwapped, this, [this] {
        if (m_state.overlay || isOverlayActive())
            requestFrame();
    });
    connect(window, &QQuickWindow::afterSynchronizing, this, &VistrelView::paintChange,
            Qt::DirectConnection);
    connect(window, &QQuickWindow::sceneGraphInvalidated, this, &VistrelView::releaseGraphics,
            Qt::DirectConnection);

    computeViewportParameters();
}

int VistrelView::printScreenRequested() const
{
    const LockGuard guard(m_printLock);
    return m_printScreenRequested;
}

void VistrelView::setPrintScreenRequested(int mode)
{
    {
        const LockGuard guard(m_printLock);
        if (mode == m_printScreenRequested)
            return;
        m_printScreenRequested = mode;
    }
    Q_EMIT printScreenRequestedChanged();
    if (mode != 0)
        requestFrame();
}

void VistrelView::requestFrame()
{
    m_changed = true;
    // A frame in which nothing of it is seen would still compose the window. It asks again when it
    // is shown.
    if (isVisible())
        update();
}

void VistrelView::rest()
{
    m_fps = 0;
    m_frameCount = 0;
    Q_EMIT fpsChanged();
}

void VistrelView::setKeepsPicture(bool keeps)
{
    if (keeps == m_keepsPicture)
        return;
    m_keepsPicture = keeps;
    requestFrame();
    Q_EMIT keepsPictureChanged();
}

void VistrelView::dirtyShader()
{
    m_shaderDirty = true;
    requestFrame();
}

void VistrelView::computeViewportParameters()
{
    if (!m_context || !m_context->shaderBuilder())
        return;
    const VxGlobalObject *controller = m_context->globalObject();
    const bool split = controller->splitView();
    // On a 3D television each eye's picture is squeezed into half the width and keeps its shape.
    const bool halvesPicture = split && !controller->tv3dView();
    const int pictureWidth = int(halvesPicture ? width() / 2 : width());
    const int pictureHeight = int(height());
    if (pictureWidth > 0 && pictureHeight > 0) {
        const auto w = float(pictureWidth);
        const auto h = float(pictureHeight);
        const float smaller = std::min(w, h);
        const float larger = std::max(w, h);
        m_viewportSize = {w, h};
        m_viewportSizeMin = {smaller, smaller};
        m_viewportSizeRatio = {larger / h, h / smaller};
    }

    m_viewportWidth = int(split ? width() / 2 : width());
    m_viewportHeight = int(height());
    if (const QScreen *screen = m_context->window()->screen()) {
        m_viewportWidth = int(m_viewportWidth * screen->devicePixelRatio());
        m_viewportHeight = int(m_viewportHeight * screen->devicePixelRatio());
    }
    requestFrame();
}

// On the rendering thread, with the main thread held. The base class would open a painter on its
// framebuffer, which nothing here uses.
QSGNode *VistrelView::updatePaintNode(QSGNode *node, UpdatePaintNodeData *)
{
    m_node = static_cast<FramebufferNode *>(node);
    if (!m_context || !QOpenGLContext::currentContext())
        return node;
    if (size().isEmpty()) {
        delete m_node;
        m_node = nullptr;
    } else if (!m_node) {
        m_node = new FramebufferNode(m_context->window());
        m_holdsPicture = false;
        m_changed = true;
    }
    return m_node;
}

// On the rendering thread, with the main thread held, when all items have had their turn in the
// synchronisation: a still image's texture may come after this item.
void VistrelView::paintChange()
{
    // Outside of the window an item has no node any more.
    if (!m_context || window() != m_context->window())
        return;
    if (!isVisible()) {
        m_holdsPicture = false;
        return;
    }
    if (!m_changed.exchange(false) && !isOverlayActive())
        return;
    m_state = currentState();
    if (m_keepsPicture && m_holdsPicture && m_node && m_state.textureId <= 0) {
        m_node->stretch(m_state.itemSize);
        return;
    }
    QOpenGLContext *context = QOpenGLContext::currentContext();
    if (m_node && context) {
        m_node->resize(m_state.itemSize, m_state.pixelRatio);
        m_node->bind(context->functions());
        paint(nullptr);
        m_node->release(context->functions());
    } else if (!context) {
        paint(nullptr); // nothing can be drawn, but the frame counts
    }
}

// On the rendering thread, with the main thread held.
void VistrelView::paint(QPainter *)
{
    if (!m_context)
        return;
    if (QOpenGLContext *context = QOpenGLContext::currentContext())
        paintFrame(context->functions());
    computeFps();
}

void VistrelView::paintFrame(QOpenGLFunctions *gl)
{
    const bool hasTexture = m_state.textureId > 0;
    m_holdsPicture = hasTexture;
    if (hasTexture && (m_shaderDirty || m_assumptions != m_state.uniforms.assumptions()))
        createShaders();

    gl->glClearColor(kBackground, kBackground, kBackground, 1);
    if (!hasTexture || !m_panoramaProgram || !needsNoClearing())
        gl->glClear(GL_COLOR_BUFFER_BIT);
    if (!hasTexture || !m_panoramaProgram)
        return;

    drawEye(gl, 0);
    if (m_state.splitView)
        drawEye(gl, 1);
    announceFirstFrame();
    if (const int mode = printScreenRequested()) {
        setPrintScreenRequested(0);
        takeSnapshot(gl, mode);
    }
    gl->glBindTexture(GL_TEXTURE_2D, 0);
}

// True if the panorama leaves nothing of what the framebuffer held. Where the processor draws,
// clearing it costs a tenth of the panorama itself; a graphics card may have to fetch what is not
// cleared.
bool VistrelView::needsNoClearing() const
{
    const int eyes = m_state.splitView ? 2 : 1;
    return SoftwareOpenGl::isInUse() && m_panoramaProgram->fillsViewport() && !m_state.overlay
        && eyes * m_state.viewport[0] >= std::ceil(m_state.itemSize.width() * m_state.pixelRatio)
        && m_state.viewport[1] >= std::ceil(m_state.itemSize.height() * m_state.pixelRatio);
}

VistrelView::FrameState VistrelView::currentState() const
{
    const VxGlobalObject *controller = m_context->globalObject();
    const VxTextureProvider *provider = m_context->textureProvider();
    FrameState state;
    state.uniforms.matViewInverse = controller->rotationMatrix();
    state.uniforms.viewportSize = m_viewportSize;
    state.uniforms.viewportSizeMin = m_viewportSizeMin;
    state.uniforms.viewportSizeRatio = m_viewportSizeRatio;
    state.uniforms.fov = controller->fov();
    state.uniforms.yaw = controller->yaw();
    state.uniforms.pitch = controller->adjustedPitch();
    state.uniforms.yawMin = controller->yawMin();
    state.uniforms.yawMax = controller->yawMax();
    state.uniforms.pitchMin = controller->pitchMin();
    state.uniforms.pitchMax = controller->pitchMax();
    state.viewport = {m_viewportWidth, m_viewportHeight};
    state.itemSize = size();
    state.pixelRatio = m_context->window()->effectiveDevicePixelRatio();
    state.splitView = controller->splitView();
    state.overlay = isOverlayActive();
    state.textureId = provider->textureId();
    return state;
}

bool VistrelView::isOverlayActive() const
{
    const VxHmdUIManager *manager = m_context->hmdUIManager();
    return manager && manager->isActivated();
}

void VistrelView::createShaders()
{
    VxShaderCodeBuilder *builder = m_context->shaderBuilder();
    m_assumptions = m_state.uniforms.assumptions();
    m_panoramaProgram = PanoramaProgram::build(
        "panorama", builder->fragmentShaderSource(false, false, false), m_assumptions);
    m_layersBuilt = false;
    m_shaderDirty = false;
}

// The first frame does without the layers above the panorama, so their shaders wait until one of
// them is drawn.
void VistrelView::createLayerShaders()
{
    if (m_layersBuilt)
        return;
    m_layersBuilt = true;
    m_dimProgram = PanoramaProgram::build("dim", kDimFragment, {});
    m_overlayProgram = PanoramaProgram::build(
        "overlay", m_context->shaderBuilder()->fragmentShaderSource(false, true, true), {});
}

void VistrelView::drawEye(QOpenGLFunctions *gl, int eye, QSize size)
{
    const int width = size.isValid() ? size.width() : m_viewportWidth;
    const int height = size.isValid() ? size.height() : m_viewportHeight;
    const int left = eye == 1 ? width : 0;
    if (!m_state.overlay) {
        gl->glViewport(left, 0, width, height);
        drawPanorama(gl, eye);
        return;
    }

    // First: a new framebuffer object binds itself.
    GLint target = 0;
    gl->glGetIntegerv(GL_FRAMEBUFFER_BINDING, &target);
    if (!m_overlayScene || m_overlayScene->size() != QSize(width, height))
        m_overlayScene = std::make_unique<QOpenGLFramebufferObject>(
            width, height, QOpenGLFramebufferObject::NoAttachment, GL_TEXTURE_2D);
    gl->glBindFramebuffer(GL_FRAMEBUFFER, m_overlayScene->handle());
    gl->glViewport(0, 0, width, height);
    // Flat sources leave pixels as they are.
    gl->glClear(GL_COLOR_BUFFER_BIT);
    drawPanorama(gl, eye);
    gl->glBindFramebuffer(GL_FRAMEBUFFER, GLuint(target));
    gl->glViewport(left, 0, width, height);
    m_fastBlur->blur(gl, int(m_overlayScene->texture()), target, QSize(width, height));

    gl->glEnable(GL_BLEND);
    gl->glBlendFunc(GL_DST_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    drawOverlay(gl, 0);
    drawOverlay(gl, 1);
    gl->glDisable(GL_BLEND);
    gl->glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_TRUE);
    gl->glClear(GL_COLOR_BUFFER_BIT);
    gl->glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
}

void VistrelView::drawPanorama(QOpenGLFunctions *gl, int eye)
{
    m_panoramaProgram->draw(gl, m_state.uniforms, eye, unsigned(m_state.textureId));
}

void VistrelView::drawDim(QOpenGLFunctions *gl)
{
    createLayerShaders();
    if (!m_dimProgram)
        return;
    gl->glEnable(GL_BLEND);
    gl->glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ZERO, GL_ONE);
    m_dimProgram->draw(gl, m_state.uniforms, 0, 0);
    gl->glDisable(GL_BLEND);
}

void VistrelView::drawOverlay(QOpenGLFunctions *gl, int layer)
{
    createLayerShaders();
    if (!m_overlayProgram)
        return;
    const VxHmdUIManager *manager = m_context->hmdUIManager();
    PanoramaUniforms uniforms = m_state.uniforms;
    // The wall stays in the world while the camera turns; the foreground turns with it.
    uniforms.matViewInverse =
        layer == 0 ? manager->uiMatrixCopy() * m_state.uniforms.matViewInverse : QMatrix4x4();
    m_overlayProgram->draw(gl, uniforms, 0, unsigned(manager->textureId(layer)));
}

void VistrelView::releaseGraphics()
{
    m_panoramaProgram.reset();
    m_dimProgram.reset();
    m_overlayProgram.reset();
    m_overlayScene.reset();
    m_fastBlur = std::make_unique<FastBlur>();
    m_shaderDirty = true;
    m_node = nullptr;
}

void VistrelView::announceFirstFrame()
{
    if (m_firstFrameAnnounced)
        return;
    m_firstFrameAnnounced = true;
    // The frame is seen when it has been swapped, not when it has been drawn.
    auto connection = std::make_shared<QMetaObject::Connection>();
    *connection = connect(window(), &QQuickWindow::frameSwapped, [connection] {
        qCDebug(lcTiming) << "first panorama frame";
        disconnect(*connection);
    });
}

void VistrelView::computeFps()
{
    const qint64 second = QDateTime::currentMSecsSinceEpoch() / 1000;
    if (second > m_lastSecond) {
        m_fps = m_frameCount + 1;
        qCDebug(lcTiming) << "frames a second:" << m_fps;
        m_lastSecond = second;
        m_frameCount = 0;
        Q_EMIT fpsChanged();
    } else {
        ++m_frameCount;
    }
}
