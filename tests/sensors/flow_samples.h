/*
 * Reading the samples a task uploaded: GPB data decoded against the proto/
 * schemas, JSON data parsed as one document.
 */
#ifndef MDTLM_TEST_FLOW_SAMPLES_H
#define MDTLM_TEST_FLOW_SAMPLES_H

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "fake_framework.h"
#include "proto_decode.h"

namespace flowtest {

struct DecodedSample {
    std::unique_ptr<google::protobuf::Message> sample;
    std::vector<const google::protobuf::Message *> records;
};

inline DecodedSample DecodeGpb(const CapturedSample &s, const char *protoFile, const char *fullName)
{
    DecodedSample d;
    EXPECT_EQ(s.header.dataLen, s.data.size());
    std::string error;
    d.sample = DecodeSample(protoFile, fullName, s.data, &error);
    EXPECT_TRUE(d.sample) << error;
    if (d.sample) {
        d.records = SampleRecords(*d.sample);
    }
    EXPECT_EQ(d.records.size(), s.header.itemCnt);
    return d;
}

/* The records of a JSON sample: the sensor's opening text, the records
 * separated by commas, "]}}", and nothing else. */
inline std::vector<nlohmann::ordered_json> JsonRecords(const CapturedSample &s, const std::string &container,
                                                       const std::string &list)
{
    EXPECT_EQ(s.header.dataLen, s.data.size());
    const std::string opening = "{\"" + container + "\":{\"" + list + "\":[";
    EXPECT_EQ(s.data.substr(0, opening.size()), opening);
    EXPECT_EQ(s.data.substr(s.data.size() - 3), "]}}");
    const auto doc = nlohmann::ordered_json::parse(s.data);
    EXPECT_EQ(doc.size(), 1u);
    const auto &array = doc[container][list];
    EXPECT_EQ(array.size(), s.header.itemCnt);
    return std::vector<nlohmann::ordered_json>(array.begin(), array.end());
}

inline std::vector<CapturedSample> SamplesOfTask(const std::vector<CapturedSample> &all, uint32_t taskId)
{
    std::vector<CapturedSample> mine;
    for (const CapturedSample &s : all) {
        if (s.header.taskId == taskId) {
            mine.push_back(s);
        }
    }
    return mine;
}

} // namespace flowtest

#endif /* MDTLM_TEST_FLOW_SAMPLES_H */
