/*
 * Loss counters of the plug-in. Each counter is one u64 slot of
 * MDTLM_LOSS_COUNTERS, addressed by the field's position in that record, so
 * the record and the counting sites cannot drift apart.
 */
#ifndef MDTLM_LOOP_LOSS_COUNTERS_H
#define MDTLM_LOOP_LOSS_COUNTERS_H

#include <cstddef>
#include <cstdint>

#include "mdtlm_types.h"

/* Slot of a counter field of MDTLM_LOSS_COUNTERS. */
#define MDTLM_LOSS_SLOT(field) static_cast<uint32_t>(offsetof(MDTLM_LOSS_COUNTERS, field) / sizeof(uint64_t))

/* Adds `count` to a slot; any thread. */
void MDTLM_LossAdd(uint32_t slot, uint64_t count = 1);

/* Records that passed a task of `sensorType` but could not be stored. */
void MDTLM_LossEncodeFail(uint32_t sensorType);

#endif /* MDTLM_LOOP_LOSS_COUNTERS_H */
