#include <apps/viewport/shaderTexts.h>

namespace rq::viewport::shader
{
const char *const kCommon = R"(
layout(binding = 0) uniform samplerBuffer positions;
layout(binding = 1) uniform isamplerBuffer corners;
layout(binding = 2) uniform isamplerBuffer cornerSources;
layout(binding = 3) uniform isamplerBuffer faceSources;
layout(binding = 4) uniform usamplerBuffer edges;
layout(binding = 5) uniform samplerBuffer placements;
layout(binding = 6) uniform samplerBuffer normals;
layout(binding = 7) uniform samplerBuffer colours;
layout(binding = 8) uniform samplerBuffer widths;

uniform mat4 view;        // from the scene, moved to its middle; of a single copy from the shape itself
uniform bool hasCopies;
uniform mat4 projection;
uniform vec2 pixels;      // of the picture
uniform int positionSize;
uniform bvec3 has;        // corner sources, face sources, edges

// Components a value, and which of an element's numbers finds it: see Lookup.
uniform ivec2 normalForm, colourForm, widthForm;
uniform float colourScale;

uniform int colourMode;   // 0 plain, 1 as it is, 2 one component mapped, 3 magnitude mapped, 4 distinct values
uniform int colourComponent;
uniform vec2 colourRange;
uniform vec3 colourStops[8];
uniform int colourStopCount;
uniform vec3 plainColour;

struct Element { int corner, point, face; };

Element elementOfCorner(int corner, int cornersPerElement)
{
    Element e;
    int element = corner / cornersPerElement;
    e.point = texelFetch(corners, corner).x;
    e.corner = has.x ? texelFetch(cornerSources, corner).x : corner;
    e.face = has.y ? texelFetch(faceSources, element).x : element;
    return e;
}

int entryOf(int lookup, Element e, int copy)
{
    return lookup == 1 ? e.corner : lookup == 2 ? e.point : lookup == 3 ? e.face : lookup == 5 ? copy : 0;
}

vec3 tripleAt(samplerBuffer values, int size, int entry)
{
    int at = entry * size;
    return vec3(texelFetch(values, at).x, texelFetch(values, at + 1).x, texelFetch(values, at + 2).x);
}

// What is interpolated and then coloured: three components, or one number.
vec3 colourValue(Element e, int copy)
{
    if (colourMode == 0)
        return vec3(0);
    int at = entryOf(colourForm.y, e, copy) * colourForm.x;
    if (colourMode == 1)
        return vec3(texelFetch(colours, at).x, texelFetch(colours, at + 1).x, texelFetch(colours, at + 2).x) * colourScale;
    if (colourMode != 3)
        return vec3(texelFetch(colours, at + colourComponent).x * colourScale);
    float sum = 0;
    for (int c = 0; c < colourForm.x; ++c)
    {
        float value = texelFetch(colours, at + c).x * colourScale;
        sum += value * value;
    }
    return vec3(sqrt(sum));
}

mat4 viewOf(int copy)
{
    if (!hasCopies)
        return view;
    int at = 4 * copy;
    return view * mat4(texelFetch(placements, at), texelFetch(placements, at + 1), texelFetch(placements, at + 2),
                       texelFetch(placements, at + 3));
}

// Normals follow the cofactors, which also serve a placement that flattens.
vec3 placedNormal(vec3 n, mat3 m)
{
    vec3 c = n.x * cross(m[1], m[2]) + n.y * cross(m[2], m[0]) + n.z * cross(m[0], m[1]);
    return dot(m[0], cross(m[1], m[2])) < 0 ? -c : c;
}
)";

const char *const kMeshVertex = R"(
out vec3 viewPosition;
out vec3 viewNormal;
out vec3 value;
flat out float category;
flat out int mirrored;
#ifndef INDEXED
out vec3 bary;
flat out uint edgeBits;
#endif

void main()
{
#ifdef INDEXED
    Element e = Element(0, gl_VertexID, 0);
#else
    Element e = elementOfCorner(gl_VertexID, 3);
    bary = vec3(gl_VertexID % 3 == 0, gl_VertexID % 3 == 1, gl_VertexID % 3 == 2);
    edgeBits = has.z ? texelFetch(edges, gl_VertexID / 3).x : 7u;
#endif
    mat4 toView = viewOf(gl_InstanceID);
    viewPosition = (toView * vec4(tripleAt(positions, positionSize, e.point), 1)).xyz;
    viewNormal = vec3(0);
    if (normalForm.y != 0)
        viewNormal = placedNormal(tripleAt(normals, normalForm.x, entryOf(normalForm.y, e, gl_InstanceID)), mat3(toView));
    value = colourValue(e, gl_InstanceID);
    category = value.x;
    mirrored = determinant(mat3(toView)) < 0 ? 1 : 0;
    gl_Position = projection * vec4(viewPosition, 1);
}
)";

const char *const kSegmentVertex = R"(
out vec3 viewPosition;
out vec3 viewNormal;
out vec3 value;
flat out float category;
uniform float pixelWidth;

