/*
 * mdtlm-send as the forwarding side: the bytes it puts on the wire (framing,
 * record layouts, address forms, widths), how it packs datagrams, and how it
 * refuses malformed record files.
 */
#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "sim_runner.h"

namespace {

using Bytes = std::vector<uint8_t>;

/* A UDP socket on 127.0.0.1 that plays the plug-in's statistics channel. */
class Receiver {
public:
    Receiver()
    {
        fd_ = socket(AF_INET, SOCK_DGRAM, 0);
        int size = 4 << 20;
        setsockopt(fd_, SOL_SOCKET, SO_RCVBUF, &size, sizeof size);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        bind(fd_, reinterpret_cast<sockaddr *>(&address), sizeof address);
        socklen_t length = sizeof address;
        getsockname(fd_, reinterpret_cast<sockaddr *>(&address), &length);
        port_ = ntohs(address.sin_port);
    }
    ~Receiver() { close(fd_); }

    std::string Port() const { return std::to_string(port_); }

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
    uint16_t port_ = 0;
};

struct Frame {
    uint32_t type;
    Bytes body;
};

/* Splits a datagram into its [type][length][body] frames; a frame that runs past the end fails the test. */
std::vector<Frame> Frames(const Bytes &datagram)
{
    std::vector<Frame> frames;
    size_t at = 0;
    while (at < datagram.size()) {
        uint32_t header[2];
        EXPECT_LE(at + 8, datagram.size());
        std::memcpy(header, datagram.data() + at, 8);
        EXPECT_LE(at + 8 + header[1], datagram.size());
        frames.push_back({header[0], Bytes(datagram.begin() + static_cast<long>(at + 8),
                                           datagram.begin() + static_cast<long>(at + 8 + header[1]))});
        at += 8 + header[1];
    }
    return frames;
}

SimRun Send(const ScratchDir &dir, const Receiver &receiver, const std::string &records,
            std::vector<std::string> extra = {})
{
    dir.Write("records.json", records);
    std::vector<std::string> args = {"--port", receiver.Port()};
    args.insert(args.end(), extra.begin(), extra.end());
    args.push_back("records.json");
    return ToolProcess(dir, "mdtlm-send", args).Wait(30);
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
    {"flow", R"("source-ip": "192.168.10.1")", 1, 264, 124, {0x01, 0x0a, 0xa8, 0xc0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}},
    {"flow", R"("destination-ip": "2001:db8::1")", 1, 264, 140,
     {0xb8, 0x0d, 0x01, 0x20, 0, 0, 0, 0, 0, 0, 0, 0, 0x01, 0, 0, 0}},
    {"flow", R"("vlan": 4094)", 1, 264, 182, {0xfe, 0x0f}},
    {"flow", R"("address-family": 2)", 1, 264, 156, {0x02}},
    {"flow", R"("source-port": 443)", 1, 264, 160, {0xbb, 0x01}},
    {"flow", R"("byte-count": 5000000000)", 1, 264, 248, {0x00, 0xf2, 0x05, 0x2a, 0x01, 0, 0, 0}},
    {"flow", R"("packet-count": 18446744073709551615)", 1, 264, 240, Bytes(8, 0xff)},
    {"flow", R"("chassis-id": "ab")", 1, 264, 60, {'a', 'b'}},
    {"flow", R"("error-info": 255)", 1, 264, 260, {0xff}},
    {"flow-hop", R"("total-delay": 3)", 2, 264, 224, {0x03, 0, 0, 0, 0, 0, 0, 0}},
    {"flow-hop", R"("maximum-delay": 16777217)", 2, 264, 220, {0x01, 0, 0, 0x01}},
    {"io-flow", R"("if-index": 513)", 3, 112, 44, {0x01, 0x02}},
    {"io-flow", R"("address-family": 1)", 3, 112, 1, {0x01}},
    {"io-flow", R"("source-ip": "2001:db8:85a3::8a2e:370:7334")", 3, 112, 4,
     {0xb8, 0x0d, 0x01, 0x20, 0x00, 0x00, 0xa3, 0x85, 0x2e, 0x8a, 0x00, 0x00, 0x34, 0x73, 0x70, 0x03}},
    {"io-flow", R"("sequence-number": 7)", 3, 112, 108, {0x07, 0, 0, 0}},
    {"result", R"("acl-name": "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa")", 4, 152, 20,
     Bytes(64, 'a')},
    {"result", R"("input-packets": 4294967296)", 4, 152, 96, {0, 0, 0, 0, 0x01, 0, 0, 0}},
    {"result", R"("time-stamp": 258)", 4, 152, 148, {0x02, 0x01, 0, 0}},
    {"io-throughput", R"("fet-max": 1099511627776)", 5, 116, 72, {0, 0, 0, 0, 0, 0x01, 0, 0}},
    {"io-throughput", R"("address-family": 1)", 5, 116, 4, {0x01, 0, 0, 0}},
    {"io-throughput", R"("sequence-number": 9)", 5, 116, 112, {0x09, 0, 0, 0}},
    {"export-cache", R"("destination-ip": "10.0.0.1")", 6, 56, 8, {0x01, 0, 0, 0x0a}},
    {"export-cache", R"("op-mode": 3)", 6, 56, 52, {0x03, 0, 0, 0}},
    {"1", R"("ttl": 64)", 1, 264, 16, {0x40, 0, 0, 0}},
    {"dravik-zelk:zelk/export-flow-caches/export-flow-cache", R"("state": 2)", 6, 56, 32, {0x02, 0, 0, 0}},
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
    SimRun run = Send(dir, receiver, records + "\n]");
    ASSERT_EQ(run.exitCode, 0) << run.err;

    for (const FieldBytes &item : kFieldBytes) {
        SCOPED_TRACE(std::string(item.sensor) + " " + item.field);
        std::optional<Bytes> datagram = receiver.Next();
        ASSERT_TRUE(datagram.has_value());
        std::vector<Frame> frames = Frames(*datagram);
        ASSERT_EQ(frames.size(), 1u);
        EXPECT_EQ(frames[0].type, item.type);
        ASSERT_EQ(frames[0].body.size(), item.recordSize);
        Bytes expected(item.recordSize, 0);
        std::copy(item.expected.begin(), item.expected.end(), expected.begin() + static_cast<long>(item.offset));
        EXPECT_EQ(frames[0].body, expected);
    }
    EXPECT_FALSE(receiver.Next(200).has_value());
}

TEST(SendToolBytes, BodyLengthCutsOrPadsTheRecord)
{
    ScratchDir dir;
    Receiver receiver;
    SimRun run = Send(dir, receiver, R"([
        {"sensor": "flow", "ttl": 9, "byte-count": 1, "body-length": 100},
        {"sensor": "export-cache", "op-mode": 4, "body-length": 60},
        {"sensor": "result", "body-length": 0}])");
    ASSERT_EQ(run.exitCode, 0) << run.err;

