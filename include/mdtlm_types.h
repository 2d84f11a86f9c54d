/*
 * Shared records of the model-driven telemetry plug-in.
 *
 * Every record here crosses a boundary (framework, platform, forwarding side,
 * object database or collector), so its byte layout is fixed and checked at
 * compile time. All integers are in host byte order (little-endian on every
 * supported target).
 */
#ifndef MDTLM_TYPES_H
#define MDTLM_TYPES_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------- constants */

/* Sensor identifiers; every per-sensor table has six rows in this order. */
enum {
    MDTLM_SENSOR_VRAL_FLOW = 1,
    MDTLM_SENSOR_VRAL_FLOWHOP = 2,
    MDTLM_SENSOR_SRVTLM_FLOW = 3,
    MDTLM_SENSOR_QUMA_RESULT = 4,
    MDTLM_SENSOR_SRVTLM_FCTFLOW = 5,
    MDTLM_SENSOR_ZELK_CACHE = 6,
};
#define MDTLM_SENSOR_COUNT 6u

/* Encode types of a task, and the code type of a sensor (MIXED). */
enum {
    MDTLM_ENCODE_TYPE_GPB = 0,
    MDTLM_ENCODE_TYPE_JSON = 1,
    MDTLM_ENCODE_TYPE_MIXED = 2,
};

/* Event types carried by the event queue. */
enum {
    MDTLM_EVENT_STATS_UPLOAD = 0,
    MDTLM_EVENT_ADD_TASK = 1,
    MDTLM_EVENT_DEL_TASK = 2,
};
#define MDTLM_EVENT_TYPE_COUNT 3u

/* Encoder results: positive byte counts, or one of these. */
#define MDTLM_ENCODE_FAIL (-1)
#define MDTLM_ENCODE_NO_SPACE (-2)

/* Filter operators and filter logic. */
enum {
    MDTLM_FILTER_OP_EQ = 0,
    MDTLM_FILTER_OP_GT = 1,
    MDTLM_FILTER_OP_GE = 2,
    MDTLM_FILTER_OP_LT = 3,
    MDTLM_FILTER_OP_LE = 4,
};
#define MDTLM_FILTER_LOGIC_AND 1u

/* Log levels handed to the framework's WriteLog slot. */
enum {
    MDTLM_LOG_NOTICE = 0,
    MDTLM_LOG_SUCCESS = 1,
    MDTLM_LOG_FAILURE = 2,
};

#define MDTLM_MAX_CONDITIONS 32u
#define MDTLM_MAX_FILTERS 2u
#define MDTLM_SAMPLE_DATA_SIZE 24576u
#define MDTLM_GPB_SCRATCH_SIZE 1024u
#define MDTLM_XPATH_LEN 512u
#define MDTLM_JSON_HEADER_LEN 128u

/* ---------------------------------------------------------- sensor-path block */

typedef struct MDTLM_PATH_CONDITION {
    char fieldName[68];
    char value[34];
} MDTLM_PATH_CONDITION;

typedef struct MDTLM_PATH_FILTER {
    char fieldName[64];
    uint8_t reserved1;
    uint8_t op;
    uint8_t reserved2[6];
    uint64_t threshold;
} MDTLM_PATH_FILTER;

typedef struct MDTLM_SENSOR_PATH_INFO {
    uint32_t encodeType;
    uint32_t sampleInterval; /* milliseconds */
    uint32_t conditionCnt;
    MDTLM_PATH_CONDITION conditions[MDTLM_MAX_CONDITIONS];
    uint32_t filterCnt;
    uint32_t filterLogic;
    uint32_t reserved1;
    MDTLM_PATH_FILTER filters[MDTLM_MAX_FILTERS];
    uint8_t reserved2[16];
} MDTLM_SENSOR_PATH_INFO;

typedef struct MDTLM_FILTER_MAP_ENTRY {
    char fieldName[68];
    uint32_t fieldId;
} MDTLM_FILTER_MAP_ENTRY;

typedef uint32_t (*MDTLM_CONDITION_CMP_FUNC)(uint32_t fieldId, const MDTLM_PATH_CONDITION *cond,
                                             const void *record);
