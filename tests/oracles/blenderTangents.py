"""The tangents of a mesh by Blender, for tests and benchmarks.

blender -b --factory-startup --python blenderTangents.py -- IN OUT
IN: int32 numbers of points, faces and corners; points (3 floats); counts and points of the faces (int32); texture
coordinates of the corners (2 floats).  OUT: for each corner the normal, the tangent and the sign, 7 floats.  Prints
the seconds of the middle one of three turns.
"""
import sys
import time
from array import array
from itertools import accumulate

import bpy

source, target = sys.argv[-2:]
stream = open(source, "rb")


def take(kind, count):
    values = array(kind)
    values.fromfile(stream, count)
    return values


points, faces, corners = take("i", 3)
positions = take("f", 3 * points)
counts = take("i", faces)
indices = take("i", corners)
texture = take("f", 2 * corners)

mesh = bpy.data.meshes.new("mesh")
mesh.vertices.add(points)
mesh.vertices.foreach_set("co", positions)
mesh.loops.add(corners)
mesh.loops.foreach_set("vertex_index", indices)
mesh.polygons.add(faces)
mesh.polygons.foreach_set("loop_start", [0, *accumulate(counts[:-1])])
mesh.polygons.foreach_set("loop_total", counts)
mesh.polygons.foreach_set("use_smooth", [True] * faces)
mesh.uv_layers.new(name="uv")
mesh.uv_layers["uv"].data.foreach_set("uv", texture)
mesh.update(calc_edges=True)
seconds = []
for _ in range(3):
    mesh.free_tangents()
    mesh.calc_normals_split()
    start = time.perf_counter()
    mesh.calc_tangents(uvmap="uv")
    seconds.append(time.perf_counter() - start)
print("seconds", sorted(seconds)[1])
result = array("f", [0.0]) * (7 * corners)
for i, loop in enumerate(mesh.loops):
    result[7 * i : 7 * i + 7] = array("f", [*loop.normal, *loop.tangent, loop.bitangent_sign])
result.tofile(open(target, "wb"))
