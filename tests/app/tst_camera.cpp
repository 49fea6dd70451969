// SPDX-License-Identifier: GPL-3.0-or-later
// The camera of the controller: angles, matrices, limits, moves.
#include "app/CameraMath.h"
#include "tests/common/FakeApplication.h"

#include <QPropertyAnimation>
#include <QSignalSpy>
#include <QTest>
#include <QVector3D>
#include <QtMath>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

using CameraMath::EulerAngles;
using Builder = VxShaderCodeBuilder;

namespace {

constexpr float kPi = 3.14159265F;

/// The camera's rotation, put together from turns about the axes.
QMatrix4x4 turned(const EulerAngles &angles)
{
    QMatrix4x4 matrix;
    matrix.rotate(qRadiansToDegrees(-angles.yaw), 0, 1, 0);
    matrix.rotate(qRadiansToDegrees(-angles.pitch), 1, 0, 0);
    matrix.rotate(qRadiansToDegrees(angles.roll), 0, 0, 1);
    return matrix;
}

bool isNear(const QMatrix4x4 &a, const QMatrix4x4 &b)
{
    for (int i = 0; i < 16; ++i) {
        if (std::abs(a.constData()[i] - b.constData()[i]) > 1e-5F)
            return false;
    }
    return true;
}

bool isNear(float a, float b)
{
    return std::abs(a - b) < 1e-5F;
}

} // namespace

class TestCamera : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        m_app = std::make_unique<FakeApplication>();
        m_app->makeObjects();
        m_camera = m_app->controller;
    }

    void startsAs_data();
    void startsAs();
    void wraps_data();
    void wraps();
    void setsAngle_data();
    void setsAngle();
    void matrixAndBack_data();
    void matrixAndBack();
    void straightUpAndDown_data();
    void straightUpAndDown();
    void matrixGivesAngles();
    void correctionStandsBeforeTheCamera();
    void offsetTurnsTheMatrixOnly();
    void guardAfterMoves();
    void fovLimits_data();
    void fovLimits();
    void setsFov_data();
    void setsFov();
    void fovFollowsTheProjection();
    void keepsFlatPictureInView_data();
    void keepsFlatPictureInView();
    void animates();
    void animatesFromWhereItIs_data();
    void animatesFromWhereItIs();
    void twinFollowsInSilence();
    void twinWraps();
    void twinReachesCameraAgain();
    void inertiaCrossesTheBack();
    void pressStopsTheCamera_data();
    void pressStopsTheCamera();
    void settingsReachTheCamera_data();
    void settingsReachTheCamera();
    void outputDisplay_data();
    void outputDisplay();

private:
    QPropertyAnimation *animationOf(const QByteArray &property) const
    {
        const auto animations = m_camera->findChildren<QPropertyAnimation *>();
        for (QPropertyAnimation *animation : animations) {
            if (animation->propertyName() == property)
                return animation;
        }
        return nullptr;
    }

    std::unique_ptr<FakeApplication> m_app;
    VxGlobalObject *m_camera = nullptr;
};

void TestCamera::startsAs_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::newRow("videoLogMessage") << QVariant("No loaded media.");
    QTest::newRow("yawMin") << QVariant(-kPi);
    QTest::newRow("yawMax") << QVariant(kPi);
    QTest::newRow("pitchMin") << QVariant(-kPi / 2);
    QTest::newRow("pitchMax") << QVariant(kPi / 2);
    QTest::newRow("fov") << QVariant(90.F);
    QTest::newRow("playListIndex") << QVariant(-1);
    QTest::newRow("outputDisplay") << QVariant(0);
    QTest::newRow("rotationMatrix") << QVariant(QMatrix4x4());
    QTest::newRow("loopMode") << QVariant(1);
}

void TestCamera::startsAs()
{
    QFETCH(QVariant, value);
    QCOMPARE(m_camera->property(QTest::currentDataTag()), value);
}