typedef uint32_t (*MDTLM_FILTER_CMP_FUNC)(uint32_t fieldId, const MDTLM_PATH_FILTER *filter,
                                          const void *record);

/* How a condition or a filter on a field id is decided: what its value must
 * look like and at which width it is compared. */
#define MDTLM_FIELD_FORM_NONE 0u     /* the id reaches no record field: the test always holds */
#define MDTLM_FIELD_FORM_NUMBER32 1u /* decimal number; its low 32 bits are compared */
#define MDTLM_FIELD_FORM_NUMBER64 2u /* decimal number compared at 64 bits */
#define MDTLM_FIELD_FORM_IPV4 3u     /* IPv4 address text */
#define MDTLM_FIELD_FORM_IP 4u       /* address text of the record's family, IPv4 or IPv6 */

#define MDTLM_FIELD_MAP_CONDITION 0u
#define MDTLM_FIELD_MAP_FILTER 1u
/* Family code of a sensor whose records carry no address-family field. */
#define MDTLM_NO_ADDRESS_FAMILY 0xFFFFFFFFu

/* (MDTLM_FIELD_MAP_CONDITION or MDTLM_FIELD_MAP_FILTER, field id) -> MDTLM_FIELD_FORM_x */
typedef uint32_t (*MDTLM_FIELD_FORM_FUNC)(uint32_t mapKind, uint32_t fieldId);

/* One sensor's testable fields as its handler sees them: the condition and
 * filter maps it searches, how each id is compared, and the address-family
 * codes of its records. */
typedef struct MDTLM_FIELD_CATALOGUE_ENTRY {
    uint32_t sensorType;
    uint32_t condRows;
    const MDTLM_FILTER_MAP_ENTRY *condMap;
    const MDTLM_FILTER_MAP_ENTRY *filterMap;
    uint32_t filterRows;
    uint32_t familyIpv4; /* MDTLM_NO_ADDRESS_FAMILY when the records carry no family */
    uint32_t familyIpv6;
    uint32_t reserved;
    MDTLM_FIELD_FORM_FUNC fieldForm;
} MDTLM_FIELD_CATALOGUE_ENTRY;

/* ----------------------------------------------------------- sample buffers */

typedef struct MDTLM_SAMPLE_BUFFER {
    uint32_t instanceId;
    uint32_t taskId;
    uint8_t reserved1[8];
    uint64_t collectTimestamp; /* milliseconds since 1970 */
    uint8_t reserved2[8];
    uint32_t reserved3;
    uint32_t reportEnd;
    uint32_t itemCnt;
    uint32_t dataLen;
    uint8_t data[MDTLM_SAMPLE_DATA_SIZE];
} MDTLM_SAMPLE_BUFFER;

#define MDTLM_SAMPLE_HEADER_SIZE 48u

typedef struct MDTLM_SAMPLE_DATA {
    MDTLM_SAMPLE_BUFFER *gpbBuffer;  /* code type 0 */
    MDTLM_SAMPLE_BUFFER *jsonBuffer; /* code type 1 */
} MDTLM_SAMPLE_DATA;

/* ------------------------------------------------------------- task records */

typedef struct MDTLM_TASK_STATS {
    uint64_t recvMsgCnt;
    uint64_t matchItemCnt;
    uint64_t uploadOkCnt;
    uint64_t uploadFailCnt;
    uint32_t lastUploadOkTime;
    uint32_t lastUploadFailTime;
} MDTLM_TASK_STATS;

typedef struct MDTLM_TASK_DATA {
    uint32_t sensorType;
    uint32_t instanceId;
    uint32_t taskId;
    uint32_t lastReportSecondCnt;
    MDTLM_SAMPLE_BUFFER *gpbBuffer;
    MDTLM_SAMPLE_BUFFER *jsonBuffer;
    uint32_t unicastSeqNum;
    uint32_t multicastSeqNum;
    MDTLM_SENSOR_PATH_INFO pathInfo;
    MDTLM_TASK_STATS stats;
} MDTLM_TASK_DATA;

/* Circular doubly linked list with a sentinel head; an empty head points at itself. */
typedef struct MDTLM_LIST_LINK {
    struct MDTLM_LIST_LINK *next;
    struct MDTLM_LIST_LINK *prev;
} MDTLM_LIST_LINK;

