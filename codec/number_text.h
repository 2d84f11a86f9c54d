/*
 * Decimal and hexadecimal digits of unsigned numbers, written straight into a
 * character buffer: no leading zeros, no terminating NUL. The callers test
 * the room first; the longest texts are MDTLM_DECIMAL_MAX_DIGITS (20) and 8
 * hexadecimal digits.
 */
#ifndef MDTLM_CODEC_NUMBER_TEXT_H
#define MDTLM_CODEC_NUMBER_TEXT_H

#include <stdint.h>
#include <string.h>

#define MDTLM_DECIMAL_MAX_DIGITS 20u
#define MDTLM_DECIMAL_MAX_DIGITS_32 10u
#define MDTLM_HEX_MAX_DIGITS_32 8u

/* The digits "00" to "99", two per pair. */
inline constexpr char MDTLM_DIGIT_PAIRS[] =
    "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
    "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
    "8081828384858687888990919293949596979899";

/* Number of decimal digits of `value` (1 for 0). */
inline uint32_t MDTLM_DecimalDigits(uint64_t value)
{
    uint32_t digits = 1;
    for (;;) {
        if (value < 10u) return digits;
        if (value < 100u) return digits + 1;
        if (value < 1000u) return digits + 2;
        if (value < 10000u) return digits + 3;
        value /= 10000u;
        digits += 4;
    }
}

/* Writes `value` in decimal at `out`; returns the number of characters. */
inline uint32_t MDTLM_PutDecimal(char *out, uint64_t value)
{
    const uint32_t len = MDTLM_DecimalDigits(value);
    char *pos = out + len;
    while (value >= 100u) {
        const uint32_t pair = static_cast<uint32_t>(value % 100u) * 2u;
        value /= 100u;
        *--pos = MDTLM_DIGIT_PAIRS[pair + 1];
        *--pos = MDTLM_DIGIT_PAIRS[pair];
    }
    if (value >= 10u) {
        const uint32_t pair = static_cast<uint32_t>(value) * 2u;
        *--pos = MDTLM_DIGIT_PAIRS[pair + 1];
        *--pos = MDTLM_DIGIT_PAIRS[pair];
    } else {
        *--pos = static_cast<char>('0' + value);
    }
    return len;
}

/* Writes `value` (at most 32 bits) in lower-case hexadecimal at `out`. */
inline uint32_t MDTLM_PutHexLower(char *out, uint32_t value)
{
    static constexpr char kHex[] = "0123456789abcdef";
    const uint32_t len = (31u - static_cast<uint32_t>(__builtin_clz(value | 1u))) / 4u + 1u;
    for (uint32_t i = 0; i < len; ++i) {
        out[len - 1 - i] = kHex[(value >> (4u * i)) & 0xFu];
    }
    return len;
}

#endif /* MDTLM_CODEC_NUMBER_TEXT_H */
