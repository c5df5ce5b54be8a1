#pragma once

#include <string>
#include <vector>

#include <host/msh/Detail.h>

namespace rq::io
{
/// Values of vertices as OBJ files have them: the distinct ones in order of appearance, and the number of each vertex's.
class OBJCorners
{
public:
    /// Take the values of an attribute: of vertices, or else of points.  Null when there is none that `least` to `most`
    /// floating-point numbers can tell; otherwise the attribute.
    const ELM_Attribute *take(const MSH_Detail &detail, const char *name, int least, int most);

    bool isEmpty() const { return !attribute_; }

    /// How many different ones there are.
    int64_t count() const { return std::ssize(rows_); }

    /// The number of a vertex's value, from 1 on.
    int64_t number(ELM_Offset vertex) const;

    /// True when it is nothing but zeros, which is what a vertex without a value has.
    bool isZero(int64_t number) const { return zeros_[size_t(number) - 1]; }

    /// Append a line for each value: a word and the numbers.
    void write(std::string &text, const char *word) const;

private:
    const MSH_Detail *detail_ = nullptr;
    const ELM_Attribute *attribute_ = nullptr;
    std::vector<int64_t> rows_;     // of the attribute, one for each value
    std::vector<int64_t> numbers_;  // of each row
    std::vector<bool> zeros_;
};

/// Append a word and a row of an attribute's numbers, each as short as reads back the same.
void appendOBJNumbers(std::string &text, const ELM_Attribute &attribute, int64_t row);
}  // namespace rq::io