typedef struct MDTLM_TASK_NODE {
    MDTLM_LIST_LINK link; /* first member: a node pointer is its link pointer */
    MDTLM_TASK_DATA data;
} MDTLM_TASK_NODE;

/* ------------------------------------------------------- events and messages */

typedef struct MDTLM_EVENT_MSG {
    uint32_t msgType;
    uint32_t msgLen;  /* payload bytes that follow */
    uint8_t payload[]; /* msgLen bytes */
} MDTLM_EVENT_MSG;

typedef struct MDTLM_STATS_MSG {
    uint32_t msgType; /* sensor type */
    uint32_t msgLen;  /* body bytes that follow */
    uint8_t body[];   /* one record of the sensor */
} MDTLM_STATS_MSG;

typedef struct MDTLM_STATS_IPC_ENTRY {
    void *body; /* owned by the channel */
    uint32_t msgType;
    uint32_t msgLen;
} MDTLM_STATS_IPC_ENTRY;

typedef uint32_t (*MDTLM_EVENT_PROC_FUNC)(void *payload, uint32_t payloadLen);
typedef uint32_t (*MDTLM_STATS_MSG_PROC_FUNC)(MDTLM_TASK_DATA *task, MDTLM_STATS_MSG *msg);
typedef uint32_t (*MDTLM_IPC_RECV_FUNC)(void *context, MDTLM_STATS_IPC_ENTRY *entries, uint32_t entryCnt);

/* ------------------------------------------------------- framework interface */

struct MDTLM_XPATH_REG_INFO;

typedef uint32_t (*MDTLM_ADD_TASK_FUNC)(uint32_t instanceId, uint32_t taskId,
                                        const MDTLM_SENSOR_PATH_INFO *pathInfo);
typedef uint32_t (*MDTLM_DEL_TASK_FUNC)(uint32_t instanceId, uint32_t taskId);
typedef uint32_t (*MDTLM_QUERY_FUNC)(void);

typedef struct MDTLM_FRM_VTBL {
    void *slot0;
    void *slot1;
    void *slot2;
    uint32_t (*RegXpath)(uint32_t moduleId, const char *xpath, const struct MDTLM_XPATH_REG_INFO *info);
    uint32_t (*SampleDataUpload)(uint32_t moduleId, MDTLM_SAMPLE_BUFFER *sample);
    void *slot5;
    uint32_t (*WriteLog)(uint32_t moduleId, uint32_t level, const char *line);
    void *(*BufAlloc)(uint32_t moduleId, uint32_t size);
    void (*BufFree)(uint32_t moduleId, void *buf);
} MDTLM_FRM_VTBL;

typedef struct MDTLM_XPATH_REG_INFO {
    uint8_t reserved1[32];
    uint64_t regParam;          /* 0x0001000000002710 */
    MDTLM_QUERY_FUNC queryFunc;
    MDTLM_DEL_TASK_FUNC delFunc;
    uint32_t one;               /* 1 */
    uint32_t reserved2;
    MDTLM_ADD_TASK_FUNC addFunc;
} MDTLM_XPATH_REG_INFO;

#define MDTLM_XPATH_REG_PARAM 0x0001000000002710ull

/* ----------------------------------------------------------- catalogue rows */

typedef struct MDTLM_XPATH_NODE {
    char xpath[MDTLM_XPATH_LEN];
    MDTLM_ADD_TASK_FUNC addFunc;
    MDTLM_DEL_TASK_FUNC delFunc;
} MDTLM_XPATH_NODE;

typedef struct MDTLM_STATS_MAP_ENTRY {
    uint32_t sensorType;
    uint32_t encodeType; /* code type of the sensor's tasks, rewritten each tick */
    MDTLM_SAMPLE_DATA *sampleData;
    MDTLM_STATS_MSG_PROC_FUNC msgProc;
} MDTLM_STATS_MAP_ENTRY;

typedef struct MDTLM_TASK_LIST_ENTRY {
    uint32_t sensorType;
    MDTLM_LIST_LINK *taskList;
    char jsonHeader[MDTLM_JSON_HEADER_LEN];
} MDTLM_TASK_LIST_ENTRY;

