/*
 * Framing of one record for a GPB sample: the record body is wrapped into a
 * field 1 entry, which is wrapped into the sensor's container field. Every
 * sensor's GPB message encoder frames its records here.
 *
 * Bytes produced at `out`: container key, container length, key of field 1,
 * body length, body. Each level is encoded completely in a scratch buffer
 * before it is copied behind its key and length, so no length is reserved
 * and patched later. A body or first wrapping that does not fit its 1024-byte
 * scratch buffer fails with -2 before `out` is touched.
 */
#ifndef MDTLM_CODEC_GPB_FRAME_H
#define MDTLM_CODEC_GPB_FRAME_H

#include <stdint.h>

/* Writes the body of one record at out/cap; result as every field writer. */
typedef int32_t (*MDTLM_GPB_BODY_FUNC)(const void *record, uint8_t *out, int32_t cap);

/* Frames one record: body into scratch1 (capacity 1024), field 1 around it into scratch2 (1024),
 * then field `containerField` around that at out/cap. The caller has already refused a null record
 * (with its own log line). Null out or cap 0 (or negative) gives -2. Negative results pass through
 * unchanged. Not reentrant for one pair of scratch buffers. */
int32_t MDTLM_GPB_FrameRecord(MDTLM_GPB_BODY_FUNC body, const void *record, uint8_t *scratch1,
                              uint8_t *scratch2, uint32_t containerField, uint8_t *out, int32_t cap);

#endif /* MDTLM_CODEC_GPB_FRAME_H */
