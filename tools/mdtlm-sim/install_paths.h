/*
 * Where the simulator finds the plug-in and the schemas when no option names
 * them: next to its own executable, in the installed layout or the build tree.
 */
#ifndef MDTLM_SIM_INSTALL_PATHS_H
#define MDTLM_SIM_INSTALL_PATHS_H

#include <string>

namespace mdtlm::sim {

/* <prefix>/lib/libmdtlm_vraldcn.so for an installed simulator, else
 * <build>/libmdtlm_vraldcn.so for one in <build>/tools/. */
std::string DefaultPluginPath();
/* <prefix>/share/mdtlm_vraldcn/proto for an installed simulator, else the
 * source tree's proto/. */
std::string DefaultProtoDir();

} // namespace mdtlm::sim

#endif /* MDTLM_SIM_INSTALL_PATHS_H */
