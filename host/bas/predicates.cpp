#include <host/bas/predicates.h>

namespace host
{
namespace
{
/// A sum or product of two doubles as the rounded result and what the rounding lost.
struct Pair
{
    double value;
    double lost;
};

Pair exactTwoSum(double a, double b)
{
    const double sum = a + b;
    const double shareOfB = sum - a;
    return {sum, (a - (sum - shareOfB)) + (b - shareOfB)};
}

/// Halves of 26 bits, whose products are exact.
Pair split(double a)
{
    constexpr double kSplitter = 134217729.0;  // 2^27 + 1
    const double shifted = kSplitter * a;
    const double high = shifted - (shifted - a);
    return {high, a - high};
}

Pair exactTwoProduct(double a, double b)
{
    const double product = a * b;
    const Pair x = split(a), y = split(b);
    const double rest = ((product - x.value * y.value) - x.lost * y.value) - x.value * y.lost;
    return {product, x.lost * y.lost - rest};
}
}  // namespace

void ExactSum::add(double value)
{
    size_t kept = 0;
    for (const double part : parts_)
    {
        const Pair sum = exactTwoSum(value, part);
        value = sum.value;
        if (sum.lost != 0.0)
            parts_[kept++] = sum.lost;
    }
    parts_.resize(kept);
    if (value != 0.0)
        parts_.push_back(value);
}

void ExactSum::addProduct(double a, double b)
{
    const Pair product = exactTwoProduct(a, b);
    if (product.lost != 0.0)
        add(product.lost);
    add(product.value);
}

double exactOrientation(const BAS_Vec2d &a, const BAS_Vec2d &b, const BAS_Vec2d &c)
{
    // Points in one place and runs along an axis are common and cost nothing.
    if (a == b || b == c || a == c || (a.x == b.x && b.x == c.x) || (a.y == b.y && b.y == c.y))
        return 0.0;

    ExactSum sum;
    const Pair ax = exactTwoSum(a.x, -c.x), by = exactTwoSum(b.y, -c.y), ay = exactTwoSum(a.y, -c.y),
               bx = exactTwoSum(b.x, -c.x);
    if (ax.lost == 0.0 && by.lost == 0.0 && ay.lost == 0.0 && bx.lost == 0.0)
    {
        sum.addProduct(ax.value, by.value);
        sum.addProduct(-ay.value, bx.value);
        return sum.leading();
    }

    // Multiplied out, so that no difference is rounded.
    sum.addProduct(a.x, b.y);
    sum.addProduct(-a.y, b.x);
    sum.addProduct(b.x, c.y);
    sum.addProduct(-b.y, c.x);
    sum.addProduct(c.x, a.y);
    sum.addProduct(-c.y, a.x);
    return sum.leading();
}
}  // namespace host
