/*
 * What the flow and flow-hop statistics sensors share.
 *
 * Both records carry the same flow identification, counters, tunnel and error
 * information at the same offsets; they differ in the address tuple (flow
 * only), the delays (flow-hop only) and in their GPB field numbers. The parts
 * that only differ in field numbers are written once here, as templates over
 * the record type with the field numbers as a constant parameter.
 */
#ifndef MDTLM_SENSORS_FLOW_FAMILY_H
#define MDTLM_SENSORS_FLOW_FAMILY_H

#include <cstddef>
#include <cstdint>

#include "gpb_chain.h"
#include "mdtlm_types.h"
#include "mdtlm_vraldcn.h"
#include "record_pipeline.h"

/* ------------------------------------------------------------------- texts */

constexpr uint32_t MDTLM_FLOW_TEXT_FIELD_LEN = 32;

/* The chassis and slot texts of a record, cut at the end of their 32-byte
 * field when the sender did not terminate them there: the record is still
 * delivered, and nothing past the field is ever read. */
struct MDTLM_FLOW_TEXTS {
    char chassisId[MDTLM_FLOW_TEXT_FIELD_LEN + 1];
    char slotId[MDTLM_FLOW_TEXT_FIELD_LEN + 1];
};

/* Fills both texts; false when a bounded copy failed. */
bool MDTLM_FlowCutTexts(const char (&chassisId)[MDTLM_FLOW_TEXT_FIELD_LEN],
                        const char (&slotId)[MDTLM_FLOW_TEXT_FIELD_LEN], MDTLM_FLOW_TEXTS *texts);

/* ---------------------------------------------------------- derived values */

/* Every value the encodings report from the derived-value helpers. */
struct MDTLM_FLOW_DERIVED {
    uint64_t flowId;
    uint32_t direction;
    uint32_t addressFamily;
    uint32_t tunnelMode;
    uint32_t errorInfo;
    uint32_t errorInfoExt;
};

MDTLM_FLOW_DERIVED MDTLM_FlowDerive(const void *record);

/* ---------------------------------------------------- conditions, filters */

/* Condition ids of both sensors: 0 flow-id, 1 direction; any other id holds. */
uint32_t MDTLM_FlowCompareCondition(uint32_t fieldId, const MDTLM_PATH_CONDITION *cond, const void *record);
/* How a condition id of both sensors is compared (MDTLM_FIELD_FORM_x). */
uint32_t MDTLM_FlowConditionForm(uint32_t fieldId);

/* One row of a sensor's filter values: the field id, whether the value is
 * compared in 64 bits, and how it is read from the record. */
template <typename Rec>
struct MDTLM_FLOW_FILTER_FIELD {
    uint32_t fieldId;
    bool wide;
    uint64_t (*value)(const Rec *rec);
};

/* The verdict of one filter on a record; an id without a row holds. */
template <typename Rec, std::size_t N>
uint32_t MDTLM_FlowCompareFilter(const MDTLM_FLOW_FILTER_FIELD<Rec> (&fields)[N], uint32_t fieldId,
                                 const MDTLM_PATH_FILTER *filter, const void *record)
{
    const Rec *rec = static_cast<const Rec *>(record);
    for (const MDTLM_FLOW_FILTER_FIELD<Rec> &field : fields) {
        if (field.fieldId != fieldId) {
            continue;
        }
        const uint64_t value = field.value(rec);
        if (field.wide) {
            return MDTLM_STATS_SensorFilterOp64(filter->threshold, value, filter->op);
        }
        /* 32-bit fields are compared with the low 32 bits of the threshold. */
        return MDTLM_STATS_SensorFilterOp(static_cast<uint32_t>(filter->threshold), static_cast<uint32_t>(value),
                                          filter->op);
    }
    return 1;
}

