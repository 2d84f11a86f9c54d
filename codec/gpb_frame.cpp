/*
 * Record framing shared by the sensors' GPB message encoders.
 */
#include "gpb_frame.h"

#include "gpb_chain.h"
#include "mdtlm_types.h"
#include "mdtlm_vraldcn.h"

namespace {

constexpr uint32_t kRecordField = 1;
constexpr int32_t kScratchCap = static_cast<int32_t>(MDTLM_GPB_SCRATCH_SIZE);

} // namespace

int32_t MDTLM_GPB_FrameRecord(MDTLM_GPB_BODY_FUNC body, const void *record, uint8_t *scratch1, uint8_t *scratch2,
                              uint32_t containerField, uint8_t *out, int32_t cap)
{
    if (out == nullptr || cap <= 0) {
        return MDTLM_ENCODE_NO_SPACE;
    }

    /* The body first, complete, so that its length is known before it is wrapped. */
    const int32_t bodyLen = body(record, scratch1, kScratchCap);
    if (bodyLen < 0) {
        return bodyLen;
    }

    const int32_t entryLen =
        MDTLM_GPB_CHAIN(scratch2, kScratchCap).Bytes(kRecordField, scratch1, static_cast<uint32_t>(bodyLen)).Result();
    if (entryLen < 0) {
        return entryLen;
    }

    return MDTLM_GPB_CHAIN(out, cap).Bytes(containerField, scratch2, static_cast<uint32_t>(entryLen)).Result();
}
