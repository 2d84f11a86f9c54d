/*
 * Default plug-in and schema locations, relative to the running executable.
 * The relative paths from the install's bin directory to its lib and share
 * directories come from the build (MDTLM_SIM_BIN_TO_LIBDIR and
 * MDTLM_SIM_BIN_TO_DATADIR), so any install prefix works, also one chosen at
 * install time, and an installed tree can be moved as a whole.
 */
#include "install_paths.h"

#include <filesystem>

namespace mdtlm::sim {
namespace {

namespace fs = std::filesystem;

constexpr char kPluginFile[] = "libmdtlm_vraldcn.so";

/* Directory of the running executable, or empty when it cannot be read. */
fs::path ExecutableDir()
{
    std::error_code error;
    fs::path self = fs::read_symlink("/proc/self/exe", error);
    return error ? fs::path() : self.parent_path();
}

/* The first candidate that exists, else the last one (whose absence the
 * caller then reports with its full path). */
std::string FirstExisting(std::initializer_list<fs::path> candidates)
{
    fs::path last;
    for (const fs::path &candidate : candidates) {
        std::error_code error;
        last = candidate.lexically_normal();
        if (fs::exists(last, error)) {
            break;
        }
    }
    return last.string();
}

} // namespace

std::string DefaultPluginPath()
{
    fs::path dir = ExecutableDir();
    if (dir.empty()) {
        return kPluginFile;
    }
    return FirstExisting({dir / MDTLM_SIM_BIN_TO_LIBDIR / kPluginFile, dir / ".." / kPluginFile});
}

std::string DefaultProtoDir()
{
    fs::path dir = ExecutableDir();
    if (dir.empty()) {
        return MDTLM_SIM_PROTO_DIR;
    }
    return FirstExisting({dir / MDTLM_SIM_BIN_TO_DATADIR / "proto", MDTLM_SIM_PROTO_DIR});
}

} // namespace mdtlm::sim
