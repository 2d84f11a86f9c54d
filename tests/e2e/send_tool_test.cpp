/*
 * mdtlm-send as the forwarding side: the bytes it puts on the wire, a port
 * where nothing listens, address texts against the plug-in's family codes;
 * and how both tools refuse malformed input files.
 */
#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>
#include <fstream>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "mdtlm_vraldcn.h"
#include "sim_runner.h"

namespace {

using Bytes = std::vector<uint8_t>;

/* A UDP socket on 127.0.0.1 that plays the plug-in's statistics channel. */
class Receiver {
public:
    Receiver()
    {
        fd_ = socket(AF_INET, SOCK_DGRAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        bind(fd_, reinterpret_cast<sockaddr *>(&address), sizeof address);
        socklen_t length = sizeof address;
        getsockname(fd_, reinterpret_cast<sockaddr *>(&address), &length);
        port_ = std::to_string(ntohs(address.sin_port));
    }
    ~Receiver() { close(fd_); }

    const std::string &Port() const { return port_; }

    std::optional<Bytes> Next(int timeoutMs = 2000)
    {
        pollfd ready{fd_, POLLIN, 0};
        if (poll(&ready, 1, timeoutMs) != 1) {
            return std::nullopt;
        }
        Bytes datagram(65536);
        ssize_t got = recv(fd_, datagram.data(), datagram.size(), 0);
        datagram.resize(got > 0 ? static_cast<size_t>(got) : 0);
        return datagram;
    }

private:
    int fd_ = -1;
    std::string port_;
};

struct Frame {
    uint32_t type;
    Bytes body;
};

/* Splits a datagram into its [type][length][body] frames; a frame that runs past the end fails the test. */
std::vector<Frame> Frames(const Bytes &datagram)
{
    std::vector<Frame> frames;
    for (size_t at = 0; at < datagram.size(); at += 8 + frames.back().body.size()) {
        uint32_t header[2];
        EXPECT_LE(at + 8, datagram.size());
        std::memcpy(header, datagram.data() + at, 8);
        EXPECT_LE(at + 8 + header[1], datagram.size());
        frames.push_back({header[0], Bytes(datagram.begin() + static_cast<long>(at + 8),
                                           datagram.begin() + static_cast<long>(at + 8 + header[1]))});
    }
    return frames;
}

struct FieldBytes {
    const char *sensor;
    const char *field; /* "name": value, as in a record file */
    uint32_t type;
    size_t recordSize;
    size_t offset;
    Bytes expected; /* at `offset`; every other byte of the record is zero */
};

const FieldBytes kFieldBytes[] = {
    {"flow", R"("flow-id-high": 1)", 1, 264, 164, {0x01, 0, 0, 0}},
    {"flow", R"("source-ip": "192.168.10.1")", 1, 264, 124, {0x01, 0x0a, 0xa8, 0xc0}},
    {"flow", R"("destination-ip": "2001:db8::1", "address-family": 2)", 1, 264, 140,
     {0xb8, 0x0d, 0x01, 0x20, 0, 0, 0, 0, 0, 0, 0, 0, 0x01, 0, 0, 0, 0x02}},
    {"flow", R"("vlan": 4094)", 1, 264, 182, {0xfe, 0x0f}},
    {"flow", R"("address-family": 2)", 1, 264, 156, {0x02}},
    {"flow", R"("byte-count": 5000000000)", 1, 264, 248, {0x00, 0xf2, 0x05, 0x2a, 0x01, 0, 0, 0}},
    {"flow", R"("packet-count": 18446744073709551615)", 1, 264, 240, Bytes(8, 0xff)},
    {"flow", R"("chassis-id": "ab")", 1, 264, 60, {'a', 'b'}},
    {"flow-hop", R"("maximum-delay": 16777217)", 2, 264, 220, {0x01, 0, 0, 0x01}},
    {"io-flow", R"("source-ip": "2001:db8:85a3::8a2e:370:7334", "address-family": 1)", 3, 112, 1,
     {0x01, 0, 0, 0xb8, 0x0d, 0x01, 0x20, 0x00, 0x00, 0xa3, 0x85, 0x2e, 0x8a, 0x00, 0x00, 0x34, 0x73, 0x70, 0x03}},
    {"result", R"("input-packets": 4294967296)", 4, 152, 96, {0, 0, 0, 0, 0x01, 0, 0, 0}},
    {"io-throughput", R"("fet-max": 1099511627776)", 5, 116, 72, {0, 0, 0, 0, 0, 0x01, 0, 0}},
    {"export-cache", R"("destination-ip": "10.0.0.1")", 6, 56, 8, {0x01, 0, 0, 0x0a}},
    {"1", R"("ttl": 64)", 1, 264, 16, {0x40, 0, 0, 0}},
    {"dravik-zelk:zelk/export-flow-caches/export-flow-cache", R"("state": 2)", 6, 56, 32, {0x02, 0, 0, 0}},
    /* body-length cuts the record (the byte count at 248 goes), pads it with zeros, or empties it. */
    {"flow", R"("ttl": 9, "byte-count": 1, "body-length": 100)", 1, 100, 16, {0x09}},
    {"export-cache", R"("op-mode": 4, "body-length": 60)", 6, 60, 52, {0x04}},
    {"result", R"("body-length": 0)", 4, 0, 0, {}},
};

TEST(SendToolBytes, EachFieldLandsAtItsOffsetInItsWidth)
{
    ScratchDir dir;
    Receiver receiver;
    std::string records = "[\n";
    for (const FieldBytes &item : kFieldBytes) {
        records += std::string(&item == kFieldBytes ? "" : ",\n") + "{\"sensor\": \"" + item.sensor + "\", " +
                   item.field + "}";
    }
    dir.Write("records.json", records + "\n]");
    SimRun run = ToolProcess(dir, "mdtlm-send", {"--port", receiver.Port(), "records.json"}).Wait(30);
    ASSERT_EQ(run.exitCode, 0) << run.err;

    for (const FieldBytes &item : kFieldBytes) {
        SCOPED_TRACE(std::string(item.sensor) + " " + item.field);
        std::optional<Bytes> datagram = receiver.Next();
        ASSERT_TRUE(datagram.has_value());
        std::vector<Frame> frames = Frames(*datagram);
        ASSERT_EQ(frames.size(), 1u);
        EXPECT_EQ(frames[0].type, item.type);
        Bytes expected(item.recordSize, 0);
        std::copy(item.expected.begin(), item.expected.end(), expected.begin() + static_cast<long>(item.offset));
        EXPECT_EQ(frames[0].body, expected);
    }
    EXPECT_FALSE(receiver.Next(200).has_value());
}

struct BadInput {
    const char *name;
    bool simulator; /* a simulator configuration, else a record file for mdtlm-send */
    const char *text;
    const char *where; /* "in.json:LINE: FIELD:" */
    const char *because;
};

/* Test names show the case's name instead of its bytes. */
void PrintTo(const BadInput &item, std::ostream *out)
{
    *out << item.name;
}

const BadInput kBadInputs[] = {
    {"SimUnknownOperator", true, "{\"tasks\": [\n {\"sensor\": \"flow\", \"task\": 1,\n  \"filters\": [{\"name\": "
     "\"byte-count\",\n    \"operator\": \"ne\", \"threshold\": 5}]}]}\n",
     "in.json:4: tasks[0].filters[0].operator:", "unknown operator \"ne\""},
    {"SimValueTextTooLong", true, "{\"tasks\": [\n {\"sensor\": \"export-cache\", \"task\": 1, \"conditions\": [\n"
     "  {\"name\": \"source-ip\",\n   \"value\": \"0123456789012345678901234567890123\"}]}]}\n",
     "in.json:4: tasks[0].conditions[0].value:", "34 characters, at most 33"},
    {"SimTaskIdAboveU32", true, "{\"tasks\": [\n {\"sensor\": \"result\",\n  \"task\": 4294967296}]}\n",
     "in.json:3: tasks[0].task:", "out of range"},
    {"SimMisspelledSetting", true, "{\"tasks\": [\n {\"sensor\": \"flow\", \"task\": 1,\n  \"sample_interval\": 1}]}\n",
     "in.json:3: tasks[0].sample_interval:", "unknown setting"},
    {"SimSamePairTwice", true, "{\"tasks\": [\n {\"sensor\": \"flow\", \"task\": 7},\n {\"sensor\": \"result\",\n"
     "  \"task\": 7}]}\n", "in.json:4: tasks[1].task:", "already used by tasks[0]"},
    {"SimNegativeRate", true, "{\"generator\": {\n  \"rate\": -3},\n \"tasks\": [{\"sensor\": \"flow\", \"task\": 1}]}",
     "in.json:2: generator.rate:", "records per second"},
    {"SimSyntaxError", true, "{\"tasks\": [\n {\"sensor\": \"flow\", \"task\": 1,}\n]}\n", "in.json:2:",
     "syntax error"},
    /* Conditions and filters the sensor cannot test, and values that can never match. */
    {"SimUnknownConditionName", true, "{\"tasks\": [\n {\"sensor\": \"flow\", \"task\": 1, \"conditions\": [\n"
     "  {\"name\": \"byte-count\", \"value\": \"5\"}]}]}\n",
     "in.json:3: tasks[0].conditions[0].name:",
     "sensor flow has no condition \"byte-count\" (its conditions: flow-id, direction); it is one of its filters"},
    {"SimUnknownFilterName", true, "{\"tasks\": [\n {\"sensor\": \"io-flow\", \"task\": 1, \"filters\": [\n"
     "  {\"name\": \"fct-max\", \"operator\": \"gt\", \"threshold\": 5}]}]}\n",
     "in.json:3: tasks[0].filters[0].name:", "sensor io-flow has no filter \"fct-max\" (its filters: error-info, if-index,"},
    {"SimIpv6OnIpv4OnlySensor", true, "{\"tasks\": [\n {\"sensor\": \"export-cache\", \"task\": 1, \"conditions\": [\n"
     "  {\"name\": \"source-ip\",\n   \"value\": \"2001:db8::1\"}]}]}\n",
     "in.json:4: tasks[0].conditions[0].value:", "are IPv4 only: it can never match"},
    {"SimIpv6FullFormTooLong", true, "{\"tasks\": [\n {\"sensor\": \"io-flow\", \"task\": 1, \"conditions\": [\n"
     "  {\"name\": \"destination-ip\", \"value\": \"ffff:ffff:ffff:ffff:ffff:ffff::ff\"}]}]}\n",
     "in.json:3: tasks[0].conditions[0].value:",
     "compared as \"ffff:ffff:ffff:ffff:ffff:ffff:0:ff\", 34 characters, and a condition value holds at most 33"},
    {"SimNotAnAddress", true, "{\"tasks\": [\n {\"sensor\": \"io-throughput\", \"task\": 1, \"conditions\": [\n"
     "  {\"name\": \"source-ip\", \"value\": \"10.0.0.01\"}]}]}\n",
     "in.json:3: tasks[0].conditions[0].value:", "\"10.0.0.01\" is not an IPv4 or IPv6 address"},
    {"SimNumberNotDecimal", true, "{\"tasks\": [\n {\"sensor\": \"result\", \"task\": 1, \"conditions\": [\n"
     "  {\"name\": \"id\", \"value\": \"7a\"}]}]}\n",
     "in.json:3: tasks[0].conditions[0].value:", "\"7a\" is not a decimal number"},
    {"SimNumberAbove32Bits", true, "{\"tasks\": [\n {\"sensor\": \"flow\", \"task\": 1, \"conditions\": [\n"
     "  {\"name\": \"direction\", \"value\": 4294967297}]}]}\n",
     "in.json:3: tasks[0].conditions[0].value:", "compared as a 32-bit number"},
    {"SimInvalidShareAboveOne", true, "{\"generator\": {\"invalid-share\": 1.5},\n \"tasks\": [{\"sensor\": \"flow\", \"task\": 1}]}",
     "in.json:1: generator.invalid-share:", "expected a share from 0 to 1"},
    /* An address text must agree with the record's address-family code. */
    {"SendIpv6TextUnderIpv4Family", false, "[\n {\"sensor\": \"flow\", \"address-family\": 1,\n  \"source-ip\": \"2001:db8::1\"}]",
     "in.json:3: [0].source-ip:", "is an IPv6 address, but address-family 1 (flow: 1 IPv4, 2 IPv6) does not say IPv6"},
    {"SendIpv4TextUnderIpv6Family", false, "[\n {\"sensor\": \"io-throughput\", \"address-family\": 1,\n  \"destination-ip\": \"10.0.0.1\"}]",
     "in.json:3: [0].destination-ip:", "is an IPv4 address, but address-family 1 (io-throughput: 0 IPv4, 1 IPv6) says IPv6"},
    {"SendIpv6TextWithoutFamily", false, "[\n {\"sensor\": \"io-flow\", \"source-ip\": \"::1\"}]",
     "in.json:2: [0].source-ip:", "address-family 0 (io-flow: 0 IPv4, 1 IPv6) does not say IPv6"},
    {"SendUnknownField", false, "[\n {\"sensor\": \"flow\",\n  \"flow-idd\": 1}]", "in.json:3: [0].flow-idd:",
     "unknown field of sensor flow"},
    {"SendTooWideForU16", false, "[{\"sensor\": \"flow\"},\n {\"sensor\": \"flow\", \"vlan\": 65536}]",
     "in.json:2: [1].vlan:", "at most 65535"},
    {"SendIpv6InIpv4OnlyField", false, "[\n {\"sensor\": \"export-cache\", \"source-ip\": \"2001:db8::1\"}]",
     "in.json:2: [0].source-ip:", "is not an IPv4 address"},
    {"SendMissingSensor", false, "[{\"sensor\": \"flow\"},\n {\"ttl\": 1}]", "in.json:2: [1]:", "missing \"sensor\""},
    {"SendNotAList", false, "{\"sensor\": \"flow\"}", "in.json:1:", "expected an array of records"},
};

class ToolRefuses : public testing::TestWithParam<BadInput> {};

TEST_P(ToolRefuses, ExitTwoNamingFileLineAndFieldBeforeAnythingStarts)
{
    const BadInput &bad = GetParam();
    ScratchDir dir;
    Receiver receiver;
    dir.Write("in.json", bad.text);
    SimRun run = bad.simulator
                     ? ToolProcess(dir, "mdtlm-sim", {"--config", "in.json", "--port", "0", "--duration", "1"}).Wait(30)
                     : ToolProcess(dir, "mdtlm-send", {"--port", receiver.Port(), "in.json"}).Wait(30);
    EXPECT_EQ(run.exitCode, 2) << run.err;
    EXPECT_NE(run.err.find(bad.where), std::string::npos) << run.err;
    EXPECT_NE(run.err.find(bad.because), std::string::npos) << run.err;
    /* Nothing was started: no plug-in loaded, no database made, nothing sent. */
    EXPECT_EQ(run.err.find("plug-in"), std::string::npos) << run.err;
    EXPECT_FALSE(std::ifstream(dir.File("mdtlm-sim.db")).good());
    EXPECT_FALSE(receiver.Next(100).has_value());
}

INSTANTIATE_TEST_SUITE_P(Table, ToolRefuses, testing::ValuesIn(kBadInputs),
                         [](const testing::TestParamInfo<BadInput> &info) { return std::string(info.param.name); });

TEST(SendTool, NothingListeningOnThePortIsAFailureWithTheSystemsReason)
{
    ScratchDir dir;
    std::string port;
    {
        Receiver closed; /* a port that was free a moment ago and is free again */
        port = closed.Port();
    }
    dir.Write("one.json", R"([{"sensor": "result", "id": 1}])");
    SimRun run = ToolProcess(dir, "mdtlm-send", {"--port", port, "one.json"}).Wait(30);
    EXPECT_EQ(run.exitCode, 1) << run.err;
    EXPECT_NE(run.err.find("127.0.0.1:" + port + " did not take the 1 datagram: Connection refused (nothing listens "
                           "on that port)"),
              std::string::npos)
        << run.err;
    EXPECT_EQ(run.err.find(" message in "), std::string::npos) << run.err;
}

TEST(SendTool, CountsAgreeInNumberAndATextThatBreaksJsonSamplesIsSentWithAWarning)
{
    ScratchDir dir;
    Receiver receiver;
    dir.Write("one.json", "[\n {\"sensor\": \"result\",\n  \"warn-info\": \"say \\\"hi\\\"\"}]");
    SimRun run = ToolProcess(dir, "mdtlm-send", {"--port", receiver.Port(), "one.json"}).Wait(30);
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_NE(run.err.find("mdtlm-send: one.json:3: [0].warn-info: warning: the text holds \" or \\; the plug-in "
                           "inserts record texts into JSON samples unescaped"),
              std::string::npos)
        << run.err;
    EXPECT_NE(run.err.find("mdtlm-send: 1 message in 1 datagram to 127.0.0.1:" + receiver.Port() + " (result 1)\n"),
              std::string::npos)
        << run.err;
    std::optional<Bytes> datagram = receiver.Next();
    ASSERT_TRUE(datagram.has_value());
    std::vector<Frame> frames = Frames(*datagram);
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_EQ(std::string(frames[0].body.begin() + 116, frames[0].body.begin() + 124), "say \"hi\"");
}

/* For every sensor whose records carry an address family, the codes the
 * plug-in reads decide which address texts mdtlm-send accepts. */
TEST(SendTool, AddressTextsMustMatchThePluginsFamilyCodes)
{
    for (const MDTLM_FIELD_CATALOGUE_ENTRY &row : g_mdtlmFieldCatalogue) {
        if (row.familyIpv4 == MDTLM_NO_ADDRESS_FAMILY) {
            continue;
        }
        SCOPED_TRACE("sensor type " + std::to_string(row.sensorType));
        const std::string codes =
            ": " + std::to_string(row.familyIpv4) + " IPv4, " + std::to_string(row.familyIpv6) + " IPv6)";
        struct Case {
            uint32_t family;
            const char *address;
            bool accepted;
        } cases[] = {
            {row.familyIpv6, "2001:db8::1", true},
            {row.familyIpv4, "10.0.0.1", true},
            {row.familyIpv4, "2001:db8::1", false},
            {row.familyIpv6, "10.0.0.1", false},
        };
        for (const Case &item : cases) {
            ScratchDir dir;
            Receiver receiver;
            dir.Write("one.json", "[{\"sensor\": \"" + std::to_string(row.sensorType) + "\", \"address-family\": " +
                                      std::to_string(item.family) + ", \"source-ip\": \"" + item.address + "\"}]");
            SimRun run = ToolProcess(dir, "mdtlm-send", {"--port", receiver.Port(), "one.json"}).Wait(30);
            SCOPED_TRACE(std::string(item.address) + " under " + std::to_string(item.family) + "\n" + run.err);
            EXPECT_EQ(run.exitCode, item.accepted ? 0 : 2);
            EXPECT_EQ(receiver.Next(item.accepted ? 2000 : 100).has_value(), item.accepted);
            EXPECT_EQ(run.err.find(codes) != std::string::npos, !item.accepted);
        }
    }
}

} // namespace
