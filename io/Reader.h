#pragma once

#include <string>

#include <host/fwd.h>
#include <io/Message.h>

namespace rq::io
{
/// Read a file of geometry into a detail.
///
/// Shape    what kind of file it is follows from how it begins: PLY, RQG, glTF, OFF, STL, OBJ or SWC, and where that says
///          nothing from the end of its name in any case: ".ply", ".rqg.json", ".rqg", ".glb", ".gltf", ".off", ".stl",
///          ".obj", ".xyz", ".pts" or ".swc".  Standard input, named "-", is XYZ when it begins with other numbers, and else
///          OBJ.  A byte order mark of UTF-8 in front is passed over.  What a file holds replaces what the detail held
/// Failure  false, with an error among the messages, and the detail untouched.  Warnings tell what was passed over or mended
/// Ownership  the detail has its own memory, unless `inPlace`: then columns that lie in the file as the host keeps them are
///          read from its mapping for as long as a snapshot lives, and nobody may write to or shorten the file meanwhile
/// Threads  files are read in parallel; the result does not depend on the number of threads
RQ_API bool load(const std::string &path, MOD_DetailHandle &detail, Messages &messages, bool inPlace = false);
}  // namespace rq::io
