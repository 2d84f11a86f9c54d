/*
 * The six sensors as the host tools see them: identity, sensor path, record
 * layout with the field names users write, the schema that decodes their GPB
 * samples, and how the built-in forwarding side picks realistic values.
 *
 * One table serves the generator, mdtlm-send and the sample decoder.
 */
#ifndef MDTLM_TOOLS_SENSOR_TABLE_H
#define MDTLM_TOOLS_SENSOR_TABLE_H

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace mdtlm::tools {

/* How a field is stored in the record. */
enum class FieldKind {
    U8,
    U16,
    U32,
    U64,
    Text,    /* NUL-padded text of `size` bytes, at most `textMax` characters */
    Address, /* 16 bytes: IPv4 as the first u32, or IPv6 as four u32 words */
    Ipv4,    /* one u32, first octet in the most significant byte */
};

/* How the generator picks a value for a field. */
enum class Pick {
    Zero,     /* left 0 */
    Range,    /* uniform in [lo, hi] */
    Rare,     /* uniform in [lo, hi]; with the invalid share, one of `values` (refused or not encodable) */
    Counter,  /* counters: small ones and ones above 2^32 */
    Clock,    /* current time, seconds since 1970 */
    Nanos,    /* 0 .. 999999999 */
    Period,   /* measurement period: current time / 10 s */
    Sequence, /* running count per sensor */
    Choice,   /* one of `values` (numbers) or of `texts` (text fields) */
    Address,  /* from the address pools, by the record's address family */
};

struct FieldDesc {
    const char *name;
    uint32_t offset;
    FieldKind kind;
    uint32_t size; /* bytes the field occupies */
    Pick pick;
    uint64_t lo = 0;
    uint64_t hi = 0;
    std::span<const uint64_t> values = {};
    std::span<const char *const> texts = {};
    uint32_t textMax = 0; /* Text: longest text accepted */
};

struct SensorDesc {
    uint32_t type;          /* 1..6, the message type on the channel */
    const char *shortName;  /* what users write in configurations */
    const char *xpath;      /* the sensor path the plug-in registers */
    uint32_t recordSize;    /* bytes of one record */
    const char *protoFile;  /* relative to the proto directory */
    const char *protoMessage;
    /* Address family: the field holding it, and its values for IPv4/IPv6. */
    const char *familyField;
    uint32_t familyIpv4;
    uint32_t familyIpv6;
    std::span<const FieldDesc> fields;

    const FieldDesc *Field(std::string_view name) const;
    /* Reads the address family of a record (0 when the sensor has none). */
    uint64_t Family(const uint8_t *record) const;
};

/* All six, in sensor-type order. */
std::span<const SensorDesc> Sensors();

/* By short name, sensor path or type number as text ("1".."6"); null if none. */
const SensorDesc *FindSensor(std::string_view nameOrPath);
const SensorDesc *SensorByType(uint32_t type);

/* "flow", "flow-hop", ... joined by ", " for error messages. */
std::string SensorNameList();

} // namespace mdtlm::tools

#endif /* MDTLM_TOOLS_SENSOR_TABLE_H */
