// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The one place in C++ where settings keys are spelled. A mistyped key is no error at run time,
// it merely reads as nothing; a mistyped constant does not compile.

#include <QLatin1String>

namespace VxSettingsKeys {

/// A key of which each compiler knows the length: Qt's own constructor measures at run time for
/// some.
template <int Size> constexpr QLatin1String literal(const char (&text)[Size])
{
    return QLatin1String(text, Size - 1);
}

/// A preference that lasts between runs, and its twin that running code reads and that is
/// forgotten at exit.
struct Setting
{
    QLatin1String application;
    QLatin1String instance;
};

#define TAVRO_SETTING(path)                                                                        \
    {                                                                                              \
        literal("application/" path), literal("instance/" path)                                    \
    }

inline constexpr Setting kVolume TAVRO_SETTING("volume");
/// Seconds for which a still image of a playlist is shown.
inline constexpr Setting kImageDisplayDuration TAVRO_SETTING("playlist/imageDisplayDuration");
/// True: a still image stays until the user moves on.
inline constexpr Setting
    kImageDisplayDurationNone TAVRO_SETTING("playlist/imageDisplayDurationNone");

inline constexpr Setting kHmdMode TAVRO_SETTING("hmd/hmdMode");
inline constexpr Setting kHmdSdk TAVRO_SETTING("hmd/sdk");
inline constexpr Setting kHmdGazeUI TAVRO_SETTING("hmd/gazeUI");
inline constexpr Setting kOculusUseSDK TAVRO_SETTING("oculus/mac/useSDK");
inline constexpr Setting kOculusDynamicPrediction TAVRO_SETTING("oculus/mac/dynamicPrediction");
inline constexpr Setting kOculusUsePrediction TAVRO_SETTING("oculus/mac/usePrediction");
inline constexpr Setting kOculusVsync TAVRO_SETTING("oculus/mac/vsync");
inline constexpr Setting kOculusOverdrive TAVRO_SETTING("oculus/mac/overdrive");
inline constexpr Setting kOculusFullscreen TAVRO_SETTING("oculus/mac/fullscreen");
inline constexpr Setting kRealSenseFeedbackScreen TAVRO_SETTING("realsense/feedbackScreen");
inline constexpr Setting kLeapMotionGhostHands TAVRO_SETTING("leapmotion/ghostHands");

inline constexpr Setting kCommunicationState TAVRO_SETTING("communication/state");
inline constexpr Setting kCommunicationPort TAVRO_SETTING("communication/port");
inline constexpr Setting kCommunicationRate TAVRO_SETTING("communication/rate");
inline constexpr Setting kCommunicationFormat TAVRO_SETTING("communication/format");
inline constexpr Setting kCommunicationIpMode TAVRO_SETTING("communication/ipMode");
inline constexpr Setting kCommunicationIpCustom TAVRO_SETTING("communication/ipCustom");
inline constexpr Setting kCommunicationUrlMode TAVRO_SETTING("communication/urlMode");
inline constexpr Setting
    kCommunicationOrientationMode TAVRO_SETTING("communication/orientationMode");

inline constexpr Setting kInputProjection TAVRO_SETTING("input/projection");
inline constexpr Setting kInputStereoscopy TAVRO_SETTING("input/stereoscopy");
inline constexpr Setting kOutputProjection TAVRO_SETTING("output/projection");
inline constexpr Setting kOutputDisplay TAVRO_SETTING("output/display");

inline constexpr Setting kLoopMode TAVRO_SETTING("general/loopMode");
inline constexpr Setting kTouchMode TAVRO_SETTING("general/touchMode");
inline constexpr Setting kEnableAnalytics TAVRO_SETTING("general/enableAnalytics");
inline constexpr Setting kYprRadUnit TAVRO_SETTING("general/yprRadUnit");
/// Degrees that one press of a camera key turns.
inline constexpr Setting kCameraMoveSteps TAVRO_SETTING("general/cameraMoveSteps");
/// Milliseconds that the camera takes to come to rest.
inline constexpr Setting kCameraInertia TAVRO_SETTING("general/cameraInertia");
inline constexpr Setting kFileDialogLastFolder TAVRO_SETTING("general/fileDialogLastFolder");
inline constexpr Setting kPrintSavePath TAVRO_SETTING("general/printSavePath");

inline constexpr Setting kForceOpenGL TAVRO_SETTING("advanced/forceopengl");
inline constexpr Setting kSharedMemory TAVRO_SETTING("advanced/sharedmemory");
inline constexpr Setting kWindowWidth TAVRO_SETTING("window/width");
inline constexpr Setting kWindowHeight TAVRO_SETTING("window/height");

#undef TAVRO_SETTING

/// The value of the two folders until the user has chosen one.
inline constexpr QLatin1String kUndefinedFolder = literal("toBeDefine");

// Keys without a twin and without a row among the defaults: their readers ask the store.

/// The locale's name for crash reports; empty: the C locale.
inline constexpr QLatin1String kLanguage = literal("application/language");
inline constexpr QLatin1String kDumpType = literal("application/dump_type");
/// The video back end for the next start.
inline constexpr QLatin1String kVideoPlugin = literal("application/videoPlugin");

inline constexpr QLatin1String kVlcHardwareDecoding = literal("vlc/hardwareDecoding");
inline constexpr QLatin1String kVlcDisableAudio = literal("vlc/disableAudio");
inline constexpr QLatin1String kVlcShaderColorConversion = literal("vlc/shaderColorConversion");
inline constexpr QLatin1String kVlcCustomInstanceArguments = literal("vlc/customInstanceArguments");
inline constexpr QLatin1String kVlcCustomMediaOptions = literal("vlc/customMediaOptions");
/// Milliseconds.
inline constexpr QLatin1String kVlcAudioDelay = literal("vlc/audioDelay");

inline constexpr QLatin1String kLastUpdateCheck = literal("general/last_update_check");

} // namespace VxSettingsKeys
