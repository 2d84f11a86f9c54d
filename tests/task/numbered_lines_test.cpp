/* Every log line that carries a fixed number, provoked through the plug-in's
 * entries, handlers and operations: its level, its number and its text. */
#include <cstring>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "failing_clock.h"
#include "mdtlm_host.h"
#include "mdtlm_vraldcn.h"
#include "plugin_fixture.h"
#include "sensor_calls.h"

namespace {

constexpr uint32_t kEventBytes = 3552;  /* an add or delete event */
constexpr uint32_t kNodeBytes = 3560;   /* a task node */
constexpr uint32_t kSampleBytes = 24624; /* a sample buffer or an upload copy */
constexpr uint32_t kEventQueueDepth = 1024;
constexpr uint32_t kTooLongForJson = MDTLM_SAMPLE_DATA_SIZE - 10; /* no room left for the JSON header */

struct NumberedLine {
    uint32_t level;
    int number;
    std::string text; /* what follows the label and the number */
};

std::string Delivered(const NumberedLine &line)
{
    return "[mdtlm.vraldcn.statis:" + std::to_string(line.number) + "]" + line.text;
}

/* The wanted lines must appear in order among the captured ones, each with its
 * level and its number. */
void ExpectLinesInOrder(const std::vector<CapturedLog> &logs, const std::vector<NumberedLine> &want)
{
    size_t next = 0;
    for (const CapturedLog &log : logs) {
        if (next < want.size() && log.level == want[next].level && log.text == Delivered(want[next])) {
            ++next;
        }
    }
    if (next == want.size()) {
        return;
    }
    std::ostringstream captured;
    for (const CapturedLog &log : logs) {
        captured << "\n  " << log.level << " " << log.text;
    }
    ADD_FAILURE() << "missing: " << want[next].level << " " << Delivered(want[next]) << "\ncaptured:" << captured.str();
}

/* The numbered lines of a table-driven sensor and a record its JSON encoder refuses. */
struct SensorRow {
    uint32_t sensor;
    int gpbNullRecord;
    int jsonNullParam;
    int encodeFail;
    const char *jsonNullText;
    std::vector<uint8_t> refusedByJson;
};

template <typename Rec>
std::vector<uint8_t> Refused(void (*refuse)(Rec &))
{
    Rec rec{};
    refuse(rec);
    const auto *raw = reinterpret_cast<const uint8_t *>(&rec);
    return std::vector<uint8_t>(raw, raw + sizeof(rec));
}

const char kFlowJsonNull[] = "[FLOW_JSON_CheckEncodePara] Param error, msg is NULL.";

std::vector<SensorRow> SensorRows()
{
    using Srvtlm = MDTLM_SRVTLM_FLOW_STATS_REC;
    using Quma = MDTLM_QUMA_RESULT_REC;
    using Fct = MDTLM_SRVTLM_FCTFLOW_STATS_REC;
    using Zelk = MDTLM_ZELK_CACHE_REC;
    return {
        {MDTLM_SENSOR_SRVTLM_FLOW, 493, 104, 333, kFlowJsonNull, Refused<Srvtlm>([](Srvtlm &r) { r.addressFamily = 2; })},
        {MDTLM_SENSOR_QUMA_RESULT, 175, 51, 124, kFlowJsonNull, Refused<Quma>([](Quma &r) { r.protocol = 4; })},
        {MDTLM_SENSOR_SRVTLM_FCTFLOW, 524, 65, 377, kFlowJsonNull, Refused<Fct>([](Fct &r) { r.addressFamily = 2; })},
        {MDTLM_SENSOR_ZELK_CACHE, 188, 93, 141, "[ZELK][JSON] Param error, msg is NULL.",
         Refused<Zelk>([](Zelk &r) { r.protocolId = 17; })},
    };
}

struct Case {
    std::string name;
    std::function<void()> arrange; /* runs before the log is cleared; may be empty */
    std::function<void()> provoke;
    std::vector<NumberedLine> lines;
};

class NumberedLines : public PluginFixture {
protected:
    void SetUp() override
    {
        ASSERT_EQ(MDTLM_HOST_DbOpen(nullptr), 0u);
        PluginFixture::SetUp();
    }

    void TearDown() override
    {
        Restore();
        PluginFixture::TearDown();
    }

