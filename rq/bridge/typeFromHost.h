#pragma once

#include <host/elm/types.h>
#include <rq/data/types.h>

/// What the host's type info of a tuple means here.
///
/// A homogeneous point needs four components, without them it is no type at all; a host matrix is a 3x3 one when its tuple
/// is a multiple of nine, else a 4x4 one; texture coordinates are plain numbers.
RQ_API RQ_Type RQtypeFromHost(ELM_TypeInfo type, int tupleSize);
