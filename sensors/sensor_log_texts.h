/*
 * Log texts shared by the table-driven sensors (export flow cache, result
 * statistics and the two I/O service sensors). The "[%s:%d]" prefix is added
 * by MDTLM_LOG.
 */
#ifndef MDTLM_SENSORS_SENSOR_LOG_TEXTS_H
#define MDTLM_SENSORS_SENSOR_LOG_TEXTS_H

/* A record could not be stored for a task (result as a signed number). */
#define MDTLM_SENSOR_ENCODE_FAIL_FORMAT "[%s:%d][STATS_EncodeStatsData] Stats data encode failed, ret: %d."

/* The GPB message encoder was handed no record. */
#define MDTLM_SENSOR_GPB_NULL_RECORD_TEXT "[VRALDCN_FLOW_GPB_EncodeMsg] Param error, msg is NULL."

/* The JSON message encoder was handed no record or no output. */
#define MDTLM_SENSOR_JSON_NULL_PARAM_TEXT "[FLOW_JSON_CheckEncodePara] Param error, msg is NULL."

/* The same lines as complete formats, for helpers that log on behalf of a
 * sensor and pass the label and line themselves. */
#define MDTLM_SENSOR_GPB_NULL_RECORD_FORMAT "[%s:%d]" MDTLM_SENSOR_GPB_NULL_RECORD_TEXT
#define MDTLM_SENSOR_JSON_NULL_PARAM_FORMAT "[%s:%d]" MDTLM_SENSOR_JSON_NULL_PARAM_TEXT

#endif /* MDTLM_SENSORS_SENSOR_LOG_TEXTS_H */
