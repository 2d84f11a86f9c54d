/*
 * The plug-in's field catalogue as the simulator uses it: loaded once, then
 * checked against and printed.
 */
#include "field_reference.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "config.h"
#include "mdtlm_types.h"
#include "plugin.h"
#include "record_codec.h"

namespace mdtlm::sim {
namespace {

constexpr const char *kCatalogueSymbol = "g_mdtlmFieldCatalogue";
constexpr size_t kConditionValueMax = sizeof(MDTLM_PATH_CONDITION::value) - 1;

struct FormText {
    uint32_t form;
    const char *condition; /* what a condition value must be */
    const char *filter;    /* how a filter compares */
};

const FormText kForms[] = {
    {MDTLM_FIELD_FORM_NONE, "any text: the sensor tests no field, every record passes",
     "no field is tested: the filter always holds"},
    {MDTLM_FIELD_FORM_NUMBER32, "decimal number, 32-bit", "32-bit: the low 32 bits of the threshold"},
    {MDTLM_FIELD_FORM_NUMBER64, "decimal number, 64-bit", "64-bit"},
    {MDTLM_FIELD_FORM_IPV4, "IPv4 address, dotted decimal without leading zeros (10.0.0.1)", "-"},
    {MDTLM_FIELD_FORM_IP,
     "IPv4 address (10.0.0.1) or IPv6 address as eight lower-case groups without zero compression "
     "(2001:db8:0:0:0:0:0:1), matching the record's address family",
     "-"},
};

const FormText &Form(uint32_t form)
{
    for (const FormText &text : kForms) {
        if (text.form == form) {
            return text;
        }
    }
    return kForms[0];
}

const char *const kOperatorMeaning[][2] = {
    {"eq", "the field equals the threshold"},
    {"gt", "the field is greater than the threshold"},
    {"ge", "the field is greater than or equal to the threshold"},
    {"lt", "the field is less than the threshold"},
    {"le", "the field is less than or equal to the threshold"},
};

std::vector<TestableField> ReadMap(const MDTLM_FILTER_MAP_ENTRY *map, uint32_t rows, uint32_t mapKind,
                                   MDTLM_FIELD_FORM_FUNC form)
{
    std::vector<TestableField> fields;
    for (uint32_t i = 0; map != nullptr && i < rows; ++i) {
        TestableField field;
        field.name.assign(map[i].fieldName, strnlen(map[i].fieldName, sizeof map[i].fieldName));
        field.form = form != nullptr ? form(mapKind, map[i].fieldId) : MDTLM_FIELD_FORM_NONE;
        fields.push_back(std::move(field));
    }
    return fields;
}

const TestableField *Find(const std::vector<TestableField> &fields, const std::string &name)
{
    for (const TestableField &field : fields) {
        if (field.name == name) {
            return &field;
        }
    }
    return nullptr;
}

std::string Names(const std::vector<TestableField> &fields)
{
    std::string names;
    for (const TestableField &field : fields) {
        names += (names.empty() ? "" : ", ") + field.name;
    }
    return names.empty() ? "none" : names;
}

/* A markdown table whose columns line up in a terminal too. */
std::string Table(const std::vector<std::vector<std::string>> &rows)
{
    std::vector<size_t> widths(rows.front().size(), 3);
    for (const auto &row : rows) {
        for (size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], row[i].size());
        }
    }
    std::string out;
    auto line = [&](const std::vector<std::string> &cells) {
        for (size_t i = 0; i < cells.size(); ++i) {
            out += "| " + cells[i] + std::string(widths[i] - cells[i].size(), ' ') + " ";
        }
        out += "|\n";
    };
    line(rows.front());
    std::vector<std::string> rule;
    for (size_t width : widths) {
        rule.push_back(std::string(width, '-'));
    }
    line(rule);
    for (size_t i = 1; i < rows.size(); ++i) {
        line(rows[i]);
    }
    return out;
}

std::string Code(const std::string &text)
{
    return "`" + text + "`";
}

/* One row per field: its name and what `text` of its form says. */
std::string FieldTable(const std::vector<TestableField> &fields, const char *heading, const char *FormText::*text)
{
    if (fields.empty()) {
        return "none\n";
    }
    std::vector<std::vector<std::string>> rows = {{"name", heading}};
    for (const TestableField &field : fields) {
        rows.push_back({Code(field.name), Form(field.form).*text});
    }
    return Table(rows);
}

