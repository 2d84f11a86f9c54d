/*
 * The plug-in as the framework sees it: a shared object opened with dlopen
 * whose entries are found by name.
 */
#ifndef MDTLM_SIM_PLUGIN_H
#define MDTLM_SIM_PLUGIN_H

#include <stdexcept>
#include <string>

namespace mdtlm::sim {

class Plugin {
public:
    /* Opens the library; throws std::runtime_error with the loader's reason. */
    explicit Plugin(const std::string &path);
    ~Plugin();
    Plugin(const Plugin &) = delete;
    Plugin &operator=(const Plugin &) = delete;

    /* The entry `name`, or null when the library does not export it. */
    template <typename Function>
    Function Find(const char *name) const
    {
        return reinterpret_cast<Function>(Lookup(name));
    }
    /* The entry `name`; throws when it is missing. */
    template <typename Function>
    Function Require(const char *name) const
    {
        Function entry = Find<Function>(name);
        if (entry == nullptr) {
            throw std::runtime_error(path_ + " does not export " + name);
        }
        return entry;
    }

    const std::string &Path() const { return path_; }
    /* Keep the library mapped at exit (when the plug-in could not be unloaded cleanly). */
    void Keep() { keep_ = true; }

private:
    void *Lookup(const char *name) const;

    std::string path_;
    void *handle_ = nullptr;
    bool keep_ = false;
};

} // namespace mdtlm::sim

#endif /* MDTLM_SIM_PLUGIN_H */
