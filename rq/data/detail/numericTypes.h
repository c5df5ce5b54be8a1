#pragma once

// The eight value types in slot order: the type, the suffix of its getters, and the suffix of its array-entry getter.
#define RQ_NUMERIC_TYPES(X)                                                                                                 \
    X(double, F64, FA64)                                                                                                    \
    X(float, F32, FA32)                                                                                                     \
    X(PLT_Half, F16, FA16)                                                                                                  \
    X(int64_t, I64, IA64)                                                                                                   \
    X(int32_t, I32, IA32)                                                                                                   \
    X(int16_t, I16, IA16)                                                                                                   \
    X(int8_t, I8, IA8)                                                                                                      \
    X(uint8_t, U8, UA8)