std::string SensorSection(const SensorFields &fields)
{
    const tools::SensorDesc &sensor = *fields.sensor;
    std::string out = "### " + std::string(sensor.shortName) + " (type " + std::to_string(sensor.type) + ")\n\n";
    out += "Sensor path " + Code(sensor.xpath) + "; GPB samples decode as " + Code(sensor.protoMessage) + " of " +
           Code("proto/" + std::string(sensor.protoFile)) + ".\n";
    if (fields.hasFamily) {
        out += "Address family field " + Code(sensor.familyField != nullptr ? sensor.familyField : "?") + ": " +
               std::to_string(fields.familyIpv4) + " IPv4, " + std::to_string(fields.familyIpv6) +
               " IPv6; any other code makes the record's addresses unreadable (it is not encoded).\n";
    }
    out += "\nConditions (each must hold; equality with the value):\n\n" +
           FieldTable(fields.conditions, "value", &FormText::condition);
    out += "\nFilters (operator eq, gt, ge, lt or le against a whole-number threshold):\n\n" +
           FieldTable(fields.filters, "compared", &FormText::filter);
    return out;
}

std::string Ipv6FullForm(const uint32_t words[4])
{
    std::string text;
    for (int group = 0; group < 8; ++group) {
        uint32_t word = words[group / 2];
        unsigned value = group % 2 == 0 ? word >> 16 : word & 0xFFFF;
        char part[8];
        std::snprintf(part, sizeof part, "%x", value);
        text += (group == 0 ? "" : ":") + std::string(part);
    }
    return text;
}

ConditionValueCheck CheckNumber(const TestableField &field, const std::string &value)
{
    ConditionValueCheck check;
    check.value = value;
    bool digits = !value.empty() && std::all_of(value.begin(), value.end(), [](char c) { return c >= '0' && c <= '9'; });
    if (!digits) {
        check.problem = "\"" + value + "\" is not a decimal number, which " + field.name + " needs";
        return check;
    }
    errno = 0;
    unsigned long long number = std::strtoull(value.c_str(), nullptr, 10);
    uint64_t max = field.form == MDTLM_FIELD_FORM_NUMBER32 ? UINT32_MAX : UINT64_MAX;
    if (errno == ERANGE || number > max) {
        check.problem = value + " is out of range: " + field.name + " is compared as a " +
                        (field.form == MDTLM_FIELD_FORM_NUMBER32 ? "32" : "64") + "-bit number (at most " +
                        std::to_string(max) + ")";
    }
    return check;
}

ConditionValueCheck CheckAddress(const SensorFields &fields, const TestableField &field, const std::string &value)
{
    ConditionValueCheck check;
    check.value = value;
    uint32_t ipv4 = 0;
    uint32_t ipv6[4];
    if (tools::ParseIpv4(value, ipv4)) {
        return check;
    }
    if (!tools::ParseIpv6(value, ipv6)) {
        check.problem = "\"" + value + "\" is not " +
                        (field.form == MDTLM_FIELD_FORM_IPV4 ? "an IPv4 address" : "an IPv4 or IPv6 address");
        return check;
    }
    if (field.form == MDTLM_FIELD_FORM_IPV4) {
        check.problem = "\"" + value + "\" is an IPv6 address, but the addresses of sensor " +
                        std::string(fields.sensor->shortName) + " are IPv4 only: it can never match";
        return check;
    }
    /* Expanding can lengthen a value that fits the block past its room. */
    std::string full = Ipv6FullForm(ipv6);
    if (full.size() > kConditionValueMax) {
        check.problem = "\"" + value + "\" is compared as \"" + full + "\", " + std::to_string(full.size()) +
                        " characters, and a condition value holds at most " + std::to_string(kConditionValueMax) +
                        ": it can never match";
        return check;
    }
    if (full != value) {
        check.value = full;
        check.note = "\"" + value + "\" rewritten as \"" + full +
                     "\", the form the plug-in compares (eight lower-case groups, no zero compression)";
    }
    return check;
}

} // namespace

const TestableField *SensorFields::Condition(const std::string &name) const
{
    return Find(conditions, name);
}

const TestableField *SensorFields::Filter(const std::string &name) const
{
    return Find(filters, name);
}

std::string SensorFields::ConditionNames() const
{
    return Names(conditions);
}

std::string SensorFields::FilterNames() const
{
    return Names(filters);
}

