#pragma once

#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <vector>

#include <Imath/ImathVec.h>

namespace tests
{
/// Catmull-Clark subdivision with creases and corners that wear off (DeRose, Kass, Truong, "Subdivision surfaces in
/// character animation", 1998), as plainly as it can be written.
struct SlowMesh
{
    using Point = Imath::V3d;
    using Edge = std::pair<int, int>;

    std::vector<Point> points;
    std::vector<std::vector<int>> faces;
    std::map<Edge, double> creases;  // by points in order
    std::map<int, double> corners;

    static Edge edgeOf(int a, int b) { return {std::min(a, b), std::max(a, b)}; }

    /// Children of a face in the order of its corners; the child of corner i has it at place i, or 0 unless the face is a
    /// quad.
    SlowMesh refined() const
    {
        SlowMesh result;
        std::vector<Point> centres;
        std::map<Edge, std::vector<int>> facesOfEdge;
        std::vector<std::set<int>> facesOf(points.size()), neighbours(points.size());
        for (size_t f = 0; f < faces.size(); ++f)
        {
            Point sum(0);
            for (size_t i = 0; i < faces[f].size(); ++i)
            {
                const int a = faces[f][i], b = faces[f][(i + 1) % faces[f].size()];
                sum += points[size_t(a)];
                facesOfEdge[edgeOf(a, b)].push_back(int(f));
                facesOf[size_t(a)].insert(int(f));
                neighbours[size_t(a)].insert(b);
                neighbours[size_t(b)].insert(a);
            }
            centres.push_back(sum / double(faces[f].size()));
        }
        const auto sharpness = [&](const Edge &edge) {
            const auto at = creases.find(edge);
            return facesOfEdge[edge].size() != 2 ? 100.0 : at == creases.end() ? 0.0 : at->second;
        };

        for (size_t v = 0; v < points.size(); ++v)
        {
            // Boundary points of one face are corners.
            double own = corners.count(int(v)) ? corners.at(int(v)) : 0.0;
            if (facesOf[v].size() == 1)
                own = 100.0;
            std::vector<std::pair<int, double>> edges;
            for (const int other : neighbours[v])
                edges.emplace_back(other, sharpness(edgeOf(int(v), other)));
            const auto rule = [&](double worn) {
                std::vector<int> sharp;
                for (const auto &[other, s] : edges)
                    if (s > worn)
                        sharp.push_back(other);
                if (own > worn || sharp.size() > 2)
                    return points[v];
                if (sharp.size() == 2)
                    return points[v] * 0.75 + (points[size_t(sharp[0])] + points[size_t(sharp[1])]) * 0.125;
                const double n = double(facesOf[v].size());
                Point around(0);
                for (const int other : neighbours[v])
                    around += points[size_t(other)];
                for (const int face : facesOf[v])
                    around += centres[size_t(face)];
                return points[v] * ((n - 2) / n) + around / (n * n);
            };
            // What wears off in this step blends the two rules by how sharp it still is.
            double sum = 0, count = 0;
            for (const auto &[other, s] : edges)
                if (s > 0 && s <= 1)
                    sum += s, ++count;
            if (own > 0 && own <= 1)
                sum += own, ++count;
            const double weight = count > 0 ? sum / count : 1.0;
            result.points.push_back(rule(0) * weight + rule(1) * (1 - weight));
            if (own > 1)
                result.corners[int(v)] = own - 1;
        }
        const int firstCentre = int(points.size());
        result.points.insert(result.points.end(), centres.begin(), centres.end());
        std::map<Edge, int> middles;
        for (const auto &[edge, around] : facesOfEdge)
        {
            const Point a = points[size_t(edge.first)], b = points[size_t(edge.second)];
            const double s = sharpness(edge), weight = std::min(s, 1.0);
            Point smooth = (a + b) * 0.5;
            if (around.size() == 2)
                smooth = (a + b + centres[size_t(around[0])] + centres[size_t(around[1])]) * 0.25;
            middles[edge] = int(result.points.size());
            result.points.push_back((a + b) * (0.5 * weight) + smooth * (1 - weight));
            if (s > 1)
                for (const int end : {edge.first, edge.second})
                    result.creases[edgeOf(end, middles[edge])] = s - 1;
        }
        for (size_t f = 0; f < faces.size(); ++f)
            for (size_t i = 0, n = faces[f].size(); i < n; ++i)
            {
                const int own = faces[f][i];
                std::vector<int> child = {own, middles[edgeOf(own, faces[f][(i + 1) % n])], firstCentre + int(f),
                                          middles[edgeOf(own, faces[f][(i + n - 1) % n])]};
                if (n == 4)
                    std::rotate(child.begin(), child.begin() + int(4 - i) % 4, child.end());
                result.faces.push_back(child);
            }
        return result;
    }
};
}  // namespace tests
