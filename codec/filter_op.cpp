/*
 * Comparison operators of sensor-path filters. The record's value stands on
 * the left, the filter's threshold on the right; all comparisons are
 * unsigned. Codes above the table never hold.
 */
#include <stdint.h>

#include "mdtlm_vraldcn.h"

namespace {

template <typename T>
using Compare = bool (*)(T value, T threshold);

/* Indexed by operator code: EQ, GT, GE, LT, LE. */
template <typename T>
constexpr Compare<T> kCompares[] = {
    [](T v, T t) { return v == t; }, [](T v, T t) { return v > t; },  [](T v, T t) { return v >= t; },
    [](T v, T t) { return v < t; },  [](T v, T t) { return v <= t; },
};

template <typename T>
uint32_t Holds(T threshold, T value, uint32_t op)
{
    constexpr uint32_t count = sizeof(kCompares<T>) / sizeof(kCompares<T>[0]);
    return (op < count && kCompares<T>[op](value, threshold)) ? 1u : 0u;
}

} // namespace

extern "C" {

uint32_t MDTLM_STATS_SensorFilterOp(uint32_t threshold, uint32_t value, uint32_t op)
{
    return Holds<uint32_t>(threshold, value, op);
}

uint32_t MDTLM_STATS_SensorFilterOp64(uint64_t threshold, uint64_t value, uint32_t op)
{
    return Holds<uint64_t>(threshold, value, op);
}

uint32_t MDTLM_STATS_SensorFilterIsAnd(uint32_t filterCnt, uint32_t filterLogic)
{
    return (filterCnt > 1 && filterLogic == MDTLM_FILTER_LOGIC_AND) ? 1u : 0u;
}

} /* extern "C" */
