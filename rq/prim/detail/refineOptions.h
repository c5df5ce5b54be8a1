#pragma once

// The refinement options, each written once.  RefineParms.h makes their members of the lists, RefineParms.cpp their bodies
// and the table that `RQ_RefineParms::options` shows.

// Kept in the option store: X(kind, stem, key, default, meaning).  The kinds are Bool, Int, Float, Angle (kept as 64-bit,
// read and set as 32-bit float) and Text.
#define RQ_STORED_REFINE_OPTIONS(X)                                                                                         \
    X(Bool, GeoPointMesh, "geo:pointmesh", false, "turn all points into a point mesh, without any primitives")              \
    X(Bool, ShowUnusedPoints, "geo:unusedpoints", true, "turn points that no primitive uses into a point mesh")             \
    X(Bool, ShowAllPoints, "geo:allpoints", false, "turn all points into a point mesh, beside the primitives")              \
    X(Bool, GeoPolygonMesh, "geo:polygonmesh", true, "gather polygons into meshes instead of one primitive each")           \
    X(Text, GeoRefineGroup, "geo:refinegroup", nullptr, "the only group of elements that is refined")                       \
    X(Float, LOD, "lod", 1.0, "level of detail: factor on all divisions")                                                   \
    X(Float, ULOD, "ulod", 1.0, "level of detail along u")                                                                  \
    X(Float, VLOD, "vlod", 1.0, "level of detail along v")                                                                  \
    X(Float, QuadricDivs, "quadricdivs", 20.0, "divisions around a sphere, tube or circle")                                 \
    X(Int, MetaMaxDivs, "metamaxdivs", 4096, "most divisions of a metaball's grid")                                         \
    X(Float, MetaDensity, "metadensity", 30.0, "divisions of the grid across a metaball")                                   \
    X(Float, URange0, "urange_min", 0.0, "begin of the part along u that is wanted")                                        \
    X(Float, URange1, "urange_max", 1.0, "end of the part along u that is wanted")                                          \
    X(Float, VRange0, "vrange_min", 0.0, "begin of the part along v that is wanted")                                        \
    X(Float, VRange1, "vrange_max", 1.0, "end of the part along v that is wanted")                                          \
    X(Int, ViewportAgentMaxLOD, "agent:maxlod", 4, "hint for viewports: coarsest level of agents")                          \
    X(Int, ViewportAgentPointLimit, "agent:pointlimit", 1000, "hint for viewports: most points of an agent in full")        \
    X(Bool, RefineAgentsForViewport, "agent:refineviewport", false, "hint for viewports: refine agents to what is drawn")   \
    X(Bool, UseAgentCollisionLayer, "agent:collisionlayer", false, "hint for viewports: use the collision layer of agents") \
    X(Bool, UseGPUCharacterDeformation, "character:gpudeform", false, "hint for viewports: leave deformation to the GPU")   \
    X(Bool, ConvertIncludeIds, "gconvert:include_ids", false, "hint for converters: keep element ids")                      \
    X(Bool, ConvertParticlePrim, "gconvert:particleprim", false, "hint for converters: make particle primitives of points") \
    X(Bool, ConvertPack, "gconvert:pack", false, "hint for converters: pack the result")                                    \
    X(Bool, AllowPolySoup, "gconvert:allow_polysoup", true, "hint for converters: polygon soups may be made")               \
    X(Bool, CoalesceFragments, "coalescefragments", true, "merge fragments of one piece of geometry")                       \
    X(Bool, CoalesceVolumes, "coalescevolumes", true, "merge volumes that belong together")                                 \
    X(Int, FaceSetMode, "facesetmode", 0,                                                                                   \
      "face sets of meshes: 0 none, 1 of primitive groups with members, 2 of all groups")                                   \
    X(Bool, FastPolyCompacting, "fastpolycompacting", true,                                                                 \
      "skip the search for unused points where nothing can be unused")                                                      \
    X(Bool, AddVertexNormals, "addvertexnormals", false, "compute vertex normals where there are no normals")               \
    X(Angle, CuspAngle, "cuspangle", 60.06f, "degrees above which an edge stays sharp when normals are computed")           \
    X(Bool, AddMikkT, "addmikkt", false, "compute MikkTSpace tangents")                                                     \
    X(Int, MaxPointMeshSize, "maxpointmeshsize", -1, "most points of one point mesh, -1 for no limit")                      \
    X(Int, MaxPolyMeshSize, "maxpolymeshsize", -1, "most polygons of one mesh, -1 for no limit")                            \
    X(Int, MaxPolyCurveSize, "maxpolycurvesize", -1, "most vertices of one mesh of open polygons, -1 for no limit")         \
    X(Int, SequenceSubsteps, "sequencesubsteps", -1, "substeps of packed sequences, -1 for their own")                      \
    X(Bool, SeparateInstances, "separateinstance", false, "keep instances apart")                                           \
    X(Bool, FullBezierSupport, "fullBezierSupport", true, "the consumer draws Bezier forms of any order")                   \
    X(Bool, CubicBezierSupport, "cubicBezierSupport", true, "the consumer draws cubic Bezier forms")                        \
    X(Bool, RefineCRegionsToCurves, "refinecregionstocurves", false, "turn capture regions into curves")                    \
    X(Bool, HeightFieldConvert, "heightfieldconvert", false, "turn two-dimensional volumes into meshes")

