/*
 * Logging convention of the plug-in: every line starts with the source label
 * and the line number of the call in one pair of brackets, then the bracketed
 * operation tag. The format text after "[%s:%d]" is given by the caller.
 */
#ifndef MDTLM_LOG_H
#define MDTLM_LOG_H

#include "mdtlm_vraldcn.h"

#define MDTLM_LOG_LABEL "mdtlm.vraldcn.statis"

#define MDTLM_LOG(level, fmt, ...) \
    MDTLM_VRALDCN_WriteTlmLog((level), "[%s:%d]" fmt, MDTLM_LOG_LABEL, __LINE__, ##__VA_ARGS__)

#endif /* MDTLM_LOG_H */
