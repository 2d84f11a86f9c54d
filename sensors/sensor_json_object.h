/*
 * One JSON record of a sample: "{", the body written with the sensor's
 * template, and "},", followed by the NUL a formatter leaves behind.
 *
 * The template stays the documented shape of each object. It is read when the
 * plug-in is compiled: split into its literal runs and its conversions ("%u",
 * "%llu", "%s"), with every argument's type checked against its conversion.
 * At run time the members are then written directly: each literal run as one
 * copy of known length, each number digit by digit, each text as it is. Before
 * anything is written the capacity is tested against the longest object the
 * arguments can give (every number at its widest); when it cannot be shown to
 * fit, the record goes through the bounded formatter instead, which writes
 * and refuses exactly as it always has.
 */
#ifndef MDTLM_SENSORS_SENSOR_JSON_OBJECT_H
#define MDTLM_SENSORS_SENSOR_JSON_OBJECT_H

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

#include "mdtlm_log.h"
#include "mdtlm_platform.h"
#include "mdtlm_types.h"
#include "number_text.h"
#include "sensor_log_texts.h"
#include "sensor_text_table.h"

/* The parameter check of a JSON message encoder: MDTLM_ENCODE_FAIL, logged
 * with `nullFormat` ("[%s:%d]...") carrying the number `nullLine`, without a
 * record or an output; MDTLM_ENCODE_NO_SPACE below `minRoom`, so the sample buffer is uploaded while
 * it still has room for the longest record; else 0. */
inline int32_t MDTLM_JsonCheckEncodePara(const void *rec, const uint8_t *out, int32_t cap, int32_t minRoom,
                                         int nullLine = MDTLM_LOG_LINE_OF_CALL,
                                         const char *nullFormat = MDTLM_SENSOR_JSON_NULL_PARAM_FORMAT)
{
    if (rec == nullptr || out == nullptr) {
        MDTLM_LOG_FORMAT_AT(MDTLM_LOG_FAILURE, MDTLM_LOG_LINE_OR_CALL(nullLine), nullFormat);
        return MDTLM_ENCODE_FAIL;
    }
    return cap < minRoom ? MDTLM_ENCODE_NO_SPACE : 0;
}

/* Returns the length of "{", body and "}," together, or MDTLM_ENCODE_FAIL when
 * a piece does not fit. The terminating NUL the formatter leaves behind is not
 * counted: the next record starts on it. */
inline int32_t MDTLM_JsonWriteObject(uint8_t *out, int32_t cap, const char *bodyFormat, ...)
    __attribute__((format(printf, 3, 4)));

inline int32_t MDTLM_JsonWriteObject(uint8_t *out, int32_t cap, const char *bodyFormat, ...)
{
    char *text = reinterpret_cast<char *>(out);
    const int open = sprintf_s(text, static_cast<size_t>(cap), "{");
    if (open < 0) {
        return MDTLM_ENCODE_FAIL;
    }
    va_list args;
    va_start(args, bodyFormat);
    const int body = vsprintf_s(text + open, static_cast<size_t>(cap - open), bodyFormat, args);
    va_end(args);
    if (body < 0) {
        return MDTLM_ENCODE_FAIL;
    }
    const int used = open + body;
    const int close = sprintf_s(text + used, static_cast<size_t>(cap - used), "},");
    if (close < 0) {
        return MDTLM_ENCODE_FAIL;
    }
    return used + close;
}

/* Writes "{" and the formatter's NUL, as sprintf_s(out, cap, "{") does. */
inline int32_t MDTLM_JsonOpen(uint8_t *out, int32_t cap)
{
    if (cap < 2) {
        return sprintf_s(reinterpret_cast<char *>(out), static_cast<size_t>(cap), "{");
    }
    out[0] = '{';
    out[1] = '\0';
    return 1;
}

/* ------------------------------------------------- the template, compiled */

/* A template text as a compile-time value. */
template <std::size_t N>
struct MDTLM_JSON_TEMPLATE {
    char text[N];
    constexpr MDTLM_JSON_TEMPLATE(const char (&literal)[N])
    {
        for (std::size_t i = 0; i < N; ++i) {
            text[i] = literal[i];
        }
    }
};

