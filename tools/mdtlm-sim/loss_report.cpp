/*
 * Loss summary and reconciliation line.
 */
#include "loss_report.h"

#include <span>
#include <string>

#include "sensor_table.h"

namespace mdtlm::sim {
namespace {

struct Item {
    const char *label;
    uint64_t MDTLM_LOSS_COUNTERS::*field;
};

/* Messages that left the intake or the queue without reaching a task, in the
 * order they can happen to a message. */
constexpr Item kMessageLosses[] = {
    {"refused short", &MDTLM_LOSS_COUNTERS::shortBodyCnt},
    {"empty", &MDTLM_LOSS_COUNTERS::emptyBodyCnt},
    {"batch stopped at a sensor without tasks", &MDTLM_LOSS_COUNTERS::stopNoTaskCnt},
    {"at an unknown type", &MDTLM_LOSS_COUNTERS::stopUnknownTypeCnt},
    {"behind a stop", &MDTLM_LOSS_COUNTERS::stopBehindCnt},
    {"no buffer", &MDTLM_LOSS_COUNTERS::msgAllocFailCnt},
    {"statistics queue full", &MDTLM_LOSS_COUNTERS::queueFullCnt},
    {"sensor without tasks at the tick", &MDTLM_LOSS_COUNTERS::noTaskAtTickCnt},
    {"discarded at stop", &MDTLM_LOSS_COUNTERS::discardedAtStopCnt},
    {"left at stop", &MDTLM_LOSS_COUNTERS::leftAtStopCnt},
};

constexpr Item kEventLosses[] = {
    {"add requests dropped", &MDTLM_LOSS_COUNTERS::addDroppedCnt},
    {"delete requests dropped", &MDTLM_LOSS_COUNTERS::delDroppedCnt},
    {"ticks dropped", &MDTLM_LOSS_COUNTERS::tickDroppedCnt},
    {"discarded at stop", &MDTLM_LOSS_COUNTERS::eventsDiscardedAtStopCnt},
    {"left at stop", &MDTLM_LOSS_COUNTERS::eventsLeftAtStopCnt},
};

/* "label value, label value, ..."; adds the values to `sum`. */
std::string List(const MDTLM_LOSS_COUNTERS &losses, std::span<const Item> items, uint64_t *sum)
{
    std::string text;
    for (const Item &item : items) {
        const uint64_t value = losses.*item.field;
        text += (text.empty() ? "" : ", ") + std::string(item.label) + " " + std::to_string(value);
        *sum += value;
    }
    return text;
}

} // namespace

LossReport ReconcileLosses(const MDTLM_LOSS_COUNTERS &losses, uint64_t channelMessages, uint64_t stillQueued)
{
    LossReport report;
    uint64_t lost = 0;
    uint64_t eventLosses = 0;
    report.text = "losses: " + List(losses, kMessageLosses, &lost) + "\n";
    report.text += "altered: " + std::to_string(losses.cutBodyCnt) + " bodies cut to their record's size\n";
    report.text += "requests and ticks: " + List(losses, kEventLosses, &eventLosses) + "\n";
    std::string encode;
    for (uint32_t type = 1; type <= MDTLM_SENSOR_COUNT; ++type) {
        const tools::SensorDesc *sensor = tools::SensorByType(type);
        encode += (encode.empty() ? "" : ", ") + std::string(sensor != nullptr ? sensor->shortName : "?") + " " +
                  std::to_string(losses.encodeFailCnt[type - 1]);
    }
    report.text += "records not stored (encode failures): " + encode + "; samples not sent " +
                   std::to_string(losses.sampleNotSentCnt) + "\n";

    const uint64_t accounted = losses.handledMsgCnt + stillQueued + lost;
    report.unaccounted = static_cast<int64_t>(channelMessages - accounted);
    report.text += "reconciliation: channel handed " + std::to_string(channelMessages) + " messages (plug-in counted " +
                   std::to_string(losses.recvMsgCnt) + "); handled by ticks " +
                   std::to_string(losses.handledMsgCnt) + " + still queued " + std::to_string(stillQueued) +
                   " + lost " + std::to_string(lost) + "; unaccounted " + std::to_string(report.unaccounted) + "\n";
    return report;
}

} // namespace mdtlm::sim
