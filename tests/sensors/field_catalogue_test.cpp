/*
 * The field catalogue hosts read to check and document configurations: each
 * form it reports for a condition or filter id must be how that sensor's
 * compare callback actually decides, and its maps must be the handler's.
 */
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <tuple>
#include <vector>

#include "mdtlm_vraldcn.h"
#include "sensor_calls.h"

namespace {

using sensor_table::SensorCalls;

/* A zeroed record as large as any sensor's: every field small, every address family code 0. */
struct ZeroRecord {
    alignas(8) uint8_t bytes[512] = {};
};

uint32_t Condition(const SensorCalls &sensor, uint32_t id, const std::string &value)
{
    MDTLM_PATH_CONDITION cond;
    std::memset(&cond, 0, sizeof cond);
    std::memcpy(cond.value, value.data(), value.size());
    ZeroRecord record;
    return sensor.condition(id, &cond, record.bytes);
}

uint32_t FilterLessThan(const SensorCalls &sensor, uint32_t id, uint64_t threshold)
{
    MDTLM_PATH_FILTER filter;
    std::memset(&filter, 0, sizeof filter);
    filter.op = MDTLM_FILTER_OP_LT;
    filter.threshold = threshold;
    ZeroRecord record;
    return sensor.filter(id, &filter, record.bytes);
}

/* The value (0 to 16) of a numeric condition field on the zero record. */
int MatchingSmallValue(const SensorCalls &sensor, uint32_t id)
{
    for (int value = 0; value <= 16; ++value) {
        if (Condition(sensor, id, std::to_string(value)) == 1) {
            return value;
        }
    }
    return -1;
}

TEST(FieldCatalogue, EachReportedFormIsHowTheSensorsCallbackDecides)
{
    constexpr uint64_t k2To32 = uint64_t{1} << 32;
    for (const SensorCalls &sensor : sensor_table::kSensors) {
        const MDTLM_FIELD_CATALOGUE_ENTRY &row = g_mdtlmFieldCatalogue[sensor.sensorType - 1];
        ASSERT_EQ(row.sensorType, sensor.sensorType);
        for (uint32_t i = 0; i < row.condRows; ++i) {
            const MDTLM_FILTER_MAP_ENTRY &entry = row.condMap[i];
            SCOPED_TRACE(std::to_string(sensor.sensorType) + " condition " + entry.fieldName);
            switch (row.fieldForm(MDTLM_FIELD_MAP_CONDITION, entry.fieldId)) {
            case MDTLM_FIELD_FORM_NONE:
                EXPECT_EQ(Condition(sensor, entry.fieldId, "no such value"), 1u);
                break;
            case MDTLM_FIELD_FORM_NUMBER32:
            case MDTLM_FIELD_FORM_NUMBER64: {
                int value = MatchingSmallValue(sensor, entry.fieldId);
                ASSERT_GE(value, 0);
                /* Only a 32-bit comparison drops bit 32 of the value. */
                bool wide = row.fieldForm(MDTLM_FIELD_MAP_CONDITION, entry.fieldId) == MDTLM_FIELD_FORM_NUMBER64;
                EXPECT_EQ(Condition(sensor, entry.fieldId, std::to_string(k2To32 + static_cast<uint64_t>(value))),
                          wide ? 0u : 1u);
                break;
            }
            case MDTLM_FIELD_FORM_IPV4:
                EXPECT_EQ(Condition(sensor, entry.fieldId, "0.0.0.0"), 1u);
                EXPECT_EQ(Condition(sensor, entry.fieldId, "0:0:0:0:0:0:0:0"), 0u);
                break;
            case MDTLM_FIELD_FORM_IP:
                /* The zero record's family code is 0: IPv4 for this sensor, or none. */
                EXPECT_EQ(Condition(sensor, entry.fieldId, "0.0.0.0"), row.familyIpv4 == 0 ? 1u : 0u);
                EXPECT_NE(row.familyIpv4, MDTLM_NO_ADDRESS_FAMILY);
                break;
            default:
                ADD_FAILURE() << "unknown form";
            }
        }
        for (uint32_t i = 0; i < row.filterRows; ++i) {
            const MDTLM_FILTER_MAP_ENTRY &entry = row.filterMap[i];
            SCOPED_TRACE(std::to_string(sensor.sensorType) + " filter " + entry.fieldName);
            /* value < 2^32 holds at 64 bits; at 32 bits the threshold is 0 and nothing is below it. */
            switch (row.fieldForm(MDTLM_FIELD_MAP_FILTER, entry.fieldId)) {
            case MDTLM_FIELD_FORM_NONE:
                EXPECT_EQ(FilterLessThan(sensor, entry.fieldId, 0), 1u);
                break;
            case MDTLM_FIELD_FORM_NUMBER32:
                EXPECT_EQ(FilterLessThan(sensor, entry.fieldId, k2To32), 0u);
                break;
            case MDTLM_FIELD_FORM_NUMBER64:
                EXPECT_EQ(FilterLessThan(sensor, entry.fieldId, k2To32), 1u);
                EXPECT_EQ(FilterLessThan(sensor, entry.fieldId, 0), 0u);
                break;
            default:
                ADD_FAILURE() << "filters compare numbers only";
            }
        }
    }
}

TEST(FieldCatalogue, RowsFollowSensorTypesWithTheFamilyCodesTheEncodersRead)
{
    const struct {
        uint32_t ipv4;
        uint32_t ipv6;
    } kFamilies[] = {{1, 2},
                     {MDTLM_NO_ADDRESS_FAMILY, MDTLM_NO_ADDRESS_FAMILY},
                     {0, 1},
                     {MDTLM_NO_ADDRESS_FAMILY, MDTLM_NO_ADDRESS_FAMILY},
                     {0, 1},
                     {MDTLM_NO_ADDRESS_FAMILY, MDTLM_NO_ADDRESS_FAMILY}};
    for (uint32_t i = 0; i < MDTLM_SENSOR_COUNT; ++i) {
        const MDTLM_FIELD_CATALOGUE_ENTRY &row = g_mdtlmFieldCatalogue[i];
        EXPECT_EQ(row.sensorType, i + 1);
        EXPECT_EQ(row.familyIpv4, kFamilies[i].ipv4) << row.sensorType;
        EXPECT_EQ(row.familyIpv6, kFamilies[i].ipv6) << row.sensorType;
        EXPECT_NE(row.fieldForm, nullptr);
        const SensorCalls &sensor = sensor_table::kSensors[i];
        EXPECT_EQ(std::tie(row.condMap, row.condRows, row.filterMap, row.filterRows),
                  std::tie(sensor.condMap, sensor.condRows, sensor.filterMap, sensor.filterRows));
    }
}

} // namespace
