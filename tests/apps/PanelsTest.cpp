#include <gtest/gtest.h>

#include <apps/viewport/window/attributeTexts.h>
#include <apps/viewport/window/optionValues.h>
#include <rq/data/DANumeric.h>

using namespace rq::viewport;

namespace
{
/// Another value of the same type.
struct Other
{
    BAS_Options::Value operator()(bool value) const { return !value; }
    BAS_Options::Value operator()(int64_t value) const { return value + 3; }
    BAS_Options::Value operator()(double value) const { return value + 0.5; }
    BAS_Options::Value operator()(const BAS_StringHolder &) const { return BAS_StringHolder("box"); }
    template <class Number> BAS_Options::Value operator()(const std::vector<Number> &value) const { return value; }
};

TEST(OptionPanel, ReadsBackWhatItSetsByKey)
{
    const auto options = RQ_RefineParms::options();
    const std::vector<BAS_Options::Value> defaults = optionValues(RQ_RefineParms());
    for (size_t i = 0; i < options.size(); ++i)
    {
        SCOPED_TRACE(options[i].key);
        EXPECT_EQ(defaults[i], options[i].defaultValue);
        RQ_RefineParms parms;
        std::vector<BAS_Options::Value> expected = defaults;
        expected[i] = std::visit(Other(), defaults[i]);
        setOption(parms, options[i], expected[i]);
        EXPECT_EQ(optionValues(parms), expected);
        setOption(parms, options[i], defaults[i]);
        EXPECT_EQ(optionValues(parms), defaults);
    }
}

TEST(TreePanel, TellsTheFirstValues)
{
    const BAS_IntrusivePtr<RQ_DANumeric<float>> numbers(new RQ_DANumeric<float>(3, 2));
    const BAS_IntrusivePtr<RQ_DANumeric<int8_t>> long1(new RQ_DANumeric<int8_t>(1, 20));
    for (int i = 0; i < 6; ++i)
        numbers->data()[i] = 0.1f * float(i - 1);
    std::fill_n(long1->data(), 20, int8_t(-7));
    EXPECT_EQ(firstValues(*numbers, 2), "0: -0.1 0\n1: 0.1 0.2\n1 more");
    EXPECT_EQ(firstValues(*numbers, 9), "0: -0.1 0\n1: 0.1 0.2\n2: 0.3 0.4");
    EXPECT_EQ(firstValues(*numbers, 0), "3 more");
    EXPECT_EQ(firstValues(*long1, 1).substr(0, 8), "0: -7 -7");
    EXPECT_EQ(firstValues(*long1, 1).substr(firstValues(*long1, 1).size() - 7), " -7 ...");
    EXPECT_EQ(formOf(*long1), "int8 x 20");
}
}  // namespace
