#include <rq/bridge/typeFromHost.h>

RQ_Type RQtypeFromHost(ELM_TypeInfo type, int tupleSize)
{
    switch (type)
    {
    case ELM_TYPE_POINT:
        return RQ_TYPE_POINT;
    case ELM_TYPE_HPOINT:
        return tupleSize == 4 ? RQ_TYPE_HPOINT : RQ_TYPE_NONE;
    case ELM_TYPE_VECTOR:
        return RQ_TYPE_VECTOR;
    case ELM_TYPE_NORMAL:
        return RQ_TYPE_NORMAL;
    case ELM_TYPE_COLOR:
        return RQ_TYPE_COLOR;
    case ELM_TYPE_MATRIX:
        return tupleSize % 9 == 0 ? RQ_TYPE_MATRIX3 : RQ_TYPE_MATRIX;
    case ELM_TYPE_QUATERNION:
        return RQ_TYPE_QUATERNION;
    case ELM_TYPE_BOX2:
        return RQ_TYPE_BOX2;
    case ELM_TYPE_BOX:
        return RQ_TYPE_BOX;
    default:
        return RQ_TYPE_NONE;
    }
}