enum MDTLM_JSON_CONVERSION : uint8_t {
    MDTLM_JSON_CONV_END = 0, /* the literal run after the last conversion */
    MDTLM_JSON_CONV_U32 = 1, /* "%u" */
    MDTLM_JSON_CONV_U64 = 2, /* "%llu" */
    MDTLM_JSON_CONV_TEXT = 3, /* "%s" */
};

/* A literal run of the template and the conversion that follows it; a text
 * conversion's length is kept at `textSlot` among the record's text lengths. */
struct MDTLM_JSON_PIECE {
    uint32_t start;
    uint32_t len;
    MDTLM_JSON_CONVERSION conv;
    uint32_t textSlot;
};

template <MDTLM_JSON_TEMPLATE T>
struct MDTLM_JsonShape {
    static constexpr std::size_t Conversions()
    {
        std::size_t count = 0;
        for (std::size_t i = 0; T.text[i] != '\0'; ++i) {
            count += T.text[i] == '%' ? 1 : 0;
        }
        return count;
    }
    static constexpr std::size_t kConversions = Conversions();

    struct Pieces {
        MDTLM_JSON_PIECE piece[kConversions + 1];
    };

    /* Splits the template; anything but "%u", "%llu" and "%s" stops the build. */
    static constexpr Pieces Split()
    {
        Pieces out{};
        std::size_t at = 0;
        uint32_t texts = 0;
        std::size_t start = 0;
        for (std::size_t i = 0; T.text[i] != '\0';) {
            if (T.text[i] != '%') {
                ++i;
                continue;
            }
            MDTLM_JSON_CONVERSION conv = MDTLM_JSON_CONV_END;
            std::size_t skip = 0;
            if (T.text[i + 1] == 'u') {
                conv = MDTLM_JSON_CONV_U32;
                skip = 2;
            } else if (T.text[i + 1] == 's') {
                conv = MDTLM_JSON_CONV_TEXT;
                skip = 2;
            } else if (T.text[i + 1] == 'l' && T.text[i + 2] == 'l' && T.text[i + 3] == 'u') {
                conv = MDTLM_JSON_CONV_U64;
                skip = 4;
            } else {
                throw "template conversion other than %u, %llu, %s";
            }
            out.piece[at++] = {static_cast<uint32_t>(start), static_cast<uint32_t>(i - start), conv,
                               conv == MDTLM_JSON_CONV_TEXT ? texts++ : 0};
            i += skip;
            start = i;
        }
        std::size_t end = start;
        while (T.text[end] != '\0') {
            ++end;
        }
        out.piece[at] = {static_cast<uint32_t>(start), static_cast<uint32_t>(end - start), MDTLM_JSON_CONV_END, 0};
        return out;
    }
    static constexpr Pieces kPieces = Split();

    static constexpr std::size_t Texts()
    {
        std::size_t count = 0;
        for (const MDTLM_JSON_PIECE &p : kPieces.piece) {
            count += p.conv == MDTLM_JSON_CONV_TEXT ? 1 : 0;
        }
        return count;
    }
    static constexpr std::size_t kTexts = Texts();

    /* "{", every literal run, every number at its widest and "}," with the NUL. */
    static constexpr std::size_t FixedMost()
    {
        std::size_t most = 1 + 2 + 1;
        for (const MDTLM_JSON_PIECE &p : kPieces.piece) {
            most += p.len;
            most += p.conv == MDTLM_JSON_CONV_U32   ? MDTLM_DECIMAL_MAX_DIGITS_32
                    : p.conv == MDTLM_JSON_CONV_U64 ? MDTLM_DECIMAL_MAX_DIGITS
                                                    : 0;
        }
        return most;
    }
    static constexpr std::size_t kFixedMost = FixedMost();
};

