/*
 * Status line and end-of-run summary.
 */
#include "report.h"

#include <cstdarg>
#include <cstdio>
#include <map>

namespace mdtlm::sim {
namespace {

std::string Format(const char *format, ...) __attribute__((format(printf, 1, 2)));

std::string Format(const char *format, ...)
{
    char text[512];
    va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    return text;
}

unsigned long long U(uint64_t value)
{
    return static_cast<unsigned long long>(value);
}

std::string Unknown(int64_t value)
{
    return value < 0 ? "?" : std::to_string(value);
}

std::string PerSensor(const SentCounts &sent)
{
    std::string text;
    for (const auto &[type, count] : sent.perSensor) {
        const tools::SensorDesc *sensor = tools::SensorByType(type);
        text += Format("%s%s %llu", text.empty() ? "" : ", ", sensor != nullptr ? sensor->shortName : "?", U(count));
    }
    return text.empty() ? "none" : text;
}

} // namespace

std::string StatusLine(const RunState &state)
{
    std::string channel = state.channelKnown ? Format("%llu msgs/%llu dgrams", U(state.channel.messages),
                                                      U(state.channel.datagrams))
                                             : std::string("?");
    return Format("mdtlm-sim %5.1fs | sent %llu | channel %s | queued %s | dropped: malformed %s, kernel %s, "
                  "short %s | samples %llu (%llu records) | encode failures %llu | buffers %llu",
                  state.seconds, U(state.sent.messages), channel.c_str(), Unknown(state.queued).c_str(),
                  state.channelKnown ? std::to_string(state.channel.malformedFrames).c_str() : "?",
                  state.channelKnown ? std::to_string(state.channel.kernelDrops).c_str() : "?",
                  Unknown(state.shortRefused).c_str(), U(state.samples.samples), U(state.samples.items),
                  U(state.logs.encodeFailures), U(state.buffers.liveBuffers));
}

std::string Summary(const SimConfig &config, const RunState &state, const std::vector<TaskTally> &tallies,
                    const std::vector<TaskStatRow> &stats, bool statsKnown)
{
    std::string out = "== summary\n";
    out += Format("forwarding side: sent %llu messages in %llu datagrams (%s), %llu send errors%s%s\n",
                  U(state.sent.messages), U(state.sent.datagrams), PerSensor(state.sent).c_str(),
                  U(state.sent.sendErrors), state.sent.lastError.empty() ? "" : ", last: ",
                  state.sent.lastError.c_str());
    if (state.channelKnown) {
        out += Format("channel: received %llu messages in %llu datagrams; dropped %llu malformed frames, "
                      "%llu datagrams in the kernel, %s short messages refused\n",
                      U(state.channel.messages), U(state.channel.datagrams), U(state.channel.malformedFrames),
                      U(state.channel.kernelDrops), Unknown(state.shortRefused).c_str());
    }
    out += Format("samples: %llu uploaded holding %llu records, %llu not fully decodable, %llu for unknown tasks; "
                  "encode failures logged: %llu\n",
                  U(state.samples.samples), U(state.samples.items), U(state.samples.undecodable),
                  U(state.samples.unknownTask), U(state.logs.encodeFailures));

    std::map<uint32_t, int> tasksPerId;
    for (const TaskConfig &task : config.tasks) {
        ++tasksPerId[task.task];
    }
    out += Format("%-28s %-4s %9s %9s %9s %9s %8s %10s\n", "task (sensor instance/task)", "enc", "sent", "offered",
                  "accepted", "uploaded", "samples", "report-end");
    for (size_t i = 0; i < config.tasks.size(); ++i) {
        const TaskConfig &task = config.tasks[i];
        const TaskTally &tally = tallies[i];
        uint64_t sent = state.sent.perSensor.count(task.sensor->type) ? state.sent.perSensor.at(task.sensor->type) : 0;
        const TaskStatRow *row = nullptr;
        for (const TaskStatRow &candidate : stats) {
            row = candidate.taskId == task.task ? &candidate : row;
        }
        std::string offered = row != nullptr ? std::to_string(row->recvMsgCount) : "?";
        std::string accepted = row != nullptr ? std::to_string(row->matchItemCount) : "?";
        out += Format("%-28s %-4s %9llu %9s %9s %9llu %8llu %10llu", task.Label().c_str(), task.EncodingName(),
                      U(sent), offered.c_str(), accepted.c_str(), U(tally.items), U(tally.samples),
                      U(tally.reportEnds));
        std::string notes;
        if (tasksPerId[task.task] > 1) {
            notes += Format("; database row shared by the %d tasks with id %u", tasksPerId[task.task], task.task);
        } else if (row != nullptr) {
            if (row->recvMsgCount < sent) {
                notes += Format("; %llu sent but not offered", U(sent - row->recvMsgCount));
            }
            if (row->matchItemCount > tally.items) {
                notes += Format("; %llu accepted but not uploaded", U(row->matchItemCount - tally.items));
            }
            if (row->uploadOkCount != tally.samples) {
                notes += Format("; database counts %llu uploads", U(row->uploadOkCount));
            }
        } else if (statsKnown) {
            notes += "; no database row";
        }
        if (tally.undecodable > 0) {
            notes += Format("; %llu samples not fully decodable", U(tally.undecodable));
        }
        out += notes.empty() ? "\n" : "  (" + notes.substr(2) + ")\n";
    }
    out += Format("buffers: %llu allocated, %llu freed, %llu outstanding (%llu bytes)%s\n", U(state.buffers.allocations),
                  U(state.buffers.frees), U(state.buffers.liveBuffers), U(state.buffers.liveBytes),
                  state.buffers.badFrees > 0 ? Format(", %llu frees of unknown buffers", U(state.buffers.badFrees)).c_str()
                                             : "");
    return out;
}

} // namespace mdtlm::sim
