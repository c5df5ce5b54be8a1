#include <host/bas/OptionsHolder.h>

BAS_OptionsHolder::BAS_OptionsHolder(BAS_Options options)
{
    if (options.isEmpty())
        return;
    hash_ = options.hash();
    memory_ = options.getMemoryUsage();
    options_ = std::make_shared<const BAS_Options>(std::move(options));
}

const BAS_OptionsHolder &BAS_OptionsHolder::empty()
{
    static const BAS_OptionsHolder instance;
    return instance;
}

const BAS_Options &BAS_OptionsHolder::options() const
{
    static const BAS_Options none;
    return options_ ? *options_ : none;
}

bool BAS_OptionsHolder::operator==(const BAS_OptionsHolder &other) const
{
    return options_ == other.options_ || (hash_ == other.hash_ && options().isEqual(other.options()));
}