FieldCatalogue FieldCatalogue::Load(const std::string &pluginPath)
{
    Plugin plugin(pluginPath);
    const auto *rows = plugin.Find<const MDTLM_FIELD_CATALOGUE_ENTRY *>(kCatalogueSymbol);
    if (rows == nullptr) {
        throw std::runtime_error(pluginPath + " exports no field catalogue (" + kCatalogueSymbol + ")");
    }
    FieldCatalogue catalogue;
    for (const tools::SensorDesc &sensor : tools::Sensors()) {
        SensorFields fields;
        fields.sensor = &sensor;
        for (uint32_t i = 0; i < MDTLM_SENSOR_COUNT; ++i) {
            const MDTLM_FIELD_CATALOGUE_ENTRY &row = rows[i];
            if (row.sensorType != sensor.type) {
                continue;
            }
            fields.conditions = ReadMap(row.condMap, row.condRows, MDTLM_FIELD_MAP_CONDITION, row.fieldForm);
            fields.filters = ReadMap(row.filterMap, row.filterRows, MDTLM_FIELD_MAP_FILTER, row.fieldForm);
            fields.hasFamily = row.familyIpv4 != MDTLM_NO_ADDRESS_FAMILY;
            fields.familyIpv4 = row.familyIpv4;
            fields.familyIpv6 = row.familyIpv6;
        }
        catalogue.sensors_.push_back(std::move(fields));
    }
    return catalogue;
}

const SensorFields &FieldCatalogue::For(const tools::SensorDesc &sensor) const
{
    for (const SensorFields &fields : sensors_) {
        if (fields.sensor == &sensor) {
            return fields;
        }
    }
    throw std::logic_error("no catalogue entry for sensor " + std::string(sensor.shortName));
}

std::string ConfigurationReference(const FieldCatalogue &catalogue, const tools::SensorDesc *only)
{
    if (only != nullptr) {
        return SensorSection(catalogue.For(*only));
    }
    std::string out =
        "# Configuration reference\n\n"
        "Generated by `mdtlm-sim --list-fields > docs/configuration.md` from the simulator's configuration reader\n"
        "and from the field catalogue that the plug-in exports (the condition and filter maps its sensor\n"
        "handlers search, how each field is compared, the address-family codes). Do not edit by hand: a test\n"
        "compares this file with the generated text. `mdtlm-sim --list-fields SENSOR` prints one sensor's part.\n\n"
        "## The configuration file\n\n"
        "One JSON object (see `examples/demo.json`). Keys not listed here are refused with file, line and field,\n"
        "and so is a condition or filter name that the task's sensor does not have.\n";
    for (const ConfigSection &section : ConfigSections()) {
        out += "\n### " + std::string(section.title) + "\n\n";
        std::vector<std::vector<std::string>> rows = {{"key", "value", "meaning"}};
        for (const ConfigKey &key : section.keys) {
            rows.push_back({Code(key.key), key.value, key.meaning});
        }
        out += Table(rows);
    }
    out += "\n### Filter operators\n\n";
    std::vector<std::vector<std::string>> operators = {{"operator", "the filter holds when"}};
    for (const auto &[name, meaning] : kOperatorMeaning) {
        operators.push_back({Code(name), meaning});
    }
    out += Table(operators);
    out += "\nAll comparisons are unsigned. A 32-bit field is compared with the low 32 bits of the threshold,\n"
           "so a threshold of 4294967306 (2^32 + 10) on a 32-bit field acts as 10.\n";
    out += "\n## Sensors\n";
    for (const SensorFields &fields : catalogue.Sensors()) {
        out += "\n" + SensorSection(fields);
    }
    return out;
}

ConditionValueCheck CheckConditionValue(const SensorFields &fields, const TestableField &field,
                                        const std::string &value)
{
    switch (field.form) {
    case MDTLM_FIELD_FORM_NUMBER32:
    case MDTLM_FIELD_FORM_NUMBER64:
        return CheckNumber(field, value);
    case MDTLM_FIELD_FORM_IPV4:
    case MDTLM_FIELD_FORM_IP:
        return CheckAddress(fields, field, value);
    default: {
        ConditionValueCheck check;
        check.value = value;
        check.note = "sensor " + std::string(fields.sensor->shortName) + " tests no field for condition " +
                     field.name + ": every record passes it";
        return check;
    }
    }
}

std::string FilterNote(const TestableField &field, uint64_t threshold)
{
    if (field.form == MDTLM_FIELD_FORM_NONE) {
        return "the sensor tests no field for filter " + field.name + ": it always holds";
    }
    if (field.form == MDTLM_FIELD_FORM_NUMBER32 && threshold > UINT32_MAX) {
        return field.name + " is compared in 32 bits: the threshold " + std::to_string(threshold) + " acts as " +
               std::to_string(threshold & UINT32_MAX);
    }
    return "";
}

} // namespace mdtlm::sim
