/*
 * Shared pieces of the host platform library's own units. Nothing here is
 * part of the library's interface: the declarations are hidden from the
 * dynamic symbol table.
 */
#ifndef MDTLM_PLATFORM_INTERNAL_H
#define MDTLM_PLATFORM_INTERNAL_H

#include <unistd.h>

#include <cstdint>
#include <mutex>
#include <utility>

#include "mdtlm_host.h"

/* Every ABI and control function is defined with this: C linkage, exported. */
#define MDTLM_PLATFORM_API extern "C" __attribute__((visibility("default")))

#pragma GCC visibility push(hidden)

namespace mdtlm_host {

/* Counts one call of `op` and tells whether it must fail: true when an armed
 * fault rule claims this call, with the result to return in *result. */
bool FaultCheck(MDTLM_HOST_OP op, int64_t *result);

/* Live objects of each kind, for MDTLM_HOST_LiveObjects. */
uint32_t LiveQueues();
uint32_t LiveEpolls();
uint32_t LiveTimers();
uint32_t LiveServers();

/* Takes the object `key` names out of a table of live ones (a `mu` guarding a
 * `live` map of shared pointers) and closes it once the table's lock is
 * dropped, so a close that waits for a running callback holds up no other
 * lookup. False when `key` names no live object. */
template <typename Table, typename Key>
bool TakeAndClose(Table &table, const Key &key)
{
    typename decltype(table.live)::mapped_type found;
    {
        std::lock_guard<std::mutex> lock(table.mu);
        auto it = table.live.find(key);
        if (it == table.live.end())
            return false;
        found = std::move(it->second);
        table.live.erase(it);
    }
    found->Close();
    return true;
}

/* Owns one file descriptor and closes it. */
class UniqueFd {
public:
    UniqueFd() = default;
    explicit UniqueFd(int fd) : fd_(fd) {}
    ~UniqueFd() { Reset(); }
    UniqueFd(const UniqueFd &) = delete;
    UniqueFd &operator=(const UniqueFd &) = delete;
    UniqueFd(UniqueFd &&other) noexcept : fd_(other.Release()) {}
    UniqueFd &operator=(UniqueFd &&other) noexcept
    {
        if (this != &other)
            Reset(other.Release());
        return *this;
    }

    int Get() const { return fd_; }
    bool Valid() const { return fd_ >= 0; }
    int Release()
    {
        int fd = fd_;
        fd_ = -1;
        return fd;
    }
    void Reset(int fd = -1)
    {
        if (fd_ >= 0)
            ::close(fd_);
        fd_ = fd;
    }

private:
    int fd_ = -1;
};

} /* namespace mdtlm_host */

#pragma GCC visibility pop

#endif /* MDTLM_PLATFORM_INTERNAL_H */
