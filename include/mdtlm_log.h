/*
 * Logging convention of the plug-in: every line starts with the source label
 * and a line number in one pair of brackets, then the bracketed operation tag.
 * The format text after "[%s:%d]" is given by the caller.
 *
 * Most lines carry the line of their call (MDTLM_LOG). A line whose number is
 * fixed, the same on every path and for every sensor that writes it, carries
 * that number instead (MDTLM_LOG_AT); the fixed numbers of an area are named
 * together in one header of that area (task/task_log_lines.h,
 * sensors/sensor_log_lines.h), never written as loose literals at the call.
 */
#ifndef MDTLM_LOG_H
#define MDTLM_LOG_H

#include "mdtlm_vraldcn.h"

#define MDTLM_LOG_LABEL "mdtlm.vraldcn.statis"

/* A line that carries the line of its call. */
#define MDTLM_LOG(level, fmt, ...) \
    MDTLM_VRALDCN_WriteTlmLog((level), "[%s:%d]" fmt, MDTLM_LOG_LABEL, __LINE__, ##__VA_ARGS__)

/* A line that carries the fixed number `line`. */
#define MDTLM_LOG_AT(level, line, fmt, ...) \
    MDTLM_VRALDCN_WriteTlmLog((level), "[%s:%d]" fmt, MDTLM_LOG_LABEL, static_cast<int>(line), ##__VA_ARGS__)

/* The same for a complete format chosen at run time ("[%s:%d]..."). */
#define MDTLM_LOG_FORMAT_AT(level, line, format, ...) \
    MDTLM_VRALDCN_WriteTlmLog((level), (format), MDTLM_LOG_LABEL, static_cast<int>(line), ##__VA_ARGS__)

/* For helpers that write a line on behalf of several callers: the number a
 * caller passes when its line has no fixed number, so the helper's own line of
 * call is written. */
#define MDTLM_LOG_LINE_OF_CALL 0
#define MDTLM_LOG_LINE_OR_CALL(line) ((line) != MDTLM_LOG_LINE_OF_CALL ? static_cast<int>(line) : __LINE__)

#endif /* MDTLM_LOG_H */
