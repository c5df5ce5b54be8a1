#pragma once

#include <string>

#include <host/bas/Array.h>
#include <rq/data/types.h>

/// What can be wrong with the cage of a subdivision surface.  Codes up to `RQ_SUBD_LAST_FATAL` leave no surface; the others
/// leave out what they complain of.
enum RQ_SubdFaultCode
{
    RQ_SUBD_MESH,          ///< counts, vertex list and attributes do not fit together
    RQ_SUBD_SCHEME,        ///< no such scheme
    RQ_SUBD_FACE_CORNERS,  ///< a face has fewer than 3 corners, or more than 65535
    RQ_SUBD_LOOP_FACE,     ///< a face under the Loop scheme is no triangle
    RQ_SUBD_POINT_FACES,   ///< more than 65535 corners lie at a point
    RQ_SUBD_SIZE,          ///< more corners than 32-bit numbers can name
    RQ_SUBD_REFUSED,       ///< the evaluation itself refuses the topology
    RQ_SUBD_LAST_FATAL = RQ_SUBD_REFUSED,
    RQ_SUBD_TAG_LENGTH,    ///< a tag's arrays do not fit each other
    RQ_SUBD_CREASE_EDGE,   ///< a crease lies on no edge
    RQ_SUBD_CORNER_POINT,  ///< a corner lies at no point of a face
    RQ_SUBD_HOLE_FACE,     ///< a hole is no face
    RQ_SUBD_SHARPNESS,     ///< a sharpness is negative or no number
    RQ_SUBD_METHOD         ///< a boundary or method tag has a value that means nothing
};

/// One kind of fault of a cage.
struct RQ_SubdFault
{
    RQ_SubdFaultCode code;
    RQ_Owner owner;       ///< what `element` numbers: faces (uniform), points, or nothing (detail)
    int64_t element;      ///< the first that is concerned; of a crease its first point
    int64_t count;        ///< how many are
    std::string message;  ///< a sentence that names them

    bool isFatal() const { return code <= RQ_SUBD_LAST_FATAL; }
};

using RQ_SubdFaults = BAS_Array<RQ_SubdFault>;
