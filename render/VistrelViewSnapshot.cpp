// SPDX-License-Identifier: GPL-3.0-or-later
// The view's half of a snapshot: it draws the picture; writing it is a pool thread's work.
#include "app/VxContext.h"
#include "app/VxGlobalObject.h"
#include "app/VxQQuickView.h"
#include "render/Snapshot.h"
#include "render/VistrelView.h"
#include "render/VxShaderCodeBuilder.h"
#include "settings/VxSettings.h"
#include "settings/VxSettingsKeys.h"

#include <QOpenGLFramebufferObject>
#include <QOpenGLFunctions>
#include <QPointer>
#include <QtConcurrent>

namespace {

constexpr int kSourceResolution = 2;

} // namespace

// On the rendering thread, with the main thread held.
QSize VistrelView::snapshotSize() const
{
    const VxGlobalObject *controller = m_context->globalObject();
    const VxShaderCodeBuilder *builder = m_context->shaderBuilder();
    Snapshot::Request request;
    request.view = QSize(m_viewportWidth, m_viewportHeight);
    request.texture = controller->mediaLoader()
                          ->property("fileMetadata")
                          .toMap()
                          .value(QStringLiteral("Texture size"), QSize())
                          .toSize();
    if (const auto *view = qobject_cast<VxQQuickView *>(m_context->window()))
        request.limit = view->maxTextureSize();
    request.eyes = m_state.splitView ? 2 : 1;
    request.fov = controller->fov();
    request.projectionSource = builder->projectionSource();
    request.projection = builder->projection();
    return Snapshot::renderSize(request);
}

// On the rendering thread, with the main thread held.
void VistrelView::takeSnapshot(QOpenGLFunctions *gl, int mode)
{
    const QObject *loader = m_context->globalObject()->mediaLoader();
    if (!loader || loader->property("mediaSource").toString().isEmpty())
        return;
    const bool render = mode == kSourceResolution;
    const QSize eye = render ? snapshotSize() : QSize(m_viewportWidth, m_viewportHeight);
    const QSize whole(m_state.splitView ? 2 * eye.width() : eye.width(), eye.height());
    QImage image;
    if (!whole.isEmpty()) {
        // Releasing the framebuffer would bind the window's, not the item's.
        GLint target = 0;
        gl->glGetIntegerv(GL_FRAMEBUFFER_BINDING, &target);
        QOpenGLFramebufferObject framebuffer(whole, QOpenGLFramebufferObject::NoAttachment,
                                             GL_TEXTURE_2D);
        if (framebuffer.bind()) {
            gl->glClear(GL_COLOR_BUFFER_BIT);
            drawEye(gl, 0, eye);
            if (m_state.splitView)
                drawEye(gl, 1, eye);
            image = framebuffer.toImage();
        }
        gl->glBindFramebuffer(GL_FRAMEBUFFER, GLuint(target));
    }

    const QString folder =
        Snapshot::folder(m_context->settings()->get(VxSettingsKeys::kPrintSavePath.application));
    QtConcurrent::run([self = QPointer<VistrelView>(this), image, render, folder] {
        const Snapshot::Saved saved = Snapshot::save(image, render, folder);
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, saved, folder] {
                if (!self)
                    return;
                if (saved.path.isEmpty())
                    Q_EMIT self->snapshotFailed(folder, saved.error);
                else
                    Q_EMIT self->snapshotSaved(saved.path);
            },
            Qt::QueuedConnection);
    });
}
