#pragma once

#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <host/mod/Edit.h>

namespace tests
{
/// A detail as plain vectors of structs, and random edits that are made to it and to the real one alike.
struct DetailModel
{
    struct Point
    {
        float p[3] = {};
        int64_t id = 0;
        std::string name;
    };
    struct Vertex
    {
        int64_t point;
        float uv[2] = {};
    };
    struct Primitive
    {
        int type;
        bool closed;
        std::vector<Vertex> vertices;
        int16_t material = 0;
    };

    std::vector<Point> points;
    std::vector<Primitive> primitives;
    std::map<std::string, std::set<int64_t>> groups;  // of primitives
    bool hasId = false, hasName = false, hasUV = false, hasMaterial = false;

    int64_t vertexCount() const;

    /// Make one random change to both.
    void change(MOD_Edit &edit, std::mt19937 &random);

    /// Compare everything; failures are reported to the running test.
    void expectEqual(const MSH_Detail &detail) const;

private:
    void addPrimitives(MOD_Edit &edit, std::mt19937 &random);
    void writePoints(MOD_Edit &edit, std::mt19937 &random);
    void writeOthers(MOD_Edit &edit, std::mt19937 &random);
    void expectTopology(const MSH_Detail &detail) const;
    void expectAttributes(const MSH_Detail &detail) const;
};
}  // namespace tests