    /* Undoes whatever a case set up, and removes every task. */
    void Restore()
    {
        MDTLM_HOST_FaultClear();
        TestClockFails(false);
        fw.FailAlloc(0, 0);
        fw.FailAllocOfSize(0, 0, 0);
        fw.table = savedTable_;
        fw.SetUploadResult(0);
        Pump();
        for (uint32_t sensor = 1; sensor <= MDTLM_SENSOR_COUNT; ++sensor) {
            MDTLM_LIST_LINK *head = MDTLM_VRALDCN_TASK_GetTaskHead(sensor);
            while (head->next != head) {
                const MDTLM_TASK_DATA &task = reinterpret_cast<MDTLM_TASK_NODE *>(head->next)->data;
                DelTask(sensor, task.instanceId, task.taskId);
            }
        }
    }

    /* Delete events for tasks that do not exist, until the event queue is full. */
    void FillEventQueue()
    {
        for (uint32_t i = 0; i < kEventQueueDepth; ++i) {
            ASSERT_EQ(g_mdtlmVralDcnXpathNode[1].delFunc(9, 9000 + i), 0u);
        }
        ASSERT_EQ(MDTLM_HOST_QueueCount(g_mdtlmVralDcnTaskEventHdl), static_cast<int32_t>(kEventQueueDepth));
    }

    /* A task whose buffer of its encode type holds `dataLen` bytes of one record. */
    MDTLM_TASK_DATA *TaskHolding(uint32_t sensor, uint32_t taskId, uint32_t encode, uint32_t dataLen)
    {
        MDTLM_TASK_DATA *task = AddTask(sensor, 1, taskId, PathInfoBuilder(encode).Get());
        if (task == nullptr) {
            ADD_FAILURE() << "task " << taskId << " not added";
            return nullptr;
        }
        MDTLM_SAMPLE_BUFFER *buffer = encode == MDTLM_ENCODE_TYPE_JSON ? task->jsonBuffer : task->gpbBuffer;
        std::memset(buffer->data, 'x', dataLen);
        buffer->dataLen = dataLen;
        buffer->itemCnt = 1;
        return task;
    }

