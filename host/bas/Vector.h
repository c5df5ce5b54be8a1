#pragma once

#include <Imath/ImathMatrix.h>
#include <Imath/ImathQuat.h>
#include <Imath/ImathVec.h>

// Vectors are rows: a point is transformed as v * M and the translation is the fourth row.

using BAS_Vec2d = Imath::V2d;
using BAS_Vec3f = Imath::V3f;
using BAS_Vec3d = Imath::V3d;
using BAS_Vec4d = Imath::V4d;
using BAS_Mat3f = Imath::M33f;
using BAS_Mat3d = Imath::M33d;
using BAS_Mat4f = Imath::M44f;
using BAS_Mat4d = Imath::M44d;
using BAS_Quatd = Imath::Quatd;