    Bytes cut(100, 0);
    cut[16] = 9; /* ttl kept, byte count (offset 248) cut off */
    Bytes padded(60, 0);
    padded[52] = 4;
    const std::pair<uint32_t, Bytes> expected[] = {{1, cut}, {6, padded}, {4, {}}};
    for (const auto &[type, body] : expected) {
        std::optional<Bytes> datagram = receiver.Next();
        ASSERT_TRUE(datagram.has_value());
        std::vector<Frame> frames = Frames(*datagram);
        ASSERT_EQ(frames.size(), 1u);
        EXPECT_EQ(frames[0].type, type);
        EXPECT_EQ(frames[0].body, body);
    }
}

TEST(SendToolBytes, BatchesFillDatagramsUpToTheUdpLimitInOrder)
{
    ScratchDir dir;
    Receiver receiver;
    std::string records = "[";
    for (int i = 0; i < 300; ++i) {
        records += std::string(i == 0 ? "" : ",") + "{\"sensor\": \"flow\", \"timestamp-nanosecond\": " +
                   std::to_string(i) + "}";
    }
    /* Read while it sends: four full-size datagrams may not all fit the socket buffer at once. */
    dir.Write("records.json", records + "]");
    ToolProcess send(dir, "mdtlm-send", {"--port", receiver.Port(), "--batch", "300", "--repeat", "2", "records.json"});

    /* 240 frames of 272 bytes fit in one datagram (65280 bytes), the 241st would not. */
    const size_t expectedFrames[] = {240, 60, 240, 60};
    uint32_t next = 0;
    for (size_t count : expectedFrames) {
        std::optional<Bytes> datagram = receiver.Next();
        ASSERT_TRUE(datagram.has_value());
        std::vector<Frame> frames = Frames(*datagram);
        ASSERT_EQ(frames.size(), count);
        for (const Frame &frame : frames) {
            uint32_t nanoseconds;
            std::memcpy(&nanoseconds, frame.body.data() + 216, 4);
            EXPECT_EQ(nanoseconds, next);
            next = (next + 1) % 300;
        }
    }
    SimRun run = send.Wait(30);
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_NE(run.err.find("600 messages in 4 datagrams"), std::string::npos) << run.err;
}