typedef struct MDTLM_PATH_NAME_ENTRY {
    uint32_t sensorType;
    char pathName[MDTLM_XPATH_LEN];
} MDTLM_PATH_NAME_ENTRY;

/* ------------------------------------------------------- platform interface */

typedef struct MDTLM_QUE_MONITOR_CFG {
    uint32_t highMark;
    uint32_t lowMark;
    uint32_t epollId;
    uint32_t reserved1;
    uint64_t reserved2;
} MDTLM_QUE_MONITOR_CFG;

typedef struct MDTLM_UCSERVER_CFG {
    uint32_t localAddr; /* network byte order */
    uint16_t localPort; /* network byte order */
    uint16_t reserved1;
    uint32_t peerAddr;
    uint16_t peerPort;
    uint16_t reserved2;
    uint32_t param;     /* 25 */
    uint32_t epollId;
    MDTLM_IPC_RECV_FUNC recvFunc;
    uint8_t reserved3[56];
} MDTLM_UCSERVER_CFG;

typedef struct PAL_SYSTIME {
    uint16_t year;
    uint8_t month;
    uint8_t day;
    uint8_t hour;
    uint8_t minute;
    uint8_t second;
    uint8_t weekday;
    uint32_t millisecond;
    uint32_t reserved;
} PAL_SYSTIME;

typedef uint32_t (*HPX_C2H_FUNC)(void);

/* -------------------------------------------------------- database records */

typedef struct MDTLM_DB_KEY {
    uint32_t reserved;
    uint32_t id;
} MDTLM_DB_KEY;

typedef struct MDTLM_DB_KEY_DESC {
    uint32_t desc; /* 65544: bytes 08 00 01 00 */
    uint8_t reserved[12];
} MDTLM_DB_KEY_DESC;

#define MDTLM_DB_KEY_DESC_VALUE 65544u

typedef struct MDTLM_REPORT_PERF_REC {
    uint32_t reserved;
    uint32_t history_id;
    uint32_t period_index;
    uint32_t in_fwm_msg_count;
    uint32_t in_fwm_msg_byte_count;
    uint32_t in_fwm_item_count;
    uint32_t in_fwm_item_byte_count;
    uint32_t out_msg_count;
    uint32_t out_msg_byte_count;
    uint32_t out_item_count;
    uint32_t out_item_byte_count;
    uint32_t start_time_s;
    uint32_t start_time_ms;
    uint32_t end_time_s;
    uint32_t end_time_ms;
} MDTLM_REPORT_PERF_REC;

typedef struct MDTLM_REPORT_PERF_SLOT {
    uint32_t dirty;
    MDTLM_REPORT_PERF_REC rec;
} MDTLM_REPORT_PERF_SLOT;

#define MDTLM_REPORT_PERF_SLOTS 64u

#pragma pack(push, 4)
typedef struct MDTLM_FEM_TASK_STAT_REC {
    uint32_t reserved;
    uint32_t task_id;
    uint32_t sensor_type;
    uint32_t encode_type;
    uint32_t sample_interval;
    uint64_t recv_msg_count;
    uint64_t match_item_count;
    uint64_t upload_ok_count;
    uint64_t upload_fail_count;
    uint32_t last_upload_ok_time;
    uint32_t last_upload_fail_time;
    char sensor_path[MDTLM_XPATH_LEN];
} MDTLM_FEM_TASK_STAT_REC;
#pragma pack(pop)

/* ------------------------------------------------------------ sensor records */