void TestCamera::wraps_data()
{
    QTest::addColumn<float>("angle");
    QTest::addColumn<float>("wrapped");
    QTest::newRow("just beyond the back") << 3.2F << -3.0831854F;
    QTest::newRow("just beyond the back, the other way") << -3.2F << 3.0831854F;
    QTest::newRow("ahead") << 0.F << 0.F;
    // In single precision this lies a little beyond the back.
    QTest::newRow("the back") << -kPi << kPi;
    QTest::newRow("many turns") << 100.F << float(std::remainder(100.0, 2 * M_PI));
    QTest::newRow("many turns back") << -100.F << float(std::remainder(-100.0, 2 * M_PI));
    QTest::newRow("no number") << std::numeric_limits<float>::quiet_NaN() << 0.F;
    QTest::newRow("no end") << std::numeric_limits<float>::infinity() << 0.F;
}

void TestCamera::wraps()
{
    QFETCH(float, angle);
    QFETCH(float, wrapped);
    QVERIFY2(isNear(CameraMath::wrapAngle(angle), wrapped),
             qPrintable(QString::number(CameraMath::wrapAngle(angle))));
}

void TestCamera::setsAngle_data()
{
    QTest::addColumn<QByteArray>("property");
    QTest::addColumn<QByteArray>("notify");
    QTest::newRow("yaw") << QByteArray("yaw") << QByteArray(SIGNAL(yawChanged()));
    QTest::newRow("pitch") << QByteArray("pitch") << QByteArray(SIGNAL(pitchChanged()));
    QTest::newRow("roll") << QByteArray("roll") << QByteArray(SIGNAL(rollChanged()));
}

void TestCamera::setsAngle()
{
    QFETCH(QByteArray, property);
    QFETCH(QByteArray, notify);
    QSignalSpy changed(m_camera, notify.constData());
    QSignalSpy turnedSpy(m_camera, &VxGlobalObject::rotationMatrixChanged);
    m_camera->setProperty(property.constData(), 3.2F);
    const float wrapped = m_camera->property(property.constData()).toFloat();
    QVERIFY(isNear(wrapped, -3.0831854F));
    QCOMPARE(changed.count(), 1);
    QCOMPARE(turnedSpy.count(), 1);
    QVERIFY(isNear(m_camera->rotationMatrix(),
                   turned({property == "yaw" ? 3.2F : 0, property == "pitch" ? 3.2F : 0,
                           property == "roll" ? 3.2F : 0})));

    m_camera->setProperty(property.constData(), 3.2F);
    m_camera->setProperty(property.constData(), wrapped);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(turnedSpy.count(), 1);
}

void TestCamera::matrixAndBack_data()
{
    QTest::addColumn<float>("yaw");
    QTest::addColumn<float>("pitch");
    QTest::addColumn<float>("roll");
    QTest::newRow("ahead") << 0.F << 0.F << 0.F;
    QTest::newRow("to the right") << 1.F << 0.F << 0.F;
    QTest::newRow("downwards") << 0.F << 1.F << 0.F;
    QTest::newRow("tilted") << 0.F << 0.F << 1.F;
    QTest::newRow("all three") << 0.4F << -0.7F << 1.1F;
    QTest::newRow("behind and on the head") << 2.9F << 1.2F << -3.F;
    QTest::newRow("behind, the other way") << -2.2F << -1.5F << 2.F;
}

void TestCamera::matrixAndBack()
{
    QFETCH(float, yaw);
    QFETCH(float, pitch);
    QFETCH(float, roll);
    const QMatrix4x4 matrix = CameraMath::matrixFromEuler({yaw, pitch, roll});
    QVERIFY(isNear(matrix, turned({yaw, pitch, roll})));
    const EulerAngles back = CameraMath::eulerFromMatrix(matrix);
    QVERIFY(isNear(back.yaw, yaw));
    QVERIFY(isNear(back.pitch, pitch));
    QVERIFY(isNear(back.roll, roll));

    // The view axis goes to the right with a growing yaw and down with a growing pitch.
    const QVector3D axis = matrix.mapVector(QVector3D(0, 0, -1));
    QVERIFY(isNear(axis.x(), std::sin(yaw) * std::cos(pitch)));
    QVERIFY(isNear(axis.y(), -std::sin(pitch)));
}

