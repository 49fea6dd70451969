// SPDX-License-Identifier: GPL-3.0-or-later
#include "render/VxTextureProvider.h"

#include "app/VxContext.h"
#include "render/ShaderProgram.h"
#include "render/UnitQuad.h"

#include <QMatrix4x4>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QOpenGLFunctions>
#include <QOpenGLShaderProgram>
#include <QQuickItem>
#include <QQuickWindow>
#include <QSGTextureProvider>
#include <QTimer>

namespace {

constexpr int kRefreshIntervalMs = 1000;

constexpr char kCopyVertexSource[] =
    "attribute highp vec4 vertex;\n"
    "attribute highp vec4 texture;\n"
    "uniform highp mat4 matrix;\n"
    "varying highp vec4 texCoord;\n"
    "void main(void)\n"
    "{\n"
    "   gl_Position = matrix * vertex;\n"
    "   texCoord = texture;\n"
    "}\n";

// The matrix points y down and the coordinate is turned over: together they keep the orientation.
constexpr char kCopyFragmentSource[] =
    "uniform sampler2D src;\n"
    "varying highp vec4 texCoord;\n"
    "void main() {\n"
    "highp vec4 tex = texCoord;"
    "tex.y = 1.0 - tex.y;"
    "highp vec4 color = texture2D(src,tex.xy);\n"
    "gl_FragColor = vec4(color.r,color.g,color.b,color.a);\n"
    "}\n";

} // namespace

VxTextureProvider::VxTextureProvider(VxContext *context, bool copyTexture, bool sharedMemory)
    : m_context(context)
    , m_copyTexture(copyTexture)
{
    Q_UNUSED(sharedMemory)
}

VxTextureProvider::~VxTextureProvider()
{
    // The timer lives on the rendering thread, if that outlives the provider.
    if (m_refreshTimer)
        m_refreshTimer->deleteLater();
}

void VxTextureProvider::setTextureId(int id)
{
    if (m_textureId.exchange(id) == id)
        return;
    noteNewContent();
    Q_EMIT textureIdChanged();
}

void VxTextureProvider::setTextureSize(const QSize &size)
{
    if (m_textureSize.exchange(size) != size)
        Q_EMIT textureSizeChanged();
}

void VxTextureProvider::noteNewContent()
{
    Q_EMIT contentChanged();
}

void VxTextureProvider::watchFrames(QObject *player)
{
    if (player)
        connect(player, SIGNAL(frameDisplayed()), this, SLOT(noteNewContent()),
                Qt::ConnectionType(Qt::DirectConnection | Qt::UniqueConnection));
}

void VxTextureProvider::setShaderEffectSource(QQuickItem *quickItem, bool isImage)
{
    m_shaderEffectSource = quickItem;
    m_hasSource = quickItem != nullptr;
    m_isImage = isImage;
    QQuickWindow *window = m_context->window();
    if (!window)
        return;
    followNextSynchronisation();
    connect(window, &QQuickWindow::afterRendering, this, &VxTextureProvider::onAfterRendering,
            Qt::ConnectionType(Qt::DirectConnection | Qt::UniqueConnection));
    connect(window, &QQuickWindow::sceneGraphInvalidated, this, &VxTextureProvider::releaseGraphics,
            Qt::ConnectionType(Qt::DirectConnection | Qt::UniqueConnection));
    // An idle scene would not synchronise by itself.
    window->update();
}

void VxTextureProvider::followNextSynchronisation()
{
    connect(m_context->window(), &QQuickWindow::beforeSynchronizing, this,
            &VxTextureProvider::onBeforeSynchronizing,
            Qt::ConnectionType(Qt::DirectConnection | Qt::UniqueConnection));
}

// On the rendering thread, once for each call of setShaderEffectSource() and for each new scene
// graph, with the main thread held.
void VxTextureProvider::onBeforeSynchronizing()
{
    if (m_sgTextureProvider) {
        m_sgTextureProvider->disconnect(this);
        m_sgTextureProvider = nullptr;
    }
    if (m_shaderEffectSource) {
        QQuickItem *item = textureItem();
        m_drawnLater = m_isImage && item == m_shaderEffectSource;
        m_sgTextureProvider = item->textureProvider();
        if (m_sgTextureProvider) {
            connect(m_sgTextureProvider, &QSGTextureProvider::textureChanged, this,
                    &VxTextureProvider::expectRendering, Qt::DirectConnection);
            connect(m_sgTextureProvider, &QSGTextureProvider::textureChanged, this,
                    &VxTextureProvider::onQsgTextureChanged, Qt::DirectConnection);
            // A new picture may get the name of the last one's texture.
            if (m_isImage)
                connect(m_sgTextureProvider, &QSGTextureProvider::textureChanged, this,
                        &VxTextureProvider::noteNewContent, Qt::DirectConnection);
            // An item that was drawn before tells of no change.
            onQsgTextureChanged();
        }
    }
    disconnect(m_context->window(), &QQuickWindow::beforeSynchronizing, this,
               &VxTextureProvider::onBeforeSynchronizing);
}

// On the rendering thread, while the scene is synchronised. A still image's own texture holds what
// the effect source would draw of it, at once and without a second copy of the picture.
QQuickItem *VxTextureProvider::textureItem() const
{
    if (m_isImage) {
        auto *picture = m_shaderEffectSource->property("sourceItem").value<QQuickItem *>();
        if (picture && picture->isTextureProvider())
            return picture;
    }
    return m_shaderEffectSource;
}