struct BadRecords {
    const char *name;
    const char *text;
    const char *where; /* "records.json:LINE: FIELD:" */
    const char *because;
};

/* Test names show the case's name instead of its bytes. */
void PrintTo(const BadRecords &item, std::ostream *out)
{
    *out << item.name;
}

const BadRecords kBadRecords[] = {
    {"UnknownField", "[\n {\"sensor\": \"flow\",\n  \"flow-idd\": 1}]", "records.json:3: [0].flow-idd:",
     "unknown field of sensor flow"},
    {"TooWideForU16", "[{\"sensor\": \"flow\"},\n {\"sensor\": \"flow\", \"vlan\": 65536}]",
     "records.json:2: [1].vlan:", "at most 65535"},
    {"TooWideForU8", "[\n {\"sensor\": \"io-flow\", \"address-family\": 256}]",
     "records.json:2: [0].address-family:", "at most 255"},
    {"NotAnAddress", "[\n {\"sensor\": \"flow\",\n  \"source-ip\": \"10.0.0.300\"}]",
     "records.json:3: [0].source-ip:", "is not an IPv4 or IPv6 address"},
    {"Ipv6InIpv4OnlyField", "[\n {\"sensor\": \"export-cache\", \"source-ip\": \"2001:db8::1\"}]",
     "records.json:2: [0].source-ip:", "is not an IPv4 address"},
    {"TextTooLong", "[\n {\"sensor\": \"flow\", \"chassis-id\": \"0123456789012345678901234567890123\"}]",
     "records.json:2: [0].chassis-id:", "at most 31"},
    {"UnknownSensor", "[\n {\"sensor\": \"flows\"}]", "records.json:2: [0].sensor:", "unknown sensor"},
    {"MissingSensor", "[{\"sensor\": \"flow\"},\n {\"ttl\": 1}]", "records.json:2: [1]:", "missing \"sensor\""},
    {"Negative", "[\n {\"sensor\": \"flow\", \"ttl\": -1}]", "records.json:2: [0].ttl:", "must not be negative"},
    {"NumberAsText", "[\n {\"sensor\": \"flow\", \"ttl\": \"64\"}]", "records.json:2: [0].ttl:",
     "expected an unsigned integer"},
    {"BodyTooLong", "[\n {\"sensor\": \"flow\", \"body-length\": 70000}]", "records.json:2: [0].body-length:",
     "byte count from 0 to 65499"},
    {"NotAList", "{\"sensor\": \"flow\"}", "records.json:1:", "expected an array of records"},
};

class SendToolRefuses : public testing::TestWithParam<BadRecords> {};

TEST_P(SendToolRefuses, ExitTwoNamingFileLineAndFieldAndSendsNothing)
{
    ScratchDir dir;
    Receiver receiver;
    SimRun run = Send(dir, receiver, GetParam().text);
    EXPECT_EQ(run.exitCode, 2) << run.err;
    EXPECT_NE(run.err.find(GetParam().where), std::string::npos) << run.err;
    EXPECT_NE(run.err.find(GetParam().because), std::string::npos) << run.err;
    EXPECT_FALSE(receiver.Next(100).has_value());
}

INSTANTIATE_TEST_SUITE_P(Table, SendToolRefuses, testing::ValuesIn(kBadRecords),
                         [](const testing::TestParamInfo<BadRecords> &info) { return std::string(info.param.name); });

} // namespace
