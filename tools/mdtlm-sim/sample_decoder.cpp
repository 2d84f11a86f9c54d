/*
 * Sample decoding. GPB samples are read with dynamic messages built from the
 * .proto files, so the simulator decodes with the same schemas a collector
 * would use, without generated code.
 */
#include "sample_decoder.h"

#include <map>

#include <google/protobuf/compiler/importer.h>
#include <google/protobuf/dynamic_message.h>
#include <google/protobuf/text_format.h>
#include <google/protobuf/unknown_field_set.h>
#include <google/protobuf/util/json_util.h>

namespace mdtlm::sim {

namespace pb = google::protobuf;
using Json = nlohmann::ordered_json;

namespace {

class CollectErrors : public pb::compiler::MultiFileErrorCollector {
public:
    void AddError(const std::string &file, int line, int column, const std::string &message) override
    {
        errors += (errors.empty() ? "" : "; ") + file + ":" + std::to_string(line + 1) + ":" +
                  std::to_string(column + 1) + ": " + message;
    }
    std::string errors;
};

Json ScalarToJson(const pb::Message &message, const pb::FieldDescriptor *field, int index)
{
    const pb::Reflection *r = message.GetReflection();
    bool repeated = field->is_repeated();
    switch (field->cpp_type()) {
    case pb::FieldDescriptor::CPPTYPE_INT32:
        return repeated ? r->GetRepeatedInt32(message, field, index) : r->GetInt32(message, field);
    case pb::FieldDescriptor::CPPTYPE_INT64:
        return repeated ? r->GetRepeatedInt64(message, field, index) : r->GetInt64(message, field);
    case pb::FieldDescriptor::CPPTYPE_UINT32:
        return repeated ? r->GetRepeatedUInt32(message, field, index) : r->GetUInt32(message, field);
    case pb::FieldDescriptor::CPPTYPE_UINT64:
        return repeated ? r->GetRepeatedUInt64(message, field, index) : r->GetUInt64(message, field);
    case pb::FieldDescriptor::CPPTYPE_DOUBLE:
        return repeated ? r->GetRepeatedDouble(message, field, index) : r->GetDouble(message, field);
    case pb::FieldDescriptor::CPPTYPE_FLOAT:
        return repeated ? r->GetRepeatedFloat(message, field, index) : r->GetFloat(message, field);
    case pb::FieldDescriptor::CPPTYPE_BOOL:
        return repeated ? r->GetRepeatedBool(message, field, index) : r->GetBool(message, field);
    case pb::FieldDescriptor::CPPTYPE_ENUM:
        return (repeated ? r->GetRepeatedEnum(message, field, index) : r->GetEnum(message, field))->name();
    case pb::FieldDescriptor::CPPTYPE_STRING:
        return repeated ? r->GetRepeatedString(message, field, index) : r->GetString(message, field);
    default:
        return nullptr;
    }
}

/* A message as a JSON object keyed by field name (its explicit JSON name when it has one). */
Json MessageToObject(const pb::Message &message)
{
    Json object = Json::object();
    const pb::Reflection *r = message.GetReflection();
    std::vector<const pb::FieldDescriptor *> fields;
    r->ListFields(message, &fields);
    for (const pb::FieldDescriptor *field : fields) {
        std::string key = field->has_json_name() ? field->json_name() : field->name();
        bool isMessage = field->cpp_type() == pb::FieldDescriptor::CPPTYPE_MESSAGE;
        if (field->is_repeated()) {
            Json list = Json::array();
            for (int i = 0; i < r->FieldSize(message, field); ++i) {
                list.push_back(isMessage ? MessageToObject(r->GetRepeatedMessage(message, field, i))
                                         : ScalarToJson(message, field, i));
            }
            object[key] = std::move(list);
        } else {
            object[key] = isMessage ? MessageToObject(r->GetMessage(message, field)) : ScalarToJson(message, field, 0);
        }
    }
    const pb::UnknownFieldSet &unknown = r->GetUnknownFields(message);
    if (!unknown.empty()) {
        std::string text;
        pb::TextFormat::PrintUnknownFieldsToString(unknown, &text);
        object["unknown-fields"] = text;
    }
    return object;
}

/* The records of a sample: the first list of messages, reached through single messages. */
const pb::Message *FindRecordList(const pb::Message &message, const pb::FieldDescriptor **listField)
{
    const pb::Reflection *r = message.GetReflection();
    std::vector<const pb::FieldDescriptor *> fields;
    r->ListFields(message, &fields);
    for (const pb::FieldDescriptor *field : fields) {
        if (field->cpp_type() != pb::FieldDescriptor::CPPTYPE_MESSAGE) {
            continue;
        }
        if (field->is_repeated()) {
            *listField = field;
            return &message;
        }
        if (const pb::Message *holder = FindRecordList(r->GetMessage(message, field), listField)) {
            return holder;
        }
    }
    return nullptr;
}

/* The records of a JSON sample: the first array in the document. */
const Json *FindJsonArray(const Json &value)
{
    if (value.is_array()) {
        return &value;
    }
    if (value.is_object()) {
        for (const auto &member : value) {
            if (const Json *found = FindJsonArray(member)) {
                return found;
            }
        }
    }
    return nullptr;
}

} // namespace

struct SampleDecoder::Schemas {
    pb::compiler::DiskSourceTree tree;
    CollectErrors errors;
    pb::compiler::Importer importer{&tree, &errors};
    pb::DynamicMessageFactory factory{importer.pool()};
    std::map<uint32_t, const pb::Message *> prototypes; /* by sensor type */
};

SampleDecoder::SampleDecoder(const std::string &protoDir, GpbFormat format, bool compact)
    : schemas_(std::make_unique<Schemas>()), format_(format), compact_(compact)
{
    schemas_->tree.MapPath("", protoDir);
    for (const tools::SensorDesc &sensor : tools::Sensors()) {
        schemas_->errors.errors.clear();
        const pb::FileDescriptor *file = schemas_->importer.Import(sensor.protoFile);
        const pb::Descriptor *type =
            file != nullptr ? schemas_->importer.pool()->FindMessageTypeByName(sensor.protoMessage) : nullptr;
        if (type == nullptr) {
            warnings_.push_back(std::string("GPB samples of sensor ") + sensor.shortName + " are shown undecoded: " +
                                (file == nullptr ? "cannot load " + protoDir + "/" + sensor.protoFile +
                                                       (schemas_->errors.errors.empty()
                                                            ? ""
                                                            : " (" + schemas_->errors.errors + ")")
                                                 : std::string("no message ") + sensor.protoMessage + " in " +
                                                       sensor.protoFile));
            continue;
        }
        schemas_->prototypes[sensor.type] = schemas_->factory.GetPrototype(type);
    }
}

SampleDecoder::~SampleDecoder() = default;

DecodedSample SampleDecoder::DecodeJson(const uint8_t *data, size_t length) const
{
    DecodedSample out;
    const char *text = reinterpret_cast<const char *>(data);
    Json document = Json::parse(text, text + length, nullptr, false);
    if (document.is_discarded()) {
        out.text = std::string(text, length);
        out.problem = "the data is not a JSON document";
        return out;
    }
    out.text = document.dump(compact_ ? -1 : 2, ' ', false, Json::error_handler_t::replace);
    const Json *records = FindJsonArray(document);
    if (records == nullptr) {
        out.problem = "no list of records in the document";
        return out;
    }
    out.records = *records;
    out.decoded = true;
    return out;
}

DecodedSample SampleDecoder::DecodeGpb(const tools::SensorDesc &sensor, const uint8_t *data, size_t length) const
{
    DecodedSample out;
    auto prototype = schemas_->prototypes.find(sensor.type);
    if (prototype == schemas_->prototypes.end()) {
        pb::UnknownFieldSet fields;
        bool parsed = fields.ParseFromArray(data, static_cast<int>(length));
        pb::TextFormat::PrintUnknownFieldsToString(fields, &out.text);
        out.problem = parsed ? "no schema for this sensor" : "not protobuf wire format";
        return out;
    }
    std::unique_ptr<pb::Message> message(prototype->second->New());
    if (!message->ParseFromArray(data, static_cast<int>(length))) {
        pb::UnknownFieldSet fields;
        fields.ParseFromArray(data, static_cast<int>(length));
        pb::TextFormat::PrintUnknownFieldsToString(fields, &out.text);
        out.problem = "the data does not parse as " + std::string(sensor.protoMessage);
        return out;
    }
    if (format_ == GpbFormat::Json) {
        pb::util::JsonPrintOptions options;
        options.add_whitespace = !compact_;
        options.preserve_proto_field_names = true;
        if (!pb::util::MessageToJsonString(*message, &out.text, options).ok()) {
            out.text = message->ShortDebugString();
        }
    } else {
        pb::TextFormat::Printer printer;
        printer.SetSingleLineMode(compact_);
        printer.PrintToString(*message, &out.text);
    }
    const pb::FieldDescriptor *listField = nullptr;
    const pb::Message *holder = FindRecordList(*message, &listField);
    if (holder != nullptr) {
        const pb::Reflection *r = holder->GetReflection();
        for (int i = 0; i < r->FieldSize(*holder, listField); ++i) {
            out.records.push_back(MessageToObject(r->GetRepeatedMessage(*holder, listField, i)));
        }
    }
    if (!message->GetReflection()->GetUnknownFields(*message).empty()) {
        out.problem = "fields the schema does not know";
        return out;
    }
    out.decoded = true;
    return out;
}

} // namespace mdtlm::sim
