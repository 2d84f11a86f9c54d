/*
 * The peer built on Google's generated classes: the sample message kept and
 * refilled per record by `fill`, serialised into the sample buffer. Before
 * timing, its bytes must decode to the plug-in's record field for field.
 */
#ifndef MDTLM_BENCH_GENERATED_PEER_H
#define MDTLM_BENCH_GENERATED_PEER_H

#include <google/protobuf/util/message_differencer.h>

#include "bench_support.h"

/* The plug-in's record parsed into the generated sample: what every GPB peer must equal. */
template <typename Sample, typename Rec>
bool SameAsPlugin(const Rec &rec, int32_t (*encode)(const Rec *, uint8_t *, int32_t), const uint8_t *peer,
                  int32_t peerLen)
{
    uint8_t ours[2048];
    const int32_t len = encode(&rec, ours, sizeof(ours));
    Sample a, b;
    return len > 0 && a.ParseFromArray(ours, len) && b.ParseFromArray(peer, peerLen) &&
           google::protobuf::util::MessageDifferencer::Equals(a, b);
}

/* Times `write(out, cap)`, a GPB peer of the plug-in's `encode`, appending
 * record after record, once its bytes for `rec` decode to the plug-in's record. */
template <typename Sample, typename Rec, typename Write>
void RunCheckedGpbPeer(benchmark::State &state, int32_t room, const Rec &rec,
                       int32_t (*encode)(const Rec *, uint8_t *, int32_t), Write write)
{
    uint8_t check[2048];
    const int32_t len = write(check, static_cast<int32_t>(sizeof(check)));
    if (len < 0 || !SameAsPlugin<Sample>(rec, encode, check, len)) {
        state.SkipWithError("peer record differs from the plug-in's");
        return;
    }
    BenchAppendLoop(state, room, 1, "peer failed to encode", write);
    state.SetItemsProcessed(state.iterations());
}

template <typename Sample, typename Rec, typename Fill>
void RunGeneratedPeer(benchmark::State &state, int32_t room, const Rec &rec,
                      int32_t (*encode)(const Rec *, uint8_t *, int32_t), Fill fill)
{
    Sample sample;
    RunCheckedGpbPeer<Sample>(state, room, rec, encode, [&](uint8_t *out, int32_t cap) -> int32_t {
        fill(sample);
        return sample.SerializeToArray(out, cap) ? static_cast<int32_t>(sample.GetCachedSize()) : -1;
    });
}

#endif /* MDTLM_BENCH_GENERATED_PEER_H */
