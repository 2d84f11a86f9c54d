/*
 * Bounds-checked memory and formatting functions with the runtime
 * constraints of C11 Annex K. A violated constraint is reported, never
 * trapped: the memory functions return a non-zero errno value (clearing the
 * destination where the constraints say so), the formatting functions return
 * a negative value with an empty string in the destination when it can hold one.
 */
#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "mdtlm_platform.h"
#include "platform_internal.h"

namespace {

constexpr size_t kRsizeMax = SIZE_MAX >> 1;

/* Keeps a memset whose destination is never read again from being dropped. */
void SetBytes(void *dest, int value, size_t count)
{
    std::memset(dest, value, count);
    __asm__ __volatile__("" : : "r"(dest) : "memory");
}

bool Overlap(const void *a, const void *b, size_t count)
{
    auto x = reinterpret_cast<uintptr_t>(a);
    auto y = reinterpret_cast<uintptr_t>(b);
    return count > 0 && x < y + count && y < x + count;
}

enum class Length { None, Char, Short, Long, LongLong, IntMax, Size, PtrDiff, LongDouble };

Length ParseLength(const char *&p)
{
    switch (*p) {
    case 'h':
        p++;
        if (*p == 'h') {
            p++;
            return Length::Char;
        }
        return Length::Short;
    case 'l':
        p++;
        if (*p == 'l') {
            p++;
            return Length::LongLong;
        }
        return Length::Long;
    case 'q':
        p++;
        return Length::LongLong;
    case 'L':
        p++;
        return Length::LongDouble;
    case 'j':
        p++;
        return Length::IntMax;
    case 'z':
    case 'Z':
        p++;
        return Length::Size;
    case 't':
        p++;
        return Length::PtrDiff;
    default:
        return Length::None;
    }
}

void SkipInteger(va_list &args, Length length)
{
    switch (length) {
    case Length::Long:
        (void)va_arg(args, long);
        break;
    case Length::LongLong:
    case Length::LongDouble: /* %Ld is a long long */
        (void)va_arg(args, long long);
        break;
    case Length::IntMax:
        (void)va_arg(args, intmax_t);
        break;
    case Length::Size:
        (void)va_arg(args, size_t);
        break;
    case Length::PtrDiff:
        (void)va_arg(args, ptrdiff_t);
        break;
    default:
        (void)va_arg(args, int);
        break;
    }
}

/* Skips "digits$", a positional argument reference; true when one was there. */
bool SkipPositional(const char *&p)
{
    const char *q = p;
    while (*q >= '0' && *q <= '9')
        q++;
    if (q == p || *q != '$')
        return false;
    p = q + 1;
    return true;
}

/* A field width or precision: digits, or '*' taking an int argument. */
void SkipNumber(const char *&p, va_list &args, bool &walking)
{
    if (*p == '*') {
        p++;
        if (SkipPositional(p))
            walking = false;
        else if (walking)
            (void)va_arg(args, int);
        return;
    }
    while (*p >= '0' && *p <= '9')
        p++;
}

/*
 * The format constraints of the printf family: no %n anywhere and no null
 * pointer for a %s. The arguments are walked on a copy to find each %s
 * pointer. Once the walk cannot follow them (positional arguments, a
 * conversion it does not know) the rest is searched for %n only.
 */
bool FormatAllowed(const char *format, va_list args)
{
    va_list walk;
    va_copy(walk, args);
    bool walking = true;
    bool allowed = true;
    const char *p = format;
    while (allowed && *p != '\0') {
        if (*p++ != '%')
            continue;
        if (*p == '%') {
            p++;
            continue;
        }
        if (SkipPositional(p))
            walking = false;
        while (*p != '\0' && std::strchr("-+ #0'I", *p) != nullptr)
            p++;
        SkipNumber(p, walk, walking);
        if (*p == '.') {
            p++;
            SkipNumber(p, walk, walking);
        }
        Length length = ParseLength(p);
        char conversion = *p;
        if (conversion == '\0')
            break;
        p++;
        switch (conversion) {
        case 'n':
            allowed = false;
            break;
        case 'd':
        case 'i':
        case 'o':
        case 'u':
        case 'x':
        case 'X':
            if (walking)
                SkipInteger(walk, length);
            break;
        case 'c':
        case 'C':
            if (walking)
                (void)va_arg(walk, int);
            break;
        case 'e':
        case 'E':
        case 'f':
        case 'F':
        case 'g':
        case 'G':
        case 'a':
        case 'A':
            if (walking) {
                if (length == Length::LongDouble)
                    (void)va_arg(walk, long double);
                else
                    (void)va_arg(walk, double);
            }
            break;
        case 's':
        case 'S':
            if (walking && va_arg(walk, const void *) == nullptr)
                allowed = false;
            break;
        case 'p':
            if (walking)
                (void)va_arg(walk, const void *);
            break;
        case 'm':
            break;
        default:
            walking = false;
            break;
        }
    }
    va_end(walk);
    return allowed;
}

/* Shared body of the formatting functions, counted as `op`; `truncate`
 * selects snprintf_s. */
int FormatChecked(MDTLM_HOST_OP op, char *dest, size_t destSize, const char *format, va_list args, bool truncate)
{
    int64_t injected;
    if (mdtlm_host::FaultCheck(op, &injected))
        return static_cast<int>(injected);
    if (dest == nullptr || destSize == 0 || destSize > kRsizeMax)
        return -1;
    if (format == nullptr || !FormatAllowed(format, args)) {
        dest[0] = '\0';
        return -1;
    }
    va_list copy;
    va_copy(copy, args);
    int written = std::vsnprintf(dest, destSize, format, copy);
    va_end(copy);
    if (written < 0 || (!truncate && static_cast<size_t>(written) >= destSize)) {
        dest[0] = '\0';
        return -1;
    }
    return written;
}

} /* namespace */

