/*
 * The GPB field writers and the record encoders with arbitrary values and
 * capacities. Writers are checked byte for byte against libprotobuf's coded
 * stream; record encoders must either report no space (and then not fit the
 * capacity) or write exactly one record that libprotobuf parses under the
 * sensor's schema, without unknown fields and at the size it would write
 * itself. Every output buffer is exactly as large as the capacity given, so
 * AddressSanitizer sees any write past it.
 */
#include <cstring>
#include <string>
#include <vector>

#include "coded_reference.h"
#include "fake_framework.h"
#include "fuzz_host.h"
#include "mdtlm_vraldcn.h"
#include "sample_check.h"
#include "sensor_calls.h"

namespace {

namespace io = google::protobuf::io;

[[noreturn]] void Fail(const std::string &what)
{
    std::fprintf(stderr, "fuzz check failed: %s\n", what.c_str());
    std::abort();
}

uint32_t Key(uint32_t field, uint32_t wireType)
{
    return (field << 3) | wireType;
}

/* Runs a writer into a buffer of exactly `cap` bytes and compares with the reference. */
template <typename Writer>
void CheckWriter(const char *name, const std::string &expected, int32_t cap, Writer writer)
{
    std::vector<uint8_t> out(cap > 0 ? static_cast<size_t>(cap) : 0);
    const int32_t ret = writer(out.empty() ? nullptr : out.data(), cap);
    const bool fits = cap >= 1 && static_cast<size_t>(cap) >= expected.size();
    if (!fits) {
        if (ret != MDTLM_ENCODE_NO_SPACE) {
            Fail(std::string(name) + ": " + std::to_string(ret) + " where -2 was due");
        }
        return;
    }
    if (ret != static_cast<int32_t>(expected.size()) || std::memcmp(out.data(), expected.data(), expected.size()) != 0) {
        Fail(std::string(name) + ": bytes differ from libprotobuf's");
    }
}

constexpr int32_t kRoomyCap = 4096;

void CheckRecord(FuzzedDataProvider &input)
{
    const sensor_table::SensorCalls &codec =
        sensor_table::kSensors[input.ConsumeIntegralInRange<size_t>(0, MDTLM_SENSOR_COUNT - 1)];
    std::vector<uint8_t> record = input.ConsumeBytes<uint8_t>(codec.recordSize);
    record.resize(codec.recordSize);
    const int32_t cap = input.ConsumeIntegralInRange<int32_t>(-1, 1400);

    std::vector<uint8_t> roomy(kRoomyCap);
    const int32_t full = codec.gpb(record.data(), roomy.data(), kRoomyCap);
    std::vector<uint8_t> out(cap > 0 ? static_cast<size_t>(cap) : 0);
    const int32_t ret = codec.gpb(record.data(), out.empty() ? nullptr : out.data(), cap);
    if (full > 0) {
        if (ret > 0 && (ret != full || std::memcmp(out.data(), roomy.data(), static_cast<size_t>(ret)) != 0)) {
            Fail("GPB record differs with the capacity");
        }
        if (ret <= 0 && (ret != MDTLM_ENCODE_NO_SPACE || cap >= full)) {
            Fail("GPB record refused with room: " + std::to_string(ret));
        }
        std::string bytes(reinterpret_cast<const char *>(roomy.data()), static_cast<size_t>(full));
        std::string problem = CheckGpbSample(codec.sensorType, bytes, 1);
        if (!problem.empty()) {
            Fail(problem + " (sensor " + std::to_string(codec.sensorType) + ")");
        }
        auto sample = ParseSample(codec.sensorType, bytes);
        if (sample->ByteSizeLong() != static_cast<size_t>(full)) {
            Fail("GPB record not at the size libprotobuf writes");
        }
    } else if (ret > 0) {
        Fail("GPB record written only with less room");
    }
    /* JSON: no crash, no write past the capacity, and a record ends in its comma. */
    const int32_t json = codec.json(record.data(), out.empty() ? nullptr : out.data(), cap);
    if (json > 0 && (json > cap || out[static_cast<size_t>(json) - 1] != ',')) {
        Fail("JSON record without its closing comma or beyond the capacity");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static bool bound = [] {
        fuzz::Start(); /* binds the framework table: log lines of the writers go somewhere */
        return true;
    }();
    (void)bound;
    FuzzedDataProvider input(data, size);
    while (input.remaining_bytes() > 0) {
        const uint32_t field = input.ConsumeIntegral<uint32_t>();
        const uint64_t value = input.ConsumeIntegral<uint64_t>();
        const int32_t slack = input.ConsumeIntegralInRange<int32_t>(-3, 3);
        switch (input.ConsumeIntegralInRange<int>(0, 5)) {
        case 0: {
            std::string expected = CodedReference([&](io::CodedOutputStream &c) { c.WriteVarint64(value); });
            CheckWriter("varint", expected, static_cast<int32_t>(expected.size()) + slack,
                        [&](uint8_t *out, int32_t cap) { return MDTLM_VRALDCN_GPB_EncodeVarint(value, out, cap); });
            break;
        }
        case 1: {
            const uint32_t wireType = input.ConsumeIntegralInRange<uint32_t>(0, 7);
            std::string expected = CodedReference([&](io::CodedOutputStream &c) { c.WriteVarint32(Key(field, wireType)); });
            CheckWriter("key", expected, static_cast<int32_t>(expected.size()) + slack, [&](uint8_t *out, int32_t cap) {
                return MDTLM_VRALDCN_GPB_EncodeFieldType(field, wireType, out, cap);
            });
            break;
        }
        case 2: {
            std::string expected = CodedReference([&](io::CodedOutputStream &c) {
                c.WriteVarint32(Key(field, 0));
                c.WriteVarint64(value);
            });
            CheckWriter("integer field", expected, static_cast<int32_t>(expected.size()) + slack,
                        [&](uint8_t *out, int32_t cap) { return MDTLM_VRALDCN_GPB_EncodeInterger(field, value, out, cap); });
            break;
        }
        case 3: {
            std::string bytes = input.ConsumeRandomLengthString(1100);
            std::string expected = CodedReference([&](io::CodedOutputStream &c) { WriteDelimited(c, field, bytes); });
            CheckWriter("length-delimited field", expected, static_cast<int32_t>(expected.size()) + slack,
                        [&](uint8_t *out, int32_t cap) {
                            return MDTLM_VRALDCN_GPB_EncodeLengthDelimited(
                                field, reinterpret_cast<const uint8_t *>(bytes.data()),
                                static_cast<uint32_t>(bytes.size()), out, cap);
                        });
            break;
        }
        case 4: {
            std::string text = input.ConsumeRandomLengthString(300);
            text = text.substr(0, text.find('\0'));
            std::string expected = CodedReference([&](io::CodedOutputStream &c) { WriteDelimited(c, field, text); });
            CheckWriter("string field", expected, static_cast<int32_t>(expected.size()) + slack,
                        [&](uint8_t *out, int32_t cap) { return MDTLM_VRALDCN_GPB_EncodeString(field, text.c_str(), out, cap); });
            break;
        }
        default:
            CheckRecord(input);
            break;
        }
    }
    FakeFramework::Get().ClearLogs();
    return 0;
}
