/*
 * The condition and filter engine against a small sensor: a map of five
 * fields, a record of values by field id, and callbacks that log the ids
 * they were asked about.
 */
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "mdtlm_vraldcn.h"

namespace {

const std::string kLongName(68, 'x'); /* fills a condition's or map row's name without NUL */
const std::string kLongFilterName(64, 'y');

/* id: 0 flow-id (64-bit), 7 direction, 3 byte-count (64-bit), 12 ttl, 9 and 10 long names. */
MDTLM_FILTER_MAP_ENTRY g_map[6] = {{"flow-id", 0}, {"direction", 7}, {"byte-count", 3}, {"ttl", 12}, {"", 9},
                                   {"", 10}};
const bool kIs64[16] = {true, false, false, true};

struct Record {
    uint64_t value[16];
};
std::vector<uint32_t> g_asked;

uint32_t CmpCondition(uint32_t id, const MDTLM_PATH_CONDITION *cond, const void *record)
{
    g_asked.push_back(id);
    char value[35] = {};
    std::memcpy(value, cond->value, sizeof(cond->value));
    return static_cast<const Record *>(record)->value[id] == std::strtoull(value, nullptr, 10) ? 1u : 0u;
}

uint32_t CmpFilter(uint32_t id, const MDTLM_PATH_FILTER *filter, const void *record)
{
    g_asked.push_back(id);
    const uint64_t value = static_cast<const Record *>(record)->value[id];
    return kIs64[id] ? MDTLM_STATS_SensorFilterOp64(filter->threshold, value, filter->op)
                     : MDTLM_STATS_SensorFilterOp(static_cast<uint32_t>(filter->threshold),
                                                  static_cast<uint32_t>(value), filter->op);
}

struct Cond {
    std::string name, value;
};
struct Filter {
    std::string name;
    uint8_t op;
    uint64_t threshold;
};

/* A block of exactly its own size on the heap, so that a read past it is caught
 * by the address sanitizer. */
std::unique_ptr<MDTLM_SENSOR_PATH_INFO> Block(const std::vector<Cond> &conds, const std::vector<Filter> &filters,
                                              uint32_t logic)
{
    auto block = std::make_unique<MDTLM_SENSOR_PATH_INFO>();
    std::memset(block.get(), 0, sizeof(*block));
    block->conditionCnt = static_cast<uint32_t>(conds.size());
    for (size_t i = 0; i < conds.size(); ++i) {
        std::memcpy(block->conditions[i].fieldName, conds[i].name.data(), conds[i].name.size());
        std::memcpy(block->conditions[i].value, conds[i].value.data(), conds[i].value.size());
    }
    block->filterCnt = static_cast<uint32_t>(filters.size());
    block->filterLogic = logic;
    for (size_t i = 0; i < filters.size(); ++i) {
        std::memcpy(block->filters[i].fieldName, filters[i].name.data(), filters[i].name.size());
        block->filters[i].reserved1 = 'Q'; /* a name read past its field would not match */
        block->filters[i].op = filters[i].op;
        block->filters[i].threshold = filters[i].threshold;
    }
    return block;
}

class FilterEngine : public ::testing::Test {
protected:
    void SetUp() override
    {
        std::memcpy(g_map[4].fieldName, kLongName.data(), 68);
        std::memcpy(g_map[5].fieldName, kLongFilterName.data(), 64);
        g_asked.clear();
    }
    uint32_t Conditions(const MDTLM_SENSOR_PATH_INFO &block)
    {
        return MDTLM_STATS_SensorPathCondition(&block, &record, g_map, 6, CmpCondition);
    }
    uint32_t Filters(const MDTLM_SENSOR_PATH_INFO &block)
    {
        return MDTLM_STATS_SensorPathFilter(&block, &record, g_map, 6, CmpFilter);
    }
    /* flow-id 42, direction 2, byte-count 2^40, ttl 11, long names 5 and 6. */
    Record record{{42, 0, 0, 1ull << 40, 0, 0, 0, 2, 0, 5, 6, 0, 11}};
};

TEST_F(FilterEngine, ConditionsAllHoldUnknownNamesSkippedFirstFailureStops)
{
    const struct {
        const char *name;
        std::vector<Cond> conds;
        uint32_t result;
        std::vector<uint32_t> asked;
    } cases[] = {
        {"none", {}, 1, {}},
        {"unknown then holding", {{"nope", "1"}, {"direction", "2"}}, 1, {7}},
        {"first fails", {{"direction", "3"}, {"flow-id", "42"}}, 0, {7}},
        {"both hold", {{"flow-id", "42"}, {"ttl", "11"}}, 1, {0, 12}},
        {"names are exact", {{"Direction", "3"}, {"flow", "1"}, {"flow-id-x", "1"}}, 1, {}},
        {"name filling its field", {{kLongName, "5"}}, 1, {9}},
        {"prefix of a long name", {{kLongName.substr(0, 67), "0"}}, 1, {}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        g_asked.clear();
        EXPECT_EQ(Conditions(*Block(c.conds, {}, 0)), c.result);
        EXPECT_EQ(g_asked, c.asked);
    }
}

TEST_F(FilterEngine, FiltersFoldByLogicAndEvaluateEveryFilter)
{
    constexpr uint8_t GT = MDTLM_FILTER_OP_GT, EQ = MDTLM_FILTER_OP_EQ;
    constexpr uint32_t AND = MDTLM_FILTER_LOGIC_AND, OR = 0;
    const struct {
        const char *name;
        std::vector<Filter> filters;
        uint32_t logic;
        uint32_t result;
        std::vector<uint32_t> asked;
    } cases[] = {
        {"none", {}, AND, 1, {}},
        {"one unknown under AND", {{"nope", GT, 0}}, AND, 0, {}},
        {"one unknown under OR", {{"nope", GT, 0}}, OR, 0, {}},
        {"one holding, logic ignored", {{"ttl", GT, 10}}, AND, 1, {12}},
        {"one failing", {{"ttl", GT, 11}}, OR, 0, {12}},
        {"OR, one holds", {{"ttl", GT, 11}, {"direction", EQ, 2}}, OR, 1, {12, 7}},
        {"OR, both fail", {{"ttl", GT, 11}, {"direction", EQ, 3}}, OR, 0, {12, 7}},
        {"OR, both unknown", {{"a", GT, 0}, {"b", GT, 0}}, OR, 0, {}},
        {"logic 2 is OR", {{"ttl", GT, 11}, {"direction", EQ, 2}}, 2, 1, {12, 7}},
        {"AND, one fails", {{"ttl", GT, 10}, {"direction", EQ, 3}}, AND, 0, {12, 7}},
        {"AND, first fails, second still asked", {{"direction", EQ, 3}, {"ttl", GT, 10}}, AND, 0, {7, 12}},
        {"AND, both hold", {{"ttl", GT, 10}, {"byte-count", GT, 1ull << 39}}, AND, 1, {12, 3}},
        {"AND, both unknown", {{"a", GT, 0}, {"b", GT, 0}}, AND, 1, {}},
        {"AND, unknown ignored", {{"a", GT, 0}, {"ttl", EQ, 11}}, AND, 1, {12}},
        {"operator 5", {{"ttl", 5, 0}}, OR, 0, {12}},
        {"2^32+10 against a 32-bit 11", {{"ttl", GT, (1ull << 32) + 10}}, OR, 1, {12}},
        {"2^32+10 against a 64-bit 42", {{"flow-id", GT, (1ull << 32) + 10}}, OR, 0, {0}},
        {"2^32+2 equals a 32-bit 2", {{"direction", EQ, (1ull << 32) + 2}}, OR, 1, {7}},
        {"name filling its field", {{kLongFilterName, EQ, 6}}, OR, 1, {10}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        g_asked.clear();
        EXPECT_EQ(Filters(*Block({}, c.filters, c.logic)), c.result);
        EXPECT_EQ(g_asked, c.asked);
    }
}

TEST_F(FilterEngine, CountsBeyondTheBlockAreClampedToItsRoom)
{
    auto conds = Block(std::vector<Cond>(MDTLM_MAX_CONDITIONS, Cond{"ttl", "11"}), {}, 0);
    conds->conditionCnt = 1000;
    EXPECT_EQ(Conditions(*conds), 1u);
    EXPECT_EQ(g_asked.size(), MDTLM_MAX_CONDITIONS);

    g_asked.clear();
    auto filters = Block({}, {{"ttl", MDTLM_FILTER_OP_EQ, 11}, {"direction", MDTLM_FILTER_OP_EQ, 2}},
                         MDTLM_FILTER_LOGIC_AND);
    filters->filterCnt = UINT32_MAX;
    EXPECT_EQ(Filters(*filters), 1u);
    EXPECT_EQ(g_asked, (std::vector<uint32_t>{12, 7}));
}

TEST(FilterOp, UnsignedComparisonsWithTheValueOnTheLeft)
{
    /* Results for value below, equal to and above the threshold. */
    const struct {
        uint32_t op;
        uint32_t below, equal, above;
    } ops[] = {{0, 0, 1, 0}, {1, 0, 0, 1}, {2, 0, 1, 1}, {3, 1, 0, 0}, {4, 1, 1, 0}, {5, 0, 0, 0}, {255, 0, 0, 0}};
    for (const auto &o : ops) {
        SCOPED_TRACE(o.op);
        EXPECT_EQ(MDTLM_STATS_SensorFilterOp(10, 9, o.op), o.below);
        EXPECT_EQ(MDTLM_STATS_SensorFilterOp(10, 10, o.op), o.equal);
        EXPECT_EQ(MDTLM_STATS_SensorFilterOp(10, 11, o.op), o.above);
        EXPECT_EQ(MDTLM_STATS_SensorFilterOp(0x80000000u, 0x7fffffffu, o.op), o.below); /* unsigned */
        EXPECT_EQ(MDTLM_STATS_SensorFilterOp64(1ull << 40, (1ull << 40) - 1, o.op), o.below);
        EXPECT_EQ(MDTLM_STATS_SensorFilterOp64(UINT64_MAX, UINT64_MAX, o.op), o.equal);
        EXPECT_EQ(MDTLM_STATS_SensorFilterOp64(1ull << 32, (1ull << 63) + 1, o.op), o.above);
    }
    const struct {
        uint32_t count, logic, isAnd;
    } logic[] = {{0, 1, 0}, {1, 1, 0}, {2, 1, 1}, {2, 0, 0}, {2, 2, 0}, {3, 1, 1}};
    for (const auto &l : logic) {
        EXPECT_EQ(MDTLM_STATS_SensorFilterIsAnd(l.count, l.logic), l.isAnd) << l.count << "/" << l.logic;
    }
}

} // namespace