MDTLM_PLATFORM_API int memcpy_s(void *dest, size_t destSize, const void *src, size_t count)
{
    int64_t injected;
    if (mdtlm_host::FaultCheck(MDTLM_HOST_OP_MEMCPY_S, &injected))
        return static_cast<int>(injected);
    if (dest == nullptr)
        return EINVAL;
    if (destSize > kRsizeMax)
        return ERANGE;
    if (src == nullptr) {
        SetBytes(dest, 0, destSize);
        return EINVAL;
    }
    if (count > kRsizeMax || count > destSize) {
        SetBytes(dest, 0, destSize);
        return ERANGE;
    }
    if (Overlap(dest, src, count)) {
        SetBytes(dest, 0, destSize);
        return EINVAL;
    }
    if (count > 0)
        std::memcpy(dest, src, count);
    return 0;
}

MDTLM_PLATFORM_API int memset_s(void *dest, size_t destSize, int value, size_t count)
{
    int64_t injected;
    if (mdtlm_host::FaultCheck(MDTLM_HOST_OP_MEMSET_S, &injected))
        return static_cast<int>(injected);
    if (dest == nullptr)
        return EINVAL;
    if (destSize > kRsizeMax)
        return ERANGE;
    if (count > kRsizeMax || count > destSize) {
        SetBytes(dest, value, destSize);
        return ERANGE;
    }
    SetBytes(dest, value, count);
    return 0;
}

MDTLM_PLATFORM_API int vsprintf_s(char *dest, size_t destSize, const char *format, va_list args)
{
    return FormatChecked(MDTLM_HOST_OP_VSPRINTF_S, dest, destSize, format, args, false);
}

MDTLM_PLATFORM_API int sprintf_s(char *dest, size_t destSize, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    int written = FormatChecked(MDTLM_HOST_OP_SPRINTF_S, dest, destSize, format, args, false);
    va_end(args);
    return written;
}

MDTLM_PLATFORM_API int snprintf_s(char *dest, size_t destSize, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    int written = FormatChecked(MDTLM_HOST_OP_SNPRINTF_S, dest, destSize, format, args, true);
    va_end(args);
    return written;
}
