/*
 * The exported varint and key writers.
 */
#include <stdint.h>

#include "gpb_wire.h"
#include "mdtlm_vraldcn.h"

extern "C" {

int32_t MDTLM_VRALDCN_GPB_EncodeVarint(uint64_t value, uint8_t *out, int32_t cap)
{
    return MDTLM_GPB_PutVarint(value, out, cap);
}

int32_t MDTLM_VRALDCN_GPB_EncodeFieldType(uint32_t fieldId, uint32_t wireType, uint8_t *out, int32_t cap)
{
    return MDTLM_GPB_PutKey(fieldId, wireType, out, cap);
}

} /* extern "C" */
