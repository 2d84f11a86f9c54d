#include "sample_check.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>

#include <google/protobuf/compiler/importer.h>
#include <google/protobuf/descriptor.h>
#include <google/protobuf/dynamic_message.h>

#include "mdtlm_vraldcn.h"

namespace {

namespace pb = google::protobuf;

class CollectErrors : public pb::compiler::MultiFileErrorCollector {
public:
    void AddError(const std::string &file, int line, int column, const std::string &message) override
    {
        text += file + ":" + std::to_string(line) + ":" + std::to_string(column) + ": " + message + "\n";
    }
    std::string text;
};

/* One importer and one factory for the process: descriptors and the
 * prototypes they back must outlive every message handed out. */
struct SchemaSet {
    pb::compiler::DiskSourceTree tree;
    CollectErrors errors;
    pb::compiler::Importer importer{&tree, &errors};
    pb::DynamicMessageFactory factory;
    std::mutex mu;

    SchemaSet()
    {
        /* Record texts are bytes to the plug-in; libprotobuf's complaints
         * about string fields that are not UTF-8 would drown the output. */
        pb::SetLogHandler(nullptr);
        tree.MapPath("", MDTLM_PROTO_DIR);
    }
};

SchemaSet &Schemas()
{
    static SchemaSet *set = new SchemaSet(); /* lives as long as the process */
    return *set;
}

} // namespace

std::unique_ptr<pb::Message> DecodeSample(const std::string &protoFile, const std::string &fullName,
                                          const std::string &bytes, std::string *error)
{
    SchemaSet &set = Schemas();
    std::lock_guard<std::mutex> lock(set.mu);
    set.errors.text.clear();
    if (set.importer.Import(protoFile) == nullptr) {
        *error = "cannot load " + protoFile + ": " + set.errors.text;
        return nullptr;
    }
    const pb::Descriptor *desc = set.importer.pool()->FindMessageTypeByName(fullName);
    if (desc == nullptr) {
        *error = "no message " + fullName + " in " + protoFile;
        return nullptr;
    }
    std::unique_ptr<pb::Message> msg(set.factory.GetPrototype(desc)->New());
    if (!msg->ParseFromString(bytes)) {
        *error = "bytes do not parse as " + fullName;
        return nullptr;
    }
    return msg;
}

std::unique_ptr<pb::Message> ParseSample(uint32_t sensorType, const std::string &bytes)
{
    if (sensorType < 1 || sensorType > MDTLM_SENSOR_COUNT) {
        return nullptr;
    }
    const SampleSchema &schema = kSampleSchemas[sensorType - 1];
    std::string error;
    std::unique_ptr<pb::Message> message = DecodeSample(schema.protoFile, schema.sampleName, bytes, &error);
    if (message == nullptr && error.rfind("bytes do not parse", 0) != 0) {
        std::fprintf(stderr, "%s\n", error.c_str()); /* the schemas themselves are broken */
        std::abort();
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
