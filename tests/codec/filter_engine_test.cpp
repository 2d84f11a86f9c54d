/* Condition and filter engine on a small sensor; the callbacks log the field ids asked. */
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "mdtlm_vraldcn.h"

namespace {

const std::string kLongName(68, 'x');       /* fills a condition's or map row's name without NUL */
const std::string kLongFilterName(64, 'y'); /* fills a filter's name without NUL */

/* id: 0 flow-id (64-bit), 7 direction, 3 byte-count (64-bit), 12 ttl, 9 and 10 long names. */
MDTLM_FILTER_MAP_ENTRY g_map[6] = {{"flow-id", 0}, {"direction", 7}, {"byte-count", 3}, {"ttl", 12}, {"", 9}, {"", 10}};
const bool kIs64[16] = {true, false, false, true};
/* flow-id 42, direction 2, byte-count 2^40, ttl 11, long names 5 and 6. */
const uint64_t kRecord[16] = {42, 0, 0, 1ull << 40, 0, 0, 0, 2, 0, 5, 6, 0, 11};
std::vector<uint32_t> g_asked;

uint32_t CmpCondition(uint32_t id, const MDTLM_PATH_CONDITION *cond, const void *record)
{
    g_asked.push_back(id);
    char value[35] = {};
    std::memcpy(value, cond->value, sizeof(cond->value));
    return static_cast<const uint64_t *>(record)[id] == std::strtoull(value, nullptr, 10) ? 1u : 0u;
}

uint32_t CmpFilter(uint32_t id, const MDTLM_PATH_FILTER *filter, const void *record)
{
    g_asked.push_back(id);
    const uint64_t value = static_cast<const uint64_t *>(record)[id];
    return kIs64[id] ? MDTLM_STATS_SensorFilterOp64(filter->threshold, value, filter->op)
                     : MDTLM_STATS_SensorFilterOp(static_cast<uint32_t>(filter->threshold),
                                                  static_cast<uint32_t>(value), filter->op);
}

struct Rule {
    std::string name, value; /* value: condition text */
    uint8_t op = 0;
    uint64_t threshold = 0;
};

/* A block of exactly its own size on the heap, so that a read past it is caught
 * by the address sanitizer. */
std::unique_ptr<MDTLM_SENSOR_PATH_INFO> Block(const std::vector<Rule> &conds, const std::vector<Rule> &filters,
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

uint32_t Evaluate(const MDTLM_SENSOR_PATH_INFO &block, bool filters)
{
    std::memcpy(g_map[4].fieldName, kLongName.data(), 68);
    std::memcpy(g_map[5].fieldName, kLongFilterName.data(), 64);
    g_asked.clear();
    return filters ? MDTLM_STATS_SensorPathFilter(&block, kRecord, g_map, 6, CmpFilter)
                   : MDTLM_STATS_SensorPathCondition(&block, kRecord, g_map, 6, CmpCondition);
}

TEST(FilterEngine, ConditionsAndFiltersTruthTable)
{
    constexpr uint8_t GT = MDTLM_FILTER_OP_GT, EQ = MDTLM_FILTER_OP_EQ;
    constexpr uint32_t AND = MDTLM_FILTER_LOGIC_AND, OR = 0;
    const struct {
        const char *name;
        std::vector<Rule> conds, filters;
        uint32_t logic, result;
        std::vector<uint32_t> asked;
    } cases[] = {
        {"no rules", {}, {}, AND, 1, {}},
        {"condition: unknown skipped", {{"nope", "1"}, {"direction", "2"}}, {}, 0, 1, {7}},
        {"condition: first failure stops", {{"direction", "3"}, {"flow-id", "42"}}, {}, 0, 0, {7}},
        {"condition: name filling its field", {{kLongName, "5"}}, {}, 0, 1, {9}},
        {"condition: prefix of a long name", {{kLongName.substr(0, 67), "0"}}, {}, 0, 1, {}},
        {"filter: one unknown", {}, {{"nope", "", GT, 0}}, AND, 0, {}},
        {"filter: OR, one holds", {}, {{"ttl", "", GT, 11}, {"direction", "", EQ, 2}}, OR, 1, {12, 7}},
        {"filter: OR, both fail", {}, {{"ttl", "", GT, 11}, {"direction", "", EQ, 3}}, OR, 0, {12, 7}},
        {"filter: logic 2 is OR", {}, {{"ttl", "", GT, 11}, {"direction", "", EQ, 2}}, 2, 1, {12, 7}},
        {"filter: AND, first fails, second still asked", {}, {{"direction", "", EQ, 3}, {"ttl", "", GT, 10}}, AND, 0,
         {7, 12}},
        {"filter: AND, both hold", {}, {{"ttl", "", GT, 10}, {"byte-count", "", GT, 1ull << 39}}, AND, 1, {12, 3}},
        {"filter: AND, both unknown", {}, {{"a", "", GT, 0}, {"b", "", GT, 0}}, AND, 1, {}},
        {"filter: operator 5", {}, {{"ttl", "", 5, 0}}, OR, 0, {12}},
        {"filter: 2^32+10 against a 32-bit 11", {}, {{"ttl", "", GT, (1ull << 32) + 10}}, OR, 1, {12}},
        {"filter: 2^32+10 against a 64-bit 42", {}, {{"flow-id", "", GT, (1ull << 32) + 10}}, OR, 0, {0}},
        {"filter: name filling its field", {}, {{kLongFilterName, "", EQ, 6}}, OR, 1, {10}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        const bool filters = !c.filters.empty();
        EXPECT_EQ(Evaluate(*Block(c.conds, c.filters, c.logic), filters), c.result);
        EXPECT_EQ(g_asked, c.asked);
    }
}

TEST(FilterEngine, CountsBeyondTheBlockAreClampedToItsRoom)
{
    auto conds = Block(std::vector<Rule>(MDTLM_MAX_CONDITIONS, Rule{"ttl", "11"}), {}, 0);
    conds->conditionCnt = 1000;
    EXPECT_EQ(Evaluate(*conds, false), 1u);
    EXPECT_EQ(g_asked.size(), MDTLM_MAX_CONDITIONS);
    auto filters = Block({}, {{"ttl", "", MDTLM_FILTER_OP_EQ, 11}, {"direction", "", MDTLM_FILTER_OP_EQ, 2}},
                         MDTLM_FILTER_LOGIC_AND);
    filters->filterCnt = UINT32_MAX;
    EXPECT_EQ(Evaluate(*filters, true), 1u);
    EXPECT_EQ(g_asked, (std::vector<uint32_t>{12, 7}));
}

} // namespace