/* How a filter id is compared, from the same rows the filter verdict uses. */
template <typename Rec, std::size_t N>
uint32_t MDTLM_FlowFilterForm(const MDTLM_FLOW_FILTER_FIELD<Rec> (&fields)[N], uint32_t fieldId)
{
    for (const MDTLM_FLOW_FILTER_FIELD<Rec> &field : fields) {
        if (field.fieldId == fieldId) {
            return field.wide ? MDTLM_FIELD_FORM_NUMBER64 : MDTLM_FIELD_FORM_NUMBER32;
        }
    }
    return MDTLM_FIELD_FORM_NONE;
}

/* --------------------------------------------------------- sequence numbers */

constexpr uint32_t MDTLM_FLOW_CAST_UNICAST = 1;

/* The task's counter for a cast type: 1 unicast, anything else multicast. */
template <typename Task>
auto *MDTLM_FlowTaskSequence(Task *task, uint32_t castType)
{
    return castType == MDTLM_FLOW_CAST_UNICAST ? &task->unicastSeqNum : &task->multicastSeqNum;
}
/* The task's sequence number for a cast type; 0 without a task. */
inline uint32_t MDTLM_FlowGetSequence(uint32_t castType, const MDTLM_TASK_DATA *task)
{
    return task == nullptr ? 0 : *MDTLM_FlowTaskSequence(task, castType);
}

/* Advances the task's sequence number for a cast type; nothing without a task. */
inline void MDTLM_FlowAddSequence(uint32_t castType, MDTLM_TASK_DATA *task)
{
    if (task != nullptr) {
        *MDTLM_FlowTaskSequence(task, castType) += 1;
    }
}

/* The exported JSON counter pair of a sensor, advanced the same way. */
void MDTLM_FlowAdvanceJsonCounter(uint32_t castType, uint32_t *unicast, uint32_t *multicast);

/* ---------------------------------------------------------- record pipeline */

/* The pipeline tables of both sensors stamp each record with the task's
 * sequence number, and every accepted record counts as one record's size for
 * the report-performance counters. */
constexpr uint32_t MDTLM_FLOW_STAMPS_SEQUENCE = 1;

/* The handler of a flow-family statistics message: 1 when the record passed
 * the task's conditions and filters, 0 when it was rejected. A body shorter
 * than the record would be read past its end and is rejected. */
template <typename Rec>
uint32_t MDTLM_FlowPipelineProc(const MDTLM_SENSOR_PIPELINE &pipeline, MDTLM_TASK_DATA *task, MDTLM_STATS_MSG *msg)
{
    if (task == nullptr || msg == nullptr || msg->msgLen < sizeof(Rec)) {
        return 0;
    }
    return MDTLM_PIPELINE_ProcessMsg(&pipeline, task, msg);
}

/* ------------------------------------------------------- shared GPB groups */

/* Field numbers of the statistics group, in the order they are written. */
struct MDTLM_FLOW_GPB_STATS_FIELDS {
    uint32_t errorInfo;
    uint32_t errorInfoExt;
    uint32_t periodId;
    uint32_t packetCount;
    uint32_t byteCount;
    uint32_t timestampSecond;
    uint32_t timestampNanosecond;
};

/* Field numbers of the packet information group, in the order they are written. */
struct MDTLM_FLOW_GPB_PACKET_FIELDS {
    uint32_t ttl;
    uint32_t vlan;
    uint32_t tunnelMode;
    uint32_t tunnelId; /* tunnelled flows only */
    uint32_t outerTtl; /* tunnelled flows only */
    uint32_t queuePair;
};

constexpr uint32_t MDTLM_FLOW_TUNNELLED = 1;

template <MDTLM_FLOW_GPB_STATS_FIELDS F, typename Rec>
int32_t MDTLM_FlowGpbErrorInfo(const Rec *rec, uint8_t *out, int32_t cap)
{
    const MDTLM_FLOW_DERIVED d = MDTLM_FlowDerive(rec);
    return MDTLM_GPB_CHAIN(out, cap).Int(F.errorInfo, d.errorInfo).Int(F.errorInfoExt, d.errorInfoExt).Result();
}

template <MDTLM_FLOW_GPB_STATS_FIELDS F, typename Rec>
int32_t MDTLM_FlowGpbPacketByteCnt(const Rec *rec, uint8_t *out, int32_t cap)
{
    return MDTLM_GPB_CHAIN(out, cap).Int(F.packetCount, rec->packetCount).Int(F.byteCount, rec->byteCount).Result();
}

