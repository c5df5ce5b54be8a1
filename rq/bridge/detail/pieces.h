#pragma once

#include <rq/prim/Primitive.h>

namespace rq
{
/// A single primitive itself, several in a collection, null without any.
RQ_PrimitiveHandle collected(const BAS_Array<RQ_PrimitiveHandle> &primitives);

/// The primitive with each mesh of more than `mostFaces` polygons, itself or in collections, replaced by a collection of its
/// pieces; the primitive itself without such a mesh, and with a limit below 1.
RQ_PrimitiveHandle inPieces(const RQ_PrimitiveHandle &whole, int64_t mostFaces);
}  // namespace rq
