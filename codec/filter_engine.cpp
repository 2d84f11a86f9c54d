/*
 * Tests of a record against a task's sensor-path block: conditions (all must
 * hold) and filters (combined by AND or OR). A field name is resolved to the
 * sensor's field id through the sensor's map; what the id means for a record
 * is the sensor's callback's business. The engine reads only the block and the
 * map, never the record, and never more entries than the block has room for.
 */
#include <stdint.h>

#include "mdtlm_vraldcn.h"

namespace {

template <typename T, uint32_t N>
constexpr uint32_t CountOf(const T (&)[N])
{
    return N;
}

/* Equality of two NUL-terminated names, each bounded by its field: a name
 * that fills its field without a NUL ends at the field's end. */
template <uint32_t A, uint32_t B>
bool NamesEqual(const char (&a)[A], const char (&b)[B])
{
    constexpr uint32_t longest = A > B ? A : B;
    for (uint32_t i = 0; i < longest; ++i) {
        const char ca = i < A ? a[i] : '\0';
        const char cb = i < B ? b[i] : '\0';
        if (ca != cb) {
            return false;
        }
        if (ca == '\0') {
            return true;
        }
    }
    return true;
}

/* First row of the map with this name, or null (unknown field). */
template <uint32_t N>
const MDTLM_FILTER_MAP_ENTRY *FindRow(const MDTLM_FILTER_MAP_ENTRY *map, uint32_t rows, const char (&name)[N])
{
    if (map == nullptr) {
        return nullptr;
    }
    for (uint32_t i = 0; i < rows; ++i) {
        if (NamesEqual(map[i].fieldName, name)) {
            return &map[i];
        }
    }
    return nullptr;
}

/* Counts beyond the block's room are clamped to it. */
uint32_t Clamp(uint32_t count, uint32_t room)
{
    return count < room ? count : room;
}

} // namespace

extern "C" {

uint32_t MDTLM_STATS_SensorPathCondition(const MDTLM_SENSOR_PATH_INFO *pathInfo, const void *record,
                                         const MDTLM_FILTER_MAP_ENTRY *map, uint32_t mapRows,
                                         MDTLM_CONDITION_CMP_FUNC cmp)
{
    if (pathInfo == nullptr) {
        return 1; /* no block, nothing to test */
    }
    const uint32_t count = Clamp(pathInfo->conditionCnt, CountOf(pathInfo->conditions));
    for (uint32_t i = 0; i < count; ++i) {
        const MDTLM_PATH_CONDITION *cond = &pathInfo->conditions[i];
        const MDTLM_FILTER_MAP_ENTRY *row = FindRow(map, mapRows, cond->fieldName);
        if (row == nullptr) {
            continue; /* unknown field: neither passes nor rejects */
        }
        /* A sensor without a callback handles no id: such a verdict is 1. */
        if (cmp != nullptr && cmp(row->fieldId, cond, record) == 0) {
            return 0; /* later conditions are not evaluated */
        }
    }
    return 1;
}

uint32_t MDTLM_STATS_SensorPathFilter(const MDTLM_SENSOR_PATH_INFO *pathInfo, const void *record,
                                      const MDTLM_FILTER_MAP_ENTRY *map, uint32_t mapRows, MDTLM_FILTER_CMP_FUNC cmp)
{
    if (pathInfo == nullptr) {
        return 1;
    }
    const uint32_t count = Clamp(pathInfo->filterCnt, CountOf(pathInfo->filters));
    if (count == 0) {
        return 1;
    }
    /* Every filter is evaluated; the logic decides which fold counts. */
    uint32_t all = 1;
    uint32_t any = 0;
    for (uint32_t i = 0; i < count; ++i) {
        const MDTLM_PATH_FILTER *filter = &pathInfo->filters[i];
        const MDTLM_FILTER_MAP_ENTRY *row = FindRow(map, mapRows, filter->fieldName);
        if (row == nullptr) {
            continue;
        }
        /* A sensor without a callback handles no id: such a verdict is 1. */
        const uint32_t holds = (cmp == nullptr || cmp(row->fieldId, filter, record) != 0) ? 1u : 0u;
        all &= holds;
        any |= holds;
    }
    return MDTLM_STATS_SensorFilterIsAnd(count, pathInfo->filterLogic) != 0 ? all : any;
}

} /* extern "C" */
