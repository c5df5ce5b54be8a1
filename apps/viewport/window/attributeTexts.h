#pragma once

#include <string>
#include <vector>

#include <apps/viewport/SessionResult.h>
#include <rq/data/DataArray.h>

namespace rq::viewport
{
/// An attribute as a list shows it.
struct AttributeRow
{
    RQ_Owner owner = RQ_OWNER_INVALID;
    std::string name;
    RQ_DataArrayHandle array;  ///< of the first segment
};

/// The attributes of a primitive, by owner and in their order.
std::vector<AttributeRow> attributesOf(const RQ_Primitive &primitive);

/// Every attribute, by owner and name, that some primitive has and that can be shown as colour.
std::vector<AttributeRow> colourChoices(const std::vector<Emitted> &emitted);

/// "real32 x 3".
std::string formOf(const RQ_DataArray &array);

/// The values of the first entries, a line each: "0: 1 0 0.5".  Of a long tuple, only the first components.
std::string firstValues(const RQ_DataArray &array, int64_t entries);

/// What a primitive consists of, in a few words: "12 faces, 8 points".
std::string sizeOf(const RQ_Primitive &primitive);
}  // namespace rq::viewport
