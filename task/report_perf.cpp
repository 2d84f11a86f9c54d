/*
 * The report-performance ring: 64 slots, one per measurement period modulo
 * 64, counting the flow and flow-hop records accepted and encoded. A count
 * for a period other than the one a slot holds claims the slot afresh.
 */
#include <sys/time.h>

#include <cstring>

#include "mdtlm_log.h"
#include "mdtlm_vraldcn.h"
#include "task_log_lines.h"

extern "C" {
MDTLM_REPORT_PERF_SLOT *g_mdtlmNtvVralDcnReportPerf = nullptr;
}

namespace {

constexpr uint32_t kSlotMask = MDTLM_REPORT_PERF_SLOTS - 1;
constexpr uint32_t kRingBytes = MDTLM_REPORT_PERF_SLOTS * sizeof(MDTLM_REPORT_PERF_SLOT);

MDTLM_REPORT_PERF_SLOT *SlotOf(uint32_t period)
{
    if (g_mdtlmNtvVralDcnReportPerf == nullptr) {
        return nullptr;
    }
    return &g_mdtlmNtvVralDcnReportPerf[period & kSlotMask];
}

void NumberSlots()
{
    std::memset(g_mdtlmNtvVralDcnReportPerf, 0, kRingBytes);
    for (uint32_t i = 0; i < MDTLM_REPORT_PERF_SLOTS; ++i) {
        g_mdtlmNtvVralDcnReportPerf[i].rec.history_id = i;
    }
}

/* Hands the slot to `period` with counts and times cleared. */
void ClearSlotFor(MDTLM_REPORT_PERF_SLOT *slot, uint32_t period)
{
    std::memset(&slot->rec, 0, sizeof(slot->rec));
    slot->rec.history_id = period & kSlotMask;
    slot->rec.period_index = period;
}

/* Hands the slot to `period`, started now. */
void ClaimSlot(MDTLM_REPORT_PERF_SLOT *slot, uint32_t period)
{
    ClearSlotFor(slot, period);
    MDTLM_VRALDCN_SetReportPerfTimestamps(&slot->rec.start_time_s, &slot->rec.start_time_ms);
}

/* The slot of `period`, claimed first when it holds another period. */
MDTLM_REPORT_PERF_SLOT *SlotForCounting(uint32_t period)
{
    MDTLM_REPORT_PERF_SLOT *slot = SlotOf(period);
    if (slot != nullptr && slot->rec.period_index != period) {
        ClaimSlot(slot, period);
    }
    return slot;
}

using PerfField = uint32_t MDTLM_REPORT_PERF_REC::*;

/* Marks the slot changed and adds to two of its counts; no slot, no change. */
void AddPair(MDTLM_REPORT_PERF_SLOT *slot, PerfField first, PerfField second, uint32_t a, uint32_t b)
{
    if (slot == nullptr) {
        return;
    }
    slot->dirty = 1;
    slot->rec.*first += a;
    slot->rec.*second += b;
}

/* Marks the slot changed and stores a seconds / milliseconds pair. */
void SetPair(MDTLM_REPORT_PERF_SLOT *slot, PerfField seconds, PerfField milliseconds, uint32_t s, uint32_t ms)
{
    if (slot == nullptr) {
        return;
    }
    slot->dirty = 1;
    slot->rec.*seconds = s;
    slot->rec.*milliseconds = ms;
}

} // namespace

