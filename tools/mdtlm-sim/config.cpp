/*
 * Reading and checking the simulator's configuration. Every complaint names
 * the file, the line and the field, so a typo is found at once.
 */
#include "config.h"

#include <cstring>
#include <map>
#include <utility>

#include "field_reference.h"

namespace mdtlm::sim {
namespace {

using tools::JsonSource;
using Json = nlohmann::json;

/* Text room of the sensor-path block, NUL included. */
constexpr size_t kConditionNameMax = sizeof(MDTLM_PATH_CONDITION::fieldName) - 1;
constexpr size_t kConditionValueMax = sizeof(MDTLM_PATH_CONDITION::value) - 1;
constexpr size_t kFilterNameMax = sizeof(MDTLM_PATH_FILTER::fieldName) - 1;
constexpr double kMaxRate = 100000;

const ConfigKey kTopKeys[] = {
    {"tasks", "array of task objects", "the telemetry tasks subscribed at start, at least one"},
    {"generator", "object", "the built-in forwarding side (ignored with --records)"},
};

const ConfigKey kGeneratorKeys[] = {
    {"rate", "number, 0 to 100000", "records per second for each sensor that has a task (default 5)"},
    {"seed", "whole number", "seed of the value generator (default 1)"},
    {"invalid-share", "number, 0 to 1",
     "share of values drawn from those the plug-in rejects or cannot encode (default 0); "
     "such records produce \"encode failed\" lines and samples with fewer records"},
};

const ConfigKey kTaskKeys[] = {
    {"sensor", "text", "short name (see Sensors below), sensor path, or type number as text"},
    {"instance", "whole number", "instance id (default 1)"},
    {"task", "whole number", "task id; instance and task together name a task's samples"},
    {"encoding", "`gpb` or `json`", "sample encoding (default gpb)"},
    {"sample-interval", "whole number, milliseconds",
     "sample interval (default 1000); a sample closes the interval once it has run for its whole seconds"},
    {"conditions", "array of up to 32 condition objects", "equality tests, all must hold"},
    {"filters", "array of up to 2 filter objects", "threshold tests"},
    {"filter-logic", "`and` or `or`",
     "how two filters combine (default and); with one filter its verdict counts alone"},
};

const ConfigKey kConditionKeys[] = {
    {"name", "text", "a condition name of the task's sensor (see Sensors below)"},
    {"value", "text, at most 33 characters, or a whole number",
     "the value the field must equal, in the form its sensor lists"},
};

const ConfigKey kFilterKeys[] = {
    {"name", "text", "a filter name of the task's sensor (see Sensors below)"},
    {"operator", "`eq`, `gt`, `ge`, `lt` or `le`", "the comparison, field on the left"},
    {"threshold", "whole number, 0 to 18446744073709551615", "the value the field is compared with"},
};

const ConfigSection kSections[] = {
    {"Top level", kTopKeys},
    {"\"generator\"", kGeneratorKeys},
    {"Each entry of \"tasks\"", kTaskKeys},
    {"Each entry of \"conditions\"", kConditionKeys},
    {"Each entry of \"filters\"", kFilterKeys},
};

const std::pair<const char *, uint8_t> kOperators[] = {
    {"eq", MDTLM_FILTER_OP_EQ}, {"gt", MDTLM_FILTER_OP_GT}, {"ge", MDTLM_FILTER_OP_GE},
    {"lt", MDTLM_FILTER_OP_LT}, {"le", MDTLM_FILTER_OP_LE},
};

/* Reads the members of one object of the file, each complaint pointing at its member. */
class ObjectReader {
public:
    ObjectReader(const JsonSource &source, const std::string &pointer, std::span<const ConfigKey> keys)
        : source_(source), pointer_(pointer)
    {
        const Json &value = Value(pointer);
        if (!value.is_object()) {
            source_.Fail(pointer_, "expected an object");
        }
        object_ = &value;
        for (const auto &[key, member] : value.items()) {
            bool known = false;
            std::string list;
            for (const ConfigKey &allowed : keys) {
                known = known || key == allowed.key;
                list += (list.empty() ? "" : ", ") + std::string(allowed.key);
            }
            if (!known) {
                source_.Fail(At(key), "unknown setting (expected one of: " + list + ")");
            }
        }
    }

