// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The GLSL of the panorama, as the pieces that the builder puts together. Nothing stands between
// two pieces, so a blank or a line break that matters is part of one. The camera looks along minus
// z with y up; angles are radians unless a name says otherwise.

namespace ShaderFragments {

inline constexpr char kVertex[] =
    "attribute highp vec4 vertex;\n"
    "uniform highp mat4 matrix;\n"
    "attribute vec4 texture;\n"
    "varying highp vec4 texCoord;\n"
    "void main(void)\n"
    "{\n"
    "   gl_Position = matrix * vertex;\n"
    "   texCoord = texture;\n"
    "}";

inline constexpr char kPrecision[] =
    "#ifdef GL_ES \n"
    "precision highp float; \n"
    "#endif \n";

inline constexpr char kConstants[] =
    "#define pi 3.141592654\n"
    "#define halfpi 1.570796327\n"
    "#define twopi 6.283185308\n"
    "#define toEquiTexCoords(a) (vec2(a.x / twopi, a.y / pi))\n";

inline constexpr char kDeclarations[] =
    "varying highp vec4 texCoord;"
    "uniform sampler2D uSampler;"
    "uniform mat4 uMatViewInverse;"
    "uniform mat4 uColorMatrix;"
    "uniform float uBrightness;"
    "uniform float uContrast;"
    "uniform float uHue;"
    "uniform float uSaturation;"
    "uniform float uVibrance;"
    "uniform float uFov;"
    "uniform float uTime;"
    "uniform float uVignettingRadius;"
    "uniform float uVignettingAmount;"
    "uniform vec2 uViewportSize;"
    "uniform vec2 uViewportSizeMin;"
    "uniform vec2 uViewportSizeRatio;"
    "uniform float uScaleCorrector;"
    "uniform int uEye;"
    "uniform float uCameraYaw; "
    "uniform float uCameraPitch;"
    "uniform float uYawMin;"
    "uniform float uYawMax;"
    "uniform float uPitchMin;"
    "uniform float uPitchMax;\n"
    "uniform float uProjScale;"
    "uniform float uProjectionDistance;\n";

/// Spherical coordinates (radius, longitude in 0 to 2 pi, angle from plus y) and back; the
/// fragment's position in item units, from the lower left corner.
inline constexpr char kFunctions[] =
    "vec3 toSpherical(in vec3 a){"
    "float b,c,d;"
    "b=length(a);"
    "c=-atan(a.x,a.z);"
    "c+=(1.0-step(0.0,c))*twopi;"
    "d=acos(a.y/b);"
    "return vec3(b,c,d);}\n"
    "vec3 toCartesian(in vec3 rtp){"
    "float r=rtp.x,theta=rtp.y,phi=rtp.z;"
    "return vec3(r*sin(theta)*sin(phi),r*cos(theta)*sin(phi),r*cos(phi));}\n"
    "vec2 fragCoord() { return vec2(texCoord.x * uViewportSize.x, texCoord.y * uViewportSize.y); }\n"
    "mat4 getMatViewInverse() { return uMatViewInverse; }\n";

/// The mapping from a fragment to the source; `a` is the field of view.
inline constexpr char kMappingBegin[] = "vec2 p(in float a, in vec2 fragCoord){";
inline constexpr char kMappingEnd[] = "return uv;}";

// Rays. The screen vector runs from -1 to 1 along the viewport's shorter side, so the field of view
// is always that of the shorter side. Each piece leaves the ray in the turned world in `pt`.

/// Gnomonic: the plane z = -1.
inline constexpr char kRayRectilinear[] =
    "float b=tan(a/2.0);"
    "vec3 screenPt = vec3(vec2(b * (2.0 * fragCoord / uViewportSizeMin - uViewportSizeRatio)), "
    "-1.0);";
/// A headset's lenses may scale the vertical.
inline constexpr char kRayRectilinearHmd[] = "screenPt.y *= uScaleCorrector;";
inline constexpr char kRayRectilinearEnd[] =
    "vec3 pt = vec3(getMatViewInverse() * vec4(screenPt,1.0));";

/// Inverse stereographic map from (0, 0, 1): a radius of b + 1 = 1.25 lies 90 degrees off the axis.
inline constexpr char kRayLittlePlanet[] =
    "float b,d,e,f;"
    "b=.25;"
    "vec2 c=a*(fragCoord*2./uViewportSizeMin-uViewportSizeRatio);"
    "d=dot(c,c);"
    "float bb=(b+1.)*(b+1.);"
    "e=d+bb;"
    "f=2.*(b+1.)/e;"
    "vec3 g,h;"
    "g=vec3(vec2(f*c),(d-bb)/(d+bb));"
    "vec3 pt=vec3(getMatViewInverse()*vec4(g,1.0));";

/// Equidistant: the angle off the axis grows with the radius. Beyond a full turn there is nothing,
/// and a coordinate outside 0 to 1 is rejected later. The exact centre is 0 / 0 and comes out
/// black, which only an odd viewport can show.
inline constexpr char kRayFisheye[] =
    "vec2 screenPt = 2.0 * fragCoord / uViewportSizeMin - uViewportSizeRatio;"
    "float o_r = sqrt(dot(screenPt, screenPt));"
    "if (o_r * a > twopi) { return vec2(-1.); }"
    "float agl = o_r * a / 2.0;"
    "vec3 worldPt = vec3(screenPt * sin(agl) / o_r, -cos(agl));"
    "vec3 pt=vec3(getMatViewInverse() * vec4(worldPt,1.0));";

/// The line from the eye point (0, 0, uProjectionDistance) through (c, -1), cut with the unit
/// sphere at its far side: rectilinear at distance 0, stereographic at 1.
inline constexpr char kRayAdaptive[] =
    "vec2 screenPt = ((2.0 * fragCoord / uViewportSizeMin) - uViewportSizeRatio);"
    "vec2 c = uProjScale * screenPt;"
    "float zs = uProjectionDistance;"
    "float xy2 = dot(c,c);"
    "float zs12 = (zs+1.0)*(zs+1.0);"
    "float delta = 4.0*(zs*zs*xy2*xy2 - (xy2+zs12)*(xy2*zs*zs-zs12));"
    "float z = (2.0*zs*xy2 - sqrt(delta)) / (2.0 * (zs12 + xy2));"
    "float x = c.x * ((zs-z) / (zs+1.0));"
    "float y = c.y * ((zs-z) / (zs+1.0));"
    "vec3 pt = vec3(getMatViewInverse() * vec4(x, y, z, 1.0));";

// Texture coordinates. Each piece declares `uv`, with (0, 0) at the picture's upper left corner.

/// Longitude and latitude; longitude 0, the middle of the picture, lies along minus z.
inline constexpr char kSourceEquirectangular[] = "vec2 uv = toEquiTexCoords(toSpherical(pt).yz);";

/// A partial panorama fills just its own angles; for a full sphere this is the identity.
inline constexpr char kAngularLimits[] =
    "float f_x = 1.0 / (abs(uYawMin - uYawMax)/twopi);"
    "float g_x = f_x * (abs(-pi - uYawMin)/twopi);"
    "uv.x *= f_x;"
    "uv.x -= g_x;"
    "float f_y = 1.0 / (abs(uPitchMin - uPitchMax)/pi);"
    "float g_y = f_y * (abs(halfpi - uPitchMax)/pi);"
    "uv.y *= f_y;"
    "uv.y -= g_y;";

/// A window onto the picture at the angular scale of an equirectangular one, panned by the camera's
/// angles: no ray, so neither roll nor the output projection matter.
inline constexpr char kSourceStandard[] =
    "  vec2 screenPt = ((2.0 * fragCoord / uViewportSizeMin) - uViewportSizeRatio);"
    "  float scale = a / 2.0;"
    "  vec2 tp = screenPt * scale + vec2(pi + uCameraYaw, halfpi - uCameraPitch);"
    "  tp.x += twopi*(1.0-step(0.0,tp.x));"
    "  tp.x -= twopi*step(twopi,tp.x);"
    "  vec2 uv = toEquiTexCoords(tp);"
    "  uv.y = 1.0 - uv.y;"
    "  uv.x = mod(uv.x, 1.0);";

/// The lens axis is turned from plus y to minus x.
inline constexpr char kSourceFisheyeTurned[] =
    "float ty = pt.y;"
    "pt.y = -pt.x;"
    "pt.x = ty;";
/// Equidistant about the lens axis plus y; the image circle of radius 0.5 reaches 0.665 pi.
inline constexpr char kSourceFisheyeCircle[] =
    "float i_r = atan(sqrt(pt.x*pt.x + pt.z*pt.z), pt.y) / (pi*1.33);"
    "float theta = atan(pt.x, pt.z);"
    "vec2 uv;"
    "uv.x = i_r * cos(theta) + 0.5;"
    "uv.y = i_r * sin(theta) + 0.5;";

/// The face of the largest component, x before y before z. Each face is pulled in by about half a
/// percent, so that filtering never reads across a seam. In three columns and two rows:
/// right, left, up; down, front, back. A zero vector has no face and is rejected.
inline constexpr char kSourceCubemap[] =
    "   float normInf; float xx; float yy; float zz;\n"
    "   normInf = max(abs(pt.x), max(abs(pt.y), abs(pt.z)));\n"
    "   xx = (pt.x / normInf + 1.0) / 2.0;\n"
    "   yy = (pt.y / normInf + 1.0) / 2.0;\n"
    "   zz = (pt.z / normInf + 1.0) / 2.0;\n"
    "   float expandFactor = 1.0 / 1.01;\n"
    "   float tinyOffset = 0.005;\n"
    "   xx = expandFactor * xx + tinyOffset;\n"
    "   yy = expandFactor * yy + tinyOffset;\n"
    "   zz = expandFactor * zz + tinyOffset;\n"
    "   vec2 uv = vec2(-1.0, -1.0);\n"
    "   if (abs(pt.x) == normInf) {\n"
    "      if (pt.x > 0.0) uv = vec2(zz / 3.0, (1.0 - yy) / 2.0);\n"
    "      else if (pt.x < 0.0) uv = vec2((1.0 - zz) / 3.0 + 1.0/3.0, (1.0 - yy) / 2.0);\n"
    "   } else if (abs(pt.y) == normInf) {\n"
    "      if (pt.y > 0.0) uv = vec2(xx / 3.0 + 2.0/3.0, (1.0 - zz) / 2.0);\n"
    "      else if (pt.y < 0.0) uv = vec2(xx / 3.0, zz / 2.0 + 0.5);\n"
    "   } else {\n"
    "      if (pt.z > 0.0) uv = vec2((1.0 - xx) / 3.0 + 2.0/3.0, (1.0 - yy) / 2.0 + 0.5);\n"
    "      else if (pt.z < 0.0) uv = vec2(xx / 3.0 + 1.0/3.0, (1.0 - yy) / 2.0 + 0.5);\n"
    "   }\n";

inline constexpr char kMainBegin[] =
    "void main(){"
    "vec2 pixel = fragCoord() / uViewportSize;"
    "vec2 a;"
    "float qb=.017453293*uFov;"
    "highp vec3 color,frag;"
    "a=p(qb,fragCoord());";

inline constexpr char kFlipY[] = "a.y = 1.0 - a.y;";

/// Back to angles and, before the viewer, on to a plane at unit distance, 2:1, of half-width 3.157:
/// 0.07919222 is 1 / (2 tan 81 degrees). Behind the viewer the coordinates fall out of 0 to 1.
inline constexpr char kOverlayPlane[] =
    "float theta = (2.0 * a.x - 1.0) * pi;"
    "float phi   = halfpi - pi * (1.0-a.y);"
    "if(theta<halfpi && theta>-halfpi){"
    "    a.x = tan(theta) * 0.07919222 + 0.5;"
    "    a.y = 0.5 - 0.07919222 * tan(phi) / cos(theta);}"
    "    a.x = (a.x*2.0)-0.5;"
    "    a.y = (a.y*4.0)-1.5;";

/// The background shows where the source has nothing.
inline constexpr char kReject[] = "if (a.x < 0.0 || a.x > 1.0 || a.y < 0.0 || a.y > 1.0) discard;";

inline constexpr char kSampleOverlay[] =
    "color = texture2D(uSampler,a).rgb;"
    "float alpha = texture2D(uSampler,a).a;";

// Stereo. One eye's half of the frame, after the rejection: projections see the whole range.
inline constexpr char kStereoOverUnder[] =
    "if (uEye == 1) { a.y /= 2.0; a.y += 0.5; }else { a.y /= 2.0; }";
inline constexpr char kStereoSideBySide[] =
    "if (uEye == 1) { a.x /= 2.0; a.x += 0.5; }else { a.x /= 2.0; }";
inline constexpr char kStereoOverUnderInverted[] =
    "if (uEye == 1) { a.y /= 2.0; }else { a.y /= 2.0; a.y += 0.5; }";
inline constexpr char kStereoSideBySideInverted[] =
    "if (uEye == 1) { a.x /= 2.0; }else { a.x /= 2.0; a.x += 0.5; }";

inline constexpr char kOpaque[] = "float alpha = 1.0;";
inline constexpr char kSampleSwapped[] = "color = texture2D(uSampler,a).bgr;";
inline constexpr char kSample[] = "color = texture2D(uSampler,a).rgb;";

/// Black where the coordinate is not a number, which no comparison above rejects.
inline constexpr char kBorderGuard[] =
    "color *= (step(0.0, a.x) * step(0.0, 1.0 - a.x));"
    "color *= (step(0.0, a.y) * step(0.0, 1.0 - a.y));";

// Grading. With every control at 0 all but the saturation are identities; saturation 0 takes away
// 0.1 percent of the colour, which is part of the look.
inline constexpr char kColorMatrix[] = "frag = vec4(uColorMatrix * vec4(color,1.0)).xyz;";

inline constexpr char kVibrance[] =
    "float maverage = (frag.r + frag.g + frag.b) / 3.0;"
    "float mx = max(frag.r, max(frag.g, frag.b));"
    "float amt = (mx - maverage) * (-uVibrance * 3.0);"
    "frag = mix(frag, vec3(mx), amt);";

/// The hue turns the colour about the grey axis.
inline constexpr char kHueSaturation[] =
    "float wangle = uHue * pi;"
    "float ws = sin(wangle);"
    "float wc = cos(wangle);"
    "vec3 wweights = (vec3(2.0 * wc, -sqrt(3.0) * ws - wc, sqrt(3.0) * ws - wc) + 1.0) / 3.0;"
    "float wlen = length(frag);"
    "frag = vec3(dot(frag, wweights.xyz), dot(frag, wweights.zxy), dot(frag, wweights.yzx));"
    "float waverage = (frag.r + frag.g + frag.b) / 3.0;"
    "float satPositive = step(0.0, uSaturation);"
    "float mulSat = satPositive * (1.0 - 1.0 / (1.001 - uSaturation)) + "
    "(1.0 - satPositive) * (-uSaturation);"
    "frag += (vec3(waverage) - frag) * mulSat;";

inline constexpr char kBrightnessContrast[] =
    "frag += uBrightness;"
    "frag = (frag - 0.5) / (1.0 - uContrast) + 0.5;";

// Effects, on the graded colour.
inline constexpr char kSepia[] =
    "float yy = 0.3 * frag.r + 0.59 * frag.g + 0.11 * frag.b;"
    "frag = vec3(yy + 0.15, yy + 0.07, yy - 0.12);";

inline constexpr char kBlackAndWhite[] =
    "float threshold = 0.5;"
    "float yy = 0.3 *frag.r + 0.59 * frag.g + 0.11 * frag.b;"
    "yy = yy < threshold ? 0.0 : 1.0;"
    "frag = vec3(yy, yy, yy);";

/// Scan lines and a greenish tint; with the time at 0 the pattern stands still.
inline constexpr char kTv[] =
    "vec3 fxtmp = frag;"
    "fxtmp = clamp(1.4 * fxtmp * fxtmp, 0.0, 1.0);"
    "float sweepDensity = uViewportSize.y * 1.50;"
    "float sweepRate = 60.0;"
    "float vv = 0.5 + ((fragCoord() / uViewportSize).y - 0.5) * (0.9 + 0.1 * sin(0.2 * uTime));"
    "fxtmp *= 0.92 + 0.08 * sin(sweepRate * uTime + sweepDensity * vv);"
    "fxtmp *= 1.3 + 0.04 * (0.9 * cos(10.0 * uTime) + cos(40.0 * uTime));"
    "frag = clamp(fxtmp * vec3(0.95, 1.05, 0.95), 0.0, 1.0);";

inline constexpr char kInvert[] = "frag = 1.0 - frag;";

inline constexpr char kRedOnly[] =
    "vec3 fxtmp = frag;"
    "fxtmp.r = clamp(1.5 * fxtmp.r, 0.0, 1.0);"
    "float fxavg = (fxtmp.r + fxtmp.g + fxtmp.b) / 3.0;"
    "float thr = smoothstep(0.2, 0.8, fxtmp.r) * (1.0 - step(0.1, fxtmp.g)) * "
    "(1.0 - step(0.1, fxtmp.b));"
    "float gb = fxavg * (1.0 - thr);"
    "fxtmp = vec3(max(fxavg, thr), gb, gb);"
    "frag = fxtmp;";

inline constexpr char kYellowOnly[] =
    "vec3 fxtmp = frag;"
    "fxtmp.r = clamp(1.5 * fxtmp.r, 0.0, 1.0);"
    "fxtmp.g = clamp(1.5 * fxtmp.g, 0.0, 1.0);"
    "float fxavg = (fxtmp.r + fxtmp.g + fxtmp.b) / 3.0;"
    "float thr = smoothstep(0.2, 0.8, fxtmp.r) * smoothstep(0.2, 0.8, fxtmp.g) * "
    "(1.0 - step(0.1, fxtmp.b));"
    "float gb = fxavg * (1.0 - thr);"
    "fxtmp = vec3(max(fxavg, thr), max(fxavg, thr), gb);"
    "frag = fxtmp;";

inline constexpr char kBlueOnly[] =
    "vec3 fxtmp = frag;"
    "fxtmp.b = clamp(1.5 * fxtmp.b, 0.0, 1.0);"
    "float fxavg = (fxtmp.r + fxtmp.g + fxtmp.b) / 3.0;"
    "float thr = smoothstep(0.2, 0.8, fxtmp.b) * (1.0 - step(0.1, fxtmp.r)) * "
    "(1.0 - step(0.1, fxtmp.g));"
    "float gb = fxavg * (1.0 - thr);"
    "fxtmp = vec3(gb, gb, max(fxavg, thr));"
    "frag = fxtmp;";

inline constexpr char kVignette[] =
    "vec3 vigtmp = frag * smoothstep(0.8, uVignettingRadius * 0.799, "
    "distance(pixel, vec2(0.5, 0.5)) * (uVignettingAmount + uVignettingRadius));";

inline constexpr char kMainEnd[] = "gl_FragColor = vec4(vigtmp, alpha);}";

inline constexpr char kCopyBegin[] =
    "uniform sampler2D src;\n"
    "varying highp vec4 texCoord;"
    "void main() {\n"
    "   highp vec4 color = texture2D(src,vec2(texCoord.x,texCoord.y));\n";
inline constexpr char kCopySwapped[] = "   gl_FragColor = vec4(color.b,color.g,color.r,color.a);\n";
inline constexpr char kCopy[] = "   gl_FragColor = vec4(color.r,color.g,color.b,color.a);\n";
inline constexpr char kCopyEnd[] = "}\n";

} // namespace ShaderFragments
