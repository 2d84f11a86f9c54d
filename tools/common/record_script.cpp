/*
 * Turns a record script into framed-ready statistics messages.
 */
#include "record_script.h"

#include "record_codec.h"
#include "sensor_table.h"

namespace mdtlm::tools {
namespace {

constexpr const char *kSensorKey = "sensor";
constexpr const char *kBodyLengthKey = "body-length";

const SensorDesc &ReadSensor(const JsonSource &source, const nlohmann::json &entry, const std::string &at)
{
    if (!entry.contains(kSensorKey)) {
        source.Fail(at, "missing \"sensor\" (one of " + SensorNameList() + ")");
    }
    const nlohmann::json &value = entry[kSensorKey];
    std::string name = value.is_string() ? value.get<std::string>()
                       : value.is_number_unsigned() ? std::to_string(value.get<uint64_t>())
                                                    : std::string();
    const SensorDesc *sensor = FindSensor(name);
    if (sensor == nullptr) {
        source.Fail(at + "/sensor", "unknown sensor " + value.dump() + " (one of " + SensorNameList() +
                                        ", a sensor path or a type 1-6)");
    }
    return *sensor;
}

std::string FieldList(const SensorDesc &sensor)
{
    std::string names;
    for (const FieldDesc &field : sensor.fields) {
        names += names.empty() ? "" : ", ";
        names += field.name;
    }
    return names;
}

StatsMessage ReadRecord(const JsonSource &source, const nlohmann::json &entry, const std::string &at)
{
    if (!entry.is_object()) {
        source.Fail(at, "expected an object describing one record");
    }
    const SensorDesc &sensor = ReadSensor(source, entry, at);
    StatsMessage message;
    message.type = sensor.type;
    message.body.assign(sensor.recordSize, 0);
    size_t bodyLength = sensor.recordSize;
    for (const auto &[key, value] : entry.items()) {
        std::string where = at + "/" + key;
        if (key == kSensorKey) {
            continue;
        }
        if (key == kBodyLengthKey) {
            if (!value.is_number_unsigned() || value.get<uint64_t>() > kMaxDatagram - 8) {
                source.Fail(where, "expected a byte count from 0 to " + std::to_string(kMaxDatagram - 8));
            }
            bodyLength = value.get<size_t>();
            continue;
        }
        const FieldDesc *field = sensor.Field(key);
        if (field == nullptr) {
            source.Fail(where, "unknown field of sensor " + std::string(sensor.shortName) + " (fields: " +
                                   FieldList(sensor) + ")");
        }
        std::string problem = SetFieldFromJson(message.body.data(), *field, value);
        if (!problem.empty()) {
            source.Fail(where, problem);
        }
    }
    message.body.resize(bodyLength, 0);
    return message;
}

} // namespace

std::vector<StatsMessage> ReadRecordScript(const JsonSource &source)
{
    const nlohmann::json &root = source.Root();
    if (!root.is_array()) {
        source.Fail("", "expected an array of records");
    }
    std::vector<StatsMessage> messages;
    for (size_t i = 0; i < root.size(); ++i) {
        messages.push_back(ReadRecord(source, root[i], "/" + std::to_string(i)));
    }
    return messages;
}

std::vector<StatsMessage> LoadRecordScript(const std::string &path)
{
    return ReadRecordScript(JsonSource::Load(path));
}

} // namespace mdtlm::tools
