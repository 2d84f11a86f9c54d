#include "sample_check.h"

#include <cstring>
#include <map>
#include <memory>

#include <google/protobuf/compiler/importer.h>
#include <google/protobuf/descriptor.h>
#include <google/protobuf/dynamic_message.h>

#include "mdtlm_vraldcn.h"

namespace {

namespace pb = google::protobuf;

struct Schema {
    uint32_t sensorType;
    const char *file;
    const char *message;
};

constexpr Schema kSchemas[] = {
    {MDTLM_SENSOR_VRAL_FLOW, "flow_statistics.proto", "mdtlm.flow.Sample"},
    {MDTLM_SENSOR_VRAL_FLOWHOP, "flow_hop_statistics.proto", "mdtlm.flowhop.Sample"},
    {MDTLM_SENSOR_SRVTLM_FLOW, "io_service_flow_statistics.proto", "mdtlm.srvtlmflow.Sample"},
    {MDTLM_SENSOR_QUMA_RESULT, "result_statistics.proto", "mdtlm.quma.Sample"},
    {MDTLM_SENSOR_SRVTLM_FCTFLOW, "io_service_flow_throughput.proto", "mdtlm.srvtlmfct.Sample"},
    {MDTLM_SENSOR_ZELK_CACHE, "export_flow_caches.proto", "mdtlm.zelk.Sample"},
};

class SilentErrors : public pb::compiler::MultiFileErrorCollector {
public:
    void AddError(const std::string &, int, int, const std::string &) override {}
};

/* The schemas, loaded once for the process. */
struct Schemas {
    Schemas() : importer(&tree, &errors)
    {
        /* Record texts are bytes to the plug-in; libprotobuf's complaints
         * about string fields that are not UTF-8 would drown the output. */
        pb::SetLogHandler(nullptr);
        tree.MapPath("", MDTLM_PROTO_DIR);
        for (const Schema &schema : kSchemas) {
            const pb::FileDescriptor *file = importer.Import(schema.file);
            const pb::Descriptor *message =
                file != nullptr ? importer.pool()->FindMessageTypeByName(schema.message) : nullptr;
            if (message == nullptr) {
                std::fprintf(stderr, "cannot load %s from %s\n", schema.message, MDTLM_PROTO_DIR);
                std::abort();
            }
            prototypes[schema.sensorType] = factory.GetPrototype(message);
        }
    }

    pb::compiler::DiskSourceTree tree;
    SilentErrors errors;
    pb::compiler::Importer importer;
    pb::DynamicMessageFactory factory;
    std::map<uint32_t, const pb::Message *> prototypes;
};

Schemas &Loaded()
{
    static Schemas *schemas = new Schemas(); /* lives as long as the process */
    return *schemas;
}

} // namespace

std::unique_ptr<pb::Message> ParseSample(uint32_t sensorType, const std::string &bytes)
{
    auto it = Loaded().prototypes.find(sensorType);
    if (it == Loaded().prototypes.end()) {
        return nullptr;
    }
    std::unique_ptr<pb::Message> message(it->second->New());
    if (!message->ParseFromString(bytes)) {
        return nullptr;
    }
    return message;
}

bool HasUnknownFields(const pb::Message &message)
{
    const pb::Reflection *reflection = message.GetReflection();
    if (!reflection->GetUnknownFields(message).empty()) {
        return true;
    }
    std::vector<const pb::FieldDescriptor *> fields;
    reflection->ListFields(message, &fields);
    for (const pb::FieldDescriptor *field : fields) {
        if (field->cpp_type() != pb::FieldDescriptor::CPPTYPE_MESSAGE) {
            continue;
        }
        if (field->is_repeated()) {
            for (int i = 0; i < reflection->FieldSize(message, field); ++i) {
                if (HasUnknownFields(reflection->GetRepeatedMessage(message, field, i))) {
                    return true;
                }
            }
        } else if (HasUnknownFields(reflection->GetMessage(message, field))) {
            return true;
        }
    }
    return false;
}

std::string CheckGpbSample(uint32_t sensorType, const std::string &data, uint32_t itemCnt)
{
    std::unique_ptr<pb::Message> sample = ParseSample(sensorType, data);
    if (sample == nullptr) {
        return "GPB sample does not parse";
    }
    if (HasUnknownFields(*sample)) {
        return "GPB sample holds fields its schema does not know";
    }
    /* The container is the one set field; its repeated field 1 holds the records. */
    std::vector<const pb::FieldDescriptor *> fields;
    sample->GetReflection()->ListFields(*sample, &fields);
    if (fields.size() != 1 || fields[0]->cpp_type() != pb::FieldDescriptor::CPPTYPE_MESSAGE) {
        return "GPB sample without its one container";
    }
    const pb::Message &container = sample->GetReflection()->GetMessage(*sample, fields[0]);
    const pb::FieldDescriptor *records = container.GetDescriptor()->FindFieldByNumber(1);
    if (records == nullptr || static_cast<uint32_t>(container.GetReflection()->FieldSize(container, records)) != itemCnt) {
        return "GPB sample's record count differs from itemCnt";
    }
    return "";
}

std::string CheckJsonSample(uint32_t sensorType, const std::string &data, uint32_t itemCnt)
{
    const char *header = MDTLM_VRALDCN_TASK_GetJsonHeader(sensorType);
    if (header == nullptr || data.compare(0, std::strlen(header), header) != 0) {
        return "JSON sample without its sensor's header";
    }
    if (data.size() < std::strlen(header) + 3 || data.compare(data.size() - 3, 3, "]}}") != 0) {
        return "JSON sample not closed by ]}}";
    }
    if (itemCnt == 0) {
        return "JSON sample without records";
    }
    return "";
}
