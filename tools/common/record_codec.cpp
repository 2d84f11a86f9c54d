/*
 * Field access on raw records. Records are host byte order, so a field of
 * n bytes is the low n bytes of the value on this (little-endian) host.
 */
#include "record_codec.h"

#include <arpa/inet.h>

#include <cstring>

namespace mdtlm::tools {

bool ParseIpv4(std::string_view text, uint32_t &out)
{
    std::string copy(text);
    uint8_t bytes[4];
    if (inet_pton(AF_INET, copy.c_str(), bytes) != 1) {
        return false;
    }
    out = (uint32_t{bytes[0]} << 24) | (uint32_t{bytes[1]} << 16) | (uint32_t{bytes[2]} << 8) | bytes[3];
    return true;
}

bool ParseIpv6(std::string_view text, uint32_t out[4])
{
    std::string copy(text);
    uint8_t bytes[16];
    if (inet_pton(AF_INET6, copy.c_str(), bytes) != 1) {
        return false;
    }
    for (int word = 0; word < 4; ++word) {
        const uint8_t *b = bytes + 4 * word;
        out[word] = (uint32_t{b[0]} << 24) | (uint32_t{b[1]} << 16) | (uint32_t{b[2]} << 8) | b[3];
    }
    return true;
}

uint64_t FieldMax(const FieldDesc &field)
{
    switch (field.kind) {
    case FieldKind::U8:
        return UINT8_MAX;
    case FieldKind::U16:
        return UINT16_MAX;
    case FieldKind::U64:
        return UINT64_MAX;
    default:
        return UINT32_MAX;
    }
}

uint64_t LoadField(const uint8_t *record, const FieldDesc &field)
{
    uint64_t value = 0;
    std::memcpy(&value, record + field.offset, field.size < 8 ? field.size : 8);
    return value;
}

void StoreField(uint8_t *record, const FieldDesc &field, uint64_t value)
{
    std::memcpy(record + field.offset, &value, field.size < 8 ? field.size : 8);
}

void StoreText(uint8_t *record, const FieldDesc &field, std::string_view text)
{
    std::memset(record + field.offset, 0, field.size);
    std::memcpy(record + field.offset, text.data(), text.size() < field.size ? text.size() : field.size);
}

bool StoreAddressText(uint8_t *record, const FieldDesc &field, std::string_view text)
{
    uint32_t words[4] = {0, 0, 0, 0};
    if (ParseIpv4(text, words[0])) {
        std::memset(record + field.offset, 0, field.size);
        std::memcpy(record + field.offset, words, 4);
        return true;
    }
    if (field.kind == FieldKind::Address && ParseIpv6(text, words)) {
        std::memcpy(record + field.offset, words, 16);
        return true;
    }
    return false;
}

std::string SetFieldFromJson(uint8_t *record, const FieldDesc &field, const nlohmann::json &value)
{
    switch (field.kind) {
    case FieldKind::Text: {
        if (!value.is_string()) {
            return "expected a text";
        }
        const std::string &text = value.get_ref<const std::string &>();
        if (text.size() > field.textMax) {
            return "text of " + std::to_string(text.size()) + " characters does not fit (at most " +
                   std::to_string(field.textMax) + ")";
        }
        StoreText(record, field, text);
        return "";
    }
    case FieldKind::Address:
    case FieldKind::Ipv4:
        if (!value.is_string()) {
            return field.kind == FieldKind::Ipv4 ? "expected an IPv4 address text such as \"10.0.0.1\""
                                                 : "expected an address text such as \"10.0.0.1\" or \"2001:db8::1\"";
        }
        if (!StoreAddressText(record, field, value.get_ref<const std::string &>())) {
            return "\"" + value.get<std::string>() + "\" is not " +
                   (field.kind == FieldKind::Ipv4 ? "an IPv4 address" : "an IPv4 or IPv6 address");
        }
        return "";
    default:
        if (!value.is_number_unsigned()) {
            return value.is_number_integer() ? "must not be negative" : "expected an unsigned integer";
        }
        if (value.get<uint64_t>() > FieldMax(field)) {
            return "value " + std::to_string(value.get<uint64_t>()) + " does not fit the field (at most " +
                   std::to_string(FieldMax(field)) + ")";
        }
        StoreField(record, field, value.get<uint64_t>());
        return "";
    }
}

} // namespace mdtlm::tools