/* Sensor 1: flow statistics. */
typedef struct MDTLM_FLOW_STATS_REC {
    uint8_t reserved0[16];
    uint32_t ttl;
    uint32_t outerTtl;
    uint32_t tunnelId;
    uint32_t queuePair;
    uint32_t measureMode;
    uint32_t tunnelType;
    uint32_t tunnelFlag;
    uint32_t reserved44;
    uint32_t interval;
    uint32_t castType;
    uint32_t sequenceNumber;
    char chassisId[32];
    char slotId[32];
    uint32_t srcAddr[4];
    uint32_t dstAddr[4];
    uint8_t addressFamily; /* 1 IPv4, 2 IPv6 */
    uint8_t reserved157;
    uint8_t protocol;
    uint8_t reserved159;
    uint16_t srcPort;
    uint16_t dstPort;
    uint32_t flowIdHigh;
    uint32_t flowIdLow;
    uint32_t ifIndex;
    uint8_t reserved176[6];
    uint16_t vlan;
    uint8_t direction;
    uint8_t reserved185[15];
    uint32_t periodId;
    uint32_t reportPeriodIndex;
    uint32_t reserved208;
    uint32_t timestampSecond;
    uint32_t timestampNanosecond;
    uint8_t reserved220[20];
    uint64_t packetCount;
    uint64_t byteCount;
    uint32_t errorInfoExt;
    uint8_t errorInfo;
    uint8_t reserved261[3];
} MDTLM_FLOW_STATS_REC;

/* Sensor 2: flow-hop statistics (offsets 124-163 are not read). */
typedef struct MDTLM_FLOWHOP_STATS_REC {
    uint8_t reserved0[16];
    uint32_t ttl;
    uint32_t outerTtl;
    uint32_t tunnelId;
    uint32_t queuePair;
    uint32_t measureMode;
    uint32_t tunnelType;
    uint32_t tunnelFlag;
    uint32_t reserved44;
    uint32_t interval;
    uint32_t castType;
    uint32_t sequenceNumber;
    char chassisId[32];
    char slotId[32];
    uint8_t reserved124[40];
    uint32_t flowIdHigh;
    uint32_t flowIdLow;
    uint32_t ifIndex;
    uint8_t reserved176[6];
    uint16_t vlan;
    uint8_t direction;
    uint8_t reserved185[15];
    uint32_t periodId;
    uint8_t reserved204[8];
    uint32_t timestampSecond;
    uint32_t timestampNanosecond;
    uint32_t maximumDelay; /* raw */
    uint64_t totalDelay;   /* raw */
    uint64_t totalCount;
    uint64_t packetCount;
    uint64_t byteCount;
    uint32_t errorInfoExt;
    uint8_t errorInfo;
    uint8_t reserved261[3];
} MDTLM_FLOWHOP_STATS_REC;

/* Sensor 3: I/O service flow statistics. */
typedef struct MDTLM_SRVTLM_FLOW_STATS_REC {
    uint8_t accessType;
    uint8_t addressFamily; /* 0 IPv4, 1 IPv6 */
    uint16_t reserved2;
    uint32_t srcIp[4];
    uint32_t dstIp[4];
    uint32_t logicalUnitNum;
    uint32_t periodId;
    uint16_t ifIndex;
    uint8_t measureMode;
    uint8_t reserved47;
    uint32_t readIoAvgLatency;
    uint32_t writeIoAvgLatency;
    uint32_t readDal;
    uint32_t writeDal;
    uint32_t writeDpl;
    uint32_t readIops;
    uint32_t writeIops;
    uint32_t readIoAvgSize;
    uint32_t writeIoAvgSize;
    uint32_t readPendingIoCnt;
    uint32_t writePendingIoCnt;
    uint8_t reserved92[8];
    uint32_t interval;
    uint32_t errorInfo;
    uint32_t sequenceNumber;
} MDTLM_SRVTLM_FLOW_STATS_REC;

/* Sensor 4: result statistics. */
typedef struct MDTLM_QUMA_RESULT_REC {
    uint32_t id;
    uint32_t periodId;
    uint32_t protocol;
    uint32_t ruleId;
    uint32_t aclNumber;
    char aclName[64];
    uint32_t vxlanReservedValue;
    uint32_t vxlanReservedValueSecond;
    uint32_t reserved92;
    uint64_t inputPackets;
    uint64_t outputPackets;
    uint32_t lossRate;
    char warnInfo[32];
    uint32_t timeStamp;
} MDTLM_QUMA_RESULT_REC;

