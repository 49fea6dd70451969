// SPDX-License-Identifier: GPL-3.0-or-later
// The camera of the controller: angles, matrices, limits, moves.
#include "app/CameraMath.h"
#include "tests/common/FakeApplication.h"

#include <QPropertyAnimation>
#include <QSignalSpy>
#include <QTest>
#include <QtMath>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <tuple>

using CameraMath::EulerAngles;
using Builder = VxShaderCodeBuilder;

namespace {

constexpr float kPi = 3.14159265F;
constexpr float kNoNumber = std::numeric_limits<float>::quiet_NaN();

/// The camera's rotation, put together from turns about the axes.
QMatrix4x4 turned(const EulerAngles &angles)
{
    QMatrix4x4 matrix;
    matrix.rotate(qRadiansToDegrees(-angles.yaw), 0, 1, 0);
    matrix.rotate(qRadiansToDegrees(-angles.pitch), 1, 0, 0);
    matrix.rotate(qRadiansToDegrees(angles.roll), 0, 0, 1);
    return matrix;
}

bool isNear(float a, float b)
{
    return std::abs(a - b) < 1e-5F;
}

bool isNear(const QMatrix4x4 &a, const QMatrix4x4 &b)
{
    return std::equal(a.constData(), a.constData() + 16, b.constData(),
                      [](float x, float y) { return isNear(x, y); });
}

bool isNear(const EulerAngles &a, const EulerAngles &b)
{
    return isNear(a.yaw, b.yaw) && isNear(a.pitch, b.pitch) && isNear(a.roll, b.roll);
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

    void wraps()
    {
        const std::pair<float, float> rows[] = {
            {3.2F, -3.0831854F},
            {-kPi, kPi}, // in single precision this lies a little beyond the back
            {100, float(std::remainder(100.0, 2 * M_PI))},
            {-100, float(std::remainder(-100.0, 2 * M_PI))},
            {std::numeric_limits<float>::infinity(), 0},
        };
        for (const auto &[angle, wrapped] : rows)
            QVERIFY2(isNear(CameraMath::wrapAngle(angle), wrapped),
                     qPrintable(QString::number(angle)));
    }

    void setsAngle()
    {
        for (const char *property : {"yaw", "pitch", "roll"}) {
            init();
            QSignalSpy changed(m_camera, notifySignal(property));
            QSignalSpy turnedSpy(m_camera, &VxGlobalObject::rotationMatrixChanged);
            for (const float same : {3.2F, 3.2F - float(2 * M_PI)})
                m_camera->setProperty(property, same);
            QVERIFY2(isNear(m_camera->property(property).toFloat(), -3.0831854F), property);
            QCOMPARE(changed.count(), 1);
            QCOMPARE(turnedSpy.count(), 1);
            QVERIFY(isNear(m_camera->rotationMatrix(), turned(angles())));
        }
    }

    void matrixAndBack()
    {
        const std::pair<EulerAngles, EulerAngles> rows[] = {
            {{2.9F, 1.2F, -3}, {2.9F, 1.2F, -3}},
            {{-2.2F, -1.5F, 2}, {-2.2F, -1.5F, 2}},
            // Straight up and down yaw and roll turn about one axis, and the angle that remains is
            // reported as the pitch, with a quarter turn of yaw: what sends such a matrix reads the
            // angles back this way.
            {{0.3F, kPi / 2, 0.5F}, {-kPi / 2, 0.2F, 0}},
            {{0.3F, -kPi / 2, 0.5F}, {kPi / 2, 0.8F, 0}},
        };
        for (const auto &[given, reported] : rows) {
            const QMatrix4x4 matrix = CameraMath::matrixFromEuler(given);
            QVERIFY(isNear(matrix, turned(given)));
            QVERIFY(isNear(CameraMath::eulerFromMatrix(matrix), reported));
        }
    }

    void matrixGivesAngles()
    {
        QSignalSpy turnedSpy(m_camera, &VxGlobalObject::rotationMatrixChanged);
        const QMatrix4x4 matrix = turned({0.4F, -0.7F, 1.1F});
        m_camera->setRotationMatrix(matrix);
        m_camera->setRotationMatrix(matrix);
        QVERIFY(isNear(angles(), {0.4F, -0.7F, 1.1F}));
        // The angles must not build a matrix of their own in turn.
        QVERIFY(m_camera->rotationMatrix() == matrix);
        QCOMPARE(turnedSpy.count(), 1);
        m_camera->setRotationMatrix(QMatrix4x4(), false);
        QVERIFY(isNear(m_camera->yaw(), 0.4F));
    }

    void correctionAndOffsetTurnTheMatrixOnly()
    {
        m_camera->setYaw(0.4F);
        m_camera->setOffsetOrientation({0.1F, 0.2F, 0.3F});
        QVERIFY(isNear(m_camera->rotationMatrix(), turned({0.5F, 0.2F, 0.3F})));
        m_camera->setOffsetOrientation({});
        QSignalSpy turnedSpy(m_camera, &VxGlobalObject::rotationMatrixChanged);
        m_camera->setInitialOrientation(0.9F, 0.2F, -0.3F);
        QCOMPARE(turnedSpy.count(), 1);
        // The correction stands before the camera, and the initial yaw has no part in it.
        QVERIFY(isNear(m_camera->rotationMatrix(),
                       turned({0, 0, -0.3F}) * turned({0, 0.2F, 0}) * turned({0.4F, 0, 0})));
        QVERIFY(isNear(angles(), {0.4F, 0, 0}));
    }

    void guardAfterMoves()
    {
        m_camera->setRotationMatrix(turned({1, 0, 0}), true, false);
        QVERIFY(!m_camera->isUserInteracting());
        QTimer *guard = m_app->timer(true);
        QCOMPARE(guard->interval(), 5000);
        m_camera->setYaw(0.5F);
        // The reset counts as a move also where the camera stands there already.
        for (int times = 0; times < 2; ++times) {
            QVERIFY(m_camera->isUserInteracting());
            guard->start(1);
            QTRY_VERIFY(!m_camera->isUserInteracting());
            m_camera->resetYawPitchRollFov();
        }
        QVERIFY(m_camera->isUserInteracting());
    }

    void fovLimits()
    {
        const std::tuple<int, int, float, float> rows[] = {
            {Builder::EQUIRECTANGULAR, Builder::TAVRO, 80, 300},
            {Builder::EQUIRECTANGULAR, Builder::RECTILINEAR, 20, 130},
            {Builder::EQUIRECTANGULAR, Builder::LITTLE_PLANET, 20, 360},
            {Builder::CUBEMAP, Builder::FISHEYE, 20, 360},
            {Builder::STANDARD, Builder::FISHEYE, 20, 180},
            {Builder::EQUIRECTANGULAR, 77, 20, 300},
        };
        for (const auto &[source, projection, min, max] : rows) {
            m_app->builder->setProjectionSource(source);
            m_app->builder->setProjection(projection);
            QCOMPARE(m_camera->fovLimitMin(), min);
            QCOMPARE(m_camera->fovLimitMax(), max);
            QVERIFY(m_camera->fov() >= min && m_camera->fov() <= max);
            QVERIFY(m_camera->fov() == max || source != Builder::STANDARD); // all of it in view
            m_camera->setFov(source == Builder::CUBEMAP ? 60 : 360); // to be seen the next way
        }
    }

    void setsFov()
    {
        const std::tuple<float, bool, float> rows[] = {
            {120, false, 120}, {300, true, 300}, {500, false, 300},      {500, true, 90},
            {10, false, 80},   {10, true, 90},   {kNoNumber, true, 100},
        };
        QSignalSpy changed(m_camera, &VxGlobalObject::fovChanged);
        for (const auto &[given, reset, result] : rows) {
            m_camera->setFov(100);
            changed.clear();
            m_camera->setFov(given, reset);
            m_camera->setFov(given, reset);
            QCOMPARE(m_camera->fov(), result);
            QCOMPARE(changed.count(), result == 100 ? 0 : 1);
        }
    }

    void animatesFromWhereItIs()
    {
        const std::tuple<bool, bool, float> rows[] = {
            {false, false, 0.5F}, {false, true, 0.7F}, {true, false, 0.5F}, {true, true, 1.5F}};
        for (const auto &[running, cumul, end] : rows) {
            init();
            m_camera->setYaw(0.2F);
            if (running)
                m_camera->interpolateValue("yawInterpolate", 1, 10000);
            QTest::qWait(50);
            const float present = m_camera->yawInterpolate();
            QCOMPARE(present > 0.2F, running);
            m_camera->interpolateValue("yawInterpolate", 0.5F, 200, cumul);
            const auto *animation = m_camera->findChild<QPropertyAnimation *>();
            QCOMPARE(animation->easingCurve().type(), QEasingCurve::OutQuad);
            QVERIFY(isNear(animation->startValue().toFloat(), present));
            QTRY_VERIFY(isNear(m_camera->yaw(), end));
            QCOMPARE(m_camera->findChildren<QPropertyAnimation *>().size(), 1);
        }
    }

    void twinFollowsInSilence()
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

    void pressStopsTheCamera()
    {
        m_camera->stopCameraAnimation(); // nothing has moved yet
        m_camera->interpolateValue("fov", 140, 100);
        m_camera->interpolateValue("yawInterpolate", 1, 10000);
        m_camera->interpolateValue("pitchInterpolate", 1, 10000);
        m_camera->setYaw(-2);
        m_camera->setPitch(-1);
        m_camera->stopCameraAnimation();
        QTRY_COMPARE(m_camera->fov(), 140.F); // a zoom goes on
        QCOMPARE(m_camera->yaw(), -2.F);
        QCOMPARE(m_camera->pitch(), -1.F);
        // The next move reaches the camera where its twin has the value already.
        m_camera->setYawInterpolate(m_camera->yawInterpolate());
        m_camera->setPitchInterpolate(m_camera->pitchInterpolate());
        QCOMPARE(m_camera->yaw(), m_camera->yawInterpolate());
        QCOMPARE(m_camera->pitch(), m_camera->pitchInterpolate());
    }

    void loopModeFollowsTheSettings()
    {
        QSignalSpy changed(m_camera, &VxGlobalObject::loopModeChanged);
        for (const auto &[setting, mode] : {std::pair(5, 2), std::pair(3, 0), std::pair(-1, 2)}) {
            m_app->settingsObject->set("instance/general/loopMode", setting);
            QCOMPARE(m_camera->loopMode(), mode);
        }
        m_app->settingsObject->set("application/general/loopMode", 1); // takes its twin along
        QCOMPARE(m_camera->loopMode(), 1);
        QCOMPARE(changed.count(), 4);
    }

    void outputDisplay()
    {
        const std::tuple<const char *, bool, bool, int> rows[] = {
            {"3d", true, true, 1},
            {"split", true, true, 1}, // for a television that knows
                                      // the split signal only
            {"standard", false, false, 0},
            {"split", true, false, 2},
            {"hologram", false, false, 0},
        };
        for (const auto &[setting, split, tv3d, display] : rows) {
            m_app->settingsObject->set("instance/output/display", setting);
            QCOMPARE(m_camera->splitView(), split);
            QCOMPARE(m_camera->tv3dView(), tv3d);
            QCOMPARE(m_camera->outputDisplay(), display);
        }
    }

private:
    EulerAngles angles() const { return {m_camera->yaw(), m_camera->pitch(), m_camera->roll()}; }

    QMetaMethod notifySignal(const char *property) const
    {
        const QMetaObject *meta = m_camera->metaObject();
        return meta->property(meta->indexOfProperty(property)).notifySignal();
    }

    std::unique_ptr<FakeApplication> m_app;
    VxGlobalObject *m_camera = nullptr;
};

QTEST_GUILESS_MAIN(TestCamera)
#include "tst_camera.moc"
