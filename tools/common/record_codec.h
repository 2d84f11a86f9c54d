/*
 * Reading and writing record fields by their description: numbers of the
 * field's width, texts, and addresses given as text (dotted IPv4 or IPv6).
 */
#ifndef MDTLM_TOOLS_RECORD_CODEC_H
#define MDTLM_TOOLS_RECORD_CODEC_H

#include <cstdint>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "sensor_table.h"

namespace mdtlm::tools {

/* "192.168.10.1" -> 0xC0A80A01 (first octet in the most significant byte). */
bool ParseIpv4(std::string_view text, uint32_t &out);
/* IPv6 text -> four words, each holding two groups, the earlier in the high half. */
bool ParseIpv6(std::string_view text, uint32_t out[4]);

/* Largest value a numeric field holds. */
uint64_t FieldMax(const FieldDesc &field);
uint64_t LoadField(const uint8_t *record, const FieldDesc &field);
void StoreField(uint8_t *record, const FieldDesc &field, uint64_t value);
/* Text fields: copies at most the field's size and pads with NUL. */
void StoreText(uint8_t *record, const FieldDesc &field, std::string_view text);
/* Address and IPv4 fields: stores the address that `text` spells; false if it spells none
 * (IPv6 text in an IPv4-only field included). */
bool StoreAddressText(uint8_t *record, const FieldDesc &field, std::string_view text);

/* Sets one field from a JSON value: a number for numeric fields, a string for
 * texts and addresses. Returns an empty string, or what is wrong with the value. */
std::string SetFieldFromJson(uint8_t *record, const FieldDesc &field, const nlohmann::json &value);

} // namespace mdtlm::tools

#endif /* MDTLM_TOOLS_RECORD_CODEC_H */
