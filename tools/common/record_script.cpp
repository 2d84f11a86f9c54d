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

/* "address-family 1 (flow: 1 IPv4, 2 IPv6)" */
std::string FamilyCodes(const SensorDesc &sensor, uint64_t family)
{
    return std::string(sensor.familyField) + " " + std::to_string(family) + " (" + sensor.shortName + ": " +
           std::to_string(sensor.familyIpv4) + " IPv4, " + std::to_string(sensor.familyIpv6) + " IPv6)";
}

/* An address text must be of the family the record says: the plug-in formats
 * the stored words by the family field, so an IPv6 text under an IPv4 code
 * goes out as a different IPv4 address. */
void CheckAddressFamily(const JsonSource &source, const nlohmann::json &entry, const std::string &at,
                        const SensorDesc &sensor, const uint8_t *record)
{
    if (sensor.familyField == nullptr) {
        return;
    }
    const uint64_t family = sensor.Family(record);
    for (const FieldDesc &field : sensor.fields) {
        if (field.kind != FieldKind::Address || !entry.contains(field.name) || !entry[field.name].is_string()) {
            continue;
        }
        const std::string text = entry[field.name].get<std::string>();
        uint32_t ipv4 = 0;
        const bool isIpv4 = ParseIpv4(text, ipv4);
        if (isIpv4 && family == sensor.familyIpv6) {
            source.Fail(at + "/" + field.name, "\"" + text + "\" is an IPv4 address, but " +
                                                   FamilyCodes(sensor, family) + " says IPv6");
        }
        if (!isIpv4 && family != sensor.familyIpv6) {
            source.Fail(at + "/" + field.name, "\"" + text + "\" is an IPv6 address, but " +
                                                   FamilyCodes(sensor, family) + " does not say IPv6");
        }
    }
}

/* The plug-in copies record texts into JSON samples as they are. */
void WarnAboutJsonTexts(const JsonSource &source, const nlohmann::json &entry, const std::string &at,
                        const SensorDesc &sensor, std::vector<std::string> *warnings)
{
    for (const FieldDesc &field : sensor.fields) {
        if (warnings == nullptr || field.kind != FieldKind::Text || !entry.contains(field.name) ||
            !entry[field.name].is_string()) {
            continue;
        }
        if (entry[field.name].get<std::string>().find_first_of("\"\\") != std::string::npos) {
            warnings->push_back(source.Where(at + "/" + field.name) +
                                "warning: the text holds \" or \\; the plug-in inserts record texts into JSON "
                                "samples unescaped, so a JSON sample with this record is not valid JSON");
        }
    }
}

StatsMessage ReadRecord(const JsonSource &source, const nlohmann::json &entry, const std::string &at,
                        std::vector<std::string> *warnings)
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
    CheckAddressFamily(source, entry, at, sensor, message.body.data());
    WarnAboutJsonTexts(source, entry, at, sensor, warnings);
    message.body.resize(bodyLength, 0);
    return message;
}

} // namespace

std::vector<StatsMessage> ReadRecordScript(const JsonSource &source, std::vector<std::string> *warnings)
{
    const nlohmann::json &root = source.Root();
    if (!root.is_array()) {
        source.Fail("", "expected an array of records");
    }
    std::vector<StatsMessage> messages;
    for (size_t i = 0; i < root.size(); ++i) {
        messages.push_back(ReadRecord(source, root[i], "/" + std::to_string(i), warnings));
    }
    return messages;
}

std::vector<StatsMessage> LoadRecordScript(const std::string &path, std::vector<std::string> *warnings)
{
    return ReadRecordScript(JsonSource::Load(path), warnings);
}

} // namespace mdtlm::tools
