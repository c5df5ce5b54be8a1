#pragma once

#include <cstdint>
#include <string>

#include <apps/offline/ElementValues.h>
#include <host/bas/BoundingBox.h>

namespace rq::offline
{
/// What a picture is to show.
struct Look
{
    enum Shade
    {
        Beauty,      ///< "Cd", or the colours of materials
        Normals,     ///< which way surfaces turn, in the file's space: -1 to 1 as dark to bright
        UV,          ///< "uv": u as red and v as green, from 0 to 1 and over again
        Primitives,  ///< a colour for each primitive that the library hands out, and for each instance
        Attribute,   ///< numbers from blue to red, tuples as red, green and blue, over the range that all have
        Wires        ///< as `Beauty`, and the edges of faces as dark lines
    };
    Shade shade = Beauty;
    std::string attribute;  ///< of `Attribute`
};

/// The colours that the values of an attribute stand for, in linear light.
///
/// Threads  filled by one thread, then safe to read from any
class Palette
{
public:
    explicit Palette(const Look &look);

    /// The attribute that is shown, and how many components it must have.
    const char *name() const { return name_.c_str(); }
    int components() const { return components_; }

    /// Take in the range of a primitive's values, where that matters.
    void add(const RQ_Primitive &primitive);

    /// Whether there are values to show of the attribute that was asked for, if one was.
    bool hasValues() const { return shade_ != Look::Attribute || !range_.isEmpty(); }

    /// Whether edges are drawn; only then must drawables look for them.
    bool showsEdges() const { return shade_ == Look::Wires; }

    /// Whether surfaces look like what they are made of.
    bool showsMaterials() const { return shade_ == Look::Beauty || shade_ == Look::Wires; }

    BAS_Vec3f colour(const BAS_Vec3f &value, int components) const;

    /// One of many colours that are easy to tell apart.
    static BAS_Vec3f distinct(uint64_t number);

private:
    Look::Shade shade_;
    std::string name_;
    int components_;
    BAS_BoundingBox range_;
};

/// A colour as it looks on a screen, in linear light.
BAS_Vec3f toLight(const BAS_Vec3f &colour);
}  // namespace rq::offline