/* Sensor 5: I/O service flow throughput statistics. */
#pragma pack(push, 4)
typedef struct MDTLM_SRVTLM_FCTFLOW_STATS_REC {
    uint32_t reserved0;
    uint32_t addressFamily; /* 0 IPv4, 1 IPv6 */
    uint32_t srcIp[4];
    uint32_t dstIp[4];
    uint32_t periodId;
    uint32_t slotId;
    uint32_t srcIfIndex;
    uint32_t dstIfIndex;
    uint32_t interfaceChangeStatus;
    uint32_t fctMax;
    uint32_t fctMin;
    uint32_t fctMean;
    uint64_t fetMax;
    uint64_t fetMin;
    uint64_t fetMean;
    uint32_t nakPacketNumber;
    uint32_t rdmaPacketNumber;
    uint32_t rdmaMessageNumber;
    uint32_t errorInfo;
    uint32_t sequenceNumber;
} MDTLM_SRVTLM_FCTFLOW_STATS_REC;
#pragma pack(pop)

/* Sensor 6: export flow cache; field id = offset / 4. */
typedef struct MDTLM_ZELK_CACHE_REC {
    uint32_t slotId;
    uint32_t sourceIp;
    uint32_t destinationIp;
    uint32_t protocolId;
    uint32_t l4SourcePort;
    uint32_t l4DestinationPort;
    uint32_t ifIndex;
    uint32_t detectTimestampSecond;
    uint32_t state;
    uint32_t seed;
    uint32_t recoveryCount;
    uint32_t sequenceNumber;
    uint32_t recoveryMode;
    uint32_t opMode;
} MDTLM_ZELK_CACHE_REC;

/* Every way a statistics message, an add or delete request or a tick is lost
 * or altered inside the plug-in, counted since the plug-in was loaded. All
 * counters are u64; `MDTLM_VRALDCN_STATS_GetLossCounters` fills the record. */
typedef struct MDTLM_LOSS_COUNTERS {
    /* Statistics intake: what the receive callback was handed and what became of it. */
    uint64_t recvMsgCnt;         /* messages in the batches handed to the receive callback */
    uint64_t queuedMsgCnt;       /* messages put on the statistics queue */
    uint64_t cutBodyCnt;         /* bodies longer than their record, queued cut to the record's size */
    uint64_t shortBodyCnt;       /* bodies shorter than their record, refused */
    uint64_t emptyBodyCnt;       /* null or zero-length bodies, dropped */
    uint64_t stopNoTaskCnt;      /* entries that ended their batch: a known sensor without tasks */
    uint64_t stopUnknownTypeCnt; /* entries that ended their batch: not a sensor type */
    uint64_t stopBehindCnt;      /* entries dropped behind an entry that ended their batch */
    uint64_t msgAllocFailCnt;    /* messages dropped because no buffer came or the copy failed */
    uint64_t queueFullCnt;       /* messages dropped on a full or missing statistics queue */
    /* Statistics queue: what left it. */
    uint64_t handledMsgCnt;      /* messages a tick offered to the tasks of their sensor */
    uint64_t noTaskAtTickCnt;    /* messages a tick freed because their sensor had lost its tasks */
    uint64_t discardedAtStopCnt; /* messages still queued, freed by the full unload */
    uint64_t leftAtStopCnt;      /* messages the full unload could not read back (buffers left) */
    /* Event queue. */
    uint64_t addDroppedCnt;      /* add requests answered 0 but not queued */
    uint64_t delDroppedCnt;      /* delete requests answered 0 but not queued */
    uint64_t tickDroppedCnt;     /* period ticks not queued (no buffer or queue full) */
    uint64_t eventsDiscardedAtStopCnt; /* events still queued, freed unhandled by the full unload */
    uint64_t eventsLeftAtStopCnt;      /* events the full unload could not read back (buffers left) */
    /* Records and samples. */
    uint64_t encodeFailCnt[MDTLM_SENSOR_COUNT]; /* records that passed a task but were not stored, per sensor */
    uint64_t sampleNotSentCnt;   /* task buffers whose sample could not be allocated or formatted */
    /* Platform objects. */
    uint64_t releaseFailCnt;     /* platform objects that refused every try to release them */
} MDTLM_LOSS_COUNTERS;

#ifdef __cplusplus
} /* extern "C" */
#endif

#include "mdtlm_layout_checks.h"

#endif /* MDTLM_TYPES_H */