void TestCamera::straightUpAndDown_data()
{
    QTest::addColumn<float>("yaw");
    QTest::addColumn<float>("pitch");
    QTest::addColumn<float>("roll");
    QTest::addColumn<float>("reportedYaw");
    QTest::addColumn<float>("reportedPitch");
    QTest::newRow("down") << 0.F << kPi / 2 << 0.F << -kPi / 2 << 0.F;
    QTest::newRow("down, turned and tilted") << 0.3F << kPi / 2 << 0.5F << -kPi / 2 << 0.2F;
    QTest::newRow("up") << 0.F << -kPi / 2 << 0.F << kPi / 2 << 0.F;
    QTest::newRow("up, turned and tilted") << 0.3F << -kPi / 2 << 0.5F << kPi / 2 << 0.8F;
}

// Yaw and roll turn about one axis there, and the angle that remains is reported as the pitch, with
// a quarter turn of yaw: what sends such a matrix reads the angles back this way.
void TestCamera::straightUpAndDown()
{
    QFETCH(float, yaw);
    QFETCH(float, pitch);
    QFETCH(float, roll);
    const EulerAngles back =
        CameraMath::eulerFromMatrix(CameraMath::matrixFromEuler({yaw, pitch, roll}));
    QTEST(back.yaw, "reportedYaw");
    QFETCH(float, reportedPitch);
    QVERIFY(isNear(back.pitch, reportedPitch));
    QCOMPARE(back.roll, 0.F);
}

void TestCamera::matrixGivesAngles()
{
    QSignalSpy turnedSpy(m_camera, &VxGlobalObject::rotationMatrixChanged);
    const QMatrix4x4 matrix = turned({0.4F, -0.7F, 1.1F});
    m_camera->setRotationMatrix(matrix);
    QVERIFY(isNear(m_camera->yaw(), 0.4F));
    QVERIFY(isNear(m_camera->pitch(), -0.7F));
    QVERIFY(isNear(m_camera->roll(), 1.1F));
    // The angles must not build a matrix of their own in turn.
    QVERIFY(m_camera->rotationMatrix() == matrix);
    QCOMPARE(turnedSpy.count(), 1);
    m_camera->setRotationMatrix(matrix);
    QCOMPARE(turnedSpy.count(), 1);

    m_camera->setRotationMatrix(QMatrix4x4(), false);
    QVERIFY(isNear(m_camera->yaw(), 0.4F));
}

void TestCamera::correctionStandsBeforeTheCamera()
{
    m_camera->setYaw(0.4F);
    QSignalSpy turnedSpy(m_camera, &VxGlobalObject::rotationMatrixChanged);
    m_camera->setInitialOrientation(0.9F, 0.2F, -0.3F);
    QCOMPARE(turnedSpy.count(), 1);
    // The initial yaw has no part in it.
    QVERIFY(isNear(m_camera->rotationMatrix(),
                   turned({0, 0, -0.3F}) * turned({0, 0.2F, 0}) * turned({0.4F, 0, 0})));
    QCOMPARE(m_camera->yaw(), 0.4F);
}

void TestCamera::offsetTurnsTheMatrixOnly()
{
    m_camera->setYaw(0.4F);
    m_camera->setOffsetOrientation({0.1F, 0.2F, 0.3F});
    QVERIFY(isNear(m_camera->rotationMatrix(), turned({0.5F, 0.2F, 0.3F})));
    QCOMPARE(m_camera->yaw(), 0.4F);
    QCOMPARE(m_camera->pitch(), 0.F);
}

void TestCamera::guardAfterMoves()
{
    QVERIFY(!m_camera->isUserInteracting());
    m_camera->setRotationMatrix(turned({1, 0, 0}), true, false);
    QVERIFY(!m_camera->isUserInteracting());
    m_camera->setYaw(0.5F);
    QVERIFY(m_camera->isUserInteracting());

    QTimer *guard = nullptr;
    const auto timers = m_camera->findChildren<QTimer *>();
    for (QTimer *timer : timers) {
        if (timer->isActive())
            guard = timer;
    }
    QVERIFY(guard && guard->isSingleShot());
    QCOMPARE(guard->interval(), 5000);
    guard->start(1);
    QTRY_VERIFY(!m_camera->isUserInteracting());
    // The reset counts as a move also where the camera stands there already.
    m_camera->resetYawPitchRollFov();
    guard->start(1);
    QTRY_VERIFY(!m_camera->isUserInteracting());
    m_camera->resetYawPitchRollFov();
    QVERIFY(m_camera->isUserInteracting());
}

