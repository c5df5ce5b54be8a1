#pragma once

class BAS_JSONValue;
class BAS_OptionsHolder;

namespace rq
{
/// Read a dictionary that was written as a map.  False when it is no map or a member is nothing that a dictionary holds.
bool readOptions(const BAS_JSONValue &value, BAS_OptionsHolder &options);
}  // namespace rq
