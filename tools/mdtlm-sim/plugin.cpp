/*
 * Loading the plug-in. The platform services it leaves undefined are resolved
 * from this process, which links the host platform library.
 */
#include "plugin.h"

#include <dlfcn.h>

namespace mdtlm::sim {

Plugin::Plugin(const std::string &path) : path_(path)
{
    handle_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle_ == nullptr) {
        const char *reason = dlerror();
        throw std::runtime_error("cannot load the plug-in: " + std::string(reason != nullptr ? reason : path));
    }
}

Plugin::~Plugin()
{
    if (handle_ != nullptr && !keep_) {
        dlclose(handle_);
    }
}

void *Plugin::Lookup(const char *name) const
{
    dlerror();
    return dlsym(handle_, name);
}

} // namespace mdtlm::sim
