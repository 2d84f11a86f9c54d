/*
 * Helpers of the tests of the export flow cache, result statistics and I/O
 * service sensors: field-by-field comparison of decoded GPB and parsed JSON
 * records with what was sent, wire order of the record fields, and a fixture
 * that offers records to tasks through the statistics map.
 */
#ifndef MDTLM_TESTS_SENSORS_TABLE_SENSOR_CHECK_H
#define MDTLM_TESTS_SENSORS_TABLE_SENSOR_CHECK_H

#include <google/protobuf/descriptor.h>
#include <google/protobuf/unknown_field_set.h>
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "mdtlm_vraldcn.h"
#include "plugin_fixture.h"
#include "proto_decode.h"

namespace sensor_test {

using google::protobuf::Message;
using Json = nlohmann::ordered_json;

/* The expected content of one field, a number or a text. */
struct Value {
    bool text;
    uint64_t number;
    std::string str;
};
inline Value N(uint64_t v) { return {false, v, {}}; }
inline Value T(std::string s) { return {true, 0, std::move(s)}; }

/* One record field as GPB and JSON carry it, in wire and template order. An
 * empty JSON key: the field is not in the JSON object. */
struct FieldCase {
    std::string gpbName;
    std::string jsonKey;
    Value gpb;
    Value json;
};

/* The field numbers of the first record entry of a GPB sample, in wire order. */
inline std::vector<int> WireOrder(const std::string &sample)
{
    google::protobuf::UnknownFieldSet outer, entry, body;
    std::vector<int> numbers;
    if (!outer.ParseFromString(sample) || outer.field_count() == 0 ||
        !entry.ParseFromString(outer.field(0).length_delimited()) || entry.field_count() == 0 ||
        !body.ParseFromString(entry.field(0).length_delimited())) {
        ADD_FAILURE() << "sample does not nest container / field 1 / body";
        return numbers;
    }
    for (int i = 0; i < body.field_count(); ++i) {
        numbers.push_back(body.field(i).number());
    }
    return numbers;
}

/* Every field present with its value, nothing else set, and (given the raw
 * sample) the fields on the wire in the listed order. */
inline void ExpectGpb(const Message &m, const std::vector<FieldCase> &fields, const std::string *sample = nullptr)
{
    std::vector<int> order;
    for (const FieldCase &f : fields) {
        SCOPED_TRACE("GPB field " + f.gpbName);
        ASSERT_TRUE(Has(m, f.gpbName));
        if (f.gpb.text) {
            EXPECT_EQ(S(m, f.gpbName), f.gpb.str);
        } else {
            EXPECT_EQ(U(m, f.gpbName), f.gpb.number);
        }
        order.push_back(m.GetDescriptor()->FindFieldByName(f.gpbName)->number());
    }
    std::vector<const google::protobuf::FieldDescriptor *> set;
    m.GetReflection()->ListFields(m, &set);
    EXPECT_EQ(set.size(), fields.size()) << "fields set on the record";
    if (sample != nullptr) {
        EXPECT_EQ(WireOrder(*sample), order);
    }
}

/* The object's keys in the listed order with their values and kinds. */
inline void ExpectJson(const Json &o, const std::vector<FieldCase> &fields)
{
    std::vector<std::string> keys, expected;
    for (auto it = o.begin(); it != o.end(); ++it) {
        keys.push_back(it.key());
    }
    for (const FieldCase &f : fields) {
        if (f.jsonKey.empty()) {
            continue;
        }
        expected.push_back(f.jsonKey);
        SCOPED_TRACE("JSON key " + f.jsonKey);
        ASSERT_TRUE(o.contains(f.jsonKey));
        if (f.json.text) {
            ASSERT_TRUE(o[f.jsonKey].is_string());
            EXPECT_EQ(o[f.jsonKey].get<std::string>(), f.json.str);
        } else {
            ASSERT_TRUE(o[f.jsonKey].is_number_unsigned());
            EXPECT_EQ(o[f.jsonKey].get<uint64_t>(), f.json.number);
        }
    }
    EXPECT_EQ(keys, expected);
}

/* A statistics message carrying one record. */
template <typename Rec>
std::vector<uint8_t> StatsMessage(uint32_t sensorType, const Rec &rec)
{
    std::vector<uint8_t> bytes(sizeof(MDTLM_STATS_MSG) + sizeof(Rec));
    MDTLM_STATS_MSG head{sensorType, static_cast<uint32_t>(sizeof(Rec))};
    std::memcpy(bytes.data(), &head, sizeof(head));
    std::memcpy(bytes.data() + sizeof(head), &rec, sizeof(Rec));
    return bytes;
}

/* Decoded GPB samples kept alive with the records they hold. */
struct GpbRecords {
    std::vector<std::unique_ptr<Message>> samples;
    std::vector<const Message *> records;
    std::vector<std::string> raw;
};

class TableSensorTest : public PluginFixture {
protected:
    /* A task whose sample buffers exist (one tick has run). */
    MDTLM_TASK_DATA *ReadyTask(uint32_t sensorType, uint32_t taskId, const PathInfoBuilder &info)
    {
        MDTLM_TASK_DATA *task = AddTask(sensorType, 1, taskId, info.Get());
        Tick();
        fw.ClearSamples();
        return task;
    }

