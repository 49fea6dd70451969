// SPDX-License-Identifier: GPL-3.0-or-later
// What the controller makes of a medium's own words: input projection, stereo layout, start view.
#include "app/MediaFormats.h"
#include "app/VideoMetadata.h"
#include "app/VxContext.h"
#include "app/VxGlobalObject.h"
#include "render/VxShaderCodeBuilder.h"
#include "render/VxTextureProvider.h"
#include "settings/VxSettingsKeys.h"

#include <QHash>
#include <QSize>

namespace {

QString projectionName(const QVariantMap &metadata)
{
    if (metadata.contains(VideoMetadata::kProjection)) {
        switch (metadata.value(VideoMetadata::kProjection).toInt()) {
        case VideoMetadata::Flat:
            return QStringLiteral("Standard");
        case VideoMetadata::Equirectangular:
            return QStringLiteral("Equirectangular");
        case VideoMetadata::Cubemap:
            return QStringLiteral("Cubemap");
        default:
            break;
        }
    }
    return {};
}

QString stereoWord(const QVariantMap &metadata)
{
    if (metadata.contains(VideoMetadata::kStereoscopy)) {
        switch (metadata.value(VideoMetadata::kStereoscopy).toInt()) {
        case VideoMetadata::Mono:
            return QStringLiteral("None");
        case VideoMetadata::SideBySide:
            return QStringLiteral("SideBySide");
        case VideoMetadata::OverUnder:
            return QStringLiteral("OverUnder");
        default:
            break;
        }
    }
    return {};
}

} // namespace

QObject *VxGlobalObject::currentPlayer() const
{
    return m_mediaLoader ? m_mediaLoader->property("mediaPlayer").value<QObject *>() : nullptr;
}

QVariantMap VxGlobalObject::currentMetadata() const
{
    const QObject *player = currentPlayer();
    return player ? player->property("fileMetadata").toMap() : QVariantMap();
}

void VxGlobalObject::onTextureSizeChanged()
{
    QObject *player = currentPlayer();
    if (!player)
        return;
    QVariantMap metadata = currentMetadata();
    metadata.insert(VideoMetadata::kTextureSize, m_context->textureProvider()->textureSize());
    player->setProperty("fileMetadata", metadata);
}

QVariantMap VxGlobalObject::readMetaData(const QVariant &url)
{
    const QUrl medium = url.toUrl();
    // A still image says nothing that enters the map: its size comes from the player, and
    // automatic stereo and projection leave the modes as they are. The head of a film was read by
    // another thread.
    QVariantMap metadata;
    if (medium == m_readAhead.medium)
        metadata = m_readAhead.metadata;
    setInitialOrientation(0, 0, 0);
    applyStereoMode(metadata);
    applyProjection(metadata);
    resetYawPitchRollFov(metadata);
    return metadata;
}

void VxGlobalObject::applyStereoMode(const QVariantMap &metadata)
{
    static const QHash<QString, int> modes{
        {QStringLiteral("None"), VxShaderCodeBuilder::STEREO_2D},
        {QStringLiteral("OverUnder"), VxShaderCodeBuilder::STEREO_3D_OVERUNDER},
        {QStringLiteral("SideBySide"), VxShaderCodeBuilder::STEREO_3D_SIDEBYSIDE},
        {QStringLiteral("OverUnder_I"), VxShaderCodeBuilder::STEREO_3D_OVERUNDER_INVERTED},
        {QStringLiteral("SideBySide_I"), VxShaderCodeBuilder::STEREO_3D_SIDEBYSIDE_INVERTED},
    };
    VxShaderCodeBuilder *builder = m_context->shaderBuilder();
    const int mode = setting(VxSettingsKeys::kInputStereoscopy.instance).toInt();
    if (mode != VxShaderCodeBuilder::STEREO_AUTO) {
        builder->setStereoMode(mode);
        return;
    }
    QString word;
    if (!m_playlist.isEmpty())
        word = m_stereoMap.value(m_playlist.value(m_playListIndex));
    if (word.isEmpty())
        word = stereoWord(metadata);
    const auto known = modes.constFind(word);
    if (known != modes.constEnd())
        builder->setStereoMode(*known);
}

void VxGlobalObject::applyProjection(const QVariantMap &metadata)
{
    VxShaderCodeBuilder *builder = m_context->shaderBuilder();
    const int projection = setting(VxSettingsKeys::kInputProjection.instance).toInt();
    if (projection != VxShaderCodeBuilder::AUTO) {
        builder->setProjectionSource(projection);
        return;
    }
    const QString name = projectionName(metadata);
    if (name == QLatin1String("Equirectangular"))
        builder->setProjectionSource(VxShaderCodeBuilder::EQUIRECTANGULAR);
    else if (name == QLatin1String("Standard"))
        builder->setProjectionSource(VxShaderCodeBuilder::STANDARD);
    else if (name == QLatin1String("Cubemap"))
        builder->setProjectionSource(VxShaderCodeBuilder::CUBEMAP);
}

void VxGlobalObject::resetYawPitchRollFov(const QVariantMap &metadata)
{
    const QVariantMap map = metadata.isEmpty() ? currentMetadata() : metadata;
    const auto radians = [&map](const char *key) {
        return map.value(QLatin1String(key), 0).toFloat() * CameraMath::kRadiansPerDegree;
    };
    setYaw(radians("Initial yaw"), false);
    setPitch(radians("Initial pitch"), false);
    setRoll(radians("Initial roll"), false);
    rebuildMatrix();
    m_interactionTimer.start();
    const bool flat =
        m_context->shaderBuilder()->projectionSource() == VxShaderCodeBuilder::STANDARD;
    setFov(flat ? 180 : 90, false);
}

void VxGlobalObject::resetYawPitchRollFov()
{
    resetYawPitchRollFov(QVariantMap());
}

QString VxGlobalObject::logMetaData(const QVariant &url, const QVariantMap &metadata) const
{
    QString text = QStringLiteral("Media : %1 \n").arg(url.toString());
    const auto line = [&](const char *key, const QString &value) {
        if (metadata.contains(QLatin1String(key)))
            text += QStringLiteral("%1 : %2 \n").arg(QLatin1String(key), value);
    };
    const auto plain = [&](const char *key) {
        line(key, metadata.value(QLatin1String(key)).toString());
    };
    plain("Frame width");
    plain("Frame height");
    line("Video frame rate",
         QString::number(metadata.value(QStringLiteral("Video frame rate")).toDouble(), 'g'));

    const QString projection = projectionName(metadata);
    line("Projection", projection.isEmpty() ? QStringLiteral("Unknown") : projection);

    static const QHash<QString, QString> stereoLabels{
        {QStringLiteral("None"), QStringLiteral("None")},
        {QStringLiteral("SideBySide"), QStringLiteral("Side by side")},
        {QStringLiteral("OverUnder"), QStringLiteral("Over under")},
    };
    line("Stereoscopy", stereoLabels.value(stereoWord(metadata), QStringLiteral("Unknown")));
    plain("Writing Tool");
    return text;
}