    bool Has(const char *key) const { return object_->contains(key); }
    std::string At(const std::string &key) const { return pointer_ + "/" + key; }
    const Json &Get(const char *key) const { return (*object_)[key]; }

    void Require(const char *key) const
    {
        if (!Has(key)) {
            source_.Fail(pointer_, "missing \"" + std::string(key) + "\"");
        }
    }

    uint64_t Unsigned(const char *key, uint64_t fallback, uint64_t max) const
    {
        if (!Has(key)) {
            return fallback;
        }
        const Json &value = Get(key);
        if (!value.is_number_unsigned()) {
            source_.Fail(At(key), value.is_number_integer() ? "must not be negative: " + value.dump()
                                                            : "expected a whole number, got " + value.dump());
        }
        if (value.get<uint64_t>() > max) {
            source_.Fail(At(key), value.dump() + " is out of range (0 to " + std::to_string(max) + ")");
        }
        return value.get<uint64_t>();
    }

    std::string Text(const char *key, size_t maxLength) const
    {
        const Json &value = Get(key);
        if (!value.is_string()) {
            source_.Fail(At(key), "expected a text, got " + value.dump());
        }
        std::string text = value.get<std::string>();
        if (text.size() > maxLength) {
            source_.Fail(At(key), "\"" + text + "\" is too long: " + std::to_string(text.size()) +
                                      " characters, at most " + std::to_string(maxLength) + " fit");
        }
        return text;
    }

    /* An array member; an absent one reads as empty. */
    size_t ArraySize(const char *key, size_t maxSize, const std::string &what) const
    {
        if (!Has(key)) {
            return 0;
        }
        if (!Get(key).is_array()) {
            source_.Fail(At(key), "expected an array of " + what);
        }
        if (Get(key).size() > maxSize) {
            source_.Fail(At(key), std::to_string(Get(key).size()) + " " + what + " given, at most " +
                                      std::to_string(maxSize) + " are allowed");
        }
        return Get(key).size();
    }

private:
    const Json &Value(const std::string &pointer) const
    {
        return pointer.empty() ? source_.Root() : source_.Root().at(Json::json_pointer(pointer));
    }

