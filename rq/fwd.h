#pragma once

// Classes that lower layers name in signatures without seeing their definition.

class RQ_AttributeList;
class RQ_DataArray;
class RQ_MSHAttributeFilter;
class RQ_Primitive;
class RQ_PrimCollect;
class RQ_Refine;
class RQ_RefineParms;
class RQ_Transform;
class RQ_TransformArray;
