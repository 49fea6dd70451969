// SPDX-License-Identifier: GPL-3.0-or-later
#include "render/ShaderSpecialiser.h"

#include "render/ShaderFragments.h"

#include <cmath>

namespace {

constexpr float kPi = 3.14159265358979323846F;
constexpr float kHalfPi = 1.57079632679489661923F;

// Nine digits name every float, and a point or an exponent makes the number a float in GLSL.
QByteArray literal(float value)
{
    const QByteArray digits = QByteArray::number(double(value), 'g', 9);
    return digits.contains('.') || digits.contains('e') ? digits : digits + ".0";
}

// The value as GLSL, or nothing if one of its numbers cannot be written.
QByteArray initialiser(const QByteArray &type, const QVector<float> &value)
{
    QByteArray numbers;
    for (const float number : value) {
        if (!std::isfinite(number))
            return {};
        numbers += (numbers.isEmpty() ? "" : ", ") + literal(number);
    }
    return type + '(' + numbers + ')';
}

// The ray's work at the quad's corners. Each projection makes its ray from the screen vector times
// a factor of its own, `scale`; its part in the turned world and the turned z axis are enough to
// finish it in a fragment.
QByteArray cornerDeclarations()
{
    return "uniform highp mat4 uMatViewInverse;"
           "uniform highp float uFov;"
           "uniform highp float uProjScale;"
           "uniform highp vec2 uViewportSize;"
           "uniform highp vec2 uViewportSizeMin;"
           "uniform highp vec2 uViewportSizeRatio;"
           "varying highp vec3 across;"
           "varying highp vec3 axis;\n";
}

QByteArray cornerRay(const QByteArray &scale)
{
    return "   highp float a = .017453293 * uFov;\n"
           "   highp vec2 screenPt = 2.0 * texture.xy * uViewportSize / uViewportSizeMin"
           " - uViewportSizeRatio;\n"
           "   across = vec3(uMatViewInverse * vec4("
        + scale
        + " * screenPt, 0.0, 0.0));\n"
          "   axis = uMatViewInverse[2].xyz;\n";
}

// The cosine of sqrt(d) for `first` 0, its sine divided by sqrt(d) for 1: the ten first terms of
// the power series, which up to half a turn leave less than 1e-8 out. No root and no division, and
// the centre of the view needs no exception.
QByteArray evenSeries(int first)
{
    QVector<double> terms;
    double term = 1.0;
    for (int n = first; terms.size() < 10; n += 2) {
        terms.append(term);
        term /= -double((n + 1) * (n + 2));
    }
    QByteArray code = literal(float(terms.takeLast()));
    while (!terms.isEmpty())
        code = literal(float(terms.takeLast())) + " + d * (" + code + ')';
    return code;
}

// A ray section, the factor of its screen vector, what is left of it for the fragments, and the
// ray's length. A turn keeps lengths, so dot(across, across) is the squared length of the scaled
// screen vector.
struct RayTwin
{
    QByteArray section;
    QByteArray scale;
    QByteArray rest;
    QByteArray length;
};

QVector<RayTwin> rayTwins()
{
    return {
        {QByteArray(ShaderFragments::kRayRectilinear) + ShaderFragments::kRayRectilinearEnd,
         "tan(a / 2.0)", "vec3 pt = across - axis;", "sqrt(dot(across, across) + 1.0)"},
        {ShaderFragments::kRayLittlePlanet, "a",
         "float d = dot(across, across);"
         "vec3 pt = across * 2.5 + axis * (d - 1.5625);",
         "(d + 1.5625)"},
        {ShaderFragments::kRayFisheye, "a / 2.0",
         "float d = dot(across, across);"
         "if (d > pi * pi) { return vec2(-1.); }"
         "vec3 pt = across * ("
             + evenSeries(1) + ") - axis * (" + evenSeries(0) + ");",
         "1.0"},
        {ShaderFragments::kRayAdaptive, "uProjScale",
         "float zs = uProjectionDistance;"
         "float xy2 = dot(across, across);"
         "float zs12 = (zs+1.0)*(zs+1.0);"
         // The root of the text's delta without what cancels out in it: in single precision the ray
         // would not be of unit length at the edge of a wide view.
         "float z = (zs*xy2 - (zs+1.0) * sqrt(zs12 + xy2*(1.0 - zs*zs))) / (zs12 + xy2);"
         "vec3 pt = across * ((zs-z) / (zs+1.0)) + axis * z;",
         "1.0"},
    };
}

// The arc tangent of t from 0 to 1, in place; leaves less than 1e-5 out.
constexpr char kArcTangent[] =
    "float s = t * t;"
    "t *= 0.99997726 + s * (-0.33262347 + s * (0.19354346 + s * (-0.11643287"
    " + s * (0.05265332 + s * -0.0117212))));";

// Longitude, counted from minus z, and the angle from plus y of a ray of this length. The arc
// cosine is a root and a series that leaves less than 1e-7 out.
QByteArray equirectangularTwin(const QByteArray &length)
{
    return "vec2 q = abs(pt.xz);"
           "float m = max(max(q.x, q.y), 1e-20);"
           "float l = " + length + ";"
           "float inv = 1.0 / (m * l);" // serves both quotients
           "float t = min(q.x, q.y) * l * inv;"
        + kArcTangent
        + "t = q.x > q.y ? halfpi - t : t;"
          "t = pt.z > 0.0 ? pi - t : t;"
          "t = pt.x < 0.0 ? -t : t;"
          "float y = min(abs(pt.y) * m * inv, 1.0);"
          "float v = sqrt(1.0 - y) * (1.570796305 + y * (-0.2145988016 + y * (0.0889789874"
          " + y * (-0.0501743046 + y * (0.030891881 + y * (-0.0170881256"
          " + y * (0.0066700901 + y * -0.0012624911)))))));"
          "v = pt.y < 0.0 ? pi - v : v;"
          "vec2 uv = vec2(t * (1.0 / twopi) + 0.5, v * (1.0 / pi));";
}

// The angle off the lens axis of a ray of any length, and cos and sin of atan(x, z) without the
// angle.
QByteArray fisheyeCircleTwin()
{
    return QByteArray("float r = max(sqrt(dot(pt.xz, pt.xz)), 1e-20);"
                      "float y = abs(pt.y);"
                      "float m = max(r, y);"
                      "float inv = 1.0 / (r * m);" // serves both quotients
                      "float t = min(r, y) * r * inv;")
        + kArcTangent
        + "t = r > y ? halfpi - t : t;"
          "t = pt.y < 0.0 ? pi - t : t;"
          "vec2 uv = pt.zx * (t * m * inv * (1.0 / (pi*1.33))) + 0.5;";
}

// What the rejection lets through lies in 0 to 1, up to a rounding, or is not a number, and only
// that turns black.
constexpr char kBorderGuardTwin[] = "color *= step(-1.0, a.x * a.y);";
constexpr char kRejectTwin[] = "if (max(abs(a.x - 0.5), abs(a.y - 0.5)) > 0.5) discard;";

// Each ray has its place in a full sphere, so nothing is rejected. The fisheye's view ends where
// the whole sphere is seen, and the overlay's plane is smaller than the view.
bool fillsView(const QByteArray &fragment)
{
    return (fragment.contains(ShaderFragments::kSourceEquirectangular)
            || fragment.contains(ShaderFragments::kSourceCubemap))
        && !fragment.contains(ShaderFragments::kRayFisheye)
        && !fragment.contains(ShaderFragments::kOverlayPlane);
}

} // namespace