// On the rendering thread: while the scene is synchronised, and from the timer.
void VxTextureProvider::onQsgTextureChanged()
{
    if (!m_hasSource || !m_sgTextureProvider)
        return;
    QSGTexture *texture = m_sgTextureProvider->texture();
    if (!m_refreshTimer)
        createRefreshTimer();
    // The timer may fire between frames, when another context is current or none. Without one a
    // small picture's texture, which it shares with others, cannot even be asked for its name.
    QOpenGLContext *current = QOpenGLContext::currentContext();
    if (!texture || !current)
        return;
    const bool inScene = current == m_context->window()->openglContext();
    if (m_isImage && inScene) {
        // Small pictures share a texture with others; all are uploaded when they are first bound.
        if (texture->isAtlasTexture())
            texture = texture->removedFromAtlas();
        texture->bind();
    }
    const int id = texture->textureId();
    if (!m_copyTexture || !inScene || id <= 0 || m_isImage) {
        setTextureSize(texture->textureSize());
        setTextureId(id);
        return;
    }
    copy(uint(id), texture->textureSize());
    setTextureSize(m_copyFbo->size());
    setTextureId(int(m_copyFbo->texture()));
    noteNewContent();
}

// On the rendering thread, while the scene is synchronised. An item that is no picture draws its
// texture only after the synchronisation that tells of the change, so a still image of it would
// have to wait for the next tick of the timer: it is looked at once more when the frame is drawn.
void VxTextureProvider::expectRendering()
{
    m_awaitsRendering = m_drawnLater;
    if (m_refreshTimer)
        m_refreshTimer->start();
}

// On the rendering thread, after each frame.
void VxTextureProvider::onAfterRendering()
{
    if (!m_awaitsRendering)
        return;
    m_awaitsRendering = false;
    if (!m_hasSource || !m_sgTextureProvider)
        return;
    if (QSGTexture *texture = m_sgTextureProvider->texture()) {
        setTextureSize(texture->textureSize());
        setTextureId(texture->textureId());
        noteNewContent();
    }
}

// A moving picture is taken in the synchronisation that tells of its next one, so its last one is
// left for the timer. What stands still after that costs nothing.
void VxTextureProvider::createRefreshTimer()
{
    m_refreshTimer = new QTimer;
    m_refreshTimer->setSingleShot(true);
    m_refreshTimer->setInterval(kRefreshIntervalMs);
    connect(m_refreshTimer, &QTimer::timeout, this, &VxTextureProvider::onQsgTextureChanged,
            Qt::DirectConnection);
    m_refreshTimer->start();
}

// On the rendering thread, with the scene graph's context still current.
void VxTextureProvider::stopTimer()
{
    if (!m_refreshTimer)
        return;
    m_refreshTimer->stop();
    m_refreshTimer->deleteLater();
    m_refreshTimer = nullptr;
}

// On the rendering thread, with the context that goes still current. What was made in it would be
// taken for something of the next one's.
void VxTextureProvider::releaseGraphics()
{
    stopTimer();
    m_copyProgram.reset();
    m_copyFbo.reset();
    m_awaitsRendering = false;
    if (!m_hasSource)
        return;
    setTextureId(0);
    followNextSynchronisation();
}

bool VxTextureProvider::buildCopyProgram()
{
    m_copyProgram.reset(
        ShaderProgram::build("texture copy", kCopyVertexSource, kCopyFragmentSource));
    if (!m_copyProgram)
        return false;
    m_copyProgram->bind();
    QMatrix4x4 matrix;
    matrix.ortho(QRect(0, 0, 1, 1));
    m_copyProgram->setUniformValue("matrix", matrix);
    m_copyProgram->setUniformValue("src", 0);
    m_copyProgram->release();
    m_vertexLocation = m_copyProgram->attributeLocation("vertex");
    m_textureLocation = m_copyProgram->attributeLocation("texture");
    return true;
}

void VxTextureProvider::copy(uint texture, const QSize &size)
{
    m_copyFunctions = QOpenGLContext::currentContext()->functions();
    if (!m_copyFbo || m_copyFbo->size() != size)
        m_copyFbo = std::make_unique<QOpenGLFramebufferObject>(
            size, QOpenGLFramebufferObject::NoAttachment, GL_TEXTURE_2D);
    if (!m_copyProgram && !buildCopyProgram())
        return;

    // The scene graph is in the middle of its work: it finds its framebuffer and viewport again.
    GLint framebuffer = 0;
    GLint viewport[4] = {};
    m_copyFunctions->glGetIntegerv(GL_FRAMEBUFFER_BINDING, &framebuffer);
    m_copyFunctions->glGetIntegerv(GL_VIEWPORT, viewport);

    m_copyFunctions->glActiveTexture(GL_TEXTURE0);
    m_copyFunctions->glBindTexture(GL_TEXTURE_2D, texture);
    m_copyFbo->bind();
    m_copyProgram->bind();
    m_copyFunctions->glViewport(0, 0, size.width(), size.height());
    m_copyFunctions->glClearColor(0, 0, 0, 0);
    m_copyFunctions->glClear(GL_COLOR_BUFFER_BIT);
    m_copyProgram->enableAttributeArray(m_vertexLocation);
    m_copyProgram->enableAttributeArray(m_textureLocation);
    m_copyProgram->setAttributeArray(m_vertexLocation, UnitQuad::kCorners, 2);
    m_copyProgram->setAttributeArray(m_textureLocation, UnitQuad::kCorners, 2);
    m_copyFunctions->glDrawArrays(GL_TRIANGLE_FAN, 0, 4);
    m_copyProgram->disableAttributeArray(m_vertexLocation);
    m_copyProgram->disableAttributeArray(m_textureLocation);
    m_copyProgram->release();
    m_copyFunctions->glBindFramebuffer(GL_FRAMEBUFFER, GLuint(framebuffer));
    m_copyFunctions->glViewport(viewport[0], viewport[1], viewport[2], viewport[3]);
    m_copyFunctions->glBindTexture(GL_TEXTURE_2D, 0);
}
