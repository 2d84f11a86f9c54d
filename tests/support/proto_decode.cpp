#include "proto_decode.h"

#include <google/protobuf/descriptor.h>
#include <gtest/gtest.h>

namespace {

using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::Reflection;

const FieldDescriptor *FieldOrFail(const Message &m, const std::string &field)
{
    const FieldDescriptor *fd = m.GetDescriptor()->FindFieldByName(field);
    if (fd == nullptr) {
        ADD_FAILURE() << m.GetDescriptor()->full_name() << " has no field " << field;
    }
    return fd;
}

} // namespace

std::vector<const Message *> SampleRecords(const Message &sample)
{
    std::vector<const Message *> records;
    const Descriptor *desc = sample.GetDescriptor();
    const Reflection *refl = sample.GetReflection();
    for (int i = 0; i < desc->field_count(); ++i) {
        const FieldDescriptor *container = desc->field(i);
        if (container->cpp_type() != FieldDescriptor::CPPTYPE_MESSAGE || container->is_repeated() ||
            !refl->HasField(sample, container)) {
            continue;
        }
        const Message &list = refl->GetMessage(sample, container);
        const FieldDescriptor *items = list.GetDescriptor()->FindFieldByNumber(1);
        if (items == nullptr || !items->is_repeated()) {
            ADD_FAILURE() << list.GetDescriptor()->full_name() << " has no repeated field 1";
            return records;
        }
        const Reflection *listRefl = list.GetReflection();
        for (int k = 0; k < listRefl->FieldSize(list, items); ++k) {
            records.push_back(&listRefl->GetRepeatedMessage(list, items, k));
        }
    }
    return records;
}

uint64_t U(const Message &m, const std::string &field)
{
    const FieldDescriptor *fd = FieldOrFail(m, field);
    if (fd == nullptr) {
        return 0;
    }
    const Reflection *refl = m.GetReflection();
    switch (fd->cpp_type()) {
    case FieldDescriptor::CPPTYPE_UINT32:
        return refl->GetUInt32(m, fd);
    case FieldDescriptor::CPPTYPE_UINT64:
        return refl->GetUInt64(m, fd);
    case FieldDescriptor::CPPTYPE_INT32:
        return static_cast<uint64_t>(static_cast<int64_t>(refl->GetInt32(m, fd)));
    case FieldDescriptor::CPPTYPE_INT64:
        return static_cast<uint64_t>(refl->GetInt64(m, fd));
    case FieldDescriptor::CPPTYPE_BOOL:
        return refl->GetBool(m, fd) ? 1 : 0;
    case FieldDescriptor::CPPTYPE_ENUM:
        return static_cast<uint64_t>(static_cast<int64_t>(refl->GetEnumValue(m, fd)));
    default:
        ADD_FAILURE() << field << " is not an integer field";
        return 0;
    }
}

std::string S(const Message &m, const std::string &field)
{
    const FieldDescriptor *fd = FieldOrFail(m, field);
    if (fd == nullptr) {
        return {};
    }
    if (fd->cpp_type() != FieldDescriptor::CPPTYPE_STRING) {
        ADD_FAILURE() << field << " is not a string field";
        return {};
    }
    return m.GetReflection()->GetString(m, fd);
}

bool Has(const Message &m, const std::string &field)
{
    const FieldDescriptor *fd = FieldOrFail(m, field);
    return fd != nullptr && !fd->is_repeated() && m.GetReflection()->HasField(m, fd);
}
