/*
 * System time in UTC broken-down form, and back to seconds since 1970.
 */
#include <time.h>

#include "mdtlm_platform.h"
#include "platform_internal.h"

MDTLM_PLATFORM_API uint32_t PAL_SystimeGet(PAL_SYSTIME *out)
{
    int64_t injected;
    if (mdtlm_host::FaultCheck(MDTLM_HOST_OP_SYSTIME_GET, &injected))
        return static_cast<uint32_t>(injected);
    if (out == nullptr)
        return 1;
    timespec now;
    tm utc;
    if (clock_gettime(CLOCK_REALTIME, &now) != 0 || gmtime_r(&now.tv_sec, &utc) == nullptr)
        return 1;
    out->year = static_cast<uint16_t>(utc.tm_year + 1900);
    out->month = static_cast<uint8_t>(utc.tm_mon + 1);
    out->day = static_cast<uint8_t>(utc.tm_mday);
    out->hour = static_cast<uint8_t>(utc.tm_hour);
    out->minute = static_cast<uint8_t>(utc.tm_min);
    out->second = static_cast<uint8_t>(utc.tm_sec);
    out->weekday = static_cast<uint8_t>(utc.tm_wday);
    out->millisecond = static_cast<uint32_t>(now.tv_nsec / 1000000);
    out->reserved = 0;
    return 0;
}

MDTLM_PLATFORM_API uint32_t PAL_SystimeSecSince1970(const PAL_SYSTIME *time, uint32_t *high, uint32_t *seconds)
{
    int64_t injected;
    if (mdtlm_host::FaultCheck(MDTLM_HOST_OP_SYSTIME_SEC, &injected))
        return static_cast<uint32_t>(injected);
    if (time == nullptr || high == nullptr || seconds == nullptr)
        return 1;
    if (time->year < 1970 || time->month < 1 || time->month > 12 || time->day < 1 || time->day > 31 ||
        time->hour > 23 || time->minute > 59 || time->second > 59)
        return 1;
    tm utc{};
    utc.tm_year = time->year - 1900;
    utc.tm_mon = time->month - 1;
    utc.tm_mday = time->day;
    utc.tm_hour = time->hour;
    utc.tm_min = time->minute;
    utc.tm_sec = time->second;
    time_t since = timegm(&utc);
    /* timegm normalises a day past the month's end (31 April is 1 May): refuse it. */
    if (since < 0 || utc.tm_mday != time->day || utc.tm_mon != time->month - 1)
        return 1;
    uint64_t value = static_cast<uint64_t>(since);
    *high = static_cast<uint32_t>(value >> 32);
    *seconds = static_cast<uint32_t>(value);
    return 0;
}