    static MDTLM_SAMPLE_BUFFER *Filled(MDTLM_TASK_DATA *task)
    {
        return task->pathInfo.encodeType == MDTLM_ENCODE_TYPE_JSON ? task->jsonBuffer : task->gpbBuffer;
    }
};

void Fault(MDTLM_HOST_OP op, uint32_t skip, uint32_t count, int64_t result)
{
    MDTLM_HOST_FaultSet(op, skip, count, result);
}

/* The tick's write of the report-performance rows, with one database operation failing. */
std::function<void()> WriteFailing(MDTLM_HOST_OP op, uint32_t skip, uint32_t count, int64_t result)
{
    return [=] {
        Fault(op, skip, count, result);
        MDTLM_VRALDCN_UpdateReportPerfToDb();
    };
}

std::vector<NumberedLine> StoreFailed(const NumberedLine &cause, uint32_t period)
{
    const std::string slot = std::to_string(period & 63);
    const std::string index = std::to_string(period);
    return {cause,
            {2, 123,
             "[VRALDCN_AddReportPerfEntryDbData] Write db vraldcn_mdtlm_report_perf failed ret: 1, history_id: " +
                 slot + ", period_index: " + index + "."},
            {2, 145,
             "[ FEM ]Update report perf to db failed ret: 1, index: " + slot + ", periodIndex: " + index + "."}};
}

TEST_F(NumberedLines, EveryNumberedLineCarriesItsNumber)
{
    MDTLM_TASK_DATA *task = nullptr;
    auto sample = std::make_unique<MDTLM_SAMPLE_BUFFER>();
    const auto addEntry = [](uint32_t sensor, uint32_t taskId) {
        const MDTLM_SENSOR_PATH_INFO info = PathInfoBuilder().Get();
        return g_mdtlmVralDcnXpathNode[sensor - 1].addFunc(1, taskId, &info);
    };
    const auto delEntry = [](uint32_t sensor, uint32_t taskId) {
        return g_mdtlmVralDcnXpathNode[sensor - 1].delFunc(1, taskId);
    };
    /* Row 4 stored, then counted again: the next write updates it. */
    const auto storedRowChanged = [&] {
        AddTask(1, 1, 110, PathInfoBuilder().Get());
        MDTLM_VRALDCN_UpdateReportPerfOutItemCnt(4, 1, 1);
        MDTLM_VRALDCN_UpdateReportPerfToDb();
        MDTLM_VRALDCN_UpdateReportPerfOutItemCnt(4, 1, 1);
    };
    /* Row 8 counted, never stored: the next write writes it whole. */
    const auto newRow = [&] {
        AddTask(1, 1, 111, PathInfoBuilder().Get());
        MDTLM_VRALDCN_UpdateReportPerfOutItemCnt(8, 1, 1);
    };
    using BufferOf = MDTLM_SAMPLE_BUFFER *;
    /* A buffer released after it was set up once: the next set-up allocates it. */
    const auto sensorBufferReleased = [this](uint32_t row, BufferOf MDTLM_SAMPLE_DATA::*which) {
        return std::function<void()>([this, row, which] {
            Tick();
            MDTLM_VRALDCN_BufFree(reinterpret_cast<void **>(&(g_femMdtlmStatsMap[row].sampleData->*which)));
        });
    };
    const auto taskBufferReleased = [this, &task](uint32_t sensor, BufferOf MDTLM_TASK_DATA::*which) {
        return std::function<void()>([this, &task, sensor, which] {
            task = AddTask(sensor, 1, sensor * 100 + 1, PathInfoBuilder().Get());
            MDTLM_VRALDCN_BufFree(reinterpret_cast<void **>(&(task->*which)));
        });
    };
    /* The set-up of a tick with the next buffer allocation failing. */
    const auto sensorSetUpFailing = [this](uint32_t row) {
        return std::function<void()>([this, row] {
            fw.FailAllocOfSize(kSampleBytes, 1);
            MDTLM_VRALDCN_STATS_InitSampleBuffer(&g_femMdtlmStatsMap[row]);
        });
    };
    const auto taskSetUpFailing = [this](uint32_t sensor) {
        return std::function<void()>([this, sensor] {
            fw.FailAllocOfSize(kSampleBytes, 1);
            MDTLM_STATS_InitTaskStats(sensor);
        });
    };
    const NumberedLine walkStopped{2, 178, "[InitTaskStats] Alloc buff failed"};
    const NumberedLine emptyLookup{0, 248, "[NTVVRALDCN_GetTlmTaskInfo] Telemetry task list is empty."};
    const NumberedLine jsonCopy{2, 558, "[NTVVRALDCN_TASK_FormatStatsData] Copy sampleData failed, codetype: 1."};

    std::vector<Case> cases = {
        /* Task registry. */
        {"add entry, allocation", nullptr,
         [&] {
             fw.FailAllocOfSize(kEventBytes, 1);
             EXPECT_EQ(addEntry(1, 21), 1u);
         },
         {{2, 272, "[NTVVRALDCN_AddTlmTask] Alloc memory failed.., taskId: 21."}}},
        {"add entry, full event queue", [&] { FillEventQueue(); }, [&] { EXPECT_EQ(addEntry(1, 22), 0u); },
         {{2, 287, "[NTVVRALDCN_AddTlmTask] push task to event queue failed, ret: 1, taskId: 22."}}},
        {"delete entry, allocation", nullptr,
         [&] {
             fw.FailAllocOfSize(kEventBytes, 1);
             EXPECT_EQ(delEntry(1, 23), 1u);
         },
         {{2, 413, "[NTVVRALDCN_DelTlmTask] Alloc memory failed.."}}},
        {"delete entry, full event queue", [&] { FillEventQueue(); }, [&] { EXPECT_EQ(delEntry(1, 24), 0u); },
         {{2, 425, "[NTVVRALDCN_DelTlmTask] push task to event queue failed, ret: 1."}}},
        {"add handler, short payload", nullptr,
         [&] {
             MDTLM_TASK_DATA payload{};
             EXPECT_EQ(MDTLM_VRALDCN_TASK_AddTlmTaskToList(&payload, sizeof(payload) - 1), 1u);
         },
         {{2, 366, "[NTVVRALDCN_TASK_AddTlmTaskToList] Msg is NULL, msgLen: 3543"}}},
        {"add handler, no payload", nullptr,
         [&] { EXPECT_EQ(MDTLM_VRALDCN_TASK_AddTlmTaskToList(nullptr, 0), 1u); },
         {{2, 366, "[NTVVRALDCN_TASK_AddTlmTaskToList] Msg is NULL, msgLen: 0"}}},
        {"add handler on an empty list, success", nullptr,
         [&] { EXPECT_NE(AddTask(2, 1, 201, PathInfoBuilder().Get()), nullptr); },
         {emptyLookup, {1, 401, "[NTVVRALDCN_AdddTlmTask] Add telemetry task[201] success."}}},
        {"task lookup, empty list", nullptr, [&] { EXPECT_EQ(MDTLM_VRALDCN_GetTlmTaskInfo(2, 1, 201), nullptr); },
         {emptyLookup}},
        {"add handler, node allocation", nullptr,
         [&] {
             fw.FailAllocOfSize(kNodeBytes, 1);
             EXPECT_EQ(AddTask(2, 1, 202, PathInfoBuilder().Get()), nullptr);
         },
         {{2, 389, "[NTVVRALDCN_AdddTlmTask] Add telemetry task[202] failed, alloc memery falied."}}},
        {"delete handler, no payload", nullptr,
         [&] { EXPECT_EQ(MDTLM_VRALDCN_TASK_DelTlmTaskFromList(nullptr, 0), 1u); },
         {{2, 478, "[NTVVRALDCN_TASK_DelTlmTaskFromList] Msg is NULL, msgLen: 0"}}},
        {"delete handler, empty list", nullptr, [&] { DelTask(2, 1, 203); },
         {{0, 488, "[NTVVRALDCN_TASK_DelTlmTaskFromList] Telemetry task list is empty."}}},
        {"delete handler, success", [&] { AddTask(2, 1, 204, PathInfoBuilder().Get()); },
         [&] { DelTask(2, 1, 204); },
         {{1, 505, "[NTVVRALDCN_TASK_DelTlmTaskFromList] Delete telemetry task[204] success."}}},

        /* Sample buffers. */
        {"collect time stamp, clock failure", nullptr,
         [&] {
             ScopedFailingClock clock;
             EXPECT_EQ(MDTLM_VRALDCN_STATS_GetTimestamps(), 0u);
         },
         {{2, 58, "[NTVVRALDCN_STATS_GetTimestamps] Get collect timestamp failed"}}},
        {"sensor GPB buffer allocation", sensorBufferReleased(0, &MDTLM_SAMPLE_DATA::gpbBuffer),
         sensorSetUpFailing(0), {{2, 129, "[GetAndInitSampleDataBuff] Alloc buff failed, msgId: 1, codeType: 0"}}},
        {"sensor JSON buffer allocation", sensorBufferReleased(5, &MDTLM_SAMPLE_DATA::jsonBuffer),
         sensorSetUpFailing(5), {{2, 129, "[GetAndInitSampleDataBuff] Alloc buff failed, msgId: 6, codeType: 1"}}},
        {"task GPB buffer allocation", taskBufferReleased(4, &MDTLM_TASK_DATA::gpbBuffer), taskSetUpFailing(4),
         {{2, 147, "[InitTaskSampleBuffer] Alloc buff failed, msgId: 4, codeType: 0"}, walkStopped}},
        {"task JSON buffer allocation", taskBufferReleased(5, &MDTLM_TASK_DATA::jsonBuffer), taskSetUpFailing(5),
         {{2, 156, "[InitTaskSampleBuffer] Alloc buff failed, msgId: 5, codeType: 1"}, walkStopped}},

        /* Sample upload. */
        {"upload, no upload slot", [&] { task = TaskHolding(1, 101, MDTLM_ENCODE_TYPE_GPB, 5); },
         [&] {
             fw.table.SampleDataUpload = nullptr;
             MDTLM_VRALDCN_TASK_UploadStatsDataByTask(Filled(task), task);
         },
         {{2, 523, "[NTVVRALDCN_UploadDataToTlm] mdtlmVtbl is NULL."}}},
        {"upload refused", [&] { task = TaskHolding(1, 102, MDTLM_ENCODE_TYPE_GPB, 5); },
         [&] {
             fw.SetUploadResult(3);
             MDTLM_VRALDCN_TASK_UploadStatsDataByTask(Filled(task), task);
         },
         {{2, 529, "[NTVVRALDCN_UploadDataToTlm] SampleDataUpload failed, ret: 3."}}},
        {"task upload, JSON does not fit", [&] { task = TaskHolding(1, 103, MDTLM_ENCODE_TYPE_JSON, kTooLongForJson); },
         [&] { MDTLM_VRALDCN_TASK_UploadStatsDataByTask(Filled(task), task); },
         {jsonCopy, {2, 612, "[NTVVRALDCN_UploadDataToTlm] Format sampleData failed, codetype: 1."}}},
        {"task upload, sample allocation", [&] { task = TaskHolding(1, 104, MDTLM_ENCODE_TYPE_GPB, 5); },
         [&] {
             fw.FailAllocOfSize(kSampleBytes, 1);
             MDTLM_VRALDCN_TASK_UploadStatsDataByTask(Filled(task), task);
         },
         {{2, 608, "[NTVVRALDCN_UploadDataToTlm] Alloc buff failed, codetype: 0."}}},
        {"sensor-wide upload, sample allocation", [&] { sample->dataLen = 5; },
         [&] {
             fw.FailAllocOfSize(kSampleBytes, 1);
             MDTLM_VRALDCN_TASK_UploadStatsData(1, sample.get(), MDTLM_ENCODE_TYPE_GPB);
         },
         {{2, 661, "[UploadStatsData] Alloc buff failed, codetype: 0."}}},
        {"sensor-wide upload, JSON does not fit", [&] { sample->dataLen = kTooLongForJson; },
         [&] { MDTLM_VRALDCN_TASK_UploadStatsData(1, sample.get(), MDTLM_ENCODE_TYPE_JSON); },
         {jsonCopy, {2, 666, "[UploadStatsData] Format sampleData failed, codetype: 1."}}},

        /* Report-performance records. */
        {"report-performance start time, clock failure", [&] { AddTask(1, 1, 112, PathInfoBuilder().Get()); },
         [&] {
             ScopedFailingClock clock;
             MDTLM_VRALDCN_UpdateReportPerfPeriodIndex(70);
         },
         {{2, 51, "[NTVVRALDCN_STATS_GetTimestamps] Get collect timestamp failed"}}},
        {"report-performance end time, clock failure", storedRowChanged,
         [&] {
             ScopedFailingClock clock;
             MDTLM_VRALDCN_UpdateReportPerfToDb();
         },
         {{2, 51, "[NTVVRALDCN_STATS_GetTimestamps] Get collect timestamp failed"}}},
        {"row update, handle", storedRowChanged,
         WriteFailing(MDTLM_HOST_OP_DB_CREATE, 1, 1, 7),
         StoreFailed({2, 38, "[UpdateDbData] Create vraldcn_mdtlm_report_perf obj failed, ret: 7."}, 4)},
        {"row update, field setters", storedRowChanged,
         WriteFailing(MDTLM_HOST_OP_DB_SET_FIELD, 3, 2, 3),
         StoreFailed({2, 57, "[UpdateDbData] set vraldcn_mdtlm_report_perf field failed, ret: 6."}, 4)},
        {"row update, update", storedRowChanged,
         WriteFailing(MDTLM_HOST_OP_DB_UPDATE, 0, 1, 9),
         StoreFailed({2, 64, "[UpdateDbData] Update vraldcn_mdtlm_report_perf failed, ret: 9."}, 4)},
        {"row write, handle", newRow,
         WriteFailing(MDTLM_HOST_OP_DB_CREATE, 1, 1, 5),
         StoreFailed({2, 78, "[VRALDCN_WriteReportPerfEntryDb] Create vraldcn_mdtlm_report_perf failed ret: 5."}, 8)},
        {"row write, all-fields setter", newRow,
         WriteFailing(MDTLM_HOST_OP_DB_SET_ALL, 0, 1, 4),
         StoreFailed(
             {2, 87, "[VRALDCN_WriteReportPerfEntryDb] Set vraldcn_mdtlm_report_perf all field failed ret: 4."}, 8)},
        {"row write, write", newRow,
         WriteFailing(MDTLM_HOST_OP_DB_WRITE, 0, 1, 2),
         StoreFailed({2, 94, "[VRALDCN_WriteReportPerfEntryDb] Write vraldcn_mdtlm_report_perf failed ret: 2."}, 8)},
        {"row stored", newRow, [&] { MDTLM_VRALDCN_UpdateReportPerfToDb(); },
         {{1, 128,
           "[VRALDCN_AddReportPerfEntryDbData] Write db vraldcn_mdtlm_report_perf success, ret: 0, history_id: 8, "
           "period_index: 8."}}},
        {"truncation", [&] { AddTask(2, 1, 205, PathInfoBuilder().Get()); },
         [&] {
             Fault(MDTLM_HOST_OP_DB_TRUNCATE, 0, 1, 1);
             DelTask(2, 1, 205);
         },
         {{1, 505, "[NTVVRALDCN_TASK_DelTlmTaskFromList] Delete telemetry task[205] success."},
          {2, 137, "[VRALDCN_TruncateReportPerfEntryDbData] Truncate db data failed."}}},

        /* Task statistics records. */
        {"new task statistics record", nullptr,
         [&] {
             Fault(MDTLM_HOST_OP_DB_WRITE, 0, 1, 1);
             AddTask(4, 1, 405, PathInfoBuilder().Get());
         },
         {{2, 134, "[MDTLM_VRALDCN_TASK] Write task stat to db failed."},
          {1, 401, "[NTVVRALDCN_AdddTlmTask] Add telemetry task[405] success."}}},
        {"updated task statistics record", [&] { task = AddTask(4, 1, 406, PathInfoBuilder().Get()); },
         [&] {
             Fault(MDTLM_HOST_OP_DB_WRITE, 0, 1, 1);
             MDTLM_FEM_WriteTaskStat2DbProc(4, task);
         },
         {{2, 159, "[MDTLM_VRALDCN_TASK] Write task stat to db failed."}}},
    };

    /* The table-driven sensors: every line for every sensor, on every path. */
    const std::string encodeFailed = "[STATS_EncodeStatsData] Stats data encode failed, ret: -1.";
    const std::vector<SensorRow> sensorRows = SensorRows();
    for (const SensorRow &row : sensorRows) {
        const sensor_table::SensorCalls &calls = sensor_table::kSensors[row.sensor - 1];
        const std::string sensor = "sensor " + std::to_string(row.sensor) + ", ";
        cases.push_back({sensor + "GPB encoder without a record", nullptr,
                         [&calls, &sample] { EXPECT_EQ(calls.gpb(nullptr, sample->data, 64), MDTLM_ENCODE_FAIL); },
                         {{2, row.gpbNullRecord, "[VRALDCN_FLOW_GPB_EncodeMsg] Param error, msg is NULL."}}});
        cases.push_back({sensor + "JSON encoder without a record", nullptr,
                         [&calls, &sample] { EXPECT_EQ(calls.json(nullptr, sample->data, 64), MDTLM_ENCODE_FAIL); },
                         {{2, row.jsonNullParam, row.jsonNullText}}});
        cases.push_back({sensor + "record its JSON tasks refuse",
                         [&] { AddTask(row.sensor, 1, 7, PathInfoBuilder(MDTLM_ENCODE_TYPE_JSON).Get()); },
                         [&] {
                             const std::vector<uint8_t> &record = row.refusedByJson;
                             EXPECT_EQ(Deliver(row.sensor, record.data(), static_cast<uint32_t>(record.size())), 0u);
                             Tick();
                         },
                         {{2, row.encodeFail, encodeFailed}}});
        cases.push_back({sensor + "record for a task without buffers",
                         [&] {
                             task = AddTask(row.sensor, 1, 8, PathInfoBuilder().Get());
                             MDTLM_VRALDCN_BufFree(reinterpret_cast<void **>(&task->gpbBuffer));
                             MDTLM_VRALDCN_BufFree(reinterpret_cast<void **>(&task->jsonBuffer));
                         },
                         [&] { calls.store(row.refusedByJson.data(), task); },
                         {{2, row.encodeFail, encodeFailed}}});
    }

    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        if (c.arrange) {
            c.arrange();
        }
        fw.ClearLogs();
        c.provoke();
        ExpectLinesInOrder(fw.Logs(), c.lines);
        Restore();
    }
}

} // namespace
