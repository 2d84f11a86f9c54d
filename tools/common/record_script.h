/*
 * Record scripts: JSON files describing statistics records to send, as used by
 * mdtlm-send and by the simulator's --records option.
 *
 *   [ {"sensor": "flow", "flow-id-high": 1, "source-ip": "10.0.0.1", ...},
 *     {"sensor": "export-cache", "state": 2, "body-length": 40} ]
 *
 * "sensor" is a short name, a sensor path or the type number; every other key
 * is a field name of that sensor's record, and fields not given are 0.
 * "body-length" sends only that many bytes of the record (or pads it with
 * zeros), to script short or oversized messages.
 */
#ifndef MDTLM_TOOLS_RECORD_SCRIPT_H
#define MDTLM_TOOLS_RECORD_SCRIPT_H

#include <string>
#include <vector>

#include "json_source.h"
#include "stats_wire.h"

namespace mdtlm::tools {

/* Throws InputError naming file, line and field for anything malformed, and
 * for an address text whose form contradicts the record's address family.
 * Texts that would break a JSON sample add a line to `warnings`. */
std::vector<StatsMessage> LoadRecordScript(const std::string &path, std::vector<std::string> *warnings = nullptr);
std::vector<StatsMessage> ReadRecordScript(const JsonSource &source, std::vector<std::string> *warnings = nullptr);

} // namespace mdtlm::tools

#endif /* MDTLM_TOOLS_RECORD_SCRIPT_H */