    /* Offers one record to one task through the sensor's handler in the statistics map. */
    template <typename Rec>
    uint32_t Offer(uint32_t sensorType, MDTLM_TASK_DATA *task, const Rec &rec)
    {
        std::vector<uint8_t> msg = StatsMessage(sensorType, rec);
        return MDTLM_VRALDCN_STATS_GetStatsMap(sensorType)->msgProc(
            task, reinterpret_cast<MDTLM_STATS_MSG *>(msg.data()));
    }

    std::vector<CapturedSample> SamplesOf(uint32_t taskId) const
    {
        std::vector<CapturedSample> out;
        for (const CapturedSample &s : fw.Samples()) {
            if (s.header.taskId == taskId) {
                out.push_back(s);
            }
        }
        return out;
    }

    GpbRecords GpbOf(uint32_t taskId, const std::string &protoFile, const std::string &sampleName)
    {
        GpbRecords out;
        for (const CapturedSample &s : SamplesOf(taskId)) {
            std::string err;
            std::unique_ptr<Message> m = DecodeSample(protoFile, sampleName, s.data, &err);
            EXPECT_TRUE(m != nullptr) << err;
            if (m == nullptr) {
                continue;
            }
            for (const Message *r : SampleRecords(*m)) {
                out.records.push_back(r);
            }
            out.samples.push_back(std::move(m));
            out.raw.push_back(s.data);
        }
        return out;
    }

    std::vector<Json> JsonOf(uint32_t taskId, const std::string &outer, const std::string &inner)
    {
        std::vector<Json> out;
        for (const CapturedSample &s : SamplesOf(taskId)) {
            const Json doc = Json::parse(s.data, nullptr, false);
            EXPECT_FALSE(doc.is_discarded()) << s.data;
            if (doc.is_discarded()) {
                continue;
            }
            for (const Json &o : doc.at(outer).at(inner)) {
                out.push_back(o);
            }
        }
        return out;
    }

    size_t EncodeFailures(int ret) const
    {
        return fw.CountShape("[mdtlm.vraldcn.statis:#][STATS_EncodeStatsData] Stats data encode failed, ret: " +
                                 std::to_string(ret) + ".",
                             MDTLM_LOG_FAILURE);
    }

    /* A JSON task whose buffer has exactly `floor` bytes left stores the record
     * in place; with one byte less it uploads the buffer first and the record
     * opens the emptied buffer. */
    template <typename Rec>
    void ExpectJsonFloor(uint32_t sensorType, uint32_t floor, const Rec &rec)
    {
        MDTLM_TASK_DATA *task = ReadyTask(sensorType, 9, PathInfoBuilder(MDTLM_ENCODE_TYPE_JSON));
        ASSERT_NE(task, nullptr);
        MDTLM_SAMPLE_BUFFER *buf = task->jsonBuffer;
        ASSERT_NE(buf, nullptr);
        for (uint32_t left : {floor, floor - 1}) {
            SCOPED_TRACE("bytes left " + std::to_string(left));
            std::memset(buf->data, ' ', sizeof(buf->data));
            buf->dataLen = MDTLM_SAMPLE_DATA_SIZE - left;
            buf->itemCnt = 3;
            fw.ClearSamples();
            EXPECT_EQ(Offer(sensorType, task, rec), 1u);
            const bool full = left < floor;
            ASSERT_EQ(fw.Samples().size(), full ? 1u : 0u);
            EXPECT_EQ(buf->itemCnt, full ? 1u : 4u);
            if (full) {
                EXPECT_EQ(fw.Samples()[0].header.itemCnt, 3u);
                EXPECT_EQ(buf->data[0], '{');
                EXPECT_LT(buf->dataLen, floor);
            } else {
                EXPECT_EQ(buf->data[MDTLM_SAMPLE_DATA_SIZE - left], '{');
                EXPECT_GT(buf->dataLen, MDTLM_SAMPLE_DATA_SIZE - left);
            }
        }
        buf->dataLen = 0;
        buf->itemCnt = 0;
    }
};

} // namespace sensor_test

#endif /* MDTLM_TESTS_SENSORS_TABLE_SENSOR_CHECK_H */
