// The batch options that depend on the environment.
#include "app/batch_options.h"

#include <cstdlib>

namespace quarnel {

bool UsesExternalDssp(const BatchOptions& options) {
  return options.dssp == DsspChoice::kExternal ||
         (options.dssp == DsspChoice::kAuto && std::getenv("DSSP_PATH") != nullptr);
}

bool UsesDsspLibrary(const BatchOptions& options) {
  return options.params.FlagSS == 1 && !UsesExternalDssp(options);
}

ResultSettings SettingsOf(const BatchOptions& options) {
  return ResultSettings{options.given, options.filterPlddt, options.minPlddt, UsesExternalDssp(options),
                        options.mode};
}

}  // namespace quarnel
