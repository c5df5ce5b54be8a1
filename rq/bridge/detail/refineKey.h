#pragma once

#include <string>

#include <host/elm/Range.h>
#include <rq/bridge/MSHDetailList.h>

namespace rq
{
/// True when refining these details depends on nothing that `refineKey` does not tell: they hold only what the built-in
/// collectors of polygons and cells take, and every segment reads its own detail.
bool isRepeatable(const RQ_MSHDetailList &details);

/// What decides which primitives a refinement makes, of which elements and with which attributes: the topology, the names
/// and forms of attributes, groups, options.
///
/// Ownership  tells groups, ranges and filters by their addresses, so these must live as long as the key is compared
std::string refineKey(const RQ_MSHDetailList &details, const ELM_Range *range, const RQ_RefineParms *parms);

/// The data ids of attributes that more than attribute arrays are made from: when one changes, so do the primitives.
std::string usedUpValues(const RQ_MSHDetailList &details, const RQ_RefineParms *parms);
}  // namespace rq
