#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <thread>
#include <vector>

#include "platform_test_util.h"

namespace {

TEST(PlatformFault, AfterTheSkippedCallsTheNextOnesFailWithoutDoingTheirWork)
{
    MDTLM_HOST_CallCountReset();
    MDTLM_HOST_FaultSet(MDTLM_HOST_OP_QUE_CREATE, 2, 2, 0); /* the third and fourth calls */
    void *q[5];
    for (auto &h : q)
        h = FWM_QUE_CreateNew("k-th", 1, 4, 8);
    EXPECT_TRUE(q[0] && q[1] && !q[2] && !q[3] && q[4]);
    EXPECT_EQ(MDTLM_HOST_CallCount(MDTLM_HOST_OP_QUE_CREATE), 5u);
    for (void *h : q)
        FWM_QUE_Destory(h);
    EXPECT_EQ(MDTLM_HOST_CallCount(MDTLM_HOST_OP_QUE_DESTROY), 5u); /* refused calls count too */

    ASSERT_EQ(MDTLM_HOST_DbOpen(nullptr), 0u);
    MDTLM_FEM_TASK_STAT_REC rec{};
    void *h = nullptr;
    ASSERT_EQ(db_create_fem_mdtlm_stat_obj(MDTLM_DB_OP_WRITE, 0, &h), 0u);
    ASSERT_EQ(db_set_fem_mdtlm_stat_all_fields(h, &rec, sizeof(rec)), 0u);
    MDTLM_HOST_FaultSet(MDTLM_HOST_OP_DB_WRITE, 0, 1, 7);
    EXPECT_EQ(db_write_obj(h), 7u);
    EXPECT_EQ(MDTLM_HOST_DbQueryInt("select count(*) from fem_mdtlm_stat"), 0);
    EXPECT_EQ(db_write_obj(h), 0u);
    EXPECT_EQ(MDTLM_HOST_DbQueryInt("select count(*) from fem_mdtlm_stat"), 1);
    db_release_fem_mdtlm_stat_object(h);

    MDTLM_HOST_FaultSet(MDTLM_HOST_OP_EPOLL_CREATE, 0, 5, -9);
    EXPECT_EQ(FWM_EPOLL_Create(), -9);
    MDTLM_HOST_FaultClear();
    EXPECT_GE(FWM_EPOLL_Create(), 0);
    MDTLM_HOST_CallCountReset();
    EXPECT_EQ(MDTLM_HOST_CallCount(MDTLM_HOST_OP_EPOLL_CREATE), 0u);
}

uint32_t Nothing(void)
{
    return 0;
}

uint32_t NothingQueued(void *)
{
    return 0;
}

uint32_t NoFlow(uint32_t)
{
    return 0;
}

uint32_t NoBatch(void *, MDTLM_STATS_IPC_ENTRY *, uint32_t)
{
    return 0;
}

/* Every operation with a result code, injected with 42: the call must return
 * 42 and leave its output untouched. */
TEST(PlatformFault, EveryOperationCanBeMadeToFail)
{
    ScopedEpoll ep;
    void *q = FWM_QUE_CreateNew("faults", 1, 4, 8);
    uint64_t element = 0;
    MDTLM_QUE_MONITOR_CFG monitor{3, 1, ep.Id(), 0, 0};
    PAL_SYSTIME time{2024, 1, 1, 0, 0, 0, 1, 0, 0};
    uint32_t word = 0;
    void *handle = nullptr;
    HPX_C2H_FUNC *funcs = nullptr;
    MDTLM_UCSERVER_CFG chan{};
    chan.recvFunc = NoBatch;
    uint8_t area[16] = {};
    char text[8] = "keep";
    uint8_t bytes[4] = {};
    const MDTLM_DB_KEY key{0, 1};
    const MDTLM_DB_KEY_DESC desc{MDTLM_DB_KEY_DESC_VALUE, {}};
    MDTLM_FEM_TASK_STAT_REC rec{};

    const struct {
        MDTLM_HOST_OP op;
        std::function<int64_t()> call;
    } ops[] = {
        {MDTLM_HOST_OP_COMP_GET_VTABLE, [&] { return COMP_GetVTable(1000, 1000, &handle); }},
        {MDTLM_HOST_OP_QUE_EPOLL_REG, [&] { return FWM_QUE_EpollReg(q, ep.Id(), NothingQueued); }},
        {MDTLM_HOST_OP_QUE_MONITOR_REG, [&] { return FWM_QUE_MonitorReg(q, &monitor, NoFlow); }},
        {MDTLM_HOST_OP_QUE_WRITE, [&] { return FWM_QUE_AsyWrite(q, &element, 1); }},
        {MDTLM_HOST_OP_QUE_READ, [&] { return FWM_QUE_AsyRead(q, &element, 1); }},
        {MDTLM_HOST_OP_QUE_DESTROY, [&] { return FWM_QUE_Destory(q); }},
        {MDTLM_HOST_OP_EPOLL_CREATE, [&] { return FWM_EPOLL_Create(); }},
        {MDTLM_HOST_OP_EPOLL_RUN, [&] { return FWM_EPOLL_Run(ep.Id(), 5, -1); }},
        {MDTLM_HOST_OP_EPOLL_DESTROY, [&] { return FWM_EPOLL_Destroy(ep.Id()); }},
        {MDTLM_HOST_OP_TIMER_CREATE, [&] { return FWM_TIMER_Create(1000, Nothing, nullptr, ep.Id()); }},
        {MDTLM_HOST_OP_TIMER_DESTROY, [&] { return FWM_TIMER_Destroy(1); }},
        {MDTLM_HOST_OP_TASK_CREATE, [&] { return PAL_TaskCreate("t", &word, Nothing, 1, 0, 0, nullptr); }},
        {MDTLM_HOST_OP_SYSTIME_GET, [&] { return PAL_SystimeGet(&time); }},
        {MDTLM_HOST_OP_SYSTIME_SEC, [&] { return PAL_SystimeSecSince1970(&time, &word, &word); }},
        {MDTLM_HOST_OP_CHAN_SERVER, [&] { return FWM_CHAN_UCServer("c", 0, &chan, area); }},
        {MDTLM_HOST_OP_CHAN_DESTROY, [&] { return FWM_CHAN_UCServerDestory(q); }},
        {MDTLM_HOST_OP_DB_CREATE, [&] { return db_create_fem_mdtlm_stat_obj(MDTLM_DB_OP_READ, 0, &handle); }},
        {MDTLM_HOST_OP_DB_RELEASE, [&] { return db_release_fem_mdtlm_stat_object(handle); }},
        {MDTLM_HOST_OP_DB_SET_ALL, [&] { return db_set_fem_mdtlm_stat_all_fields(handle, &rec, sizeof(rec)); }},
        {MDTLM_HOST_OP_DB_SET_FIELD, [&] { return db_set_vraldcn_mdtlm_report_perf_end_time_s(handle, 1); }},
        {MDTLM_HOST_OP_DB_GET_ALL, [&] { return db_get_fem_mdtlm_stat_all_fields(handle, &rec, sizeof(rec)); }},
        {MDTLM_HOST_OP_DB_WRITE, [&] { return db_write_obj(handle); }},
        {MDTLM_HOST_OP_DB_READ, [&] { return db_read_obj(handle, &desc, &key); }},
        {MDTLM_HOST_OP_DB_UPDATE, [&] { return db_update_obj(handle, &desc, &key); }},
        {MDTLM_HOST_OP_DB_REMOVE, [&] { return db_remove_obj(handle, &desc, &key); }},
        {MDTLM_HOST_OP_DB_TRUNCATE, [&] { return db_truncate_table("fem_mdtlm_stat", 1); }},
        {MDTLM_HOST_OP_HPX_GET_ACTIVE, [&] { return HPX_PAT_GetC2HActiveFunc("k", &funcs, &word); }},
        {MDTLM_HOST_OP_HPX_GET_DEACTIVE, [&] { return HPX_PAT_GetC2HDeactiveFunc("k", &funcs, &word); }},
        {MDTLM_HOST_OP_MEMCPY_S, [&] { return memcpy_s(bytes, 4, "abc", 4); }},
        {MDTLM_HOST_OP_MEMSET_S, [&] { return memset_s(bytes, 4, 1, 4); }},
        {MDTLM_HOST_OP_SPRINTF_S, [&] { return sprintf_s(text, sizeof(text), "x"); }},
        {MDTLM_HOST_OP_SNPRINTF_S, [&] { return snprintf_s(text, sizeof(text), "x"); }},
        {MDTLM_HOST_OP_VSPRINTF_S, [&] {
             va_list none{};
             return vsprintf_s(text, sizeof(text), "x", none);
         }},
    };
    MDTLM_HOST_CallCountReset();
    for (const auto &o : ops) {
        MDTLM_HOST_FaultSet(o.op, 0, 1, 42);
        EXPECT_EQ(o.call(), 42) << "operation " << o.op;
        EXPECT_EQ(MDTLM_HOST_CallCount(o.op), 1u) << "operation " << o.op;
    }
    EXPECT_EQ(handle, nullptr);
    EXPECT_EQ(funcs, nullptr);
    EXPECT_EQ(time.year, 2024);
    EXPECT_EQ(word, 0u);
    EXPECT_STREQ(text, "keep");
    EXPECT_EQ(bytes[0], 0);
    EXPECT_EQ(MDTLM_HOST_QueueCount(q), 0); /* not written, not destroyed */
    EXPECT_TRUE(MDTLM_HOST_EpollPump(ep.Id(), 0, 0) == 0 && FWM_EPOLL_Destroy(ep.Id()) == 0); /* still alive */
    ep.Forget();
    FWM_QUE_Destory(q);
}

TEST(PlatformFault, RulesHoldUnderConcurrentCalls)
{
    MDTLM_HOST_CallCountReset();
    MDTLM_HOST_FaultSet(MDTLM_HOST_OP_MEMSET_S, 100, 50, 9);
    std::atomic<int> failed{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; t++) {
        threads.emplace_back([&] {
            uint8_t b[8];
            for (int i = 0; i < 1000; i++)
                failed += memset_s(b, 8, 0, 8) == 9;
        });
    }
    for (auto &t : threads)
        t.join();
    EXPECT_EQ(failed.load(), 50);
    EXPECT_EQ(MDTLM_HOST_CallCount(MDTLM_HOST_OP_MEMSET_S), 4000u);
}

} /* namespace */
