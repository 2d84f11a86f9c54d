#include <gtest/gtest.h>

#include <atomic>
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
    MDTLM_HOST_FaultClear();
    EXPECT_GE(FWM_EPOLL_Create(), 0); /* a cleared rule claims nothing */
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

/* Calls made before a reset do not count, whether their thread is still
 * running at the reset or ends before the totals are read. */
TEST(PlatformFault, ResetForgetsEarlierCallsOfRunningAndEndedThreads)
{
    std::atomic<int> stage{0};
    auto memsets = [](int n) {
        uint8_t b[8];
        for (int i = 0; i < n; i++)
            (void)memset_s(b, 8, 0, 8);
    };
    std::thread ended([&] { memsets(7); });
    ended.join();
    std::thread running([&] {
        memsets(30);
        stage = 1;
        while (stage.load() != 2)
            std::this_thread::yield();
        memsets(5);
    });
    while (stage.load() != 1)
        std::this_thread::yield();
    memsets(11);
    EXPECT_GE(MDTLM_HOST_CallCount(MDTLM_HOST_OP_MEMSET_S), 48u);

    MDTLM_HOST_CallCountReset();
    EXPECT_EQ(MDTLM_HOST_CallCount(MDTLM_HOST_OP_MEMSET_S), 0u);
    memsets(3);
    stage = 2;
    running.join();
    EXPECT_EQ(MDTLM_HOST_CallCount(MDTLM_HOST_OP_MEMSET_S), 8u); /* 3 here, 5 from the thread that ended */
}

} /* namespace */
