/*
 * Handling of uploaded samples. The plug-in frees the sample as soon as the
 * upload slot returns, so everything is read and written out before that.
 */
#include "sample_recorder.h"

#include <ctime>
#include <string>

namespace mdtlm::sim {
namespace {

using Json = nlohmann::ordered_json;

/* Milliseconds since 1970 as "2024-05-01T10:00:00.123Z". */
std::string IsoTime(uint64_t milliseconds)
{
    time_t seconds = static_cast<time_t>(milliseconds / 1000);
    tm utc{};
    gmtime_r(&seconds, &utc);
    char text[40];
    size_t used = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &utc);
    std::snprintf(text + used, sizeof text - used, ".%03uZ", static_cast<unsigned>(milliseconds % 1000));
    return text;
}

std::string TrimEnd(std::string text)
{
    while (!text.empty() && (text.back() == '\n' || text.back() == ' ')) {
        text.pop_back();
    }
    return text;
}

} // namespace

SampleRecorder::SampleRecorder(const SimConfig &config, const SampleDecoder &decoder, bool print, bool compact,
                               FILE *ndjson)
    : config_(config), decoder_(decoder), print_(print), compact_(compact), ndjson_(ndjson),
      tallies_(config.tasks.size())
{
}

uint32_t SampleRecorder::OnSample(const MDTLM_SAMPLE_BUFFER &sample)
{
    const TaskConfig *task = config_.FindTask(sample.instanceId, sample.taskId);
    uint32_t length = sample.dataLen <= MDTLM_SAMPLE_DATA_SIZE ? sample.dataLen : MDTLM_SAMPLE_DATA_SIZE;

    DecodedSample decoded;
    if (task == nullptr) {
        decoded.problem = "no configured task has this instance and task id";
    } else if (task->Json()) {
        decoded = decoder_.DecodeJson(sample.data, length);
    } else {
        decoded = decoder_.DecodeGpb(*task->sensor, sample.data, length);
    }
    if (length != sample.dataLen) {
        decoded.decoded = false;
        decoded.problem = "data length " + std::to_string(sample.dataLen) + " exceeds the data area";
    } else if (decoded.decoded && decoded.records.size() != sample.itemCnt) {
        decoded.decoded = false;
        decoded.problem = "the header counts " + std::to_string(sample.itemCnt) + " records, the data holds " +
                          std::to_string(decoded.records.size());
    }

    std::lock_guard lock(mutex_);
    ++totals_.samples;
    totals_.items += sample.itemCnt;
    if (task == nullptr) {
        ++totals_.unknownTask;
    } else {
        TaskTally &tally = tallies_[static_cast<size_t>(task - config_.tasks.data())];
        ++tally.samples;
        tally.items += sample.itemCnt;
        tally.reportEnds += sample.reportEnd != 0 ? 1 : 0;
        tally.undecodable += decoded.decoded ? 0 : 1;
    }
    if (!decoded.decoded) {
        ++totals_.undecodable;
    }

    std::string sensorName = task != nullptr ? task->sensor->shortName : "?";
    std::string encoding = task != nullptr ? task->EncodingName() : "?";
    if (print_) {
        /* Compact output keeps the header and the sample on one line. */
        const char *separator = compact_ ? " " : "\n";
        std::printf("== sample %s %u/%u %s | %u record%s | report-end %u | %s | %u bytes%s%s%s%s\n",
                    sensorName.c_str(), sample.instanceId, sample.taskId, encoding.c_str(), sample.itemCnt,
                    sample.itemCnt == 1 ? "" : "s", sample.reportEnd, IsoTime(sample.collectTimestamp).c_str(),
                    sample.dataLen, decoded.problem.empty() ? "" : " | PROBLEM: ", decoded.problem.c_str(),
                    separator, TrimEnd(decoded.text).c_str());
        std::fflush(stdout);
    }
    if (ndjson_ != nullptr) {
        Json line = {
            {"instance", sample.instanceId}, {"task", sample.taskId},         {"sensor", sensorName},
            {"encoding", encoding},          {"timestamp", sample.collectTimestamp},
            {"report_end", sample.reportEnd}, {"items", sample.itemCnt},      {"data_len", sample.dataLen},
            {"records", decoded.records},
        };
        if (!decoded.problem.empty()) {
            line["problem"] = decoded.problem;
        }
        std::fprintf(ndjson_, "%s\n", line.dump(-1, ' ', false, Json::error_handler_t::replace).c_str());
        std::fflush(ndjson_);
    }
    return 0;
}

std::vector<TaskTally> SampleRecorder::Tallies() const
{
    std::lock_guard lock(mutex_);
    return tallies_;
}

SampleTotals SampleRecorder::Totals() const
{
    std::lock_guard lock(mutex_);
    return totals_;
}

} // namespace mdtlm::sim