void TestCamera::fovLimits_data()
{
    QTest::addColumn<int>("source");
    QTest::addColumn<int>("projection");
    QTest::addColumn<float>("min");
    QTest::addColumn<float>("max");
    const int equirectangular = Builder::EQUIRECTANGULAR;
    QTest::newRow("adaptive") << equirectangular << int(Builder::TAVRO) << 80.F << 300.F;
    QTest::newRow("rectilinear") << equirectangular << int(Builder::RECTILINEAR) << 20.F << 130.F;
    QTest::newRow("planet") << equirectangular << int(Builder::LITTLE_PLANET) << 20.F << 360.F;
    QTest::newRow("fisheye") << int(Builder::CUBEMAP) << int(Builder::FISHEYE) << 20.F << 360.F;
    QTest::newRow("flat, adaptive")
        << int(Builder::STANDARD) << int(Builder::TAVRO) << 20.F << 180.F;
    QTest::newRow("flat, planet") << int(Builder::STANDARD) << int(Builder::LITTLE_PLANET) << 20.F
                                  << 180.F;
    QTest::newRow("unknown projection") << equirectangular << 77 << 20.F << 300.F;
}

void TestCamera::fovLimits()
{
    QFETCH(int, source);
    QFETCH(int, projection);
    m_app->builder->setProjectionSource(source);
    m_app->builder->setProjection(projection);
    QTEST(m_camera->fovLimitMin(), "min");
    QTEST(m_camera->fovLimitMax(), "max");
    QSignalSpy min(m_camera, &VxGlobalObject::fovLimitMinChanged);
    QSignalSpy max(m_camera, &VxGlobalObject::fovLimitMaxChanged);
    m_camera->setFovLimits();
    QCOMPARE(min.count() + max.count(), 0);
}

void TestCamera::setsFov_data()
{
    QTest::addColumn<float>("given");
    QTest::addColumn<bool>("reset");
    QTest::addColumn<float>("result");
    QTest::newRow("inside") << 120.F << false << 120.F;
    QTest::newRow("at the limit") << 300.F << true << 300.F;
    QTest::newRow("too wide") << 500.F << false << 300.F;
    QTest::newRow("too wide, reset") << 500.F << true << 90.F;
    QTest::newRow("too narrow") << 10.F << false << 80.F;
    QTest::newRow("too narrow, reset") << 10.F << true << 90.F;
    QTest::newRow("no number") << std::numeric_limits<float>::quiet_NaN() << true << 100.F;
}

void TestCamera::setsFov()
{
    QFETCH(float, given);
    QFETCH(bool, reset);
    QFETCH(float, result);
    m_camera->setFov(100);
    QSignalSpy changed(m_camera, &VxGlobalObject::fovChanged);
    m_camera->setFov(given, reset);
    QCOMPARE(m_camera->fov(), result);
    QCOMPARE(changed.count(), result == 100 ? 0 : 1);
    m_camera->setFov(given, reset);
    QCOMPARE(changed.count(), result == 100 ? 0 : 1);
}

void TestCamera::fovFollowsTheProjection()
{
    m_app->builder->setProjection(Builder::LITTLE_PLANET);
    m_camera->setFov(350);
    m_app->builder->setProjection(Builder::TAVRO);
    QCOMPARE(m_camera->fov(), 300.F);
    m_app->builder->setProjection(Builder::RECTILINEAR);
    QCOMPARE(m_camera->fov(), 130.F);
    m_app->builder->setProjectionSource(Builder::STANDARD);
    QCOMPARE(m_camera->fov(), 180.F);
    m_camera->setFov(60);
    m_app->builder->setProjection(Builder::FISHEYE);
    QCOMPARE(m_camera->fov(), 180.F);
}

void TestCamera::keepsFlatPictureInView_data()
{
    QTest::addColumn<int>("source");
    QTest::addColumn<float>("fov");
    QTest::addColumn<float>("pitch");
    QTest::addColumn<float>("adjusted");
    const int flat = Builder::STANDARD;
    QTest::newRow("flat, beyond one edge") << flat << 90.F << 1.5F << kPi / 4;
    QTest::newRow("flat, beyond the other") << flat << 90.F << -1.5F << -kPi / 4;
    QTest::newRow("flat, inside") << flat << 90.F << 0.2F << 0.2F;
    QTest::newRow("flat, all of it in view") << flat << 180.F << 0.2F << 0.F;
    QTest::newRow("sphere, nearly straight down") << int(Builder::CUBEMAP) << 90.F << 1.5F << 1.5F;
}

