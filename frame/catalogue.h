/*
 * Lookups in the sensor catalogue. Rows are compared in table order on their
 * sensor type and the first match is used; an unknown type yields null.
 */
#ifndef MDTLM_FRAME_CATALOGUE_H
#define MDTLM_FRAME_CATALOGUE_H

#include <cstdint>

#include "mdtlm_types.h"

template <typename Row, std::size_t N>
Row *MDTLM_CatalogueFind(Row (&rows)[N], uint32_t sensorType)
{
    for (Row &row : rows) {
        if (row.sensorType == sensorType) {
            return &row;
        }
    }
    return nullptr;
}

MDTLM_STATS_MAP_ENTRY *MDTLM_CatalogueStatsRow(uint32_t sensorType);
MDTLM_TASK_LIST_ENTRY *MDTLM_CatalogueTaskListRow(uint32_t sensorType);
MDTLM_PATH_NAME_ENTRY *MDTLM_CataloguePathNameRow(uint32_t sensorType);

#endif /* MDTLM_FRAME_CATALOGUE_H */
