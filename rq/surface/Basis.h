#pragma once

#include <cstdint>

#include <rq/api.h>

/// How the control vertices of a curve make its shape.  The numbers are part of the interface.
///
/// A curve is a row of spans; each is shaped by as many consecutive vertices as its order, and the next span begins `step`
/// vertices further on.
enum RQ_Basis : int32_t
{
    RQ_BASIS_INVALID = -1,
    RQ_BASIS_LINEAR = 0,  ///< straight from vertex to vertex
    RQ_BASIS_BEZIER,      ///< Bernstein polynomials; neighbouring spans share a vertex
    RQ_BASIS_BSPLINE,     ///< uniform unless there are knots
    RQ_BASIS_CATMULLROM,  ///< through all vertices but the first and the last
    RQ_BASIS_HERMITE,     ///< point, tangent, point, tangent, ...
    RQ_BASIS_POWER        ///< coefficients of 1, t, t^2, ... for every span
};

/// How parameters are spread over the spans of a curve through its vertices.
enum RQ_Parameterization : int32_t
{
    RQ_PARAMETERIZATION_UNIFORM = 0,   ///< evenly
    RQ_PARAMETERIZATION_CHORD_LENGTH,  ///< by the distance between vertices
    RQ_PARAMETERIZATION_CENTRIPETAL    ///< by the square root of that distance
};

/// The basis of a name such as "catmullrom": exact and case-sensitive, -1 for null and for unknown names.
RQ_API RQ_Basis RQbasis(const char *name);

/// The name of a basis, "invalid" for a value that is none.
RQ_API const char *RQbasis(RQ_Basis basis);

// The literal 0 would otherwise be taken for a null name.
inline const char *RQbasis(int basis) { return RQbasis(RQ_Basis(basis)); }

/// The number of vertices by which consecutive spans advance.
RQ_API int RQbasisStep(RQ_Basis basis, int order);