void TestCamera::keepsFlatPictureInView()
{
    QFETCH(int, source);
    QFETCH(float, fov);
    QFETCH(float, pitch);
    QFETCH(float, adjusted);
    m_app->builder->setProjectionSource(source);
    m_camera->setFov(fov);
    m_camera->setPitch(pitch);
    QVERIFY(isNear(m_camera->adjustedPitch(), adjusted));
    QCOMPARE(m_camera->pitch(), pitch);
}

void TestCamera::animates()
{
    QVector<float> seen;
    connect(m_camera, &VxGlobalObject::fovChanged, this, [&] { seen.append(m_camera->fov()); });
    m_camera->interpolateValue("fov", 140, 120);
    QPropertyAnimation *animation = animationOf("fov");
    QVERIFY(animation);
    QCOMPARE(animation->easingCurve().type(), QEasingCurve::OutQuad);
    QTRY_COMPARE(m_camera->fov(), 140.F);
    QVERIFY(seen.size() > 2);
    QVERIFY(std::is_sorted(seen.cbegin(), seen.cend()));

    m_camera->interpolateValue("fov", 100);
    QCOMPARE(animationOf("fov"), animation);
    QCOMPARE(animation->duration(), 200);
}

void TestCamera::animatesFromWhereItIs_data()
{
    QTest::addColumn<bool>("running");
    QTest::addColumn<bool>("cumul");
    QTest::addColumn<float>("end");
    QTest::newRow("at rest, to a value") << false << false << 0.5F;
    QTest::newRow("at rest, by a value") << false << true << 0.7F;
    QTest::newRow("moving, to a value") << true << false << 0.5F;
    QTest::newRow("moving, by a value") << true << true << 1.5F;
}

void TestCamera::animatesFromWhereItIs()
{
    QFETCH(bool, running);
    QFETCH(bool, cumul);
    m_camera->setYaw(0.2F);
    if (running) {
        m_camera->interpolateValue("yawInterpolate", 1, 10000);
        QTRY_VERIFY(m_camera->yaw() > 0.2F);
    }
    const float present = m_camera->yawInterpolate();
    m_camera->interpolateValue("yawInterpolate", 0.5F, 10000, cumul);
    const QPropertyAnimation *animation = animationOf("yawInterpolate");
    QVERIFY(isNear(animation->startValue().toFloat(), present));
    QFETCH(float, end);
    QVERIFY(isNear(animation->endValue().toFloat(), end));
}

void TestCamera::twinFollowsInSilence()
{
    QSignalSpy twins(m_camera, &VxGlobalObject::yawInterpolateChanged);
    m_camera->setYaw(1);
    m_camera->setPitch(0.5F);
    QCOMPARE(m_camera->yawInterpolate(), 1.F);
    QCOMPARE(m_camera->pitchInterpolate(), 0.5F);
    QCOMPARE(twins.count(), 0);

    m_camera->interpolateValue("yawInterpolate", 3, 10000);
    const float moving = m_camera->yawInterpolate();
    m_camera->setYaw(-2);
    QCOMPARE(m_camera->yawInterpolate(), moving);
}

void TestCamera::twinWraps()
{
    m_camera->setYawInterpolate(3.2F);
    QVERIFY(isNear(m_camera->yaw(), -3.0831854F));
    QVERIFY(isNear(m_camera->yawInterpolate(), -3.0831854F));
}

void TestCamera::twinReachesCameraAgain()
{
    m_camera->interpolateValue("yawInterpolate", 1, 10000);
    m_camera->interpolateValue("pitchInterpolate", 1, 10000);
    m_camera->setYaw(-2);
    m_camera->setPitch(-1);
    m_camera->stopCameraAnimation();
    m_camera->setYawInterpolate(m_camera->yawInterpolate());
    m_camera->setPitchInterpolate(m_camera->pitchInterpolate());
    QCOMPARE(m_camera->yaw(), m_camera->yawInterpolate());
    QCOMPARE(m_camera->pitch(), m_camera->pitchInterpolate());
}

