#include <apps/viewport/shaderTexts.h>

namespace rq::viewport::shader
{
const char *const kFragment = R"(
in vec3 viewPosition;
in vec3 value;
flat in float category;
#ifdef SPRITE
flat in int isBall;
#else
in vec3 viewNormal;
#endif
#ifdef MESH
flat in int mirrored;
#ifndef INDEXED
in vec3 bary;
flat in uint edgeBits;
#endif
#endif
uniform bvec4 show;  // faces, wires, tint of back faces, selected
layout(location = 0) out vec4 result;

vec3 decoded(vec3 c) { return pow(clamp(c, 0.0, 1.0), vec3(2.2)); }
vec3 encoded(vec3 c) { return pow(clamp(c, 0.0, 1.0), vec3(1.0 / 2.2)); }

// Hues that differ from those before, whatever the number.
vec3 distinct(float number)
{
    if (!(number >= 0.0))
        return plainColour;
    float hue = fract(number * 0.618034 + 0.08) * 6.0;
    vec3 c = clamp(vec3(abs(hue - 3.0) - 1.0, 2.0 - abs(hue - 2.0), 2.0 - abs(hue - 4.0)), 0.0, 1.0);
    return mix(vec3(0.62), c, 0.62) * (mod(number, 3.0) == 1.0 ? 0.78 : 0.95);
}

vec3 baseColour()
{
    if (colourMode == 0)
        return plainColour;
    if (colourMode == 4)
        return distinct(category);
    if (any(isnan(value)) || any(isinf(value)))
        return plainColour;
    if (colourMode == 1)
        return value;
    float span = colourRange.y - colourRange.x;
    float t = span > 0.0 ? clamp((value.x - colourRange.x) / span, 0.0, 1.0) : 0.5;
    t *= float(colourStopCount - 1);
    int first = min(int(t), colourStopCount - 2);
    return mix(colourStops[first], colourStops[first + 1], t - float(first));
}

// A lamp above the eye's left shoulder, a weaker one at its right, and some light from everywhere.
float light(vec3 n)
{
    return 0.13 + 0.68 * max(dot(n, normalize(vec3(-0.35, 0.55, 0.75))), 0.0) +
           0.16 * max(dot(n, normalize(vec3(0.7, -0.15, 0.5))), 0.0) + 0.07 * (0.5 + 0.5 * n.y);
}

#if defined(MESH) && !defined(INDEXED)
// How much of the pixel an edge of a face covers.
float wire()
{
    vec3 away = bary / max(sqrt(dFdx(bary) * dFdx(bary) + dFdy(bary) * dFdy(bary)), vec3(1e-12));
    float nearest = 1e9;
    for (int i = 0; i < 3; ++i)
        if ((edgeBits >> i & 1u) != 0u)
            nearest = min(nearest, away[(i + 2) % 3]);
    return 1.0 - smoothstep(0.4, 1.3, nearest);
}
#endif

void main()
{
    vec3 colour = decoded(baseColour());
#ifdef SPRITE
    vec2 c = 2.0 * gl_PointCoord - 1.0;
    if (dot(c, c) > 1.0)
        discard;
    vec3 n = isBall == 1 ? vec3(c.x, -c.y, sqrt(1.0 - dot(c, c))) : vec3(0, 0, 1);
#else
    vec3 facet = normalize(cross(dFdx(viewPosition), dFdy(viewPosition)));
    vec3 n = dot(viewNormal, viewNormal) > 0.0 ? normalize(viewNormal) : facet;
#endif
#ifdef MESH
    if (any(isnan(n)) || any(isinf(n)))
        n = any(isnan(facet)) ? vec3(0, 0, 1) : facet;
    if (dot(n, facet) < 0.0)
        n = -n;
    if (show.z && gl_FrontFacing == (mirrored == 1))
        colour = mix(colour, vec3(0.06, 0.16, 0.42), 0.65);
#endif
    if (show.w)
        colour = mix(colour, vec3(1.0, 0.42, 0.05), 0.45);
    colour *= light(n);
#if defined(MESH) && !defined(INDEXED)
    if (show.y)
    {
        float covered = wire();
        if (!show.x && covered < 0.35)
            discard;
        colour = show.x ? mix(colour, colour * 0.12, 0.85 * covered) : mix(vec3(0.55), colour, 0.5);
    }
#endif
    result = vec4(encoded(colour), 1);
}
)";

const char *const kPlainFragment = R"(
layout(location = 0) out vec4 result;
void main() { result = vec4(plainColour, 1); }
)";
}  // namespace rq::viewport::shader