extern "C" {

uint32_t MDTLM_VRALDCN_InitReportPerf(void)
{
    if (g_mdtlmNtvVralDcnReportPerf != nullptr) {
        return 0;
    }
    g_mdtlmNtvVralDcnReportPerf = static_cast<MDTLM_REPORT_PERF_SLOT *>(MDTLM_VRALDCN_BufAlloc(kRingBytes));
    if (g_mdtlmNtvVralDcnReportPerf == nullptr) {
        return 1;
    }
    NumberSlots();
    return 0;
}

void MDTLM_VRALDCN_DestoryReportPerf(void)
{
    MDTLM_VRALDCN_BufFree(reinterpret_cast<void **>(&g_mdtlmNtvVralDcnReportPerf));
}

void MDTLM_VRALDCN_ResetReportPerf(void)
{
    if (g_mdtlmNtvVralDcnReportPerf != nullptr) {
        NumberSlots();
    }
}

void MDTLM_VRALDCN_SetReportPerfTimestamps(uint32_t *seconds, uint32_t *milliseconds)
{
    struct timeval now {};
    if (gettimeofday(&now, nullptr) != 0) {
        MDTLM_LOG_AT(MDTLM_LOG_FAILURE, MDTLM_LINE_REPORT_PERF_CLOCK_FAILED,
                     "[NTVVRALDCN_STATS_GetTimestamps] Get collect timestamp failed");
        return;
    }
    if (seconds != nullptr) {
        *seconds = static_cast<uint32_t>(now.tv_sec);
    }
    if (milliseconds != nullptr) {
        *milliseconds = static_cast<uint32_t>(now.tv_usec / 1000);
    }
}

void MDTLM_VRALDCN_UpdateReportPerfPeriodIndex(uint32_t period)
{
    MDTLM_REPORT_PERF_SLOT *slot = SlotOf(period);
    if (slot != nullptr) {
        ClaimSlot(slot, period);
    }
}

void MDTLM_VRALDCN_UpdateReportPerfInFwmItermCnt(uint32_t period, uint32_t items, uint32_t bytes)
{
    AddPair(SlotForCounting(period), &MDTLM_REPORT_PERF_REC::in_fwm_item_count,
            &MDTLM_REPORT_PERF_REC::in_fwm_item_byte_count, items, bytes);
}

void MDTLM_VRALDCN_UpdateReportPerfOutItemCnt(uint32_t period, uint32_t items, uint32_t bytes)
{
    AddPair(SlotForCounting(period), &MDTLM_REPORT_PERF_REC::out_item_count,
            &MDTLM_REPORT_PERF_REC::out_item_byte_count, items, bytes);
}

void MDTLM_VRALDCN_UpdateReportPerfStartTime(uint32_t period, uint32_t seconds, uint32_t milliseconds)
{
    MDTLM_REPORT_PERF_SLOT *slot = SlotOf(period);
    if (slot == nullptr) {
        return;
    }
    /* A start time is that of the slot's claim. A slot holding another period
     * is claimed for `period`, as a count would claim it, and started at the
     * given time; a slot that already holds the period keeps its start. */
    if (slot->rec.period_index != period) {
        ClearSlotFor(slot, period);
        slot->rec.start_time_s = seconds;
        slot->rec.start_time_ms = milliseconds;
    }
    slot->dirty = 1;
}

void MDTLM_VRALDCN_UpdateReportPerfEndTime(uint32_t period, uint32_t seconds, uint32_t milliseconds)
{
    SetPair(SlotOf(period), &MDTLM_REPORT_PERF_REC::end_time_s, &MDTLM_REPORT_PERF_REC::end_time_ms, seconds,
            milliseconds);
}

void MDTLM_VRALDCN_UpdateReportPerfToDb(void)
{
    if (g_mdtlmNtvVralDcnReportPerf == nullptr) {
        return;
    }
    for (uint32_t i = 0; i < MDTLM_REPORT_PERF_SLOTS; ++i) {
        MDTLM_REPORT_PERF_SLOT &slot = g_mdtlmNtvVralDcnReportPerf[i];
        if (slot.dirty != 1) {
            continue;
        }
        MDTLM_VRALDCN_SetReportPerfTimestamps(&slot.rec.end_time_s, &slot.rec.end_time_ms);
        uint32_t ret = MDTLM_VRALDCN_AddReportPerfEntryDbData(&slot.rec);
        if (ret != 0) {
            MDTLM_LOG_AT(MDTLM_LOG_FAILURE, MDTLM_LINE_REPORT_PERF_TICK_WRITE_FAILED,
                         "[ FEM ]Update report perf to db failed ret: %u, index: %u, periodIndex: %u.", ret, i,
                         slot.rec.period_index);
        }
        /* A failed write is not repeated unless the slot changes again. */
        slot.dirty = 0;
    }
}

void MDTLM_VRALDCN_ClearReportPerfData(void)
{
    MDTLM_VRALDCN_TruncateReportPerfEntryDbData();
}

} /* extern "C" */