void TestCamera::inertiaCrossesTheBack()
{
    m_camera->setYaw(3);
    QVector<float> seen{3};
    connect(m_camera, &VxGlobalObject::yawChanged, this, [&] { seen.append(m_camera->yaw()); });
    m_camera->interpolateValue("yawInterpolate", 3.5F, 100);
    QTRY_VERIFY(isNear(m_camera->yaw(), 3.5F - 2 * kPi));
    for (int i = 1; i < seen.size(); ++i)
        QVERIFY(CameraMath::wrapAngle(seen[i] - seen[i - 1]) > 0);
}

void TestCamera::pressStopsTheCamera_data()
{
    QTest::addColumn<bool>("stops");
    QTest::newRow("yaw") << true;
    QTest::newRow("pitch") << true;
    QTest::newRow("yawInterpolate") << true;
    QTest::newRow("pitchInterpolate") << true;
    QTest::newRow("fov") << false;
}

void TestCamera::pressStopsTheCamera()
{
    m_camera->stopCameraAnimation(); // nothing has moved yet
    m_camera->interpolateValue(QTest::currentDataTag(), 120, 10000);
    m_camera->stopCameraAnimation();
    const bool stopped =
        animationOf(QTest::currentDataTag())->state() == QPropertyAnimation::Stopped;
    QTEST(stopped, "stops");
}

void TestCamera::settingsReachTheCamera_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QByteArray>("property");
    QTest::addColumn<QVariant>("result");
    QTest::newRow("loop mode beyond the last")
        << "instance/general/loopMode" << QVariant(5) << QByteArray("loopMode") << QVariant(2);
    QTest::newRow("loop mode after the last")
        << "instance/general/loopMode" << QVariant(3) << QByteArray("loopMode") << QVariant(0);
    QTest::newRow("loop mode below zero")
        << "instance/general/loopMode" << QVariant(-1) << QByteArray("loopMode") << QVariant(2);
    QTest::newRow("a preference takes its twin along")
        << "application/general/loopMode" << QVariant(2) << QByteArray("loopMode") << QVariant(2);
    QTest::newRow("inverted axes") << "instance/general/touchMode" << QVariant(false)
                                   << QByteArray("touchMode") << QVariant(false);
    QTest::newRow("input projection") << "instance/input/projection" << QVariant(2)
                                      << QByteArray("projectionSourceSetting") << QVariant(2);
}

void TestCamera::settingsReachTheCamera()
{
    QFETCH(QString, key);
    QFETCH(QVariant, value);
    QFETCH(QByteArray, property);
    const QMetaObject *meta = m_camera->metaObject();
    const QByteArray notify =
        meta->property(meta->indexOfProperty(property.constData())).notifySignal().name();
    QSignalSpy changed(m_camera, QByteArray("2" + notify + "()").constData());
    m_app->settingsObject->set(key, value);
    QTEST(m_camera->property(property.constData()), "result");
    QCOMPARE(changed.count(), 1);
}

void TestCamera::outputDisplay_data()
{
    QTest::addColumn<QStringList>("settings");
    QTest::addColumn<bool>("split");
    QTest::addColumn<bool>("tv3d");
    QTest::addColumn<int>("display");
    QTest::newRow("television") << QStringList{"3d"} << true << true << 1;
    QTest::newRow("split") << QStringList{"split"} << true << false << 2;
    QTest::newRow("split after television") << QStringList{"3d", "split"} << true << true << 1;
    QTest::newRow("standard in between")
        << QStringList{"3d", "standard", "split"} << true << false << 2;
    QTest::newRow("standard again") << QStringList{"3d", "standard"} << false << false << 0;
    QTest::newRow("unknown") << QStringList{"split", "hologram"} << false << false << 0;
    QTest::newRow("twice the same") << QStringList{"3d", "3d"} << true << true << 1;
}

void TestCamera::outputDisplay()
{
    QFETCH(QStringList, settings);
    QSignalSpy changed(m_camera, &VxGlobalObject::outputDisplayChanged);
    for (const QString &display : settings)
        m_app->settingsObject->set("instance/output/display", display);
    QTEST(m_camera->splitView(), "split");
    QTEST(m_camera->tv3dView(), "tv3d");
    QTEST(m_camera->outputDisplay(), "display");
    QCOMPARE(changed.count(), settings.size());
}

QTEST_GUILESS_MAIN(TestCamera)
#include "tst_camera.moc"
