/*
 * The fixed numbers that the log lines of the table-driven sensors carry after
 * the source label, one row per sensor. A sensor's number is the same on every
 * path that writes its line; the shared helpers that write a line on behalf of
 * a sensor take the number from here (the encode-failure number through the
 * sensor's pipeline table). The flow family's lines have no fixed numbers and
 * carry the line of their call.
 */
#ifndef MDTLM_SENSORS_SENSOR_LOG_LINES_H
#define MDTLM_SENSORS_SENSOR_LOG_LINES_H

#include "mdtlm_log.h"

typedef struct MDTLM_SENSOR_LOG_LINES {
    int gpbNullRecord; /* the GPB message encoder was handed no record */
    int jsonNullParam; /* the JSON message encoder was handed no record or no output */
    int encodeFail;    /* a record that passed the task's tests could not be stored */
} MDTLM_SENSOR_LOG_LINES;

/* I/O service flow statistics (sensor 3). */
inline constexpr MDTLM_SENSOR_LOG_LINES kSrvtlmFlowLogLines = {493, 104, 333};
/* Result statistics (sensor 4). */
inline constexpr MDTLM_SENSOR_LOG_LINES kQumaLogLines = {175, 51, 124};
/* I/O service flow throughput statistics (sensor 5). */
inline constexpr MDTLM_SENSOR_LOG_LINES kSrvtlmFctFlowLogLines = {524, 65, 377};
/* Export flow caches (sensor 6). */
inline constexpr MDTLM_SENSOR_LOG_LINES kZelkLogLines = {188, 93, 141};

#endif /* MDTLM_SENSORS_SENSOR_LOG_LINES_H */
