/*
 * Enumeration texts of the export flow cache sensor. GPB carries the raw
 * values; JSON carries these texts, and a value without a text fails the
 * record's JSON encoding.
 */
#ifndef MDTLM_SENSORS_ZELK_TEXTS_H
#define MDTLM_SENSORS_ZELK_TEXTS_H

#include "sensor_text_table.h"

inline constexpr MDTLM_SIZED_TEXT kZelkProtocolTexts[] = {MDTLM_SizedText("tcp")};
inline constexpr MDTLM_SIZED_TEXT kZelkAclAppStateTexts[] = {
    MDTLM_SizedText("success"), MDTLM_SizedText("failed"), MDTLM_SizedText("reach-limit"),
    MDTLM_SizedText("disable")};
inline constexpr MDTLM_SIZED_TEXT kZelkRecoveryModeTexts[] = {MDTLM_SizedText("underlay-overlay"),
                                                              MDTLM_SizedText("none")};
inline constexpr MDTLM_SIZED_TEXT kZelkOpModeTexts[] = {
    MDTLM_SizedText("auto-fail-detection"), MDTLM_SizedText("manual-fail-recovery"),
    MDTLM_SizedText("tcp-reserved-value-isolate-outbound"), MDTLM_SizedText("none")};

inline constexpr MDTLM_TEXT_TABLE kZelkProtocols = {6, 1, kZelkProtocolTexts};
inline constexpr MDTLM_TEXT_TABLE kZelkAclAppStates = {0, 4, kZelkAclAppStateTexts};
inline constexpr MDTLM_TEXT_TABLE kZelkRecoveryModes = {2, 2, kZelkRecoveryModeTexts};
inline constexpr MDTLM_TEXT_TABLE kZelkOpModes = {1, 4, kZelkOpModeTexts};

#endif /* MDTLM_SENSORS_ZELK_TEXTS_H */