/* The argument type each conversion takes, as the formatter reads it. */
template <MDTLM_JSON_CONVERSION C, typename Arg>
constexpr bool MDTLM_JsonArgFits()
{
    if constexpr (C == MDTLM_JSON_CONV_U32) {
        return std::is_same_v<Arg, unsigned int>;
    } else if constexpr (C == MDTLM_JSON_CONV_U64) {
        return std::is_same_v<Arg, unsigned long long>;
    } else {
        return std::is_same_v<Arg, const char *> || std::is_same_v<Arg, char *> || std::is_same_v<Arg, MDTLM_SIZED_TEXT>;
    }
}

/* An argument as the formatter takes it: a sized text by its characters. */
template <typename Arg>
Arg MDTLM_JsonFormatArg(Arg arg)
{
    return arg;
}
inline const char *MDTLM_JsonFormatArg(MDTLM_SIZED_TEXT arg)
{
    return arg.text;
}

/* Measures a text argument: its length kept in its slot and added to `most`. */
template <MDTLM_JSON_TEMPLATE T, std::size_t I, typename Arg>
inline void MDTLM_JsonMeasureMember(Arg arg, std::size_t *textLen, std::size_t &most)
{
    constexpr MDTLM_JSON_PIECE piece = MDTLM_JsonShape<T>::kPieces.piece[I];
    static_assert(MDTLM_JsonArgFits<piece.conv, Arg>(), "argument type does not match its conversion");
    if constexpr (std::is_same_v<Arg, MDTLM_SIZED_TEXT>) {
        textLen[piece.textSlot] = arg.len;
        most += arg.len;
    } else if constexpr (piece.conv == MDTLM_JSON_CONV_TEXT) {
        textLen[piece.textSlot] = std::strlen(arg);
        most += textLen[piece.textSlot];
    } else {
        (void)arg;
        (void)textLen;
        (void)most;
    }
}

template <MDTLM_JSON_TEMPLATE T, std::size_t I, typename Arg>
inline void MDTLM_JsonPutMember(char *&pos, Arg arg, const std::size_t *textLen)
{
    constexpr MDTLM_JSON_PIECE piece = MDTLM_JsonShape<T>::kPieces.piece[I];
    std::memcpy(pos, T.text + piece.start, piece.len);
    pos += piece.len;
    if constexpr (piece.conv == MDTLM_JSON_CONV_TEXT) {
        std::memcpy(pos, MDTLM_JsonFormatArg(arg), textLen[piece.textSlot]);
        pos += textLen[piece.textSlot];
    } else {
        (void)textLen;
        pos += MDTLM_PutDecimal(pos, arg);
    }
}

/* One record object written member by member from template T; the same
 * bytes, result and refusals as MDTLM_JsonWriteObject(out, cap, T, args...). */
template <MDTLM_JSON_TEMPLATE T, typename... Args>
int32_t MDTLM_JsonWriteMembers(uint8_t *out, int32_t cap, Args... args)
{
    using Shape = MDTLM_JsonShape<T>;
    static_assert(sizeof...(Args) == Shape::kConversions, "one argument per conversion");
    return [&]<std::size_t... I>(std::index_sequence<I...>) -> int32_t {
        std::size_t textLen[Shape::kTexts + 1];
        std::size_t most = Shape::kFixedMost;
        (MDTLM_JsonMeasureMember<T, I>(args, textLen, most), ...);
        if (out == nullptr || cap < 0 || most > static_cast<std::size_t>(cap)) {
            return MDTLM_JsonWriteObject(out, cap, T.text, MDTLM_JsonFormatArg(args)...);
        }
        char *pos = reinterpret_cast<char *>(out);
        *pos++ = '{';
        (MDTLM_JsonPutMember<T, I>(pos, args, textLen), ...);
        constexpr MDTLM_JSON_PIECE tail = Shape::kPieces.piece[Shape::kConversions];
        std::memcpy(pos, T.text + tail.start, tail.len);
        pos += tail.len;
        *pos++ = '}';
        *pos++ = ',';
        *pos = '\0';
        return static_cast<int32_t>(pos - reinterpret_cast<char *>(out));
    }(std::index_sequence_for<Args...>{});
}

#endif /* MDTLM_SENSORS_SENSOR_JSON_OBJECT_H */
