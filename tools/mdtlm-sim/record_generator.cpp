/*
 * Record generation from the sensor table's value plans.
 */
#include "record_generator.h"

#include <ctime>
#include <iterator>

#include "record_codec.h"

namespace mdtlm::sim {
namespace {

using tools::FieldDesc;
using tools::FieldKind;
using tools::Pick;

constexpr double kBigCounterShare = 0.3;
constexpr uint64_t kSmallCounterLimit = uint64_t{1} << 20;
constexpr uint64_t kBigCounterFloor = uint64_t{1} << 32;
constexpr uint64_t kBigCounterLimit = uint64_t{1} << 36;
constexpr uint64_t kPeriodSeconds = 10;

constexpr const char *kIpv4Pool[] = {"10.0.0.1", "10.0.0.2", "192.168.10.1", "172.16.5.20", "203.0.113.7"};
constexpr const char *kIpv6Pool[] = {"2001:db8::1", "2001:db8:0:1::2", "fe80::1a2b:3cff:fe4d:5e6f", "::1",
                                     "2001:db8:85a3::8a2e:370:7334"};

} // namespace

uint64_t RecordGenerator::PickNumber(const tools::SensorDesc &sensor, const FieldDesc &field)
{
    switch (field.pick) {
    case Pick::Range:
        return Between(field.lo, field.hi);
    case Pick::Rare:
        if (!field.values.empty() && invalidShare_ > 0 && Chance(invalidShare_)) {
            return field.values[Between(0, field.values.size() - 1)];
        }
        return Between(field.lo, field.hi);
    case Pick::Counter:
        return Chance(kBigCounterShare) ? Between(kBigCounterFloor, kBigCounterLimit - 1)
                                        : Between(0, kSmallCounterLimit - 1);
    case Pick::Clock:
        return static_cast<uint64_t>(std::time(nullptr));
    case Pick::Nanos:
        return Between(0, 999999999);
    case Pick::Period:
        return static_cast<uint64_t>(std::time(nullptr)) / kPeriodSeconds;
    case Pick::Sequence:
        return sequence_[sensor.type]++;
    case Pick::Choice:
        return field.values.empty() ? 0 : field.values[Between(0, field.values.size() - 1)];
    default:
        return 0;
    }
}

tools::StatsMessage RecordGenerator::Make(const tools::SensorDesc &sensor)
{
    tools::StatsMessage message;
    message.type = sensor.type;
    message.body.assign(sensor.recordSize, 0);
    uint8_t *record = message.body.data();
    /* Everything but addresses first: the addresses follow the record's address family. */
    for (const FieldDesc &field : sensor.fields) {
        if (field.kind == FieldKind::Text) {
            if (!field.texts.empty()) {
                tools::StoreText(record, field, field.texts[Between(0, field.texts.size() - 1)]);
            }
        } else if (field.pick != Pick::Address) {
            tools::StoreField(record, field, PickNumber(sensor, field) & tools::FieldMax(field));
        }
    }
    bool ipv6 = sensor.familyField != nullptr && sensor.Family(record) == sensor.familyIpv6;
    for (const FieldDesc &field : sensor.fields) {
        if (field.pick == Pick::Address) {
            const char *text = ipv6 && field.kind == FieldKind::Address
                                   ? kIpv6Pool[Between(0, std::size(kIpv6Pool) - 1)]
                                   : kIpv4Pool[Between(0, std::size(kIpv4Pool) - 1)];
            tools::StoreAddressText(record, field, text);
        }
    }
    return message;
}

} // namespace mdtlm::sim
