// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The look of the panorama: the modes that all renderers share, and the GLSL made from them. Each
// picture is one quad whose fragment shader casts a ray, maps it into the source and grades the
// colour; a mode is a choice of shader text, so it costs nothing per fragment.

#include <QByteArray>
#include <QObject>
#include <QString>

class VxContext;

/// The lens of the adaptive projection for one field of view: uniforms of the panorama shader.
struct ProjectionParameters
{
    float scale = 0.0F; ///< uProjScale: size of the image plane's shorter half side
    float distance = 0.0F; ///< uProjectionDistance: eye point behind the sphere's centre, 0 to 1
};

/// Holds the shared modes and composes the shader texts for them.
///
/// The owner connects projectionChanged() and projectionSourceChanged() to the controller's
/// onProjectionChanged() and every signal to the renderers, which compile anew on their own thread.
/// Properties are written on the main thread; the texts are made on the thread that renders, which
/// reads the plain fields while the main thread waits for it. Compile failures are met by the
/// caller.
class VxShaderCodeBuilder : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool hmdMode READ hmdMode WRITE setHmdMode NOTIFY hmdModeChanged)
    Q_PROPERTY(int effect READ effect WRITE setEffect NOTIFY effectChanged)
    Q_PROPERTY(int projection READ projection WRITE setProjection NOTIFY projectionChanged)
    Q_PROPERTY(int stereoMode READ stereoMode WRITE setStereoMode NOTIFY stereoModeChanged)
    Q_PROPERTY(int projectionSource READ projectionSource WRITE setProjectionSource NOTIFY
                   projectionSourceChanged)
    Q_PROPERTY(
        int rotationSource READ rotationSource WRITE setRotationSource NOTIFY rotationSourceChanged)
    Q_PROPERTY(bool invertedColors READ invertedColors WRITE setInvertedColors NOTIFY
                   invertedColorsChanged)
    Q_PROPERTY(QString texturePixelFormat READ texturePixelFormat WRITE setTexturePixelFormat NOTIFY
                   texturePixelFormatChanged)

public:
    /// Layout of the source picture.
    enum InputProjection {
        EQUIRECTANGULAR, ///< full sphere, longitude on x, latitude on y
        STANDARD, ///< ordinary flat picture, panned rather than projected
        CUBEMAP, ///< six faces in a grid of three columns and two rows
        FISHEYE_CIRCLE, ///< one circular fisheye image
        AUTO, ///< a setting only; drawn as EQUIRECTANGULAR
        LAST_VALUE_INPUTPROJECTION ///< end marker
    };
    Q_ENUM(InputProjection)

    /// Output projection of the view.
    enum ShaderProjection {
        TAVRO, ///< from rectilinear to stereographic as the field of view grows
        RECTILINEAR, ///< gnomonic
        LITTLE_PLANET, ///< stereographic from a fixed point
        FISHEYE, ///< equidistant fisheye
        LAST_VALUE_PROJECTION ///< end marker
    };
    Q_ENUM(ShaderProjection)

    /// Colour effect after the grading.
    enum ShaderEffect {
        NO_EFFECT,
        SEPIA,
        BLACK_AND_WHITE,
        TV,
        INVERT,
        RED_ONLY,
        YELLOW_ONLY,
        BLUE_ONLY,
        LAST_VALUE_EFFECT ///< end marker
    };
    Q_ENUM(ShaderEffect)

    /// Layout of two eyes in one frame; the first eye's half is named.
    enum StereoMode {
        STEREO_2D, ///< one picture
        STEREO_3D_OVERUNDER, ///< top
        STEREO_3D_SIDEBYSIDE, ///< left
        STEREO_3D_OVERUNDER_INVERTED, ///< bottom
        STEREO_3D_SIDEBYSIDE_INVERTED, ///< right
        STEREO_AUTO ///< a setting only; drawn as STEREO_2D
    };
    Q_ENUM(StereoMode)

    /// Takes projection, stereo layout and input projection from this run's settings. `context` is
    /// not owned and outlives the builder.
    explicit VxShaderCodeBuilder(VxContext *context);

    bool hmdMode() const { return m_hmdMode; }

    int effect() const { return m_effect; }

    int projection() const { return m_projection; }

    int stereoMode() const { return m_stereoMode; }

    int projectionSource() const { return m_projectionSource; }

    int rotationSource() const { return m_rotationSource; }

    bool invertedColors() const { return m_invertedColors; }

    QString texturePixelFormat() const { return m_texturePixelFormat; }

    // The setters store any value: what is out of range adds no text, or that of the first mode.
    void setHmdMode(bool hmdMode);
    void setEffect(int effect);
    void setProjection(int projection);
    void setStereoMode(int stereoMode);
    void setProjectionSource(int projectionSource);
    void setRotationSource(int rotationSource);
    void setInvertedColors(bool invertedColors);
    void setTexturePixelFormat(const QString &texturePixelFormat);

    /// The next effect, from the last back to none.
    Q_INVOKABLE void setNextEffect();
    /// Writes the next output projection to this run's settings. The property follows when the
    /// controller handles that change, so that setting and picture cannot part.
    Q_INVOKABLE void setNextProjection();
    /// Exchanges the eyes' halves; does nothing for a single picture.
    Q_INVOKABLE void switchEyeStereoscopy();

    /// The one vertex shader: attributes `vertex` and `texture`, uniform `matrix`.
    static QByteArray vertexShaderSource();
    /// The fragment shader for the current modes. `hmd` is for a headset's eye: always rectilinear.
    /// `overlay` places the transparent picture of the interface as a plane before the viewer.
    /// `flipY` reads the source from bottom to top. Driven by a host plug-in, it also sets
    /// invertedColors for good, without a signal.
    QByteArray fragmentShaderSource(bool hmd, bool overlay, bool flipY);
    /// A plain copy of the texture `src`, with red and blue exchanged for inverted colours.
    QByteArray copyFragmentSource() const;

    /// The adaptive projection's lens for a field of view in degrees.
    static ProjectionParameters projectionParameters(float fov);

Q_SIGNALS:
    void hmdModeChanged();
    void effectChanged();
    void projectionChanged();
    void stereoModeChanged();
    void projectionSourceChanged();
    void rotationSourceChanged();
    void invertedColorsChanged();
    void texturePixelFormatChanged();

private:
    VxContext *m_context; // not owned
    bool m_hmdMode = false;
    int m_effect = NO_EFFECT;
    int m_projection = TAVRO;
    int m_stereoMode = STEREO_2D;
    int m_projectionSource = EQUIRECTANGULAR;
    int m_rotationSource = 0;
    bool m_invertedColors = false; // the texture holds blue in its red channel
    QString m_texturePixelFormat;
    // Partial spheres are stretched over their own angles. Always on.
    const bool m_useAngularLimits = true;
};
