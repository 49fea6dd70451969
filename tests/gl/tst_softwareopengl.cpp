// SPDX-License-Identifier: GPL-3.0-or-later
#include "gl/SoftwareOpenGl.h"

#include <QTest>

class TestSoftwareOpenGl : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void tellsByTheName()
    {
        for (const char *renderer :
             {"llvmpipe (LLVM 15.0.6, 256 bits)", "softpipe", "Software Rasterizer",
              "zink Vulkan 1.3(llvmpipe (LLVM 15.0.6, 256 bits) (MESA_LLVMPIPE))",
              "ANGLE (Google, Vulkan 1.3.0 (SwiftShader Device (Subzero)), SwiftShader driver)"})
            QVERIFY2(SoftwareOpenGl::isSoftware(renderer), renderer);
        for (const char *renderer :
             {"", "NVIDIA H200", "Mesa Intel(R) UHD Graphics 620 (KBL GT2)",
              "AMD Radeon RX 6600 (radeonsi, navi23, LLVM 15.0.6, DRM 3.49)", "virgl (LLVMPIPE)"})
            QVERIFY2(!SoftwareOpenGl::isSoftware(renderer), renderer);
        QVERIFY(!SoftwareOpenGl::isInUse()); // nothing is known yet
    }
};

QTEST_GUILESS_MAIN(TestSoftwareOpenGl)
#include "tst_softwareopengl.moc"