void main()
{
    const int kEnd[6] = int[6](0, 1, 0, 0, 1, 1);
    const float kSide[6] = float[6](-1, -1, 1, 1, -1, 1);
    int segment = gl_VertexID / 6, corner = gl_VertexID % 6;
    mat4 toView = viewOf(gl_InstanceID);
    Element ends[2] = Element[2](elementOfCorner(2 * segment, 2), elementOfCorner(2 * segment + 1, 2));
    vec3 p[2];
    vec4 clip[2];
    for (int i = 0; i < 2; ++i)
    {
        p[i] = (toView * vec4(tripleAt(positions, positionSize, ends[i].point), 1)).xyz;
        clip[i] = projection * vec4(p[i], 1);
    }
    // What lies behind the eye is drawn up to where it passes it.
    const float kNearest = 1e-6;
    for (int i = 0; i < 2; ++i)
        if (clip[i].w < kNearest && clip[1 - i].w > kNearest)
        {
            float t = (kNearest - clip[i].w) / (clip[1 - i].w - clip[i].w);
            clip[i] = mix(clip[i], clip[1 - i], t);
            p[i] = mix(p[i], p[1 - i], t);
        }
    Element e = ends[kEnd[corner]];
    vec4 at = clip[kEnd[corner]];
    vec2 along = (clip[1].xy / clip[1].w - clip[0].xy / clip[0].w) * pixels;
    vec2 across = length(along) > 0 ? normalize(vec2(-along.y, along.x)) : vec2(1, 0);
    float halfWidth = 0.5 * pixelWidth;
    if (widthForm.y != 0)
    {
        float scale = pow(abs(determinant(mat3(toView))), 1.0 / 3.0);
        float width = texelFetch(widths, entryOf(widthForm.y, e, gl_InstanceID) * widthForm.x).x * scale;
        halfWidth = max(0.5, 0.25 * width * projection[1][1] * pixels.y / at.w);
    }
    // Wide pieces reach a little further than their ends, so that bends have no gaps.
    float side = kSide[corner], ending = float(2 * kEnd[corner] - 1);
    vec2 further = halfWidth > 1.5 ? vec2(across.y, -across.x) * 0.4 * ending : vec2(0);
    at.xy += (side * across + further) * halfWidth * 2.0 / pixels * at.w;
    viewPosition = p[kEnd[corner]];
    viewNormal = halfWidth > 1.5 ? normalize(vec3(side * across, 0.6)) : vec3(0, 0, 1);
    value = colourValue(e, gl_InstanceID);
    category = value.x;
    gl_Position = at;
}
)";

const char *const kPointVertex = R"(
out vec3 viewPosition;
out vec3 value;
flat out float category;
flat out int isBall;
uniform float pixelWidth;
uniform float lift;  // towards the eye, by parts of the depth

void main()
{
    Element e = Element(gl_VertexID, gl_VertexID, gl_VertexID);
    mat4 toView = viewOf(gl_InstanceID);
    viewPosition = (toView * vec4(tripleAt(positions, positionSize, gl_VertexID), 1)).xyz;
    gl_Position = projection * vec4(viewPosition * (1.0 - lift), 1);
    gl_PointSize = pixelWidth;
    isBall = 0;
    if (widthForm.y != 0)
    {
        float scale = pow(abs(determinant(mat3(toView))), 1.0 / 3.0);
        float width = texelFetch(widths, entryOf(widthForm.y, e, gl_InstanceID) * widthForm.x).x * scale;
        gl_PointSize = max(1.5, 0.5 * width * projection[1][1] * pixels.y / gl_Position.w);
        isBall = gl_PointSize > 3.0 ? 1 : 0;
    }
    value = colourValue(e, gl_InstanceID);
    category = value.x;
}
)";

const char *const kNormalVertex = R"(
uniform float normalLength;
uniform int perElement;  // corners of what has a normal: 3 a triangle, 1 a corner, 0 a point

void main()
{
    int at = gl_VertexID / 2;
    mat4 toView = viewOf(gl_InstanceID);
    vec3 p = vec3(0), n;
    Element e = Element(at, at, at);
    if (perElement == 0)
        p = tripleAt(positions, positionSize, at);
    else
    {
        vec3 c[3];
        for (int i = 0; i < perElement; ++i)
        {
            e = elementOfCorner(perElement * at + i, 3);
            c[i] = tripleAt(positions, positionSize, e.point);
            p += c[i] / float(perElement);
        }
        n = cross(c[1] - c[0], c[2] - c[0]);
    }
    if (normalForm.y != 0)
        n = tripleAt(normals, normalForm.x, entryOf(normalForm.y, e, gl_InstanceID));
    n = placedNormal(n, mat3(toView));
    vec3 viewPosition = (toView * vec4(p, 1)).xyz;
    if (gl_VertexID % 2 == 1 && length(n) > 0)
        viewPosition += normalize(n) * normalLength;
    gl_Position = projection * vec4(viewPosition * 0.9995, 1);
}
)";
}  // namespace rq::viewport::shader
