/*
 * The object database: the operations the plug-in runs on its two objects,
 * "vraldcn_mdtlm_report_perf" (60-byte rows) and "fem_mdtlm_stat" (572-byte
 * rows), both keyed by the row's first 8 bytes.
 *
 * The check writes rows with ids far above any the plug-in uses and removes
 * them again; db.truncate empties the report-performance table, as the
 * plug-in itself does when a sensor's last task goes.
 */
#include <cstddef>
#include <cstring>

#include "rule.h"

namespace mdtlm::check {
namespace {

constexpr uint32_t kFirstId = 0xFFFF0000u;

MDTLM_DB_KEY_DESC KeyDesc()
{
    MDTLM_DB_KEY_DESC desc{};
    desc.desc = MDTLM_DB_KEY_DESC_VALUE;
    return desc;
}

/* The create and release calls of one object, and its record. */
struct ObjectOps {
    const char *name;
    uint32_t (*PlatformApi::*create)(uint32_t, uint32_t, void **);
    uint32_t (*PlatformApi::*release)(void *);
    uint32_t (*PlatformApi::*setAll)(void *, const void *, uint32_t);
    uint32_t length;
    uint32_t textOffset; /* where a NUL-terminated text field starts; 0: none */
};
const ObjectOps kReportPerf = {"vraldcn_mdtlm_report_perf", &PlatformApi::db_create_vraldcn_mdtlm_report_perf_obj,
                               &PlatformApi::db_release_vraldcn_mdtlm_report_perf_object,
                               &PlatformApi::db_set_vraldcn_mdtlm_report_perf_all_fields,
                               sizeof(MDTLM_REPORT_PERF_REC), 0};
const ObjectOps kTaskStat = {"fem_mdtlm_stat", &PlatformApi::db_create_fem_mdtlm_stat_obj,
                             &PlatformApi::db_release_fem_mdtlm_stat_object,
                             &PlatformApi::db_set_fem_mdtlm_stat_all_fields, sizeof(MDTLM_FEM_TASK_STAT_REC),
                             offsetof(MDTLM_FEM_TASK_STAT_REC, sensor_path)};

/* One handle of an object for one operation, released at scope end. */
class Handle {
public:
    Handle(const PlatformApi &api, const ObjectOps &ops, uint32_t operation, Findings &findings)
        : api_(api), ops_(ops)
    {
        uint32_t ret = (api.*ops.create)(operation, 0, &handle_);
        findings.Expect(ret == 0 && handle_ != nullptr, std::string("creating a handle of ") + ops.name +
                                                            " for operation " + Str(operation) + " returned " +
                                                            Str(ret));
        if (ret != 0) {
            handle_ = nullptr;
        }
    }
    ~Handle()
    {
        if (handle_ != nullptr) {
            (api_.*ops_.release)(handle_);
        }
    }
    Handle(const Handle &) = delete;
    Handle &operator=(const Handle &) = delete;
    void *Get() const { return handle_; }

private:
    const PlatformApi &api_;
    const ObjectOps &ops_;
    void *handle_ = nullptr;
};

/* A row of `ops` with key `id`, numeric fields from `seed` and a text field
 * that is a NUL-terminated path followed by zero bytes. */
std::vector<uint8_t> Row(const ObjectOps &ops, uint32_t id, uint8_t seed)
{
    std::vector<uint8_t> row(ops.length);
    size_t numericEnd = ops.textOffset != 0 ? ops.textOffset : row.size();
    for (size_t i = 8; i < numericEnd; i++) {
        row[i] = static_cast<uint8_t>(seed + i);
    }
    if (ops.textOffset != 0) {
        std::string path = "check:path/row-" + Str(seed);
        std::memcpy(row.data() + ops.textOffset, path.c_str(), path.size());
    }
    std::memset(row.data(), 0, 4);
    std::memcpy(row.data() + 4, &id, 4);
    return row;
}

bool WriteRow(const PlatformApi &api, const ObjectOps &ops, const std::vector<uint8_t> &row, Findings &findings)
{
    Handle handle(api, ops, MDTLM_DB_OP_WRITE, findings);
    if (handle.Get() == nullptr) {
        return false;
    }
    uint32_t ret = (api.*ops.setAll)(handle.Get(), row.data(), ops.length);
    if (!findings.Expect(ret == 0, std::string("setting all fields of ") + ops.name + " returned " + Str(ret))) {
        return false;
    }
    ret = api.db_write_obj(handle.Get());
    return findings.Expect(ret == 0, std::string("db_write_obj of ") + ops.name + " returned " + Str(ret));
}

/* db_read_obj's result for key `id`; the row into *row for the task table. */
uint32_t ReadRow(const PlatformApi &api, const ObjectOps &ops, uint32_t id, std::vector<uint8_t> *row,
                 Findings &findings)
{
    Handle handle(api, ops, MDTLM_DB_OP_READ, findings);
    if (handle.Get() == nullptr) {
        return 1;
    }
    MDTLM_DB_KEY_DESC desc = KeyDesc();
    MDTLM_DB_KEY key{0, id};
    uint32_t ret = api.db_read_obj(handle.Get(), &desc, &key);
    if (ret == 0 && row != nullptr) {
        row->assign(ops.length, 0);
        uint32_t got = api.db_get_fem_mdtlm_stat_all_fields(handle.Get(), row->data(), ops.length);
        findings.Expect(got == 0, "db_get_fem_mdtlm_stat_all_fields returned " + Str(got));
    }
    return ret;
}

void RemoveRow(const PlatformApi &api, const ObjectOps &ops, uint32_t id, Findings &findings)
{
    Handle handle(api, ops, MDTLM_DB_OP_REMOVE, findings);
    MDTLM_DB_KEY_DESC desc = KeyDesc();
    MDTLM_DB_KEY key{0, id};
    if (handle.Get() != nullptr) {
        api.db_remove_obj(handle.Get(), &desc, &key);
    }
}

void CheckWriteRead(const PlatformApi &api, const CheckSettings &, Findings &findings)
{
    for (const ObjectOps *ops : {&kReportPerf, &kTaskStat}) {
        std::vector<uint8_t> row = Row(*ops, kFirstId, 0x30);
        if (!WriteRow(api, *ops, row, findings)) {
            continue;
        }
        std::vector<uint8_t> stored;
        uint32_t ret = ReadRow(api, *ops, kFirstId, ops == &kTaskStat ? &stored : nullptr, findings);
        findings.Expect(ret == 0, std::string("db_read_obj of the row just written to ") + ops->name + " returned " +
                                      Str(ret));
        if (ret == 0 && ops == &kTaskStat) {
            findings.Expect(stored == row, "the fem_mdtlm_stat row read back differs from the one written");
        }
        RemoveRow(api, *ops, kFirstId, findings);
    }
}

void CheckReadMissing(const PlatformApi &api, const CheckSettings &, Findings &findings)
{
    for (const ObjectOps *ops : {&kReportPerf, &kTaskStat}) {
        uint32_t ret = ReadRow(api, *ops, kFirstId + 1, nullptr, findings);
        findings.Expect(ret != 0, std::string("db_read_obj of a key never written to ") + ops->name + " returned 0");
    }
}

void CheckReplace(const PlatformApi &api, const CheckSettings &, Findings &findings)
{
    std::vector<uint8_t> first = Row(kTaskStat, kFirstId + 2, 0x10);
    std::vector<uint8_t> second = Row(kTaskStat, kFirstId + 2, 0x70);
    if (WriteRow(api, kTaskStat, first, findings) && WriteRow(api, kTaskStat, second, findings)) {
        std::vector<uint8_t> stored;
        uint32_t ret = ReadRow(api, kTaskStat, kFirstId + 2, &stored, findings);
        findings.Expect(ret == 0 && stored == second,
                        "a second db_write_obj with the same key did not replace the fem_mdtlm_stat row");
    }
    RemoveRow(api, kTaskStat, kFirstId + 2, findings);
}

void CheckUpdate(const PlatformApi &api, const CheckSettings &, Findings &findings)
{
    const uint32_t id = kFirstId + 3;
    if (!WriteRow(api, kReportPerf, Row(kReportPerf, id, 0x20), findings)) {
        return;
    }
    {
        Handle handle(api, kReportPerf, MDTLM_DB_OP_UPDATE, findings);
        if (handle.Get() == nullptr) {
            return;
        }
        /* The plug-in updates a row through the thirteen field setters. */
        const struct {
            const char *name;
            uint32_t (*PlatformApi::*set)(void *, uint32_t);
        } setters[] = {
            {"period_index", &PlatformApi::db_set_vraldcn_mdtlm_report_perf_period_index},
            {"in_fwm_msg_count", &PlatformApi::db_set_vraldcn_mdtlm_report_perf_in_fwm_msg_count},
            {"in_fwm_msg_byte_count", &PlatformApi::db_set_vraldcn_mdtlm_report_perf_in_fwm_msg_byte_count},
            {"in_fwm_item_count", &PlatformApi::db_set_vraldcn_mdtlm_report_perf_in_fwm_item_count},
            {"in_fwm_item_byte_count", &PlatformApi::db_set_vraldcn_mdtlm_report_perf_in_fwm_item_byte_count},
            {"out_msg_count", &PlatformApi::db_set_vraldcn_mdtlm_report_perf_out_msg_count},
            {"out_msg_byte_count", &PlatformApi::db_set_vraldcn_mdtlm_report_perf_out_msg_byte_count},
            {"out_item_count", &PlatformApi::db_set_vraldcn_mdtlm_report_perf_out_item_count},
            {"out_item_byte_count", &PlatformApi::db_set_vraldcn_mdtlm_report_perf_out_item_byte_count},
            {"start_time_s", &PlatformApi::db_set_vraldcn_mdtlm_report_perf_start_time_s},
            {"start_time_ms", &PlatformApi::db_set_vraldcn_mdtlm_report_perf_start_time_ms},
            {"end_time_s", &PlatformApi::db_set_vraldcn_mdtlm_report_perf_end_time_s},
            {"end_time_ms", &PlatformApi::db_set_vraldcn_mdtlm_report_perf_end_time_ms},
        };
        uint32_t value = 100;
        for (const auto &setter : setters) {
            uint32_t ret = (api.*setter.set)(handle.Get(), value++);
            findings.Expect(ret == 0, std::string("db_set_vraldcn_mdtlm_report_perf_") + setter.name + " returned " +
                                          Str(ret));
        }
        MDTLM_DB_KEY_DESC desc = KeyDesc();
        MDTLM_DB_KEY key{0, id};
        uint32_t ret = api.db_update_obj(handle.Get(), &desc, &key);
        findings.Expect(ret == 0, "db_update_obj of an existing report-perf row returned " + Str(ret));
    }
    findings.Expect(ReadRow(api, kReportPerf, id, nullptr, findings) == 0, "the updated report-perf row is gone");
    RemoveRow(api, kReportPerf, id, findings);
}

void CheckRemove(const PlatformApi &api, const CheckSettings &, Findings &findings)
{
    for (const ObjectOps *ops : {&kReportPerf, &kTaskStat}) {
        const uint32_t id = kFirstId + 4;
        if (!WriteRow(api, *ops, Row(*ops, id, 0x40), findings)) {
            continue;
        }
        Handle handle(api, *ops, MDTLM_DB_OP_REMOVE, findings);
        if (handle.Get() == nullptr) {
            continue;
        }
        MDTLM_DB_KEY_DESC desc = KeyDesc();
        MDTLM_DB_KEY key{0, id};
        uint32_t ret = api.db_remove_obj(handle.Get(), &desc, &key);
        findings.Expect(ret == 0, std::string("db_remove_obj of a ") + ops->name + " row returned " + Str(ret));
        findings.Expect(ReadRow(api, *ops, id, nullptr, findings) != 0,
                        std::string("the ") + ops->name + " row is still there after db_remove_obj");
    }
}

void CheckTruncate(const PlatformApi &api, const CheckSettings &, Findings &findings)
{
    const uint32_t ids[] = {kFirstId + 5, kFirstId + 6};
    for (uint32_t id : ids) {
        WriteRow(api, kReportPerf, Row(kReportPerf, id, 0x50), findings);
    }
    WriteRow(api, kTaskStat, Row(kTaskStat, ids[0], 0x60), findings);
    uint32_t ret = api.db_truncate_table("vraldcn_mdtlm_report_perf", 1);
    findings.Expect(ret == 0, "db_truncate_table of vraldcn_mdtlm_report_perf returned " + Str(ret));
    for (uint32_t id : ids) {
        findings.Expect(ReadRow(api, kReportPerf, id, nullptr, findings) != 0,
                        "a vraldcn_mdtlm_report_perf row survived db_truncate_table");
    }
    findings.Expect(ReadRow(api, kTaskStat, ids[0], nullptr, findings) == 0,
                    "truncating vraldcn_mdtlm_report_perf removed a fem_mdtlm_stat row");
    RemoveRow(api, kTaskStat, ids[0], findings);
}

const Rule kDatabaseRules[] = {
    {"db.write-read", "a row written with all its fields reads back by its key, byte for byte", CheckWriteRead},
    {"db.read-missing", "db_read_obj of a key never written fails", CheckReadMissing},
    {"db.write-replaces", "db_write_obj replaces the stored row with the same key", CheckReplace},
    {"db.update", "the thirteen report-perf field setters and db_update_obj of an existing row succeed",
     CheckUpdate},
    {"db.remove", "db_remove_obj removes the row with the key", CheckRemove},
    {"db.truncate", "db_truncate_table empties the named table and no other", CheckTruncate},
};

} // namespace

std::span<const Rule> DatabaseRules()
{
    return kDatabaseRules;
}

} // namespace mdtlm::check
