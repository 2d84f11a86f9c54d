/*
 * Resolving the platform services from the library under test.
 */
#include "platform_api.h"

#include <dlfcn.h>

namespace mdtlm::check {

bool LoadPlatform(const std::string &path, PlatformApi &api, std::string &error)
{
    /* A bare file name would be searched on the loader's path; the porter
     * names a file, so make it one. */
    std::string file = path.find('/') == std::string::npos ? "./" + path : path;
    void *library = dlopen(file.c_str(), RTLD_NOW | RTLD_GLOBAL);
    if (library == nullptr) {
        const char *why = dlerror();
        error = why != nullptr ? why : "cannot load " + path;
        return false;
    }
    std::vector<std::string> missing;
#define MDTLM_PLATFORM_RESOLVE(name)                                                   \
    api.name = reinterpret_cast<decltype(api.name)>(dlsym(library, #name));           \
    if (api.name == nullptr)                                                           \
        missing.push_back(#name);
    MDTLM_PLATFORM_SERVICES(MDTLM_PLATFORM_RESOLVE)
#undef MDTLM_PLATFORM_RESOLVE
    if (missing.empty()) {
        return true;
    }
    error = path + " does not define:";
    for (const std::string &name : missing) {
        error += " " + name;
    }
    return false;
}

} // namespace mdtlm::check