// Kept as bits beside the store: X(bit, stem, key, default, meaning).  A null key can only be set by its setter.
#define RQ_FLAG_REFINE_OPTIONS(X)                                                                                           \
    X(0, ViewportAlembicArbGeometry, "viewport:abc_arbgeo", true,                                                           \
      "hint for viewports: load arbitrary attributes of archives")                                                          \
    X(1, ViewportAlembicFaceSets, "viewport:abc_facesets", false, "hint for viewports: load face sets of archives")         \
    X(2, AlembicKestrelAttribs, nullptr, true, "")                                                                          \
    X(3, AlembicInstancing, nullptr, false, "")                                                                             \
    X(4, AlembicGLOptimize, nullptr, false, "")                                                                             \
    X(5, AlembicSkipInvisible, nullptr, true, "")                                                                           \
    X(6, PackedViewportLOD, "viewport:packed_lod", false, "show packed geometry at its own viewport level of detail")       \
    X(7, PolysAsSubdivision, "polys_as_subdivision", false, "turn polygons into subdivision meshes")                        \
    X(8, AllowSubdivision, nullptr, false, "")                                                                              \
    X(9, PointInstanceEnable, nullptr, false, "")                                                                           \
    X(15, SkipHidden, nullptr, true, "")

// Bits 10 to 14: the level that overrides packed geometry's own, signed, -1 for none.
#define RQ_OVERRIDE_LOD_KEY "viewport:override_lod"
#define RQ_OVERRIDE_LOD_SHIFT 10

// The members of an option, by kind.
#define RQ_DECLARE_VALUE(type, stem)                                                                                        \
    type get##stem() const;                                                                                                 \
    static type get##stem(const RQ_RefineParms *parms);                                                                     \
    void set##stem(type value);
#define RQ_DECLARE_Bool(stem) RQ_DECLARE_VALUE(bool, stem)
#define RQ_DECLARE_Int(stem) RQ_DECLARE_VALUE(int64_t, stem)
#define RQ_DECLARE_Float(stem) RQ_DECLARE_VALUE(double, stem)
#define RQ_DECLARE_Angle(stem) RQ_DECLARE_VALUE(float, stem)
#define RQ_DECLARE_Text(stem)                                                                                               \
    const char *get##stem(BAS_WorkBuffer &buffer) const;                                                                    \
    static const char *get##stem(const RQ_RefineParms *parms, BAS_WorkBuffer &buffer);                                      \
    void set##stem(const char *value);

#define RQ_DECLARE_STORED_ACCESS(kind, stem, key, fallback, meaning) RQ_DECLARE_##kind(stem)
#define RQ_DECLARE_STORED_NAME(kind, stem, key, fallback, meaning) static const char *get##stem##Name();

#define RQ_DECLARE_FLAG_ACCESS(bit, stem, key, fallback, meaning)                                                           \
    bool get##stem() const { return (flags_ >> bit & 1u) != 0; }                                                            \
    void set##stem(bool on) { setFlag(bit, on); }
