/*
 * Helpers of the tests of the export flow cache, result statistics and I/O
 * service sensors: field-by-field comparison of decoded GPB and parsed JSON
 * records with what was sent, and a fixture that adds tasks, offers records
 * through the statistics map and reads the samples back.
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

struct Value {
    bool text;
    uint64_t number;
    std::string str;
};
inline Value N(uint64_t v) { return {false, v, {}}; }
inline Value T(std::string s) { return {true, 0, std::move(s)}; }

/* One record field as GPB and JSON carry it, listed in wire and template order. */
struct FieldCase {
    std::string gpbName;
    std::string jsonKey;
    Value gpb;
    Value json;
};
/* A number under the same name in both encodings. */
inline FieldCase Num(const std::string &name, uint64_t v) { return {name, name, N(v), N(v)}; }

/* Where a sensor's samples are described. */
struct Schema {
    const char *protoFile, *sampleName, *jsonOuter, *jsonInner;
};

/* The field numbers of the first record of a GPB sample, in wire order. */
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

/* Every listed field present with its value, nothing else set. */
inline std::vector<int> ExpectGpb(const Message &m, const std::vector<FieldCase> &fields)
{
    std::vector<int> order;
    for (const FieldCase &f : fields) {
        SCOPED_TRACE("GPB field " + f.gpbName);
        EXPECT_TRUE(Has(m, f.gpbName));
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
    return order;
}

/* The object's keys in the listed order, with their values and kinds. */
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

/* The two null-record lines of the GPB and the JSON encoder, in that order. */
inline std::vector<std::string> NullRecordLines(const std::string &jsonTag)
{
    return {"[mdtlm.vraldcn.statis:#][VRALDCN_FLOW_GPB_EncodeMsg] Param error, msg is NULL.",
            "[mdtlm.vraldcn.statis:#]" + jsonTag + " Param error, msg is NULL."};
}

/* A small record's GPB bytes open with the container key, its length, the key
 * of field 1, its length, the key of field 1 (varint) and `firstValue`. */
template <typename Rec>
void ExpectLeadingBytes(int32_t (*encode)(const Rec *, uint8_t *, int32_t), const Rec &rec, uint8_t containerKey,
                        uint8_t firstValue)
{
    uint8_t out[512];
    const int32_t len = encode(&rec, out, sizeof(out));
    ASSERT_GT(len, 6);
    ASSERT_LT(len, 128);
    const uint8_t expected[] = {containerKey, static_cast<uint8_t>(len - 2), 0x0A, static_cast<uint8_t>(len - 4),
                                0x08, firstValue};
    EXPECT_EQ(std::vector<uint8_t>(out, out + 6), std::vector<uint8_t>(expected, expected + 6));
}

template <typename Rec>
std::vector<uint8_t> StatsMessage(uint32_t sensorType, const Rec &rec)
{
    std::vector<uint8_t> bytes(sizeof(MDTLM_STATS_MSG) + sizeof(Rec));
    const MDTLM_STATS_MSG head{sensorType, static_cast<uint32_t>(sizeof(Rec))};
    std::memcpy(bytes.data(), &head, sizeof(head));
    std::memcpy(bytes.data() + sizeof(head), &rec, sizeof(Rec));
    return bytes;
}

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

    /* The records of task `taskId`'s GPB samples, decoded against the schema. */
    std::vector<const Message *> GpbOf(uint32_t taskId, const Schema &schema)
    {
        std::vector<const Message *> records;
        for (const CapturedSample &s : SamplesOf(taskId)) {
            std::string err;
            decoded_.push_back(DecodeSample(schema.protoFile, schema.sampleName, s.data, &err));
            EXPECT_TRUE(decoded_.back() != nullptr) << err;
            if (decoded_.back() != nullptr) {
                for (const Message *r : SampleRecords(*decoded_.back())) {
                    records.push_back(r);
                }
                EXPECT_EQ(SampleRecords(*decoded_.back()).size(), s.header.itemCnt);
            }
        }
        return records;
    }

    /* The record objects of task `taskId`'s JSON samples. */
    std::vector<Json> JsonOf(uint32_t taskId, const Schema &schema)
    {
        std::vector<Json> out;
        for (const CapturedSample &s : SamplesOf(taskId)) {
            const Json doc = Json::parse(s.data, nullptr, false);
            EXPECT_FALSE(doc.is_discarded()) << s.data;
            if (!doc.is_discarded()) {
                for (const Json &o : doc.at(schema.jsonOuter).at(schema.jsonInner)) {
                    out.push_back(o);
                }
            }
        }
        return out;
    }

    /* Records delivered to a GPB task (1) and a JSON task (2) arrive, after one
     * tick, field for field as `expected` lists them. */
    template <typename Rec>
    void ExpectWholePath(uint32_t sensorType, const Schema &schema, const std::vector<Rec> &recs,
                         const std::vector<std::vector<FieldCase>> &expected)
    {
        AddTask(sensorType, 1, 1, PathInfoBuilder(MDTLM_ENCODE_TYPE_GPB).Get());
        AddTask(sensorType, 1, 2, PathInfoBuilder(MDTLM_ENCODE_TYPE_JSON).Get());
        Deliver(sensorType, recs);
        Tick();
        const std::vector<const Message *> gpb = GpbOf(1, schema);
        const std::vector<Json> json = JsonOf(2, schema);
        ASSERT_EQ(gpb.size(), expected.size());
        ASSERT_EQ(json.size(), expected.size());
        for (size_t i = 0; i < expected.size(); ++i) {
            SCOPED_TRACE("record " + std::to_string(i));
            const std::vector<int> order = ExpectGpb(*gpb[i], expected[i]);
            if (i == 0) {
                EXPECT_EQ(WireOrder(SamplesOf(1)[0].data), order);
            }
            ExpectJson(json[i], expected[i]);
        }
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
        ASSERT_TRUE(task != nullptr && task->jsonBuffer != nullptr);
        MDTLM_SAMPLE_BUFFER *buf = task->jsonBuffer;
        for (uint32_t left : {floor, floor - 1}) {
            SCOPED_TRACE("bytes left " + std::to_string(left));
            const bool full = left < floor;
            std::memset(buf->data, ' ', sizeof(buf->data));
            buf->dataLen = MDTLM_SAMPLE_DATA_SIZE - left;
            buf->itemCnt = 3;
            fw.ClearSamples();
            EXPECT_EQ(Offer(sensorType, task, rec), 1u);
            ASSERT_EQ(fw.Samples().size(), full ? 1u : 0u);
            EXPECT_EQ(buf->itemCnt, full ? 1u : 4u);
            EXPECT_EQ(buf->data[full ? 0 : MDTLM_SAMPLE_DATA_SIZE - left], '{');
            if (full) {
                EXPECT_EQ(fw.Samples()[0].header.itemCnt, 3u);
                EXPECT_LT(buf->dataLen, floor);
            }
        }
        buf->dataLen = buf->itemCnt = 0;
    }

private:
    std::vector<std::unique_ptr<Message>> decoded_;
};

} // namespace sensor_test

#endif /* MDTLM_TESTS_SENSORS_TABLE_SENSOR_CHECK_H */
