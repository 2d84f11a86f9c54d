/*
 * The direct JSON writer the plug-in's JSON records are measured against:
 * plain code writing the plug-in's bytes member by member, each literal key
 * copied, each number with std::to_chars, each text as it is. A record is
 * "{" ... "}," followed by a NUL that the next record starts on, as the
 * plug-in writes it. The caller gives room for the whole record.
 */
#ifndef MDTLM_BENCH_DIRECT_JSON_H
#define MDTLM_BENCH_DIRECT_JSON_H

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "bench_support.h"

class DirectJson {
public:
    explicit DirectJson(uint8_t *out) : pos_(reinterpret_cast<char *>(out)), start_(pos_) {}

    void Key(std::string_view key)
    {
        std::memcpy(pos_, key.data(), key.size());
        pos_ += key.size();
    }
    void Num(std::string_view key, uint64_t v)
    {
        Key(key);
        pos_ = std::to_chars(pos_, pos_ + 20, v).ptr;
    }
    /* A number written inside quotes. */
    void QuotedNum(std::string_view key, uint64_t v)
    {
        Key(key);
        *pos_++ = '"';
        pos_ = std::to_chars(pos_, pos_ + 20, v).ptr;
        *pos_++ = '"';
    }
    void Text(std::string_view key, std::string_view text)
    {
        Key(key);
        *pos_++ = '"';
        std::memcpy(pos_, text.data(), text.size());
        pos_ += text.size();
        *pos_++ = '"';
    }
    /* A fixed-size text field of a record: up to its first NUL or its end. */
    template <size_t N>
    void Field(std::string_view key, const char (&field)[N])
    {
        Text(key, std::string_view(field, strnlen(field, N)));
    }
    int32_t End()
    {
        Key("},");
        *pos_ = '\0';
        return static_cast<int32_t>(pos_ - start_);
    }

private:
    char *pos_;
    char *start_;
};

/* The name of an enumeration value from a table starting at `first`; empty
 * for a value without a name. */
template <size_t N>
std::string_view EnumName(const std::string_view (&names)[N], uint32_t first, uint32_t value)
{
    return value - first < N ? names[value - first] : std::string_view();
}

/* True when the peer's bytes are exactly the plug-in's record. */
template <typename Rec>
bool SameJsonAsPlugin(const Rec &rec, int32_t (*encode)(const Rec *, uint8_t *, int32_t), const uint8_t *peer,
                      int32_t peerLen)
{
    uint8_t ours[2048];
    const int32_t len = encode(&rec, ours, sizeof(ours));
    return len > 0 && len == peerLen && std::memcmp(ours, peer, static_cast<size_t>(len)) == 0;
}

/* Times `write(out, cap)`, a JSON peer of the plug-in's `encode`, appending
 * record after record as the plug-in's line does, once its bytes for `rec`
 * are found equal to the plug-in's. */
template <typename Rec, typename Write>
void RunJsonPeer(benchmark::State &state, int32_t room, const Rec &rec,
                 int32_t (*encode)(const Rec *, uint8_t *, int32_t), Write write)
{
    uint8_t check[2048];
    const int32_t len = write(check, static_cast<int32_t>(sizeof(check)));
    if (!SameJsonAsPlugin(rec, encode, check, len)) {
        state.SkipWithError("JSON peer differs from the plug-in's record");
        return;
    }
    BenchAppendLoop(state, room, 1, "JSON peer failed", write);
    state.SetItemsProcessed(state.iterations());
}

#endif /* MDTLM_BENCH_DIRECT_JSON_H */
