/*
 * The bounds-checked functions with the behaviour the plug-in's copies and
 * formatting rely on: an exact fit needs room for the NUL, refusals return
 * non-zero (negative for the formatting ones), snprintf_s truncates.
 */
#include <cstdarg>
#include <cstring>

#include "rule.h"

namespace mdtlm::check {
namespace {

constexpr uint8_t kGuard = 0xA5;

void CheckMemcpy(const PlatformApi &api, const CheckSettings &, Findings &findings)
{
    const struct {
        size_t destSize, count;
        bool copies;
    } rows[] = {{8, 8, true}, {8, 3, true}, {8, 0, true}, {0, 0, true}, {8, 9, false}, {4, 64, false}};
    const uint8_t src[64] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    for (const auto &row : rows) {
        uint8_t dest[80];
        std::memset(dest, kGuard, sizeof(dest));
        int ret = api.memcpy_s(dest, row.destSize, src, row.count);
        std::string call = "memcpy_s(dest of " + Str(row.destSize) + ", " + Str(row.count) + " bytes) returned " +
                           Str(ret);
        if (row.copies) {
            findings.Expect(ret == 0, call);
            findings.Expect(std::memcmp(dest, src, row.count) == 0 && dest[row.count] == kGuard,
                            call + " and did not copy exactly " + Str(row.count) + " bytes");
        } else {
            findings.Expect(ret != 0, call + ": a copy larger than its destination must be refused");
            findings.Expect(dest[row.destSize] == kGuard, call + " and wrote past the destination");
        }
    }
    findings.Expect(api.memcpy_s(nullptr, 8, src, 4) != 0, "memcpy_s to a NULL destination returned 0");
    uint8_t dest[8];
    findings.Expect(api.memcpy_s(dest, sizeof(dest), nullptr, 4) != 0, "memcpy_s from a NULL source returned 0");
}

void CheckMemset(const PlatformApi &api, const CheckSettings &, Findings &findings)
{
    const struct {
        size_t destSize, count;
        bool sets;
    } rows[] = {{8, 8, true}, {8, 3, true}, {8, 9, false}};
    for (const auto &row : rows) {
        uint8_t dest[16];
        std::memset(dest, kGuard, sizeof(dest));
        int ret = api.memset_s(dest, row.destSize, 0x3C, row.count);
        std::string call = "memset_s(dest of " + Str(row.destSize) + ", " + Str(row.count) + " bytes) returned " +
                           Str(ret);
        if (row.sets) {
            bool exact = dest[row.count] == kGuard;
            for (size_t i = 0; i < row.count; i++) {
                exact = exact && dest[i] == 0x3C;
            }
            findings.Expect(ret == 0 && exact, call + (ret == 0 ? " but did not set exactly those bytes" : ""));
        } else {
            findings.Expect(ret != 0, call + ": a fill larger than its destination must be refused");
            findings.Expect(dest[row.destSize] == kGuard, call + " and wrote past the destination");
        }
    }
}

/* vsprintf_s through a variadic front, as the plug-in's log formatting calls it. */
int CallVsprintf(const PlatformApi &api, char *dest, size_t size, const char *format, ...)
    __attribute__((format(printf, 4, 5)));
int CallVsprintf(const PlatformApi &api, char *dest, size_t size, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    int ret = api.vsprintf_s(dest, size, format, args);
    va_end(args);
    return ret;
}

/* One formatting call: text "abcd" into a destination of `size` bytes. */
using FormatAbcd = int (*)(const PlatformApi &api, char *dest, size_t size);

void CheckFormatting(const PlatformApi &api, Findings &findings, const char *name, FormatAbcd format)
{
    const struct {
        size_t size;
        bool fits;
    } rows[] = {{16, true}, {5, true}, {4, false}, {1, false}};
    for (const auto &row : rows) {
        char dest[24];
        std::memset(dest, static_cast<char>(kGuard), sizeof(dest));
        int ret = format(api, dest, row.size);
        std::string call = std::string(name) + " of \"abcd\" into " + Str(row.size) + " bytes returned " + Str(ret);
        if (row.fits) {
            findings.Expect(ret == 4 && std::memcmp(dest, "abcd", 5) == 0, call + (ret == 4 ? " but wrote other text" : ""));
        } else {
            findings.Expect(ret < 0, call + ": the text and its NUL do not fit, a negative result is due");
            findings.Expect(static_cast<uint8_t>(dest[row.size]) == kGuard, call + " and wrote past the destination");
        }
    }
}

void CheckSprintf(const PlatformApi &api, const CheckSettings &, Findings &findings)
{
    CheckFormatting(api, findings, "sprintf_s", [](const PlatformApi &a, char *dest, size_t size) {
        return a.sprintf_s(dest, size, "%s%c", "abc", 'd');
    });
}

void CheckVsprintf(const PlatformApi &api, const CheckSettings &, Findings &findings)
{
    CheckFormatting(api, findings, "vsprintf_s", [](const PlatformApi &a, char *dest, size_t size) {
        return CallVsprintf(a, dest, size, "%s%c", "abc", 'd');
    });
}

void CheckSnprintf(const PlatformApi &api, const CheckSettings &, Findings &findings)
{
    const struct {
        size_t size;
        const char *text;
    } rows[] = {{16, "abcdef"}, {7, "abcdef"}, {6, "abcde"}, {4, "abc"}};
    for (const auto &row : rows) {
        char dest[24];
        std::memset(dest, static_cast<char>(kGuard), sizeof(dest));
        int ret = api.snprintf_s(dest, row.size, "%s%c", "abcde", 'f');
        std::string call = "snprintf_s of \"abcdef\" into " + Str(row.size) + " bytes";
        findings.Expect(ret == 6, call + " returned " + Str(ret) + ", not 6 (the length that would have been written)");
        findings.Expect(std::strcmp(dest, row.text) == 0, call + " wrote \"" + std::string(dest, strnlen(dest, row.size)) +
                                                              "\", not \"" + row.text + "\"");
    }
}

const Rule kBoundsRules[] = {
    {"bounds.memcpy_s", "memcpy_s copies exactly into a fitting destination and refuses a larger count", CheckMemcpy},
    {"bounds.memset_s", "memset_s fills exactly and refuses a count larger than the destination", CheckMemset},
    {"bounds.sprintf_s", "sprintf_s needs room for the NUL: \"abcd\" fits 5 bytes, into 4 it fails negative",
     CheckSprintf},
    {"bounds.vsprintf_s", "vsprintf_s behaves as sprintf_s", CheckVsprintf},
    {"bounds.snprintf_s", "snprintf_s truncates with a NUL and returns the untruncated length", CheckSnprintf},
};

} // namespace

std::span<const Rule> BoundsRules()
{
    return kBoundsRules;
}

} // namespace mdtlm::check
