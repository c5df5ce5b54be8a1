#pragma once

// Host classes that lower layers name in signatures without seeing their definition.

class ELM_Attribute;
class ELM_OffsetList;
class ELM_Range;
class MOD_ConstDetailHandle;
class MOD_DetailHandle;
class MOD_Edit;
class MSH_Detail;
class MSH_Payload;
class MSH_Primitive;