template <MDTLM_FLOW_GPB_STATS_FIELDS F, typename Rec>
int32_t MDTLM_FlowGpbTimeStamp(const Rec *rec, uint8_t *out, int32_t cap)
{
    return MDTLM_GPB_CHAIN(out, cap)
        .Int(F.timestampSecond, rec->timestampSecond)
        .Int(F.timestampNanosecond, rec->timestampNanosecond)
        .Result();
}

template <MDTLM_FLOW_GPB_STATS_FIELDS F, typename Rec>
int32_t MDTLM_FlowGpbStatistics(const Rec *rec, uint8_t *out, int32_t cap)
{
    return MDTLM_GPB_CHAIN(out, cap)
        .Group(MDTLM_FlowGpbErrorInfo<F, Rec>, rec)
        .Int(F.periodId, rec->periodId)
        .Group(MDTLM_FlowGpbPacketByteCnt<F, Rec>, rec)
        .Group(MDTLM_FlowGpbTimeStamp<F, Rec>, rec)
        .Result();
}

template <MDTLM_FLOW_GPB_PACKET_FIELDS F, typename Rec>
int32_t MDTLM_FlowGpbPacketInfo(const Rec *rec, uint8_t *out, int32_t cap)
{
    MDTLM_GPB_CHAIN chain(out, cap);
    chain.Int(F.ttl, rec->ttl).Int(F.vlan, rec->vlan).Int(F.tunnelMode, MDTLM_FlowDerive(rec).tunnelMode);
    if (rec->tunnelFlag == MDTLM_FLOW_TUNNELLED) {
        chain.Int(F.tunnelId, rec->tunnelId).Int(F.outerTtl, rec->outerTtl);
    }
    return chain.Int(F.queuePair, rec->queuePair).Result();
}

/* Sequence number and the two texts: the tail of both bodies. */
template <uint32_t SeqField, uint32_t ChassisField, uint32_t SlotField, typename Rec>
int32_t MDTLM_FlowGpbTail(const Rec *rec, uint8_t *out, int32_t cap)
{
    MDTLM_FLOW_TEXTS texts;
    if (!MDTLM_FlowCutTexts(rec->chassisId, rec->slotId, &texts)) {
        return MDTLM_ENCODE_FAIL;
    }
    return MDTLM_GPB_CHAIN(out, cap)
        .Int(SeqField, rec->sequenceNumber)
        .Str(ChassisField, texts.chassisId)
        .Str(SlotField, texts.slotId)
        .Result();
}

/* --------------------------------------------------- flow record addresses */

constexpr uint32_t MDTLM_FLOW_ADDR_TEXT_LEN = 40;
/* Address-family codes of a flow statistics record. */
constexpr uint8_t MDTLM_FLOW_FAMILY_IPV4 = 1;
constexpr uint8_t MDTLM_FLOW_FAMILY_IPV6 = 2;

/* Source and destination texts of a flow record by its address family
 * (1 IPv4, 2 IPv6): 0, or -1 for any other family or a failed conversion. */
int32_t MDTLM_FlowFormatAddresses(const MDTLM_FLOW_STATS_REC *rec, char (&src)[MDTLM_FLOW_ADDR_TEXT_LEN],
                                  char (&dst)[MDTLM_FLOW_ADDR_TEXT_LEN]);

/* ------------------------------------------------------- flow-hop delays */

/* Reported delays are the raw values scaled by 256; filters compare the raw values. */
inline uint32_t MDTLM_FlowHopMaximumDelay(const MDTLM_FLOWHOP_STATS_REC *rec)
{
    return rec->maximumDelay << 8; /* within 32 bits: the top 8 bits are lost */
}

inline uint64_t MDTLM_FlowHopTotalDelay(const MDTLM_FLOWHOP_STATS_REC *rec)
{
    return rec->totalDelay << 8;
}

#endif /* MDTLM_SENSORS_FLOW_FAMILY_H */