    const JsonSource &source_;
    std::string pointer_;
    const Json *object_ = nullptr;
};

/* The condition or filter `name` of the task's sensor; a name the sensor does
 * not have is refused with the names it has. */
const TestableField &KnownField(const JsonSource &source, const std::string &pointer, const SensorFields &fields,
                                bool filter, const std::string &name)
{
    const TestableField *field = filter ? fields.Filter(name) : fields.Condition(name);
    if (field == nullptr) {
        const char *kind = filter ? "filter" : "condition";
        const char *other = filter ? "conditions" : "filters";
        bool isOther = (filter ? fields.Condition(name) : fields.Filter(name)) != nullptr;
        source.Fail(pointer, "sensor " + std::string(fields.sensor->shortName) + " has no " + kind + " \"" + name +
                                 "\" (its " + kind + "s: " + (filter ? fields.FilterNames() : fields.ConditionNames()) +
                                 ")" + (isOther ? std::string("; it is one of its ") + other : ""));
    }
    return *field;
}

ConditionConfig ReadCondition(const JsonSource &source, const std::string &pointer, const SensorFields &fields,
                              std::vector<std::string> &notes)
{
    ObjectReader reader(source, pointer, kConditionKeys);
    reader.Require("name");
    reader.Require("value");
    ConditionConfig condition;
    condition.name = reader.Text("name", kConditionNameMax);
    /* Values are texts to the plug-in; a plain number is accepted as its decimal text. */
    if (reader.Get("value").is_number_unsigned()) {
        condition.value = std::to_string(reader.Get("value").get<uint64_t>());
        if (condition.value.size() > kConditionValueMax) {
            source.Fail(reader.At("value"), "too long for the value text");
        }
    } else {
        condition.value = reader.Text("value", kConditionValueMax);
    }
    const TestableField &field = KnownField(source, reader.At("name"), fields, false, condition.name);
    ConditionValueCheck check = CheckConditionValue(fields, field, condition.value);
    if (!check.problem.empty()) {
        source.Fail(reader.At("value"), check.problem);
    }
    if (!check.note.empty()) {
        notes.push_back(source.Where(reader.At("value")) + "note: " + check.note);
    }
    condition.value = check.value;
    return condition;
}

FilterConfig ReadFilter(const JsonSource &source, const std::string &pointer, const SensorFields &fields,
                        std::vector<std::string> &notes)
{
    ObjectReader reader(source, pointer, kFilterKeys);
    reader.Require("name");
    reader.Require("operator");
    reader.Require("threshold");
    FilterConfig filter;
    filter.name = reader.Text("name", kFilterNameMax);
    std::string op = reader.Text("operator", 16);
    bool found = false;
    for (const auto &[name, code] : kOperators) {
        if (op == name) {
            filter.op = code;
            found = true;
        }
    }
    if (!found) {
        source.Fail(reader.At("operator"), "unknown operator \"" + op + "\" (expected eq, gt, ge, lt or le)");
    }
    filter.threshold = reader.Unsigned("threshold", 0, UINT64_MAX);
    const TestableField &field = KnownField(source, reader.At("name"), fields, true, filter.name);
    std::string note = FilterNote(field, filter.threshold);
    if (!note.empty()) {
        notes.push_back(source.Where(reader.At("threshold")) + "note: " + note);
    }
    return filter;
}

TaskConfig ReadTask(const JsonSource &source, const std::string &pointer, const FieldCatalogue &catalogue,
                    std::vector<std::string> &notes)
{
    ObjectReader reader(source, pointer, kTaskKeys);
    TaskConfig task;
    reader.Require("sensor");
    reader.Require("task");
    const Json &sensor = reader.Get("sensor");
    task.sensor = sensor.is_string() ? tools::FindSensor(sensor.get<std::string>()) : nullptr;
    if (task.sensor == nullptr) {
        source.Fail(reader.At("sensor"), "unknown sensor " + sensor.dump() + " (a sensor path or one of " +
                                             tools::SensorNameList() + ")");
    }
    task.instance = static_cast<uint32_t>(reader.Unsigned("instance", 1, UINT32_MAX));
    task.task = static_cast<uint32_t>(reader.Unsigned("task", 0, UINT32_MAX));
    task.sampleInterval = static_cast<uint32_t>(reader.Unsigned("sample-interval", 1000, UINT32_MAX));
    if (reader.Has("encoding")) {
        std::string encoding = reader.Text("encoding", 16);
        if (encoding != "gpb" && encoding != "json") {
            source.Fail(reader.At("encoding"), "unknown encoding \"" + encoding + "\" (expected gpb or json)");
        }
        task.encodeType = encoding == "json" ? MDTLM_ENCODE_TYPE_JSON : MDTLM_ENCODE_TYPE_GPB;
    }
    if (reader.Has("filter-logic")) {
        std::string logic = reader.Text("filter-logic", 16);
        if (logic != "and" && logic != "or") {
            source.Fail(reader.At("filter-logic"), "unknown filter logic \"" + logic + "\" (expected and or or)");
        }
        task.filterLogic = logic == "and" ? MDTLM_FILTER_LOGIC_AND : 0;
    }
    size_t conditions = reader.ArraySize("conditions", MDTLM_MAX_CONDITIONS, "conditions");
    for (size_t i = 0; i < conditions; ++i) {
        task.conditions.push_back(ReadCondition(source, reader.At("conditions") + "/" + std::to_string(i),
                                                catalogue.For(*task.sensor), notes));
    }
    size_t filters = reader.ArraySize("filters", MDTLM_MAX_FILTERS, "filters");
    for (size_t i = 0; i < filters; ++i) {
        task.filters.push_back(
            ReadFilter(source, reader.At("filters") + "/" + std::to_string(i), catalogue.For(*task.sensor), notes));
    }
    return task;
}

GeneratorConfig ReadGenerator(const JsonSource &source, const std::string &pointer)
{
    ObjectReader reader(source, pointer, kGeneratorKeys);
    GeneratorConfig generator;
    if (reader.Has("rate")) {
        const Json &rate = reader.Get("rate");
        if (!rate.is_number() || rate.get<double>() < 0 || rate.get<double>() > kMaxRate) {
            source.Fail(reader.At("rate"), "expected records per second per sensor, 0 to " +
                                               std::to_string(static_cast<int>(kMaxRate)) + ", got " + rate.dump());
        }
        generator.rate = rate.get<double>();
    }
    generator.seed = reader.Unsigned("seed", generator.seed, UINT64_MAX);
    if (reader.Has("invalid-share")) {
        const Json &share = reader.Get("invalid-share");
        if (!share.is_number() || share.get<double>() < 0 || share.get<double>() > 1) {
            source.Fail(reader.At("invalid-share"), "expected a share from 0 to 1, got " + share.dump());
        }
        generator.invalidShare = share.get<double>();
    }
    return generator;
}

} // namespace

std::string TaskConfig::Label() const
{
    return std::string(sensor->shortName) + " " + std::to_string(instance) + "/" + std::to_string(task);
}

MDTLM_SENSOR_PATH_INFO TaskConfig::PathInfo() const
{
    MDTLM_SENSOR_PATH_INFO info;
    std::memset(&info, 0, sizeof info);
    info.encodeType = encodeType;
    info.sampleInterval = sampleInterval;
    info.conditionCnt = static_cast<uint32_t>(conditions.size());
    for (size_t i = 0; i < conditions.size(); ++i) {
        std::memcpy(info.conditions[i].fieldName, conditions[i].name.data(), conditions[i].name.size());
        std::memcpy(info.conditions[i].value, conditions[i].value.data(), conditions[i].value.size());
    }
    info.filterCnt = static_cast<uint32_t>(filters.size());
    info.filterLogic = filterLogic;
    for (size_t i = 0; i < filters.size(); ++i) {
        std::memcpy(info.filters[i].fieldName, filters[i].name.data(), filters[i].name.size());
        info.filters[i].op = filters[i].op;
        info.filters[i].threshold = filters[i].threshold;
    }
    return info;
}

const TaskConfig *SimConfig::FindTask(uint32_t instance, uint32_t task) const
{
    for (const TaskConfig &candidate : tasks) {
        if (candidate.instance == instance && candidate.task == task) {
            return &candidate;
        }
    }
    return nullptr;
}

std::span<const ConfigSection> ConfigSections()
{
    return kSections;
}

SimConfig ReadConfig(const JsonSource &source, const FieldCatalogue &catalogue)
{
    ObjectReader reader(source, "", kTopKeys);
    reader.Require("tasks");
    SimConfig config;
    if (reader.Has("generator")) {
        config.generator = ReadGenerator(source, "/generator");
    }
    size_t count = reader.ArraySize("tasks", SIZE_MAX, "tasks");
    if (count == 0) {
        source.Fail("/tasks", "no tasks: give at least one");
    }
    std::map<std::pair<uint32_t, uint32_t>, size_t> seen;
    for (size_t i = 0; i < count; ++i) {
        std::string pointer = "/tasks/" + std::to_string(i);
        TaskConfig task = ReadTask(source, pointer, catalogue, config.notes);
        auto [previous, fresh] = seen.emplace(std::make_pair(task.instance, task.task), i);
        if (!fresh) {
            source.Fail(pointer + "/task", "instance " + std::to_string(task.instance) + " task " +
                                               std::to_string(task.task) + " is already used by tasks[" +
                                               std::to_string(previous->second) +
                                               "] (samples carry only these two numbers)");
        }
        config.tasks.push_back(std::move(task));
    }
    return config;
}

SimConfig LoadConfig(const std::string &path, const FieldCatalogue &catalogue)
{
    return ReadConfig(tools::JsonSource::Load(path), catalogue);
}

} // namespace mdtlm::sim