QVector<UniformConstant> ShaderSpecialiser::gradingConstants()
{
    const QVector<float> identity{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    return {
        {"uColorMatrix", identity},
        {"uBrightness", {0}},
        {"uContrast", {0}},
        {"uHue", {0}},
        {"uSaturation", {0}},
        {"uVibrance", {0}},
        {"uTime", {0}},
        {"uVignettingRadius", {0}},
        {"uVignettingAmount", {0}},
    };
}

bool ShaderSpecialiser::isFullSphere(float yawMin, float yawMax, float pitchMin, float pitchMax)
{
    return yawMin == -kPi && yawMax == kPi && pitchMin == -kHalfPi && pitchMax == kHalfPi;
}

QVector<UniformConstant> ShaderSpecialiser::fullSphereConstants()
{
    return {
        {"uYawMin", {-kPi}},
        {"uYawMax", {kPi}},
        {"uPitchMin", {-kHalfPi}},
        {"uPitchMax", {kHalfPi}},
    };
}

QByteArray ShaderSpecialiser::specialise(const QByteArray &fragment,
                                         const QVector<UniformConstant> &constants)
{
    QByteArray text = fragment;
    for (const UniformConstant &constant : constants) {
        const QByteArray type = constant.value.size() == 16 ? "mat4" : "float";
        const QByteArray value = initialiser(type, constant.value);
        if (value.isEmpty() || (constant.value.size() != 1 && constant.value.size() != 16))
            continue;
        const QByteArray declaration = type + ' ' + constant.name;
        text.replace("uniform " + declaration + ';', "const " + declaration + " = " + value + ';');
    }
    return text;
}

ShaderTexts ShaderSpecialiser::streamline(const ShaderTexts &texts, bool fullSphere)
{
    ShaderTexts result = texts;
    QByteArray &fragment = result.fragment;
    fragment.replace(ShaderFragments::kReject,
                     fullSphere && fillsView(fragment) ? "" : kRejectTwin);
    fragment.replace(ShaderFragments::kBorderGuard, kBorderGuardTwin);
    fragment.replace(ShaderFragments::kSourceFisheyeCircle, fisheyeCircleTwin());
    QByteArray length = "length(pt)";

    const QByteArray texCoordDeclaration = "varying highp vec4 texCoord;";
    const QByteArray texCoordAssignment = "   texCoord = texture;\n";
    for (const RayTwin &twin : rayTwins()) {
        if (!result.fragment.contains(twin.section) || !result.vertex.contains(texCoordAssignment))
            continue;
        result.fragment.replace(twin.section, twin.rest);
        result.fragment.replace(texCoordDeclaration,
                                texCoordDeclaration
                                    + "varying highp vec3 across;varying highp vec3 axis;");
        result.vertex.replace(texCoordAssignment, texCoordAssignment + cornerRay(twin.scale));
        result.vertex.prepend(cornerDeclarations());
        length = twin.length;
        break;
    }
    fragment.replace(ShaderFragments::kSourceEquirectangular, equirectangularTwin(length));
    return result;
}
