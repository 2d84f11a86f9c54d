/*
 * Handling of uploaded samples. The plug-in frees the sample as soon as the
 * upload slot returns, so everything is read and written out before that.
 */
#include "sample_recorder.h"

#include <cerrno>
#include <cstring>
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

std::string Base64(const uint8_t *data, size_t length)
{
    static const char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    out.reserve((length + 2) / 3 * 4);
    for (size_t i = 0; i < length; i += 3) {
        uint32_t group = uint32_t{data[i]} << 16;
        group |= i + 1 < length ? uint32_t{data[i + 1]} << 8 : 0;
        group |= i + 2 < length ? uint32_t{data[i + 2]} : 0;
        out += kDigits[(group >> 18) & 63];
        out += kDigits[(group >> 12) & 63];
        out += i + 1 < length ? kDigits[(group >> 6) & 63] : '=';
        out += i + 2 < length ? kDigits[group & 63] : '=';
    }
    return out;
}

/* Writes the data bytes to `path`; the reason when it could not. */
std::string WriteBytes(const std::string &path, const uint8_t *data, size_t length)
{
    FILE *file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) {
        return "cannot write " + path + ": " + std::strerror(errno);
    }
    bool written = std::fwrite(data, 1, length, file) == length;
    int writeErrno = errno;
    bool closed = std::fclose(file) == 0;
    if (!written || !closed) {
        return "cannot write " + path + ": " + std::strerror(written ? errno : writeErrno);
    }
    return "";
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
                               FILE *ndjson, std::string rawDir)
    : config_(config), decoder_(decoder), print_(print), compact_(compact), ndjson_(ndjson),
      rawDir_(std::move(rawDir)), tallies_(config.tasks.size())
{
}

std::string SampleRecorder::RawFileName(uint64_t order, const char *sensor, uint32_t instance, uint32_t task,
                                        const char *encoding)
{
    char name[128];
    std::snprintf(name, sizeof name, "%06llu-%s-%u-%u.%s", static_cast<unsigned long long>(order), sensor, instance,
                  task, encoding);
    return name;
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
    std::string rawFile;
    if (!rawDir_.empty()) {
        rawFile = RawFileName(totals_.samples, task != nullptr ? task->sensor->shortName : "unknown",
                              sample.instanceId, sample.taskId, task != nullptr ? task->EncodingName() : "bin");
        std::string problem = WriteBytes(rawDir_ + "/" + rawFile, sample.data, length);
        if (!problem.empty()) {
            ++totals_.rawWriteErrors;
            if (lastRawProblem_.empty()) {
                std::fprintf(stderr, "mdtlm-sim: %s\n", problem.c_str());
            }
            lastRawProblem_ = problem;
            rawFile.clear();
        }
    }
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
            {"records", decoded.records},     {"data", Base64(sample.data, length)},
        };
        if (!rawFile.empty()) {
            line["raw_file"] = rawFile;
        }
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
