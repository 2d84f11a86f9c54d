/*
 * Helpers of the sensor tests: the fields a collector must read back from a
 * record (worked out in the tests from the raw fields, not with the plug-in's
 * helpers), and a fixture that adds tasks, offers records and reads samples
 * back with a standard protobuf parser and a JSON parser.
 */
#ifndef MDTLM_TESTS_SENSORS_SENSOR_CHECK_H
#define MDTLM_TESTS_SENSORS_SENSOR_CHECK_H

#include <google/protobuf/descriptor.h>
#include <google/protobuf/unknown_field_set.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "mdtlm_vraldcn.h"
#include "plugin_fixture.h"
#include "proto_decode.h"

/* Records are built with designated initializers naming only the fields a
 * test sets; every other byte, the reserved ones included, is zero. */
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"

namespace sensor_test {

using google::protobuf::Message;
using Json = nlohmann::ordered_json;
constexpr uint64_t kTwo32 = 1ull << 32;

struct Value {
    bool text;
    uint64_t number;
    std::string str;
};
inline Value N(uint64_t v) { return {false, v, {}}; }
inline Value T(std::string s) { return {true, 0, std::move(s)}; }

/* One record field as GPB and JSON carry it, listed in JSON key order; an
 * empty name means the encoding leaves the field out. */
struct FieldCase {
    std::string gpbName;
    std::string jsonKey;
    Value gpb;
    Value json;
};
inline FieldCase Num(const std::string &name, uint64_t v) { return {name, name, N(v), N(v)}; }
inline FieldCase Txt(const std::string &name, const std::string &v) { return {name, name, T(v), T(v)}; }

template <size_t Len>
std::string Text(const char (&field)[Len])
{
    return std::string(field, strnlen(field, Len));
}

template <typename Rec>
std::vector<uint8_t> Bytes(const std::vector<Rec> &recs)
{
    const auto *p = reinterpret_cast<const uint8_t *>(recs.data());
    return std::vector<uint8_t>(p, p + recs.size() * sizeof(Rec));
}
template <typename Rec>
std::vector<uint8_t> Bytes(const Rec &rec)
{
    return Bytes(std::vector<Rec>{rec});
}

using Schema = SampleSchema;

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

/* Every listed field present with its value, nothing else set; the field
 * numbers in the listed order. */
inline std::vector<int> ExpectGpb(const Message &m, const std::vector<FieldCase> &fields)
{
    std::vector<int> order;
    size_t listed = 0;
    for (const FieldCase &f : fields) {
        if (f.gpbName.empty()) {
            continue;
        }
        ++listed;
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
    EXPECT_EQ(set.size(), listed) << "fields set on the record";
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

class SensorTest : public PluginFixture {
protected:
    /* A task whose sample buffers exist (one tick has run). */
    MDTLM_TASK_DATA *ReadyTask(uint32_t sensorType, uint32_t taskId, const PathInfoBuilder &info)
    {
        MDTLM_TASK_DATA *task = AddTask(sensorType, 1, taskId, info.Get());
        EXPECT_NE(task, nullptr);
        Tick();
        fw.ClearSamples();
        return task;
    }

    /* Offers one record to one task through the sensor's handler in the
     * statistics map; whether the task took it. */
    uint32_t Offer(uint32_t sensorType, MDTLM_TASK_DATA *task, const std::vector<uint8_t> &rec)
    {
        std::vector<uint8_t> msg(sizeof(MDTLM_STATS_MSG) + rec.size());
        const MDTLM_STATS_MSG head{sensorType, static_cast<uint32_t>(rec.size())};
        std::memcpy(msg.data(), &head, sizeof(head));
        std::memcpy(msg.data() + sizeof(head), rec.data(), rec.size());
        return MDTLM_VRALDCN_STATS_GetStatsMap(sensorType)->msgProc(
            task, reinterpret_cast<MDTLM_STATS_MSG *>(msg.data()));
    }

    std::vector<CapturedSample> SamplesOf(uint32_t taskId) const
    {
        std::vector<CapturedSample> out;
        for (const CapturedSample &s : fw.Samples()) {
            if (s.header.taskId == taskId) {
                EXPECT_EQ(s.header.dataLen, s.data.size());
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
                const auto recs = SampleRecords(*decoded_.back());
                EXPECT_EQ(recs.size(), s.header.itemCnt);
                records.insert(records.end(), recs.begin(), recs.end());
            }
        }
        return records;
    }

    /* The record objects of task `taskId`'s JSON samples: each sample is the
     * sensor's opening text, the records and nothing else. */
    std::vector<Json> JsonOf(uint32_t taskId, const Schema &schema)
    {
        std::vector<Json> out;
        const std::string opening = std::string("{\"") + schema.jsonOuter + "\":{\"" + schema.jsonInner + "\":[";
        for (const CapturedSample &s : SamplesOf(taskId)) {
            EXPECT_EQ(s.data.substr(0, opening.size()), opening);
            const Json doc = Json::parse(s.data, nullptr, false);
            EXPECT_FALSE(doc.is_discarded()) << s.data;
            if (!doc.is_discarded()) {
                EXPECT_EQ(doc.size(), 1u);
                const Json &array = doc.at(schema.jsonOuter).at(schema.jsonInner);
                EXPECT_EQ(array.size(), s.header.itemCnt);
                out.insert(out.end(), array.begin(), array.end());
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

private:
    std::vector<std::unique_ptr<Message>> decoded_;
};

} // namespace sensor_test

#endif /* MDTLM_TESTS_SENSORS_SENSOR_CHECK_H */
